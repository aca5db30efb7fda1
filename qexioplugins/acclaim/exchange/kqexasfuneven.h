#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFUNEVEN_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFUNEVEN_H

#include <qexioplugins/acclaim/exchange/kqexasforigins.h>

#include <vector>

namespace qexsdk
{

/// Makes the bones of a skeleton that was extracted from the tree at \p pRoot end where its nodes are at rest, in the evaluator's current
/// take at time zero: extraction multiplies scalings component by component, which is not where the nodes are when one of them differs
/// from axis to axis above a rotation. Lengths are in file units of the length unit 1; \p pScale is the factor of all positions.
/// May throw std::bad_alloc.
void SetRestVectors(const std::vector<KQexAsfOrigin>& pOrigins, KQexNode* pRoot, double pScale);

} // namespace qexsdk

#endif
