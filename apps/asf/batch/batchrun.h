#ifndef APPS_ASF_BATCH_BATCHRUN_H
#define APPS_ASF_BATCH_BATCHRUN_H

#include <apps/asf/batch/batchfile.h>
#include <apps/asf/batch/batchprogress.h>

#include <mutex>
#include <string>
#include <vector>

namespace asfapp
{

/// A run over a collection: takes its motions one by one, on as many threads as there are jobs, each with a worker at a time.
class KBatchRun
{
public:
    KBatchRun(const KBatchOptions& pOptions, KConsole& pConsole);

    /// Does all of it. Reports errors and a summary, and raises the exit status.
    void Run();

private:
    bool FindMotions();
    bool Prepare();
    bool OpenManifest();
    void RemoveLeftovers();
    bool OpenReport();
    void RunSlots();
    void RunSlot(int pSlot);
    bool NextFile(const KCollection::KFile*& pFile);
    void Count(const KCollection::KFile& pFile, const KBatchResult& pResult);
    void Finish();

    const KBatchOptions& mOptions;
    KConsole&            mConsole;
    KCollection          mCollection;
    KManifestIndex       mIndex;
    KManifestWriter      mManifest;
    std::string          mFolder; ///< For manifests; empty: none.
    KBatchFile::KContext mContext;
    qexsdk::KOutputFile  mReport;
    std::mutex           mMutex; ///< Of all that follows, the console, the manifest and the report.
    size_t               mNext = 0;
    KBatchProgress       mProgress;
    std::vector<size_t>  mSelected;          ///< Indices of the motions to do.
    size_t               mWarned = 0;        ///< Motions with warnings.
    bool                 mIsStopped = false; ///< No further motion is begun.
};

} // namespace asfapp

#endif
