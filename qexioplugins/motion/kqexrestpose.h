#ifndef QEXIOPLUGINS_MOTION_KQEXRESTPOSE_H
#define QEXIOPLUGINS_MOTION_KQEXRESTPOSE_H

#include <qexscene/kqexscene.h>

namespace qexsdk
{

/// Whether a key of the property's curves on \p pLayer (null: no take), or a channel without keys, leaves the value that the
/// property has at rest by more than single precision does (1e-5 and a millionth).
QEX_API bool LeavesRest(const KQexProperty& pProperty, const KQexAnimLayer* pLayer);

} // namespace qexsdk

#endif
