#ifndef QEXSCENE_KFCURVEGLOBALS_H
#define QEXSCENE_KFCURVEGLOBALS_H

#include <kbaselib/kbase/kbaseexport.h>

namespace qexsdk
{

/// \file
/// Process-wide settings for code that samples motion into curves: what to do with finished curves. Each call is atomic, so any
/// thread may call them; an import that must not see them change holds its own lock.

/// The filter for the three curves of a rotation: 1 KQexAnimCurveFilterGimbleKiller, 2 KQexAnimCurveFilterUnroll, any other
/// number none. Default 0: rotations stay as sampled.
QEX_API int KFCURVE_GetRotationFilterToApply();
/// Sets the filter for all threads; numbers other than 1 and 2 are stored and mean none.
QEX_API void KFCURVE_SetRotationFilterToApply(int pFilter);

/// Whether finished curves go through KQexAnimCurveFilterConstantKeyReducer. Default false.
QEX_API bool KFCURVE_GetUseConstantKeyReducer();
/// Enables or disables the reducer for all threads.
QEX_API void KFCURVE_SetUseConstantKeyReducer(bool pUse);

} // namespace qexsdk

#endif
