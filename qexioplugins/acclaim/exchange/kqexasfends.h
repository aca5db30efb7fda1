#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFENDS_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFENDS_H

#include <qexioplugins/acclaim/exchange/kqexasforigins.h>
#include <qexioplugins/acclaim/exchange/kqexmovingjoints.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <string>
#include <unordered_set>
#include <vector>

/// \file
/// Ends for leaf joints that move. Extraction drops a leaf, which has no length; so it gets an end node while the skeleton is extracted.

namespace qexsdk
{

/// Adds an end node below each leaf under \p pRoot that moves or has DOFs in \p pDofs (null: none). The scene owns the new nodes; the
/// caller destroys them after the extraction (KQexSceneUndo). False when memory runs out. May throw std::bad_alloc, too.
/// \param pLeaves receives the leaves
bool AddEndNodes(KQexNode* pRoot, const KQexMovingJoints& pMoving, const KQexBoneDofs* pDofs, std::unordered_set<const KQexNode*>& pLeaves);

/// Gives the bones of \p pLeaves a length, a hundredth of the skeleton's largest extent at rest rounded to two digits (1 when that is
/// zero), and the direction in which the line from their ancestors continues. Lengths are in file units.
/// \return that length; 0 when there is none of these bones
double SetAddedEnds(const std::vector<KQexAsfOrigin>& pOrigins, const std::unordered_set<const KQexNode*>& pLeaves);

/// The entry of \p pNode in \p pDofs, by its whole name, else by that without its prefix; null when there is none.
const std::vector<KQexBoneDof>* FindBoneDofs(const KQexBoneDofs& pDofs, const KQexNode* pNode);

} // namespace qexsdk

#endif
