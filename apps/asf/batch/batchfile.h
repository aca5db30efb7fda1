#ifndef APPS_ASF_BATCH_BATCHFILE_H
#define APPS_ASF_BATCH_BATCHFILE_H

#include <apps/asf/batch/batchoptions.h>
#include <apps/asf/batch/collection.h>
#include <apps/asf/batch/manifest.h>
#include <apps/asf/report/filestamp.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace asfapp
{

/// What became of a motion.
enum EBatchStatus
{
    eBATCH_MADE,
    eBATCH_READ,      ///< Only read.
    eBATCH_UNCHANGED, ///< Made before.
    eBATCH_PENDING,   ///< Would be made.
    eBATCH_FAILED,
    eBATCH_KEPT,     ///< An output is not as it was made, or was not made by a run at all: left as it is.
    eBATCH_CANCELLED ///< Not done.
};

/// The word for it in reports.
const char* WordOf(EBatchStatus pStatus);

/// What became of a motion, and why.
struct KBatchResult
{
    EBatchStatus mStatus = eBATCH_CANCELLED;
    EExit        mExit = eEXIT_SUCCESS;
    std::string  mError;       ///< Of a failure.
    KJson        mLine;        ///< For reports and the manifest.
    uint64_t     mBytes = 0;   ///< Read.
    double       mSeconds = 0; ///< Processor time of the worker.
};

/// Does one motion: finds out whether there is something to do, has a worker make the outputs in a folder of their own, notes them in the
/// manifest, and then moves them to their places. Whatever happens in between, an output is either the old or the new one, and the
/// manifest knows both.
class KBatchFile
{
public:
    /// What all motions of a run share.
    struct KContext
    {
        const KBatchOptions&  mOptions;
        const KCollection&    mCollection;
        const KManifestIndex& mIndex;
        std::string           mProgram; ///< Path of asf.
        std::string           mStaging; ///< Folder of this run for files that are being made.
        std::atomic<bool>     mIsCancelled{false};
        std::mutex            mPlacing; ///< One thread at a time moves an output to its place.

        /// Appends to the manifest. False, with a reason, if that fails. Any thread may call it.
        std::function<bool(const KJson& pLine, std::string& pReason)> mAppend;
    };

    /// \p pSlot: number of the thread, for a staging folder of its own.
    KBatchFile(KContext& pContext, const KCollection::KFile& pFile, int pSlot);

    KBatchResult Run();

private:
    struct KOutput
    {
        std::string mStaged;
        std::string mName; ///< Below OUTDIR.
    };

    void                     FindRecord();
    bool                     IsUnchanged() const;
    bool                     HasInputs() const;
    bool                     HasOutputs() const;
    bool                     HasOutput(const KJson& pRecorded) const;
    KJson                    RecordedOutputs(const KJson& pNew) const;
    bool                     IsInput(const std::string& pPath) const;
    bool                     MayReplace(const std::string& pName, std::string& pReason) const;
    bool                     CheckOutputs(const std::vector<std::string>& pNames);
    std::vector<std::string> PlannedOutputs() const;
    std::string              OptionsText() const;
    std::vector<std::string> WorkerArguments() const;
    KJson                    WorkerMessages() const;
    bool                     MakeFolders();
    void                     Make();
    void                     RunWorker();
    bool                     ReadWorker(const std::string& pOut, int pExit);
    bool                     NoteInputs();
    bool                     CollectOutputs();
    KJson                    DescribeOutput(const KOutput& pOutput) const;
    void                     Commit();
    void                     NoteFailure();
    bool                     Place(const KOutput& pOutput);
    void                     Fail(EExit pExit, const std::string& pCause, const std::string& pText);
    std::string              OutputPath(const std::string& pName) const;
    std::string              InputPath(const std::string& pRecorded) const;

    KContext&                 mContext;
    const KBatchOptions&      mOptions;
    const KCollection::KFile& mFile;
    const std::string         mPath;   ///< Of the motion.
    const std::string         mOutput; ///< Name of the outputs below OUTDIR, without extension.
    const std::string         mRate;   ///< --source-fps of the table of rates; empty: none.
    const std::string         mStaging;
    KJson                     mRecord; ///< The manifest's last line about it; null without one.
    KJson                     mReport; ///< The worker's.
    std::vector<KOutput>      mOutputs;
    KBatchResult              mResult;
};

} // namespace asfapp

#endif
