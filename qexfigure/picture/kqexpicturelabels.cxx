#include <qexfigure/picture/kqexpicturelabels.h>

#include <qexfigure/picture/kqexsvgtext.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace qexsdk
{

namespace
{

/// A label and the point that it is for, in pixels.
struct KPlacedLabel
{
    const std::string* mName = nullptr;
    double             mX = 0;
    double             mY = 0;
};

/// The point at the label's joint. For a joint that shares its pixel with others: where its bone is widest, so that it is clear which
/// bone the name is for.
std::vector<KPlacedLabel> FindPoints(const KQexPicture& pPicture, const std::vector<KQexViewPoint>& pStarts,
                                     const std::vector<KQexViewPoint>& pEnds)
{
    const auto lJoint = [&](const KQexPictureLabel& pLabel)
    {
        return pLabel.mAtEnd ? pEnds[pLabel.mBone] : pStarts[pLabel.mBone];
    };
    const auto lPixel = [&](const KQexPictureLabel& pLabel)
    {
        return std::make_pair(std::llround(lJoint(pLabel).mRight), std::llround(lJoint(pLabel).mUp));
    };
    std::map<std::pair<long long, long long>, int> lCounts;
    for (const KQexPictureLabel& lLabel : pPicture.mLabels)
    {
        ++lCounts[lPixel(lLabel)];
    }
    std::vector<KPlacedLabel> lPoints;
    lPoints.reserve(pPicture.mLabels.size());
    for (const KQexPictureLabel& lLabel : pPicture.mLabels)
    {
        const KQexViewPoint& lFrom = pStarts[lLabel.mBone];
        const KQexViewPoint& lTo = pEnds[lLabel.mBone];
        const double         lPart = lLabel.mAtEnd ? 1 : lCounts[lPixel(lLabel)] > 1 ? kWidestPart : 0;
        lPoints.push_back({&lLabel.mName, lFrom.mRight + lPart * (lTo.mRight - lFrom.mRight), lFrom.mUp + lPart * (lTo.mUp - lFrom.mUp)});
    }
    return lPoints;
}

/// A column of labels at \p pX, from the highest point to the lowest. \p pTop, \p pBottom: the pixels that the figures cover.
std::string DrawColumn(const std::vector<KPlacedLabel>& pLabels, double pTop, double pBottom, double pX, bool pIsLeft)
{
    std::string lText;
    double      lRemaining = kLabelPitch * static_cast<double>(pLabels.size());
    double      lNext = std::min(pTop, pBottom - lRemaining);
    for (const KPlacedLabel& lLabel : pLabels)
    {
        // As close to its joint as the labels above and below allow.
        const double lY = std::max(lNext, std::min(lLabel.mY, pBottom - lRemaining + kLabelPitch));
        lNext = lY + kLabelPitch;
        lRemaining -= kLabelPitch;
        lText += LineAt("leader", pX + (pIsLeft ? 4 : -4), lY, lLabel.mX, lLabel.mY);
        lText += TextAt(pX, lY + 3.6, "label", pIsLeft ? "end" : "start", *lLabel.mName);
    }
    return lText;
}

} // namespace

std::string DrawLabels(const KQexPicture& pPicture, const KQexPictureLayout& pLayout, const KQexPictureCell& pCell,
                       const std::vector<KQexViewPoint>& pStarts, const std::vector<KQexViewPoint>& pEnds)
{
    std::vector<KPlacedLabel> lLabels = FindPoints(pPicture, pStarts, pEnds);
    std::stable_sort(lLabels.begin(), lLabels.end(),
                     [](const KPlacedLabel& pOne, const KPlacedLabel& pOther) { return pOne.mX < pOther.mX; });
    const auto lHalf = lLabels.begin() + static_cast<std::ptrdiff_t>(lLabels.size() / 2);
    const auto lHigher = [](const KPlacedLabel& pOne, const KPlacedLabel& pOther)
    {
        return pOne.mY < pOther.mY;
    };
    std::stable_sort(lLabels.begin(), lHalf, lHigher);
    std::stable_sort(lHalf, lLabels.end(), lHigher);

    const double lTop = pCell.mY - pCell.mExtent.Height() * pLayout.mScale;
    const double lRight = pCell.mX + pCell.mExtent.Width() * pLayout.mScale;
    return DrawColumn({lLabels.begin(), lHalf}, lTop, pCell.mY, pCell.mX - 16, true) +
           DrawColumn({lHalf, lLabels.end()}, lTop, pCell.mY, lRight + 16, false);
}

} // namespace qexsdk
