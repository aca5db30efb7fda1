#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTMOTION_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTMOTION_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <memory>
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

/// \p pStack, or for null the current take of the scene of \p pRoot, if any.
KQexAnimStack* TakeOrCurrent(const KQexNode* pRoot, KQexAnimStack* pStack);

/// The writer's options for those of an export, apart from the take and its frames. A cancel by the progress function is recorded in
/// \p pResult. Both must outlive the writing.
KQexAmcWriteOptions MakeWriteOptions(const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult);

/// Writes a motion, to \p pBuffer if not null, else to \p pPath. A file is complete then, but keeps its temporary name: it is added to
/// \p pOutputs. After a failure nothing is left. May throw std::bad_alloc.
bool WriteMotionFile(const std::string& pPath, std::string* pBuffer, KQexAsfScene* pSkeleton, const std::vector<KQexAmcPair>& pPairs,
                     const KQexAmcWriteOptions& pOptions, std::vector<std::unique_ptr<KOutputFile>>& pOutputs,
                     KQexExportAcclaimResult& pResult);

/// Commits the outputs, or hands them to the options' mPrepared.
bool CommitExport(std::vector<std::unique_ptr<KOutputFile>>& pOutputs, const KQexExportAcclaimOptions& pOptions,
                  KQexExportAcclaimResult& pResult);

/// KQexExporterAcclaim::ExportMotion(), its arguments checked. May throw std::bad_alloc.
bool RunMotionExport(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                     KQexExportAcclaimResult& pResult);

} // namespace qexsdk

#endif
