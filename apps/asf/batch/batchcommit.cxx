#include <apps/asf/batch/batchfile.h>
#include <apps/asf/batch/checksum.h>
#include <kbaselib/kbase/ksystem.h>

#include <cerrno>

/// \file
/// Noting what became of a motion, and moving what was made to its place.

namespace asfapp
{

/// An output as the manifest has it; null if it cannot be read.
KJson KBatchFile::DescribeOutput(const KOutput& pOutput) const
{
    uint32_t   lSum = 0;
    KFileStamp lMade;
    KFileStamp lReplaced;
    if (!ReadStamp(pOutput.mStaged, lMade) || !ReadChecksum(pOutput.mStaged, lSum))
    {
        return KJson();
    }
    KJson lEntry = JsonStamped(pOutput.mName, lMade);
    lEntry["crc32"] = lSum;
    if (ReadStamp(OutputPath(pOutput.mName), lReplaced))
    {
        lEntry["replaced"] = JsonStamped(pOutput.mName, lReplaced);
    }
    return lEntry;
}

/// The line comes first: should the run end before a file is moved, the manifest still knows what is at its place.
void KBatchFile::Commit()
{
    KJson lOutputs = KJson::array();
    for (const KOutput& lOutput : mOutputs)
    {
        lOutputs.push_back(DescribeOutput(lOutput));
        if (lOutputs.back().is_null())
        {
            return Fail(eEXIT_SYSTEM, "system", lOutput.mStaged + " cannot be read");
        }
    }
    mResult.mStatus = mOptions.mOnlyChecks ? eBATCH_READ : eBATCH_MADE;
    mResult.mLine["status"] = WordOf(mResult.mStatus);
    mResult.mLine["outputs"] = lOutputs;
    mResult.mLine["earlier"] = RecordedOutputs(lOutputs);
    std::string lReason;
    if (!mContext.mAppend(mResult.mLine, lReason))
    {
        return Fail(eEXIT_SYSTEM, "system", "the manifest cannot be written: " + lReason);
    }
    for (const KOutput& lOutput : mOutputs)
    {
        if (!Place(lOutput))
        {
            return;
        }
    }
}

/// The outputs of an earlier run stay known.
void KBatchFile::NoteFailure()
{
    if (!mResult.mLine.contains("outputs"))
    {
        mResult.mLine["outputs"] = KJson::array();
        mResult.mLine["earlier"] = RecordedOutputs(KJson::array());
    }
    std::string lReason;
    mContext.mAppend(mResult.mLine, lReason); // The failure is reported in any case.
}

/// Motions with several takes may have outputs with the names of others, so that one may be there by now.
bool KBatchFile::Place(const KOutput& pOutput)
{
    const std::lock_guard<std::mutex> lLock(mContext.mPlacing);
    if (!CheckOutputs({pOutput.mName}))
    {
        return false;
    }
    const bool lOk = qexsdk::KSystemInUse().mRename(pOutput.mStaged.c_str(), OutputPath(pOutput.mName).c_str()) == 0;
    if (!lOk)
    {
        Fail(eEXIT_SYSTEM, "system", OutputPath(pOutput.mName) + " cannot be written: " + qexsdk::KFileErrorText(errno));
    }
    return lOk;
}

} // namespace asfapp
