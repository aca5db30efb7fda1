#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFWARNINGS_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFWARNINGS_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// Appends a warning for each kind of content that an import with these options loses or changes. The skeleton's frames must be
/// computed and its dummies not yet removed.
void WarnAboutSkeleton(KQexAsfScene& pAsfScene, const KQexImportAcclaimOptions& pOptions, std::vector<KQexTextMessage>& pWarnings);

/// Explains why reading a skeleton failed without an error: no root, or a section cut short by the end of the file or a missing
/// value, with the line where it begins. \p pLine is the line at which the reader stopped.
KQexTextMessage ExplainSilentFailure(const KQexAcclaimSource& pSkeleton, int pLine);

} // namespace qexsdk

#endif
