#include <qexfigure/picture/kqexpicturelayout.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kSinglePose = 460;       // Pixels of the larger side of the figure, in a picture of one pose.
constexpr double kSeveralPoses = 250;     // The same in a picture of several.
constexpr double kLargestPanel = 3000;    // Pixels; far motion of a small figure reduces the scale instead of going beyond.
constexpr double kCharacter = 6.1;        // Mean character width of a label.
constexpr double kCaptionCharacter = 7.2; // The same for a caption.

/// Centimetres; beyond this, the single precision of SVG viewers becomes visible.
constexpr double kMaxCoordinate = 1e9;

KQexViewPoint Origin(const KQexPicture& pPicture, const KQexPictureCell& pCell, size_t pPose)
{
    KQexViewPoint lOrigin;
    if (pCell.mCentred && !pPicture.mPoses[pPose].mEnds.empty())
    {
        lOrigin = ProjectPoint(pCell.mView, pPicture.mPoses[pPose].mEnds.front());
        lOrigin.mUp = pCell.mView == ePICTURE_TOP ? lOrigin.mUp : 0;
    }
    return lOrigin;
}

KQexViewPoint Relative(const KQexPicture& pPicture, const KQexPictureCell& pCell, size_t pPose, const KQexFigurePoint& pPoint)
{
    const KQexViewPoint lOrigin = Origin(pPicture, pCell, pPose);
    const KQexViewPoint lPoint = ProjectPoint(pCell.mView, pPoint);
    return {lPoint.mRight - lOrigin.mRight, lPoint.mUp - lOrigin.mUp, lPoint.mNear};
}

void IncludePose(const KQexPicture& pPicture, const KQexPictureCell& pCell, size_t pPose, KQexViewExtent& pExtent)
{
    const KQexPicturePose& lPose = pPicture.mPoses[pPose];
    for (size_t lBone = 0; lBone < lPose.mEnds.size(); ++lBone)
    {
        pExtent.Include(Relative(pPicture, pCell, pPose, lPose.mStarts[lBone]));
        pExtent.Include(Relative(pPicture, pCell, pPose, lPose.mEnds[lBone]));
    }
}

std::vector<KQexPictureCell> MakeCells(const KQexPicture& pPicture)
{
    std::vector<KQexPictureCell> lCells;
    const bool                   lCellPerPose = !pPicture.mInPlace && pPicture.mPoses.size() > 1;
    for (const KQexPictureView lView : pPicture.mViews)
    {
        KQexPictureCell lCell;
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
void MeasureCells(const KQexPicture& pPicture, std::vector<KQexPictureCell>& pCells)
{
    for (const KQexPictureView lView : pPicture.mViews)
    {
        KQexViewExtent lExtent;
        for (const KQexPictureCell& lCell : pCells)
        {
            for (const size_t lPose : lCell.mView == lView ? lCell.mPoses : std::vector<size_t>())
            {
                IncludePose(pPicture, lCell, lPose, lExtent);
            }
        }
        for (const KQexPictureTrail& lTrail : pPicture.mTrails)
        {
            for (const KQexFigurePoint& lPoint : lTrail.mPoints)
            {
                lExtent.Include(ProjectPoint(lView, lPoint));
            }
        }
        for (KQexPictureCell& lCell : pCells)
        {
            lCell.mExtent = lCell.mView == lView ? lExtent : lCell.mExtent;
        }
    }
}

/// Minima and maxima skip what is not a number.
bool AreFinite(const std::vector<KQexFigurePoint>& pPoints)
{
    return std::all_of(pPoints.begin(), pPoints.end(),
                       [](const KQexFigurePoint& pPoint)
                       { return std::isfinite(pPoint.mX) && std::isfinite(pPoint.mY) && std::isfinite(pPoint.mZ); });
}

bool IsFinite(const KQexPicture& pPicture)
{
    return std::all_of(pPicture.mPoses.begin(), pPicture.mPoses.end(),
                       [](const KQexPicturePose& pPose) { return AreFinite(pPose.mStarts) && AreFinite(pPose.mEnds); }) &&
           std::all_of(pPicture.mTrails.begin(), pPicture.mTrails.end(),
                       [](const KQexPictureTrail& pTrail) { return AreFinite(pTrail.mPoints); });
}

double FigureSize(const KQexPicture& pPicture)
{
    double lSize = 0;
    for (const KQexPictureView lView : {ePICTURE_FRONT, ePICTURE_SIDE})
    {
        KQexPictureCell lCell;
        lCell.mView = lView;
        for (size_t lPose = 0; lPose < pPicture.mPoses.size(); ++lPose)
        {
            KQexViewExtent lExtent;
            IncludePose(pPicture, lCell, lPose, lExtent);
            lSize = std::max({lSize, lExtent.Width(), lExtent.Height()});
        }
    }
    return lSize;
}

/// The larger side of the largest cell, in centimetres.
double LargestPanel(const KQexPictureLayout& pLayout)
{
    double lLargest = 0;
    for (const KQexPictureCell& lCell : pLayout.mCells)
    {
        lLargest = std::max({lLargest, lCell.mExtent.Width(), lCell.mExtent.Height()});
    }
    return lLargest;
}

double LabelWidth(const KQexPicture& pPicture)
{
    size_t lLongest = 0;
    for (const KQexPictureLabel& lLabel : pPicture.mLabels)
    {
        lLongest = std::max(lLongest, lLabel.mName.size());
    }
    return !pPicture.mLabels.empty() ? 30 + kCharacter * static_cast<double>(lLongest) : 0;
}

double CellHeight(const KQexPicture& pPicture, const KQexPictureCell& pCell, double pScale)
{
    const double lLabels = !pPicture.mLabels.empty() ? kLabelPitch * (static_cast<double>(pPicture.mLabels.size()) / 2 + 1) : 0;
    return std::max({pCell.mExtent.Height() * pScale, lLabels, 8.0});
}

/// Fills rows from left to right. Starts a new row when one is full and, with several poses, for each view.
void PlaceCells(const KQexPicture& pPicture, KQexPictureLayout& pLayout)
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
        KQexPictureCell& lCell = pLayout.mCells[lIndex];
        const double     lFigure = lCell.mExtent.Width() * pLayout.mScale;
        const double     lInner = std::max({lFigure, kCaptionCharacter * static_cast<double>(CaptionOf(pPicture, lCell).size()), 40.0});
        const double     lWidth = lInner + 2 * lLabels;
        const bool       lIsNewView = pPicture.mPoses.size() > 1 && lIndex > 0 && pLayout.mCells[lIndex - 1].mView != lCell.mView;
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

KQexViewPoint ProjectPoint(KQexPictureView pView, const KQexFigurePoint& pPoint)
{
    switch (pView)
    {
    case ePICTURE_SIDE:
        return {pPoint.mZ, pPoint.mY, -pPoint.mX};
    case ePICTURE_TOP:
        return {pPoint.mX, -pPoint.mZ, pPoint.mY};
    default:
        return {pPoint.mX, pPoint.mY, pPoint.mZ};
    }
}

void KQexViewExtent::Include(const KQexViewPoint& pPoint)
{
    mLeft = mEmpty ? pPoint.mRight : std::min(mLeft, pPoint.mRight);
    mRight = mEmpty ? pPoint.mRight : std::max(mRight, pPoint.mRight);
    mBottom = mEmpty ? pPoint.mUp : std::min(mBottom, pPoint.mUp);
    mTop = mEmpty ? pPoint.mUp : std::max(mTop, pPoint.mUp);
    mEmpty = false;
}

std::string CaptionOf(const KQexPicture& pPicture, const KQexPictureCell& pCell)
{
    static const char* const sViews[] = {"front", "side", "top"};
    if (pCell.mCaption.empty())
    {
        return sViews[pCell.mView];
    }
    return pPicture.mViews.size() > 1 ? pCell.mCaption + ", " + sViews[pCell.mView] : pCell.mCaption;
}

bool LayOutPicture(const KQexPicture& pPicture, KQexPictureLayout& pLayout)
{
    pLayout = KQexPictureLayout();
    pLayout.mCells = MakeCells(pPicture);
    MeasureCells(pPicture, pLayout.mCells);
    pLayout.mFigure = FigureSize(pPicture);
    double lMaxCoordinate = pLayout.mFigure;
    for (const KQexPictureCell& lCell : pLayout.mCells)
    {
        const KQexViewExtent& lExtent = lCell.mExtent;
        lMaxCoordinate = std::max(
            {lMaxCoordinate, std::abs(lExtent.mLeft), std::abs(lExtent.mRight), std::abs(lExtent.mBottom), std::abs(lExtent.mTop)});
    }
    if (!IsFinite(pPicture) || !(lMaxCoordinate <= kMaxCoordinate))
    {
        return false;
    }
    const double lPixels = pPicture.mPoses.size() > 1 ? kSeveralPoses : kSinglePose;
    const double lPanel = LargestPanel(pLayout);
    // A single joint has no size of its own.
    pLayout.mFigure = std::max(pLayout.mFigure, pLayout.mFigure > 0 ? lPanel * lPixels / kLargestPanel : lPanel);
    pLayout.mScale = lPixels / std::max(pLayout.mFigure, 1e-3);
    PlaceCells(pPicture, pLayout);
    return true;
}

KQexViewPoint ToPixels(const KQexPicture& pPicture, const KQexPictureLayout& pLayout, const KQexPictureCell& pCell, size_t pPose,
                       const KQexFigurePoint& pPoint)
{
    const KQexViewPoint lPoint = Relative(pPicture, pCell, pPose, pPoint);
    return {pCell.mX + (lPoint.mRight - pCell.mExtent.mLeft) * pLayout.mScale,
            pCell.mY - (lPoint.mUp - pCell.mExtent.mBottom) * pLayout.mScale, lPoint.mNear};
}

} // namespace qexsdk
