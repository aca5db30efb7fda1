#ifndef QEXSCENE_KFCURVEGLOBALS_H
#define QEXSCENE_KFCURVEGLOBALS_H

#include <kbaselib/kbase/kbaseexport.h>

namespace qexsdk
{

/// \file
/// Settings of the process for whoever samples motion into curves: what to do with finished curves. Each call is atomic, so
/// threads may read and write them; a whole import that needs them steady holds its own lock.

/// The filter for the three curves of a rotation: 1 KQexAnimCurveFilterGimbleKiller, 2 KQexAnimCurveFilterUnroll, any other
/// number none. From the start 0: rotations stay as sampled.
QEX_API int KFCURVE_GetRotationFilterToApply();
/// Sets that filter for all threads; numbers other than 1 and 2 are kept and mean none.
QEX_API void KFCURVE_SetRotationFilterToApply(int pFilter);

/// Whether finished curves go through KQexAnimCurveFilterConstantKeyReducer. From the start off.
QEX_API bool KFCURVE_GetUseConstantKeyReducer();
/// Switches that on or off for all threads.
QEX_API void KFCURVE_SetUseConstantKeyReducer(bool pUse);

} // namespace qexsdk

#endif
