#include <apps/asf/figure/frameoutput.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/outputs.h>
#include <apps/asf/report/numbertext.h>

#include <new>

namespace asfapp
{

namespace
{

using qexsdk::KQexRunResult;

qexsdk::KQexAnimStack* StackOf(const KSampledTake& pTake)
{
    return pTake.mTake != nullptr ? pTake.mTake->mStack : nullptr;
}

class KAcclaimOutput : public KFrameOutput
{
public:
    KAcclaimOutput(KFrameOutputs& pOutputs, const std::string& pPath, const std::vector<const KSampledTake*>& pTakes,
                   const KAcclaimTarget& pTarget)
        : KFrameOutput(pOutputs, pPath, pTakes), mTarget(pTarget)
    {
    }

    bool BeginTake(const KSampledTake& pTake, qexsdk::KQexFrameSink*& pSink) override
    {
        const size_t lTake = mNext++;
        if (&pTake == mTakes.front() && !Begin())
        {
            return ReportFailure(KQexRunResult::eDONE);
        }
        mHasSink = !mTarget.mMotions.empty();
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
        PrintMessages();
        WarnOfUnmatched();
        return true;
    }

private:
    bool                             Begin();
    qexsdk::KQexExportAcclaimOptions GetOptions() const;
    bool                             PrintMessages();
    bool                             ReportFailure(KQexRunResult pResult);
    void                             WarnOfUnmatched();

    const KAcclaimTarget      mTarget;
    qexsdk::KQexAcclaimExport mExport;
    size_t                    mNext = 0;        ///< Index of the next take.
    bool                      mHasSink = false; ///< The current take's frames are written.
};

qexsdk::KQexExportAcclaimOptions KAcclaimOutput::GetOptions() const
{
    const KConvertOptions&           lAll = mOutputs.mOptions;
    qexsdk::KQexExportAcclaimOptions lOptions;
    lOptions.mStack = StackOf(*mTakes.front());
    lOptions.mSampling = mTakes.front()->mRequest;
    lOptions.mAllowUnmatched = lAll.mMotion.mAllowUnmatched;
    lOptions.mPrepared = &mOutputs.mFiles;
    lOptions.mTranslations = lAll.mTranslations == "all"    ? qexsdk::eTRANSLATION_DOFS_ALL
                             : lAll.mTranslations == "none" ? qexsdk::eTRANSLATION_DOFS_NONE
                                                            : qexsdk::eTRANSLATION_DOFS_MOVING;
    lOptions.mBaseScale = lAll.mWorld.mScale;
    lOptions.mBasePoseFirstFrame = lAll.mBasePose == "first-frame";
    lOptions.mWriteRate = lAll.mWriteRate;
    lOptions.mAdaptForFile = !lAll.mRaw;
    // With --translations none or all, the skeleton's own degrees of freedom must not override the choice.
    lOptions.mBoneDofs = lAll.mTranslations == "moving" ? mOutputs.mFigure.GetBoneDofs() : nullptr;
    const qexsdk::KQexAsfScene* lSkeleton = mOutputs.mFigure.GetSkeleton();
    lOptions.mLengthUnit = lSkeleton != nullptr && lSkeleton->mLengthUnit > 0 ? lSkeleton->mLengthUnit : 1.0;
    lOptions.mLengthUnit = lAll.mWorld.mUnits.empty() ? lOptions.mLengthUnit : LengthUnitOf(lAll.mWorld);
    lOptions.mLengthUnit = lAll.mLengthUnit > 0 ? lAll.mLengthUnit : lOptions.mLengthUnit;
    lOptions.mSkeletonName = lSkeleton != nullptr ? lSkeleton->mName : "";
    lOptions.mSkeletonNotes = mTarget.mSkeletonNotes;
    return lOptions;
}

bool KAcclaimOutput::Begin()
{
    qexsdk::KQexNode* lTop = mOutputs.mFigure.GetTop();
    if (mTarget.mSkeleton != nullptr)
    {
        return mExport.BeginForSkeleton(lTop, mTarget.mSkeleton, mPath.c_str(), GetOptions());
    }
    std::vector<qexsdk::KQexExportMotion> lMotions;
    for (size_t i = 0; i < mTakes.size(); ++i)
    {
        lMotions.push_back({mTarget.mMotions.empty() ? "" : mTarget.mMotions[i], StackOf(*mTakes[i]), mTakes[i]->mRequest});
    }
    const bool lOk = mExport.BeginSkeleton(lTop, mPath.c_str(), lMotions, GetOptions());
    for (const std::string& lNote : mExport.GetResult().mNotes)
    {
        mOutputs.mConsole.Message(eNOTE, DisplayOutput(mPath), 0, lNote);
    }
    return lOk;
}

/// Returns whether there are errors.
bool KAcclaimOutput::PrintMessages()
{
    const qexsdk::KQexExportAcclaimResult& lResult = mExport.GetResult();
    bool                                   lHasErrors = false;
    for (const qexsdk::KQexImportMessage& lMessage : lResult.mMessages)
    {
        const ESeverity lSeverity = SeverityOf(lMessage.mMessage);
        lHasErrors = lHasErrors || lSeverity == eERROR;
        if (lSeverity == eERROR && lResult.mBrokenPipe)
        {
            continue; // A closed pipe is not an error.
        }
        mOutputs.mConsole.Message(lSeverity, DisplayOutput(lMessage.mPath), lMessage.mMessage.mLine, lMessage.mMessage.mText);
    }
    return lHasErrors;
}

/// \p pResult: of the take's run, if the failure is the end of one; when another output stopped it, there is nothing to report.
bool KAcclaimOutput::ReportFailure(KQexRunResult pResult)
{
    const bool lIsMismatch = mExport.GetResult().mIsMismatch;
    if (PrintMessages())
    {
        mOutputs.mConsole.Raise(lIsMismatch ? eEXIT_INPUT : eEXIT_SYSTEM);
    }
    else if (pResult == KQexRunResult::eDONE)
    {
        throw std::bad_alloc(); // There was no memory for a message.
    }
    if (lIsMismatch)
    {
        NoteAllowUnmatched(mOutputs.mConsole);
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
    mOutputs.mConsole.Message(eWARNING, DisplayOutput(mPath), 0,
                              CountText(static_cast<long long>(lUnmatched.size()), "bone", "bones") +
                                  " kept at rest, without a joint of the same name: " + lList);
}

} // namespace

std::unique_ptr<KFrameOutput> MakeAcclaimOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                                const std::vector<const KSampledTake*>& pTakes, const KAcclaimTarget& pTarget)
{
    return std::make_unique<KAcclaimOutput>(pOutputs, pPath, pTakes, pTarget);
}

} // namespace asfapp
