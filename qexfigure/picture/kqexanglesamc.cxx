#include <qexfigure/picture/kqexangles.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexfigure/kqexdidyoumean.h>
#include <qexfigure/kqexfigurecurves.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexnumbertext.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <algorithm>
#include <limits>
#include <new>
#include <numeric>

/// \file
/// Angles of an AMC file.

namespace qexsdk
{

namespace
{

/// All bones in pre-order.
std::vector<HKQexAsfNode> BonesOf(const KQexAsfScene& pSkeleton)
{
    std::vector<HKQexAsfNode> lBones;
    std::vector<HKQexAsfNode> lPending{pSkeleton.mRoot};
    while (!lPending.empty())
    {
        HKQexAsfNode lNode = lPending.back();
        lPending.pop_back();
        lBones.push_back(lNode);
        for (int lChild = lNode->mChildBuf.GetCount() - 1; lChild >= 0; --lChild)
        {
            lPending.push_back(lNode->mChildBuf[lChild]);
        }
    }
    return lBones;
}

/// Keeps the wanted bones' angles of every frame.
class KAngleVisitor : public KQexAmcVisitor
{
public:
    explicit KAngleVisitor(KQexChart& pChart) : mChart(pChart) {}

    /// Adds a panel for \p pBone; false if it has no rotation.
    bool AddBone(const KQexAsfNode& pBone)
    {
        KQexChartPanel lPanel{pBone.mName, "degrees", "\xC2\xB0", {}};
        for (int lIndex = 0; lIndex < pBone.mOrderCount; ++lIndex)
        {
            const int lCode = pBone.mOrderBuf[lIndex];
            if (KIsRotationDof(lCode))
            {
                KQexChartSeries lSeries;
                lSeries.mName = kDofWords[lCode];
                lSeries.mColour = static_cast<size_t>(eDOF_RX - lCode);
                lSeries.mHasMin = pBone.mLimitsActive[lCode][0];
                lSeries.mHasMax = pBone.mLimitsActive[lCode][1];
                lSeries.mMin = lSeries.mHasMin ? pBone.mLimitsBuf[lCode][0] : 0;
                lSeries.mMax = lSeries.mHasMax ? pBone.mLimitsBuf[lCode][1] : 0;
                mSources.push_back({&pBone, lIndex, mChart.mPanels.size(), lPanel.mSeries.size(), 0});
                lPanel.mSeries.push_back(std::move(lSeries));
            }
        }
        mChart.mPanels.push_back(std::move(lPanel));
        return !mChart.mPanels.back().mSeries.empty();
    }

    bool Frame(const KQexAmcFrame& pFrame) override
    {
        try
        {
            AddFrame(pFrame);
            return true;
        }
        catch (const std::bad_alloc&)
        {
            // The reader's calls do not throw.
            mIsOutOfMemory = true;
            return false;
        }
    }

    bool IsOutOfMemory() const { return mIsOutOfMemory; }

    /// Sorts by number. Of frames with one number, the last in the file wins.
    void Finish()
    {
        std::vector<size_t> lOrder(mChart.mNumbers.size());
        std::iota(lOrder.begin(), lOrder.end(), size_t(0));
        std::stable_sort(lOrder.begin(), lOrder.end(),
                         [this](size_t pOne, size_t pOther) { return mChart.mNumbers[pOne] < mChart.mNumbers[pOther]; });
        size_t lKept = 0;
        for (size_t lIndex = 0; lIndex < lOrder.size(); ++lIndex)
        {
            const bool lIsLast = lIndex + 1 == lOrder.size() || mChart.mNumbers[lOrder[lIndex]] != mChart.mNumbers[lOrder[lIndex + 1]];
            lOrder[lKept] = lOrder[lIndex];
            lKept += lIsLast ? 1 : 0;
        }
        lOrder.resize(lKept);
        Reorder(lOrder, mChart.mNumbers);
        Reorder(lOrder, mChart.mSeconds);
        for (KQexChartPanel& lPanel : mChart.mPanels)
        {
            for (KQexChartSeries& lSeries : lPanel.mSeries)
            {
                Reorder(lOrder, lSeries.mValues);
            }
        }
    }

private:
    /// Where the values of a line come from.
    struct KSource
    {
        const KQexAsfNode* mBone;
        int                mIndex; ///< In the bone's values.
        size_t             mPanel;
        size_t             mSeries;
        size_t             mAmcBone; ///< Index in the frames' bones.
    };

    void AddFrame(const KQexAmcFrame& pFrame)
    {
        if (mChart.mNumbers.empty())
        {
            FindSources(*pFrame.mBones);
        }
        mChart.mNumbers.push_back(pFrame.mNumber);
        mChart.mSeconds.push_back(pFrame.mTime.GetSeconds());
        for (const KSource& lSource : mSources)
        {
            const KQexAmcBone& lBone = (*pFrame.mBones)[lSource.mAmcBone];
            const double       lValue = lBone.mValues[lSource.mIndex] * pFrame.mAngleFactor;
            mChart.mPanels[lSource.mPanel].mSeries[lSource.mSeries].mValues.push_back(
                lBone.mFrame == pFrame.mIndex ? lValue : std::numeric_limits<double>::quiet_NaN());
        }
    }

    /// All of them are there: the frames have every bone with a degree of freedom.
    void FindSources(const std::vector<KQexAmcBone>& pBones)
    {
        for (KSource& lSource : mSources)
        {
            const auto lFound =
                std::find_if(pBones.begin(), pBones.end(), [&lSource](const KQexAmcBone& pBone) { return pBone.mNode == lSource.mBone; });
            lSource.mAmcBone = static_cast<size_t>(lFound - pBones.begin());
        }
    }

    template <typename TValue>
    static void Reorder(const std::vector<size_t>& pOrder, std::vector<TValue>& pValues)
    {
        std::vector<TValue> lOrdered;
        lOrdered.reserve(pOrder.size());
        for (const size_t lIndex : pOrder)
        {
            lOrdered.push_back(pValues[lIndex]);
        }
        pValues.swap(lOrdered);
    }

    KQexChart&           mChart;
    std::vector<KSource> mSources;
    bool                 mIsOutOfMemory = false;
};

/// Adds the panels. False, with an error, for a bone that does not exist or does not rotate.
bool PickBones(const KQexAsfScene& pSkeleton, const KQexAngleOptions& pOptions, KAngleVisitor& pVisitor, KQexFigureReport& pReport)
{
    const std::vector<HKQexAsfNode> lBones = BonesOf(pSkeleton);
    for (const std::string& lName : pOptions.mJoints)
    {
        const auto lFound = std::find_if(lBones.begin(), lBones.end(), [&lName](HKQexAsfNode pBone) { return lName == pBone->mName; });
        if (lFound == lBones.end())
        {
            std::vector<std::string> lNames;
            for (HKQexAsfNode lBone : lBones)
            {
                lNames.emplace_back(lBone->mName);
            }
            return pReport.Fail(eFIGURE_USAGE, "", pOptions.mJointOption + "the skeleton has no bone " + lName + DidYouMean(lName, lNames));
        }
        if (!pVisitor.AddBone(**lFound))
        {
            return pReport.Fail(eFIGURE_USAGE, "", pOptions.mJointOption + "the bone " + lName + " has no rotations");
        }
    }
    return true;
}

/// Adds the messages of reading the motion. False if it failed, or hardly matches the skeleton.
bool ReportMotion(const KQexFigureFiles& pFiles, const KQexAngleOptions& pOptions, const KQexFileAcclaimAmc& pReader, bool pOk,
                  KQexFigureReport& pReport)
{
    const std::string& lPath = pFiles.mMotions.front().GetDisplayPath();
    if (pOk && !pOptions.mAllowUnmatched && !pReader.GetInfo().mMatch.IsPlausible())
    {
        // The error replaces a warning for each bone.
        pReport.SetMismatch();
        return pReport.Fail(eFIGURE_INPUT, lPath, pReader.GetInfo().mMatch.Describe());
    }
    for (const KQexTextMessage& lMessage : pReader.GetMessages())
    {
        pReport.Add(lPath, lMessage);
    }
    if (!pOk)
    {
        pReport.Raise(pFiles.FailsToRead() ? eFIGURE_SYSTEM : eFIGURE_INPUT);
    }
    return pOk;
}

bool CollectFileAngles(const KQexFigureFiles& pFiles, const KQexAngleOptions& pOptions, KQexChart& pChart, KQexFigureReport& pReport)
{
    if (pFiles.mMotions.empty())
    {
        return pReport.Fail(eFIGURE_USAGE, pFiles.mFigure.GetDisplayPath(), "has no motion");
    }
    KQexImportAcclaimResult lResult;
    KQexAsfSceneOwner       lSkeleton = KQexImporterAcclaim::ReadSkeleton(pFiles.mFigure.GetSource(), KQexImportAcclaimOptions(), lResult);
    for (const KQexImportMessage& lMessage : lResult.mMessages)
    {
        pReport.Add(lMessage.mPath, lMessage.mMessage);
    }
    if (lSkeleton == nullptr)
    {
        pReport.Raise(pFiles.FailsToRead() ? eFIGURE_SYSTEM : eFIGURE_INPUT);
        return false;
    }
    pChart.mSeconds.clear();
    pChart.mNumbers.clear();
    pChart.mPanels.clear();
    KAngleVisitor lVisitor(pChart);
    if (!PickBones(*lSkeleton, pOptions, lVisitor, pReport))
    {
        return false;
    }
    KQexAmcReadOptions lOptions;
    lOptions.mSamplesPerSecond = pOptions.mMotionRate;
    lOptions.mSkeletonNotes = lResult.mSkeletonNotes;
    lOptions.mProgress = pOptions.mProgress;
    KQexFileAcclaimAmc lReader(false);
    const bool         lOk = pFiles.mMotions.front().OpenFor(lReader) && lReader.ReadFrames(lSkeleton.get(), lOptions, lVisitor);
    if (lVisitor.IsOutOfMemory())
    {
        throw std::bad_alloc();
    }
    if (!ReportMotion(pFiles, pOptions, lReader, lOk, pReport))
    {
        return false;
    }
    lVisitor.Finish();
    const KQexAmcInfo& lInfo = lReader.GetInfo();
    pChart.mSubtitle = CountText(static_cast<long long>(pChart.mNumbers.size()), "frame", "frames") + ", " +
                       ShortText(lInfo.mSamplesPerSecond) + " a second";
    if (lInfo.mRateSource == eAMC_RATE_DEFAULT)
    {
        pReport.Add(KQexFigureMessage::eNOTE, pFiles.mMotions.front().GetDisplayPath(), 0, kDefaultRateNote);
    }
    return true;
}

} // namespace

bool CollectAngles(const KQexFigureFiles& pFiles, const KQexAngleOptions& pOptions, KQexChart& pChart, KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport, [&] { return CollectFileAngles(pFiles, pOptions, pChart, pReport); });
}

} // namespace qexsdk
