#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFREMARKS_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFREMARKS_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// Appends a warning for each kind of thing in a skeleton that an import with these options cannot carry as its users expect.
/// The skeleton's frames are computed, its dummies not yet removed.
void RemarkOnSkeleton(KQexAsfScene& pAsfScene, const KQexImportAcclaimOptions& pOptions, std::vector<KQexTextMessage>& pRemarks);

/// Why a skeleton file that gave no error could not be read: no root, or a section that the end of the file or a missing value
/// ended, and where that began. \p pLine is the line at which the reader stopped.
KQexTextMessage ExplainSilentFailure(const KQexAcclaimSource& pSkeleton, int pLine);

} // namespace qexsdk

#endif
