#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexnumbertext.h>
#include <qexfigure/picture/kqexpicture.h>
#include <qexfigure/picture/kqexpicturelabels.h>
#include <qexfigure/picture/kqexpicturelayout.h>
#include <qexfigure/picture/kqexsvgtext.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qexsdk
{

namespace
{

std::string PictureStyle()
{
    const auto lSide = [](const char* pClass, KQexSide pSide)
    {
        const std::string lColor = HexColor(SideColor(pSide));
        return std::string(".") + pClass + "{fill:" + lColor + ";stroke:" + lColor + "}\n";
    };
    return "<style>\n"
           "text{font-family:'DejaVu Sans','Segoe UI',Helvetica,Arial,sans-serif;fill:#3a3d46;font-size:12px}\n"
           ".title{font-size:17px;font-weight:600;fill:#22242b}\n"
           ".small{fill:#7b7f8c}\n"
           ".label{font-size:10.5px}\n"
           ".leader{stroke:#c3c6cf;stroke-width:.7;fill:none}\n"
           ".ground{stroke:#d5d7de;stroke-width:1.2}\n"
           ".bar{stroke:#3a3d46;stroke-width:1.4;fill:none}\n" +
           lSide("m", eSIDE_MIDDLE) + lSide("l", eSIDE_LEFT) + lSide("r", eSIDE_RIGHT) +
           ".bone{stroke-linejoin:round}\n"
           ".joint{fill:" +
           HexColor(kPictureBackground) +
           "}\n"
           ".trail{fill:none;stroke-width:2;stroke-linejoin:round;stroke-linecap:round;opacity:.9}\n"
           "</style>\n";
}

constexpr double kTrailStep = 0.5; ///< Pixels between two points of a trail.

const char* SideClass(KQexSide pSide)
{
    return pSide == eSIDE_LEFT ? "l" : pSide == eSIDE_RIGHT ? "r" : "m";
}

std::string SizeText(double pWidth, double pHeight)
{
    return "width=\"" + Px(pWidth) + "\" height=\"" + Px(pHeight) + "\"";
}

class KPictureDrawing
{
public:
    KPictureDrawing(const KQexPicture& pPicture, const KQexPictureLayout& pLayout) : mPicture(pPicture), mLayout(pLayout) {}

    /// \p pSize: the size of the picture as attributes.
    std::string Draw(const std::string& pSize)
    {
        Header(pSize);
        for (const KQexPictureCell& lCell : mLayout.mCells)
        {
            Ground(lCell);
            // Faint poses, so that the trails stay visible.
            const bool lFaint = mPicture.mInPlace && lCell.mPoses.size() > 1;
            mText += lFaint ? "<g opacity=\".45\">\n" : "";
            for (const size_t lPose : lCell.mPoses)
            {
                Pose(lCell, lPose);
            }
            mText += lFaint ? "</g>\n" : "";
            for (const KQexPictureTrail& lTrail : mPicture.mTrails)
            {
                Trail(lCell, lTrail);
            }
            Caption(lCell);
        }
        ScaleBar();
        mText += "</svg>\n";
        return std::move(mText);
    }

private:
    void Header(const std::string& pSize)
    {
        mText += "<svg xmlns=\"http://www.w3.org/2000/svg\" " + pSize + " viewBox=\"0 0 " + Px(mLayout.mWidth) + " " + Px(mLayout.mHeight) +
                 "\" role=\"img\">\n<title>" + EscapeXml(mPicture.mTitle) + "</title>\n";
        mText += PictureStyle();
        mText += "<rect " + SizeText(mLayout.mWidth, mLayout.mHeight) + " fill=\"" + HexColor(kPictureBackground) + "\"/>\n";
        mText += TextAt(kMargin, 30, "title", "start", mPicture.mTitle);
        mText += TextAt(kMargin, 47, "small", "start", mPicture.mSubtitle);
    }

    void Ground(const KQexPictureCell& pCell)
    {
        if (pCell.mView != ePICTURE_TOP)
        {
            const double lRight = pCell.mX + pCell.mExtent.Width() * mLayout.mScale;
            mText += LineAt("ground", pCell.mX - 8, pCell.mY, lRight + 8, pCell.mY);
        }
    }

    void Trail(const KQexPictureCell& pCell, const KQexPictureTrail& pTrail)
    {
        mText += std::string("<path class=\"trail ") + SideClass(pTrail.mSide) + "\" style=\"fill:none\" d=\"";
        KQexViewPoint lLast;
        for (size_t lIndex = 0; lIndex < pTrail.mPoints.size(); ++lIndex)
        {
            const KQexViewPoint lAt = ToPixels(mPicture, mLayout, pCell, pCell.mPoses.front(), pTrail.mPoints[lIndex]);
            const bool          lIsInside = lIndex > 0 && lIndex + 1 < pTrail.mPoints.size();
            // Closer points would not be visible.
            if (lIsInside && std::hypot(lAt.mRight - lLast.mRight, lAt.mUp - lLast.mUp) < kTrailStep)
            {
                continue;
            }
            mText += (lIndex == 0 ? "M" : "L") + Px(lAt.mRight) + " " + Px(lAt.mUp);
            lLast = lAt;
        }
        mText += "\"><title>" + EscapeXml(pTrail.mName) + "</title></path>\n";
    }

    // Draws far bones first. Depths are rounded, so that the order does not depend on the last bit of a sum.
    void Pose(const KQexPictureCell& pCell, size_t pPose)
    {
        const KQexPicturePose&     lPose = mPicture.mPoses[pPose];
        std::vector<KQexViewPoint> lStarts;
        std::vector<KQexViewPoint> lEnds;
        for (size_t lBone = 0; lBone < lPose.mEnds.size(); ++lBone)
        {
            lStarts.push_back(ToPixels(mPicture, mLayout, pCell, pPose, lPose.mStarts[lBone]));
            lEnds.push_back(ToPixels(mPicture, mLayout, pCell, pPose, lPose.mEnds[lBone]));
        }
        std::vector<size_t> lOrder(lEnds.size());
        std::iota(lOrder.begin(), lOrder.end(), size_t(0));
        const auto lNear = [&](size_t pBone)
        {
            return std::round((lStarts[pBone].mNear + lEnds[pBone].mNear) * 1e4);
        };
        std::stable_sort(lOrder.begin(), lOrder.end(), [&](size_t pOne, size_t pOther) { return lNear(pOne) < lNear(pOther); });
        mText += DrawLabels(mPicture, mLayout, pCell, lStarts, lEnds);
        for (const size_t lBone : lOrder)
        {
            Bone(lBone, lStarts[lBone], lEnds[lBone]);
        }
    }

    // Draws a kite, widest near the joint at its start.
    void Bone(size_t pBone, const KQexViewPoint& pStart, const KQexViewPoint& pEnd)
    {
        const double      lFigure = std::max(mLayout.mFigure * mLayout.mScale, 1.0);
        const double      lAlongX = pEnd.mRight - pStart.mRight;
        const double      lAlongY = pEnd.mUp - pStart.mUp;
        const double      lLength = std::hypot(lAlongX, lAlongY);
        const double      lHalf = std::min(std::max(0.07 * lLength, 0.0035 * lFigure), 0.0135 * lFigure);
        const double      lJoint = 0.0062 * lFigure;
        const std::string lClass = SideClass(mPicture.mSides[pBone]);
        mText += "<g class=\"" + lClass + "\" stroke-width=\"" + Px(std::max(0.003 * lFigure, 0.6)) + "\"><title>" +
                 EscapeXml(mPicture.mNames[pBone]) + "</title>";
        if (lLength > 0.01)
        {
            const double lX = pStart.mRight + kWidestPart * lAlongX;
            const double lY = pStart.mUp + kWidestPart * lAlongY;
            const double lAcrossX = -lAlongY / lLength * lHalf;
            const double lAcrossY = lAlongX / lLength * lHalf;
            mText += "<path class=\"bone\" d=\"M" + Px(pStart.mRight) + " " + Px(pStart.mUp) + "L" + Px(lX + lAcrossX) + " " +
                     Px(lY + lAcrossY) + "L" + Px(pEnd.mRight) + " " + Px(pEnd.mUp) + "L" + Px(lX - lAcrossX) + " " + Px(lY - lAcrossY) +
                     "Z\"/>";
        }
        mText += "<circle class=\"joint\" cx=\"" + Px(pStart.mRight) + "\" cy=\"" + Px(pStart.mUp) + "\" r=\"" + Px(lJoint) + "\"/></g>\n";
    }

    void Caption(const KQexPictureCell& pCell)
    {
        const double lMiddle = pCell.mX + pCell.mExtent.Width() * mLayout.mScale / 2;
        mText += TextAt(lMiddle, pCell.mY + 18, "small", "middle", CaptionOf(mPicture, pCell));
    }

    // Its length is 1, 2 or 5 times a power of ten, about a quarter of the figure.
    void ScaleBar()
    {
        const double lTarget = std::max(mLayout.mFigure, 1e-3) / 4;
        const double lPower = std::pow(10.0, std::floor(std::log10(lTarget)));
        const double lLength = lPower * (lTarget >= 5 * lPower ? 5 : lTarget >= 2 * lPower ? 2 : 1);
        const double lY = mLayout.mHeight - 20;
        const double lEnd = kMargin + lLength * mLayout.mScale;
        mText += "<path class=\"bar\" d=\"M" + Px(kMargin) + " " + Px(lY - 4) + "v8m0 -4H" + Px(lEnd) + "m0 -4v8\"/>\n";
        mText += TextAt(lEnd + 8, lY + 4, "", "start", ShortText(lLength) + " cm");
    }

    const KQexPicture&       mPicture;
    const KQexPictureLayout& mLayout;
    std::string              mText;
};

/// Whether all lists of bones have one size, and there is something to draw.
bool FitsTogether(const KQexPicture& pPicture)
{
    const size_t lBones = pPicture.mNames.size();
    return pPicture.mSides.size() == lBones && !pPicture.mPoses.empty() && !pPicture.mViews.empty() &&
           std::all_of(pPicture.mPoses.begin(), pPicture.mPoses.end(),
                       [lBones](const KQexPicturePose& pPose) { return pPose.mStarts.size() == lBones && pPose.mEnds.size() == lBones; }) &&
           std::all_of(pPicture.mLabels.begin(), pPicture.mLabels.end(),
                       [lBones](const KQexPictureLabel& pLabel) { return pLabel.mBone < lBones; });
}

} // namespace

bool DrawPicture(const KQexPicture& pPicture, double pWidth, KQexSvg& pSvg, KQexFigureReport& pReport) noexcept
{
    pSvg.mText.clear();
    return RunGuarded(pReport,
                      [&]
                      {
                          KQexPictureLayout lLayout;
                          if (!FitsTogether(pPicture))
                          {
                              return pReport.Fail(eFIGURE_USAGE, pPicture.mPath, "cannot be drawn: the picture's lists differ in size");
                          }
                          if (!LayOutPicture(pPicture, lLayout))
                          {
                              return pReport.Fail(eFIGURE_INPUT, pPicture.mPath, "cannot be drawn: coordinates are too large");
                          }
                          pSvg.mWidth = pWidth > 0 ? pWidth : lLayout.mWidth;
                          pSvg.mHeight = lLayout.mHeight * pSvg.mWidth / lLayout.mWidth;
                          pSvg.mText = KPictureDrawing(pPicture, lLayout).Draw(SizeText(pSvg.mWidth, pSvg.mHeight));
                          return true;
                      });
}

} // namespace qexsdk
