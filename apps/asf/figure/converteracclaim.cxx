#include <apps/asf/figure/converter.h>
#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>

#include <new>

namespace asfapp
{

namespace
{

qexsdk::KQexAnimStack* StackOf(const KSampledTake& pTake)
{
    return pTake.mTake != nullptr ? pTake.mTake->mStack : nullptr;
}

} // namespace

qexsdk::KQexExportAcclaimOptions KConverter::AcclaimOptions(const KSampledTake& pTake)
{
    qexsdk::KQexExportAcclaimOptions lOptions;
    lOptions.mStack = StackOf(pTake);
    lOptions.mSampling = pTake.mRequest;
    lOptions.mAllowUnmatched = mOptions.mMotion.mAllowUnmatched;
    lOptions.mPrepared = &mOutputs.mFiles;
    lOptions.mTranslations = mOptions.mTranslations == "all"    ? qexsdk::eTRANSLATION_DOFS_ALL
                             : mOptions.mTranslations == "none" ? qexsdk::eTRANSLATION_DOFS_NONE
                                                                : qexsdk::eTRANSLATION_DOFS_MOVING;
    lOptions.mBaseScale = mOptions.mWorld.mScale;
    lOptions.mBasePoseFirstFrame = mOptions.mBasePose == "first-frame";
    lOptions.mWriteRate = mOptions.mWriteRate;
    lOptions.mThreads = mOptions.mThreads;
    lOptions.mAdaptForFile = !mOptions.mRaw;
    // With --translations none or all, the skeleton's own degrees of freedom must not override the choice.
    lOptions.mBoneDofs = mOptions.mTranslations == "moving" ? mFigure.GetBoneDofs() : nullptr;
    const qexsdk::KQexAsfScene* lSkeleton = mFigure.GetSkeleton();
    lOptions.mLengthUnit = lSkeleton != nullptr && lSkeleton->mLengthUnit > 0 ? lSkeleton->mLengthUnit : 1.0;
    lOptions.mLengthUnit = mOptions.mWorld.mUnits.empty() ? lOptions.mLengthUnit : LengthUnitOf(mOptions.mWorld);
    lOptions.mLengthUnit = mOptions.mLengthUnit > 0 ? mOptions.mLengthUnit : lOptions.mLengthUnit;
    lOptions.mSkeletonName = lSkeleton != nullptr ? lSkeleton->mName : "";
    return lOptions;
}

bool KConverter::ReportExport(const qexsdk::KQexExportAcclaimResult& pResult)
{
    bool lIsReported = pResult.mOk;
    for (const qexsdk::KQexImportMessage& lMessage : pResult.mMessages)
    {
        const ESeverity lSeverity = SeverityOf(lMessage.mMessage);
        const bool      lError = lSeverity == eERROR;
        lIsReported = lIsReported || lError;
        if (lError && pResult.mBrokenPipe)
        {
            continue; // A closed pipe is not an error.
        }
        mConsole.Message(lSeverity, DisplayOutput(lMessage.mPath), lMessage.mMessage.mLine, lMessage.mMessage.mText);
        if (lError)
        {
            mConsole.Raise(pResult.mIsMismatch ? eEXIT_INPUT : eEXIT_SYSTEM);
        }
    }
    if (pResult.mIsMismatch)
    {
        NoteAllowUnmatched(mConsole);
    }
    if (!lIsReported)
    {
        throw std::bad_alloc(); // There was no memory for a message.
    }
    return pResult.mOk;
}

bool KConverter::WriteAcclaim()
{
    const KConvertOutput* lAsf = FindTarget(eOUT_ASF);
    if (lAsf != nullptr)
    {
        bool lOk = true;
        for (const std::vector<const KSampledTake*>& lGroup : GroupsOf(*lAsf))
        {
            lOk = lOk && WriteSkeletonAndMotions(*lAsf, FindTarget(eOUT_AMC), lGroup);
        }
        return lOk;
    }
    const KConvertOutput*        lAmc = FindTarget(eOUT_AMC);
    qexsdk::KQexAmcSkeletonNotes lNotes = mFigure.GetSkeletonNotes();
    qexsdk::KQexAsfSceneOwner    lSkeleton = mOptions.mSkeleton.empty() ? nullptr : ReadSkeleton(mOptions.mSkeleton, lNotes);
    if (!mOptions.mSkeleton.empty() && !lSkeleton)
    {
        return false;
    }
    bool lOk = true;
    for (size_t lTake = 0; lTake < mTakes.size() && lOk; ++lTake)
    {
        lOk = WriteMotion(PathOf(*lAmc, mTakes[lTake]), mTakes[lTake], lSkeleton ? lSkeleton.get() : mFigure.GetSkeleton(), lNotes);
    }
    return lOk;
}

/// Writes a skeleton for \p pTakes, and a motion for each unless \p pAmc is null.
bool KConverter::WriteSkeletonAndMotions(const KConvertOutput& pAsf, const KConvertOutput* pAmc,
                                         const std::vector<const KSampledTake*>& pTakes)
{
    std::vector<qexsdk::KQexExportMotion> lMotions;
    for (const KSampledTake* lTake : pTakes)
    {
        lMotions.push_back({pAmc != nullptr ? PathOf(*pAmc, *lTake) : "", StackOf(*lTake), lTake->mRequest});
    }
    const std::string                lAsfPath = PathOf(pAsf, *pTakes.front());
    qexsdk::KQexExportAcclaimOptions lOptions = AcclaimOptions(*pTakes.front());
    qexsdk::KQexExportAcclaimResult  lResult;
    {
        KProgress lProgress("writing", mConsole);
        lOptions.mProgress = lProgress.GetFunction();
        qexsdk::KQexExporterAcclaim::Export(mFigure.GetTop(), lAsfPath.c_str(), lMotions, lOptions, lResult);
    }
    for (const std::string& lNote : lResult.mNotes)
    {
        mConsole.Message(eNOTE, DisplayOutput(lAsfPath), 0, lNote);
    }
    return ReportExport(lResult);
}

bool KConverter::WriteMotion(const std::string& pPath, const KSampledTake& pTake, qexsdk::KQexAsfScene* pSkeleton,
                             const qexsdk::KQexAmcSkeletonNotes& pNotes)
{
    qexsdk::KQexExportAcclaimOptions lOptions = AcclaimOptions(pTake);
    qexsdk::KQexExportAcclaimResult  lResult;
    lOptions.mSkeletonNotes = pNotes;
    {
        KProgress lProgress("writing", mConsole);
        lOptions.mProgress = lProgress.GetFunction();
        qexsdk::KQexExporterAcclaim::ExportMotion(mFigure.GetTop(), pSkeleton, pPath.c_str(), lOptions, lResult);
    }
    const bool lOk = ReportExport(lResult);
    if (lOk && !lResult.mUnmatched.empty())
    {
        std::string lList;
        for (const std::string& lBone : lResult.mUnmatched)
        {
            lList += (lList.empty() ? "" : ", ") + lBone;
        }
        mConsole.Message(eWARNING, DisplayOutput(pPath), 0,
                         CountText(static_cast<long long>(lResult.mUnmatched.size()), "bone", "bones") +
                             " kept at rest, without a joint of the same name: " + lList);
    }
    return lOk;
}

qexsdk::KQexAsfSceneOwner KConverter::ReadSkeleton(const std::string& pPath, qexsdk::KQexAmcSkeletonNotes& pNotes)
{
    qexsdk::KQexFigureFile lFile;
    if (!OpenFile(lFile, pPath, mConsole))
    {
        return nullptr;
    }
    qexsdk::KQexImportAcclaimResult lResult;
    qexsdk::KQexAsfSceneOwner       lSkeleton = qexsdk::KQexImporterAcclaim::ReadSkeleton(lFile.GetSource(), {}, lResult);
    pNotes = lResult.mSkeletonNotes;
    PrintMessages(lResult, mConsole);
    if (!lSkeleton)
    {
        mConsole.Raise(lFile.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
    }
    return lSkeleton;
}

} // namespace asfapp
