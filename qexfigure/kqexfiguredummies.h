#ifndef QEXFIGURE_KQEXFIGUREDUMMIES_H
#define QEXFIGURE_KQEXFIGUREDUMMIES_H

#include <qexfigure/kqexfigure.h>

#include <vector>

namespace qexsdk
{

/// Removes the dummies that an export inserted to fill gaps: nodes for which IsFigureDummy() is true, that are a pure translation at rest
/// and that no take animates. Their children keep their positions and become the last children of the dummy's parent.
/// \return the number of nodes removed
int RemoveDummyNodes(KQexNode* pRoot, const std::vector<KQexFigureTake>& pTakes);

} // namespace qexsdk

#endif
