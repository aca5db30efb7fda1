#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFENDS_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFENDS_H

#include <qexioplugins/acclaim/exchange/kqexasforigins.h>
#include <qexioplugins/acclaim/exchange/kqexmovingjoints.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <string>
#include <unordered_set>
#include <vector>

/// \file
/// Ends for leaf joints. Extraction drops a leaf, which has no length; so it gets an end node while the skeleton is extracted.

namespace qexsdk
{

/// Whether \p pNode is only the end of its parent's bone: a leaf that is named after the parent with the suffix "_End", does not move,
/// and has no DOFs in \p pDofs (null: none).
bool IsEndOfParent(const KQexNode& pNode, const KQexMovingJoints& pMoving, const KQexBoneDofs* pDofs);

/// Adds an end node below each leaf under \p pRoot that is not the end of its parent. The scene owns the new nodes; the caller destroys
/// them after the extraction (KQexSceneUndo). False when memory runs out. May throw std::bad_alloc, too.
/// \param pRoot   top of the skeleton
/// \param pMoving what moves in the takes
/// \param pDofs DOFs by name; null: none
/// \param pLeaves receives these leaves, and the nodes whose only child is their end, at their own position
bool AddEndNodes(KQexNode* pRoot, const KQexMovingJoints& pMoving, const KQexBoneDofs* pDofs, std::unordered_set<const KQexNode*>& pLeaves);

/// Gives the bones of \p pLeaves a length, a hundredth of the skeleton's largest extent at rest rounded to two digits (1 when that is
/// zero), and the direction in which the line from their ancestors continues. Lengths are in file units.
/// \return that length; 0 when there is none of these bones
double SetAddedEnds(const std::vector<KQexAsfOrigin>& pOrigins, const std::unordered_set<const KQexNode*>& pLeaves);

/// The entry of \p pNode in \p pDofs, by its whole name, else by that without its prefix; null when there is none.
const std::vector<KQexBoneDof>* FindBoneDofs(const KQexBoneDofs& pDofs, const KQexNode* pNode);

} // namespace qexsdk

#endif
