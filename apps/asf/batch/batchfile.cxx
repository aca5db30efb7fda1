#include <apps/asf/batch/batchfile.h>

#include <apps/asf/batch/checksum.h>
#include <kbaselib/kbase/ksystem.h>

#include <algorithm>
#include <filesystem>
#include <utility>

/// \file
/// Whether a motion has to be made, and may be.

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

} // namespace

const char* WordOf(EBatchStatus pStatus)
{
    static const char* const sWords[] = {"made", "read", "unchanged", "pending", "failed", "kept", "cancelled"};
    return sWords[pStatus];
}

KBatchFile::KBatchFile(KContext& pContext, const KCollection::KFile& pFile, int pSlot)
    : mContext(pContext),
      mOptions(pContext.mOptions),
      mFile(pFile),
      mPath(pContext.mCollection.PathOf(pFile)),
      mOutput(pContext.mCollection.OutputOf(pFile)),
      mRate(pContext.mOptions.mRateTable.Find(pFile.mName)),
      mStaging(pContext.mStaging.empty() ? "" : (fs::path(pContext.mStaging) / std::to_string(pSlot)).string())
{
    mResult.mLine = {{"schema", kJsonSchema}, {"file", JsonPath(pFile.mName)}, {"output", JsonPath(mOutput)}};
}

KBatchResult KBatchFile::Run()
{
    FindRecord();
    if (mOptions.mOnlyChecks)
    {
        Make();
    }
    else if (mFile.mHasCollision)
    {
        Fail(eEXIT_INPUT, "collision",
             "another motion has the same output " + mOutput + ": rename one of them, or give --on-collision suffix");
        NoteFailure();
    }
    else if (!mOptions.mForce && IsUnchanged())
    {
        mResult.mStatus = eBATCH_UNCHANGED;
        mResult.mLine = mRecord;
        mResult.mLine["file"] = JsonPath(mFile.mName);
        mResult.mLine["status"] = WordOf(mResult.mStatus);
    }
    else if (CheckOutputs(PlannedOutputs()))
    {
        Make();
    }
    else if (!mRecord.is_object())
    {
        mResult.mLine["generation"] = 0U; // Otherwise no manifest would have the motion; every other line wins.
        NoteFailure();
    }
    return std::move(mResult);
}

/// Everything that decides what a worker writes, apart from its inputs.
std::string KBatchFile::OptionsText() const
{
    std::string lText;
    for (const std::string& lKind : mOptions.mOnlyChecks ? std::vector<std::string>{"none"} : mOptions.mTo)
    {
        lText += (lText.empty() ? "--to " : ",") + lKind;
    }
    for (const std::string& lArgument : mOptions.mConvertArguments)
    {
        lText += " " + lArgument;
    }
    return mRate.empty() ? lText : lText + " --source-fps=" + mRate;
}

void KBatchFile::FindRecord()
{
    const bool lIsKnown = mContext.mIndex.Find(mContext.mCollection.RecordOf(mFile), mRecord);
    mRecord = lIsKnown ? mRecord : KJson();
    mResult.mLine["generation"] = lIsKnown ? mRecord["generation"].get<uint32_t>() + 1 : 1;
}

bool KBatchFile::IsUnchanged() const
{
    return mRecord.is_object() && mRecord.value("status", "") == "made" && mRecord.value("options", "") == OptionsText() &&
           mRecord.value("version", "") == QEX_VERSION && HasInputs() && HasOutputs();
}

/// Recorded paths are relative to the motion's folder.
std::string KBatchFile::InputPath(const std::string& pRecorded) const
{
    return (fs::path(mPath).parent_path() / pRecorded).lexically_normal().string();
}

std::string KBatchFile::OutputPath(const std::string& pName) const
{
    return (fs::path(mOptions.mOutput) / pName).string();
}

bool KBatchFile::HasInputs() const
{
    const KJson lInputs = mRecord.value("inputs", KJson::array());
    return !lInputs.empty() && std::all_of(lInputs.begin(), lInputs.end(),
                                           [this](const KJson& pInput)
                                           {
                                               std::string lPath;
                                               KFileStamp  lThen;
                                               KFileStamp  lNow;
                                               return StampedFromJson(pInput, lPath, lThen) && ReadStamp(InputPath(lPath), lNow) &&
                                                      lThen == lNow;
                                           });
}

bool KBatchFile::HasOutputs() const
{
    const KJson lOutputs = mRecord.value("outputs", KJson::array());
    return (mOptions.mOnlyChecks || !lOutputs.empty()) &&
           std::all_of(lOutputs.begin(), lOutputs.end(), [this](const KJson& pOutput) { return HasOutput(pOutput); });
}

bool KBatchFile::HasOutput(const KJson& pRecorded) const
{
    std::string lName;
    KFileStamp  lThen;
    KFileStamp  lNow;
    uint32_t    lSum = 0;
    if (!StampedFromJson(pRecorded, lName, lThen) || !ReadStamp(OutputPath(lName), lNow) || lThen.mSize != lNow.mSize)
    {
        return false;
    }
    return mOptions.mVerify ? ReadChecksum(OutputPath(lName), lSum) && pRecorded.value("crc32", uint32_t(0)) == lSum : lThen == lNow;
}

/// The outputs that earlier runs made, also with other options, but for those that \p pNew has.
KJson KBatchFile::RecordedOutputs(const KJson& pNew) const
{
    KJson lOutputs = KJson::array();
    for (const char* lKey : {"outputs", "earlier"})
    {
        for (const KJson& lOutput : mRecord.is_object() ? mRecord.value(lKey, KJson::array()) : KJson::array())
        {
            const auto lIsSame = [&lOutput](const KJson& pOther)
            {
                return pOther["file"] == lOutput["file"];
            };
            if (std::none_of(pNew.begin(), pNew.end(), lIsSame))
            {
                lOutputs.push_back(lOutput);
            }
        }
    }
    return lOutputs;
}

/// Whether a file is a motion of the collection, or one that the worker has read.
bool KBatchFile::IsInput(const std::string& pPath) const
{
    qexsdk::KFileInfo lFile;
    if (!qexsdk::KGetFileInfo(pPath, lFile))
    {
        return false;
    }
    const KJson lInputs = mReport.is_object() ? mReport.value("inputs", KJson::array()) : KJson::array();
    return mContext.mCollection.IsMotionFile(lFile) ||
           std::any_of(lInputs.begin(), lInputs.end(),
                       [&lFile](const KJson& pInput)
                       {
                           std::string       lPath;
                           KFileStamp        lStamp;
                           qexsdk::KFileInfo lInput;
                           return StampedFromJson(pInput, lPath, lStamp) && qexsdk::KGetFileInfo(lPath, lInput) &&
                                  lInput.mDevice == lFile.mDevice && lInput.mIndex == lFile.mIndex;
                       });
}

/// An existing file may be replaced if the record has it: as made, or as it was when that was moved over it.
bool KBatchFile::MayReplace(const std::string& pName, std::string& pReason) const
{
    std::error_code lError;
    KFileStamp      lNow;
    if (!ReadStamp(OutputPath(pName), lNow))
    {
        const fs::file_type lType = fs::symlink_status(OutputPath(pName), lError).type();
        pReason = lType == fs::file_type::not_found ? "" : "is not a file: remove it";
        return pReason.empty();
    }
    bool lIsRecorded = false;
    for (const KJson& lOutput : RecordedOutputs(KJson::array()))
    {
        std::string lName;
        KFileStamp  lStamp;
        if (StampedFromJson(lOutput, lName, lStamp) && lName == pName)
        {
            lIsRecorded = true;
            if (HasOutput(lOutput) || (StampedFromJson(lOutput.value("replaced", KJson()), lName, lStamp) && lStamp == lNow))
            {
                return true;
            }
        }
    }
    if (IsInput(OutputPath(pName)))
    {
        pReason = "is an input: choose another folder";
        return false;
    }
    pReason =
        (lIsRecorded ? std::string("was changed since it was made") : "was not made by asf batch") + ": left as it is; --force replaces it";
    return mOptions.mForce;
}

bool KBatchFile::CheckOutputs(const std::vector<std::string>& pNames)
{
    for (const std::string& lName : pNames)
    {
        std::string lReason;
        if (!MayReplace(lName, lReason))
        {
            Fail(eEXIT_INPUT, "kept", OutputPath(lName) + " " + lReason);
            mResult.mStatus = eBATCH_KEPT;
            mResult.mLine["status"] = WordOf(mResult.mStatus);
            return false;
        }
    }
    return true;
}

std::vector<std::string> KBatchFile::PlannedOutputs() const
{
    std::vector<std::string> lNames;
    for (const std::string& lKind : mOptions.mTo)
    {
        lNames.push_back(mOutput + "." + lKind);
    }
    return lNames;
}

void KBatchFile::Fail(EExit pExit, const std::string& pCause, const std::string& pText)
{
    mResult.mStatus = eBATCH_FAILED;
    mResult.mExit = pExit;
    mResult.mError = pText;
    mResult.mLine["status"] = WordOf(mResult.mStatus);
    mResult.mLine["cause"] = pCause;
    mResult.mLine["error"] = pText;
}

} // namespace asfapp
