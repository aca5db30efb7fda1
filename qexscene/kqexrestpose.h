#ifndef QEXSCENE_KQEXRESTPOSE_H
#define QEXSCENE_KQEXRESTPOSE_H

#include <qexscene/kqexscene.h>

namespace qexsdk
{

/// Whether a key of the property's curves on \p pLayer (null: no take), or the value of a channel without keys, differs from the
/// property's rest value by more than single-precision rounding (1e-5 plus a millionth of the value).
QEX_API bool DiffersFromRest(const KQexProperty& pProperty, const KQexAnimLayer* pLayer);

} // namespace qexsdk

#endif
