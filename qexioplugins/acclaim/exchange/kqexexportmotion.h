#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTMOTION_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTMOTION_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <string>
#include <vector>

/// \file
/// What the exports of a tree and of a motion alone have in common: failing with a message, and writing the motion.

namespace qexsdk
{

/// Adds an error to the result. Without memory for it the export fails all the same.
/// \return false
bool FailExport(KQexExportAcclaimResult& pResult, const std::string& pPath, const char* pText) noexcept;

/// The same for what an output says of itself.
bool FailExport(KQexExportAcclaimResult& pResult, const KOutputFile& pOutput);

/// Discards a motion's output at its end, unless told otherwise: the file's destructor would complete an output that nobody closed, also
/// while an exception is on its way.
class KQexDiscardGuard
{
public:
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

    /// The output stays when \p pKeep is true. Gives that back.
    bool Keep(bool pKeep) { return mKeep = pKeep; }

private:
    KQexFileAcclaimAmc& mAmc;
    bool                mKeep = false;
};

/// Turns a caller's options into the writer's; wraps the progress call so that a cancel is remembered in \p pResult. Both have to outlive
/// the writing.
KQexAmcWriteOptions MakeWriteOptions(const KQexExportAcclaimOptions& pOptions, KQexAnimStack* pStack, KQexExportAcclaimResult& pResult);

/// Opens and writes a motion, to \p pPath or into \p pBuffer when there is one; a file then only waits for its name.
bool WriteMotionFile(KQexFileAcclaimAmc& pAmc, const std::string& pPath, std::string* pBuffer, KQexAsfScene* pSkeleton,
                     const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions, KQexExportAcclaimResult& pResult);

/// KQexExporterAcclaim::ExportMotion(), its arguments checked. May throw std::bad_alloc.
bool RunMotionExport(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                     KQexExportAcclaimResult& pResult);

} // namespace qexsdk

#endif
