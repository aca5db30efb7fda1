#include <qexfigure/kqexnumbertext.h>
#include <qexfigure/output/kqexframeoutput.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <new>

namespace qexsdk
{

namespace
{

class KAcclaimOutput : public KQexFrameOutput
{
public:
    KAcclaimOutput(KQexFrameOutputs& pOutputs, const std::string& pPath, const std::vector<const KQexSampledTake*>& pTakes,
                   const KQexAcclaimTarget& pTarget)
        : KQexFrameOutput(pOutputs, pPath, pTakes), mTarget(pTarget)
    {
    }

    bool BeginTake(const KQexSampledTake& pTake, KQexFrameSink*& pSink) override
    {
        const size_t lTake = mNext++;
        if (&pTake == mTakes.front() && !Begin())
        {
            return ReportFailure(KQexRunResult::eDONE);
        }
        mHasSink = mTarget.mSkeleton != nullptr || !mTarget.mMotions[lTake].empty();
        if (mHasSink)
        {
            pSink = mExport.BeginMotion(lTake);
        }
        return !mHasSink || pSink != nullptr || ReportFailure(KQexRunResult::eDONE);
    }

    bool EndTake(KQexRunResult pResult) override { return !mHasSink || mExport.EndMotion(pResult) || ReportFailure(pResult); }

    bool End() override
    {
        if (!mExport.End())
        {
            return ReportFailure(KQexRunResult::eDONE);
        }
        AddExportMessages();
        WarnOfUnmatched();
        return true;
    }

private:
    bool                     Begin();
    KQexExportAcclaimOptions GetOptions() const;
    double                   GetLengthUnit() const;
    bool                     AddExportMessages();
    bool                     ReportFailure(KQexRunResult pResult);
    void                     WarnOfUnmatched();

    const KQexAcclaimTarget mTarget;
    KQexAcclaimExport       mExport;
    size_t                  mNext = 0;        ///< Index of the next take.
    bool                    mHasSink = false; ///< The current take's frames are written.
};

KQexExportAcclaimOptions KAcclaimOutput::GetOptions() const
{
    const KQexFigureWriteOptions& lAll = mOutputs.mOptions;
    KQexExportAcclaimOptions      lOptions;
    lOptions.mStack = mTakes.front()->GetStack();
    lOptions.mSampling = mTakes.front()->mRequest;
    lOptions.mAllowUnmatched = lAll.mAllowUnmatched;
    lOptions.mPrepared = &mOutputs.mFiles;
    lOptions.mTranslations = lAll.mTranslations;
    lOptions.mBaseScale = lAll.mScale;
    lOptions.mBasePoseFirstFrame = lAll.mBasePoseFirstFrame;
    lOptions.mWriteRate = lAll.mWriteRate;
    lOptions.mAdaptForFile = lAll.mAdaptForFile;
    // When none or all bones are to be translated, the skeleton's own degrees of freedom must not override the choice.
    lOptions.mBoneDofs = lAll.mTranslations == eTRANSLATION_DOFS_MOVING ? mOutputs.mFigure.GetBoneDofs() : nullptr;
    const KQexAsfScene* lSkeleton = mOutputs.mFigure.GetSkeleton();
    lOptions.mLengthUnit = GetLengthUnit();
    lOptions.mSkeletonName = lSkeleton != nullptr ? lSkeleton->mName : "";
    lOptions.mSkeletonNotes = mTarget.mSkeletonNotes;
    return lOptions;
}

double KAcclaimOutput::GetLengthUnit() const
{
    const KQexFigureWriteOptions& lAll = mOutputs.mOptions;
    const KQexAsfScene*           lSkeleton = mOutputs.mFigure.GetSkeleton();
    const double                  lRead = lSkeleton != nullptr && lSkeleton->mLengthUnit > 0 ? lSkeleton->mLengthUnit : 1.0;
    return lAll.mLengthUnit > 0 ? lAll.mLengthUnit : lAll.mUnit > 0 ? kCentimetresPerInch / lAll.mUnit : lRead;
}

bool KAcclaimOutput::Begin()
{
    KQexNode* lTop = mOutputs.mFigure.GetTop();
    if (mTarget.mSkeleton != nullptr)
    {
        return mExport.BeginForSkeleton(lTop, mTarget.mSkeleton, mPath.c_str(), GetOptions());
    }
    std::vector<KQexExportMotion> lMotions;
    for (size_t i = 0; i < mTakes.size(); ++i)
    {
        lMotions.push_back({mTarget.mMotions[i], mTakes[i]->GetStack(), mTakes[i]->mRequest});
    }
    const bool lOk = mExport.BeginSkeleton(lTop, mPath.c_str(), lMotions, GetOptions());
    for (const std::string& lNote : mExport.GetResult().mNotes)
    {
        mOutputs.mReport.Add(KQexFigureMessage::eNOTE, KQexDisplayOutput(mPath), 0, lNote);
    }
    return lOk;
}

/// Returns whether there are errors.
bool KAcclaimOutput::AddExportMessages()
{
    const KQexExportAcclaimResult& lResult = mExport.GetResult();
    bool                           lHasErrors = false;
    for (const KQexImportMessage& lMessage : lResult.mMessages)
    {
        const bool lIsError = lMessage.mMessage.mSeverity == KQexTextMessage::eERROR;
        lHasErrors = lHasErrors || lIsError;
        if (!lIsError || !lResult.mBrokenPipe) // A closed pipe is not an error.
        {
            mOutputs.mReport.Add(KQexDisplayOutput(lMessage.mPath), lMessage.mMessage);
        }
    }
    return lHasErrors;
}

/// \p pResult: of the take's run, if the failure is the end of one; when another output stopped it, there is nothing to report.
bool KAcclaimOutput::ReportFailure(KQexRunResult pResult)
{
    const KQexExportAcclaimResult& lResult = mExport.GetResult();
    const bool                     lHasErrors = AddExportMessages();
    if (!lHasErrors && pResult == KQexRunResult::eDONE)
    {
        throw std::bad_alloc(); // There was no memory for a message.
    }
    if (lHasErrors && !lResult.mBrokenPipe)
    {
        mOutputs.mReport.Raise(lResult.mIsMismatch ? eFIGURE_INPUT : eFIGURE_SYSTEM);
    }
    if (lResult.mIsMismatch)
    {
        mOutputs.mReport.SetMismatch();
    }
    return false;
}

void KAcclaimOutput::WarnOfUnmatched()
{
    const std::vector<std::string>& lUnmatched = mExport.GetResult().mUnmatched;
    if (lUnmatched.empty())
    {
        return;
    }
    std::string lList;
    for (const std::string& lBone : lUnmatched)
    {
        lList += (lList.empty() ? "" : ", ") + lBone;
    }
    mOutputs.mReport.Add(KQexFigureMessage::eWARNING, KQexDisplayOutput(mPath), 0,
                         CountText(static_cast<long long>(lUnmatched.size()), "bone", "bones") +
                             " kept at rest, without a joint of the same name: " + lList);
}

} // namespace

std::unique_ptr<KQexFrameOutput> KMakeAcclaimOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                    const std::vector<const KQexSampledTake*>& pTakes, const KQexAcclaimTarget& pTarget)
{
    return std::make_unique<KAcclaimOutput>(pOutputs, pPath, pTakes, pTarget);
}

} // namespace qexsdk
