#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXIMPORTNODES_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXIMPORTNODES_H

#include <qexioplugins/acclaim/kqexasfnode.h>

#include <string>
#include <utility>
#include <vector>

/// \file
/// What an import does with the nodes that it builds for a skeleton: curves, and the ends of leaf bones.

namespace qexsdk
{

/// Connects the bones' curves, of the take \p pTakeName, to the nodes at and below \p pNode that were just built from them: the trees
/// are equal except for end nodes. May throw std::bad_alloc.
void ConnectCurves(HKQexAsfNode pRoot, KQexNode* pNode, const char* pTakeName);

/// Takes the lengths from leaf bones whose ends a writer added, so that no end nodes are built for them, and gives them back when it
/// goes out of scope.
class KQexAddedEndGuard
{
public:
    /// The bones at and below \p pRoot must outlive this. May throw std::bad_alloc.
    KQexAddedEndGuard(HKQexAsfNode pRoot, const std::vector<std::string>& pBones);
    ~KQexAddedEndGuard();
    KQexAddedEndGuard(const KQexAddedEndGuard&) = delete;
    KQexAddedEndGuard& operator=(const KQexAddedEndGuard&) = delete;

private:
    std::vector<std::pair<HKQexAsfNode, double>> mLengths;
};

} // namespace qexsdk

#endif
