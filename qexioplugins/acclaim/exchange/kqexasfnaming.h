#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFNAMING_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFNAMING_H

#include <qexioplugins/acclaim/exchange/kqexasforigins.h>
#include <qexioplugins/acclaim/kqexasfscene.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// Gives the bones names that a file can hold, unique and at most 50 bytes long; the root is "root". With \p pKeepPrefixes they are the
/// nodes' whole names, where these are short enough, else those that extraction gave. A dummy is named after the bone that it leads to.
/// Adds a warning for each name that was changed. May throw std::bad_alloc.
void NameBones(const std::vector<KQexAsfOrigin>& pOrigins, bool pKeepPrefixes, std::vector<std::string>& pWarnings);

/// The same for the skeleton itself, which is to be named \p pWanted.
void NameSkeleton(KQexAsfScene& pScene, const std::string& pWanted, std::vector<std::string>& pWarnings);

} // namespace qexsdk

#endif
