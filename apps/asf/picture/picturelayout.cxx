#include <apps/asf/picture/picturelayout.h>

#include <algorithm>
#include <cmath>

namespace asfapp
{

namespace
{

constexpr double kSinglePose = 460;       // Pixels of the larger side of the figure, in a picture of one pose.
constexpr double kSeveralPoses = 250;     // The same in a picture of several.
constexpr double kCharacter = 6.1;        // Mean character width of a label.
constexpr double kCaptionCharacter = 7.2; // The same for a caption.

/// Centimetres; beyond this, the single precision of SVG viewers becomes visible.
constexpr double kMaxCoordinate = 1e9;

KViewPoint Origin(const KPicture& pPicture, const KCell& pCell, size_t pPose)
{
    KViewPoint lOrigin;
    if (pCell.mCentred && !pPicture.mPoses[pPose].mEnds.empty())
    {
        lOrigin = Project(pCell.mView, pPicture.mPoses[pPose].mEnds.front());
        lOrigin.mUp = pCell.mView == eVIEW_TOP ? lOrigin.mUp : 0;
    }
    return lOrigin;
}

KViewPoint Relative(const KPicture& pPicture, const KCell& pCell, size_t pPose, const KPoint& pPoint)
{
    const KViewPoint lOrigin = Origin(pPicture, pCell, pPose);
    const KViewPoint lPoint = Project(pCell.mView, pPoint);
    return {lPoint.mRight - lOrigin.mRight, lPoint.mUp - lOrigin.mUp, lPoint.mNear};
}

void IncludePose(const KPicture& pPicture, const KCell& pCell, size_t pPose, KExtent& pExtent)
{
    const KPose& lPose = pPicture.mPoses[pPose];
    for (size_t lBone = 0; lBone < lPose.mEnds.size(); ++lBone)
    {
        pExtent.Include(Relative(pPicture, pCell, pPose, lPose.mStarts[lBone]));
        pExtent.Include(Relative(pPicture, pCell, pPose, lPose.mEnds[lBone]));
    }
}

std::vector<KCell> MakeCells(const KPicture& pPicture)
{
    std::vector<KCell> lCells;
    const bool         lCellPerPose = !pPicture.mInPlace && pPicture.mPoses.size() > 1;
    for (const EView lView : pPicture.mViews)
    {
        KCell lCell;
        lCell.mView = lView;
        lCell.mCentred = lCellPerPose;
        for (size_t lPose = 0; lPose < pPicture.mPoses.size(); ++lPose)
        {
            lCell.mPoses.push_back(lPose);
            if (lCellPerPose)
            {
                lCell.mCaption = pPicture.mPoses[lPose].mCaption;
                lCells.push_back(lCell);
                lCell.mPoses.clear();
            }
        }
        if (!lCellPerPose)
        {
            lCell.mCaption = pPicture.mPoses.size() == 1 ? pPicture.mPoses[0].mCaption : std::string();
            lCells.push_back(lCell);
        }
    }
    return lCells;
}

/// Every cell of a view gets the same extent, so that the figures share a ground line and a scale.
void MeasureCells(const KPicture& pPicture, std::vector<KCell>& pCells)
{
    for (const EView lView : pPicture.mViews)
    {
        KExtent lExtent;
        for (const KCell& lCell : pCells)
        {
            for (const size_t lPose : lCell.mView == lView ? lCell.mPoses : std::vector<size_t>())
            {
                IncludePose(pPicture, lCell, lPose, lExtent);
            }
        }
        for (const KTrail& lTrail : pPicture.mTrails)
        {
            for (const KPoint& lPoint : lTrail.mPoints)
            {
                lExtent.Include(Project(lView, lPoint));
            }
        }
        for (KCell& lCell : pCells)
        {
            lCell.mExtent = lCell.mView == lView ? lExtent : lCell.mExtent;
        }
    }
}

double FigureSize(const KPicture& pPicture)
{
    double lSize = 0;
    for (const EView lView : {eVIEW_FRONT, eVIEW_SIDE})
    {
        KCell lCell;
        lCell.mView = lView;
        for (size_t lPose = 0; lPose < pPicture.mPoses.size(); ++lPose)
        {
            KExtent lExtent;
            IncludePose(pPicture, lCell, lPose, lExtent);
            lSize = std::max({lSize, lExtent.Width(), lExtent.Height()});
        }
    }
    return lSize;
}

double LabelWidth(const KPicture& pPicture)
{
    size_t lLongest = 0;
    for (const KLabel& lLabel : pPicture.mLabels)
    {
        lLongest = std::max(lLongest, lLabel.mName.size());
    }
    return !pPicture.mLabels.empty() ? 30 + kCharacter * static_cast<double>(lLongest) : 0;
}

double CellHeight(const KPicture& pPicture, const KCell& pCell, double pScale)
{
    const double lLabels = !pPicture.mLabels.empty() ? kLabelPitch * (static_cast<double>(pPicture.mLabels.size()) / 2 + 1) : 0;
    return std::max({pCell.mExtent.Height() * pScale, lLabels, 8.0});
}

/// Fills rows from left to right. Starts a new row when one is full and, with several poses, for each view.
void PlaceCells(const KPicture& pPicture, KLayout& pLayout)
{
    const double lLabels = LabelWidth(pPicture);
    double       lX = kMargin;
    double       lTop = kHeaderHeight;
    double       lRowHeight = 0;
    size_t       lRowBegin = 0;
    const auto   lEndRow = [&](size_t pEnd)
    {
        for (size_t lIndex = lRowBegin; lIndex < pEnd; ++lIndex)
        {
            pLayout.mCells[lIndex].mY = lTop + lRowHeight;
        }
        lTop += lRowHeight + kCaptionHeight + kMargin / 2;
        lRowBegin = pEnd;
        lRowHeight = 0;
        lX = kMargin;
    };
    for (size_t lIndex = 0; lIndex < pLayout.mCells.size(); ++lIndex)
    {
        KCell&       lCell = pLayout.mCells[lIndex];
        const double lFigure = lCell.mExtent.Width() * pLayout.mScale;
        const double lInner = std::max({lFigure, kCaptionCharacter * static_cast<double>(CaptionOf(pPicture, lCell).size()), 40.0});
        const double lWidth = lInner + 2 * lLabels;
        const bool   lIsNewView = pPicture.mPoses.size() > 1 && lIndex > 0 && pLayout.mCells[lIndex - 1].mView != lCell.mView;
        if (lIndex > lRowBegin && (lIsNewView || lX + lWidth > kWidestRow))
        {
            lEndRow(lIndex);
        }
        lCell.mLabels = lLabels;
        lCell.mX = lX + lLabels + (lInner - lFigure) / 2;
        lX += lWidth + kMargin;
        lRowHeight = std::max(lRowHeight, CellHeight(pPicture, lCell, pLayout.mScale));
        pLayout.mWidth = std::max(pLayout.mWidth, lX);
    }
    lEndRow(pLayout.mCells.size());
    pLayout.mWidth = std::max(pLayout.mWidth, 320.0);
    pLayout.mHeight = lTop + kFooterHeight;
}

} // namespace

KViewPoint Project(EView pView, const KPoint& pPoint)
{
    switch (pView)
    {
    case eVIEW_SIDE:
        return {pPoint.mZ, pPoint.mY, -pPoint.mX};
    case eVIEW_TOP:
        return {pPoint.mX, -pPoint.mZ, pPoint.mY};
    default:
        return {pPoint.mX, pPoint.mY, pPoint.mZ};
    }
}

void KExtent::Include(const KViewPoint& pPoint)
{
    mLeft = mEmpty ? pPoint.mRight : std::min(mLeft, pPoint.mRight);
    mRight = mEmpty ? pPoint.mRight : std::max(mRight, pPoint.mRight);
    mBottom = mEmpty ? pPoint.mUp : std::min(mBottom, pPoint.mUp);
    mTop = mEmpty ? pPoint.mUp : std::max(mTop, pPoint.mUp);
    mEmpty = false;
}

std::string CaptionOf(const KPicture& pPicture, const KCell& pCell)
{
    static const char* const sViews[] = {"front", "side", "top"};
    if (pCell.mCaption.empty())
    {
        return sViews[pCell.mView];
    }
    return pPicture.mViews.size() > 1 ? pCell.mCaption + ", " + sViews[pCell.mView] : pCell.mCaption;
}

bool LayOut(const KPicture& pPicture, KLayout& pLayout)
{
    pLayout = KLayout();
    pLayout.mCells = MakeCells(pPicture);
    MeasureCells(pPicture, pLayout.mCells);
    pLayout.mFigure = FigureSize(pPicture);
    double lMaxCoordinate = pLayout.mFigure;
    for (const KCell& lCell : pLayout.mCells)
    {
        const KExtent& lExtent = lCell.mExtent;
        lMaxCoordinate = std::max(
            {lMaxCoordinate, std::abs(lExtent.mLeft), std::abs(lExtent.mRight), std::abs(lExtent.mBottom), std::abs(lExtent.mTop)});
    }
    if (!(lMaxCoordinate <= kMaxCoordinate))
    {
        return false;
    }
    const double lPixels = pPicture.mPoses.size() > 1 ? kSeveralPoses : kSinglePose;
    pLayout.mScale = lPixels / std::max(pLayout.mFigure, 1e-3);
    PlaceCells(pPicture, pLayout);
    return true;
}

KViewPoint ToPixels(const KPicture& pPicture, const KLayout& pLayout, const KCell& pCell, size_t pPose, const KPoint& pPoint)
{
    const KViewPoint lPoint = Relative(pPicture, pCell, pPose, pPoint);
    return {pCell.mX + (lPoint.mRight - pCell.mExtent.mLeft) * pLayout.mScale,
            pCell.mY - (lPoint.mUp - pCell.mExtent.mBottom) * pLayout.mScale, lPoint.mNear};
}

} // namespace asfapp
