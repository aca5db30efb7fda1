#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTMOTION_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTMOTION_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <string>
#include <vector>

/// \file
/// Shared by the exports of a tree and of a motion alone: reporting errors and writing the motion.

namespace qexsdk
{

/// Adds an error to the result, if there is memory for it.
/// \return false, always
bool FailExport(KQexExportAcclaimResult& pResult, const std::string& pPath, const char* pText) noexcept;

/// The same with an output's path and reason.
bool FailExport(KQexExportAcclaimResult& pResult, const KOutputFile& pOutput);

/// Discards a motion's output when destroyed, unless Keep(true) was called: the file's destructor would complete an output that was not
/// closed, even during an exception.
class KQexDiscardGuard
{
public:
    /// Guards \p pAmc, which must outlive this.
    explicit KQexDiscardGuard(KQexFileAcclaimAmc& pAmc) : mAmc(pAmc) {}
    ~KQexDiscardGuard()
    {
        if (!mKeep)
        {
            mAmc.Discard();
        }
    }
    KQexDiscardGuard(const KQexDiscardGuard&) = delete;
    KQexDiscardGuard& operator=(const KQexDiscardGuard&) = delete;

    /// Sets whether the output is kept. \return \p pKeep
    bool Keep(bool pKeep) { return mKeep = pKeep; }

private:
    KQexFileAcclaimAmc& mAmc;
    bool                mKeep = false;
};

/// The writer's options for those of an export. A cancel by the progress function is recorded in \p pResult. Both must outlive the
/// writing.
KQexAmcWriteOptions MakeWriteOptions(const KQexExportAcclaimOptions& pOptions, KQexAnimStack* pStack, KQexExportAcclaimResult& pResult);

/// Opens and writes a motion, to \p pBuffer if not null, else to \p pPath. A file is complete then but keeps its temporary name.
bool WriteMotionFile(KQexFileAcclaimAmc& pAmc, const std::string& pPath, std::string* pBuffer, KQexAsfScene* pSkeleton,
                     const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions, KQexExportAcclaimResult& pResult);

/// KQexExporterAcclaim::ExportMotion(), its arguments checked. May throw std::bad_alloc.
bool RunMotionExport(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                     KQexExportAcclaimResult& pResult);

} // namespace qexsdk

#endif
