#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFPAIRING_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFPAIRING_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/acclaim/kqexskeletonmatch.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// The nodes that move the bones of a skeleton.
struct KQexAsfPairing
{
    std::vector<KQexAmcPair> mPairs;     ///< The root first.
    std::vector<std::string> mUnmatched; ///< Bones with DOFs but without a node, in the skeleton's order.
    KQexSkeletonMatch        mMatch;     ///< How many of the moving joints match, and which do not.
};

/// Pairs bones and nodes by name as KQexExporterAcclaim::ExportMotion() says, for the take \p pTake (null: the rest pose).
/// May throw std::bad_alloc.
KQexAsfPairing PairBones(KQexNode* pRoot, const KQexAsfScene& pSkeleton, KQexAnimStack* pTake);

} // namespace qexsdk

#endif
