#ifndef QEXSCENE_KFCURVEGLOBALS_H
#define QEXSCENE_KFCURVEGLOBALS_H

#include <kbaselib/kbase/kbaseexport.h>

namespace qexsdk
{

/// \file
/// Process-wide settings for code that samples motion into curves: what to do with finished curves. Each call is atomic, so any
/// thread may call them. KQexCurveSettings has others for one thread.

/// The filter for the three curves of a rotation: 1 KQexAnimCurveFilterGimbleKiller, 2 KQexAnimCurveFilterUnroll, any other
/// number none. Default 0: rotations stay as sampled.
QEX_API int KFCURVE_GetRotationFilterToApply();
/// Sets the filter for all threads; numbers other than 1 and 2 are stored and mean none.
QEX_API void KFCURVE_SetRotationFilterToApply(int pFilter);

/// Whether finished curves go through KQexAnimCurveFilterConstantKeyReducer. Default false.
QEX_API bool KFCURVE_GetUseConstantKeyReducer();
/// Enables or disables the reducer for all threads.
QEX_API void KFCURVE_SetUseConstantKeyReducer(bool pUse);

/// Settings for the thread that makes it, as long as it exists: KFCURVE_GetRotationFilterToApply() and KFCURVE_GetUseConstantKeyReducer() give
/// these to it instead of the process's. The last one made counts.
class QEX_API KQexCurveSettings
{
public:
    /// The values that the Get functions return.
    KQexCurveSettings(int pRotationFilter, bool pUseConstantKeyReducer);
    ~KQexCurveSettings();
    KQexCurveSettings(const KQexCurveSettings&) = delete;
    KQexCurveSettings& operator=(const KQexCurveSettings&) = delete;

private:
    friend int  KFCURVE_GetRotationFilterToApply();
    friend bool KFCURVE_GetUseConstantKeyReducer();

    int                      mRotationFilter;
    bool                     mUseConstantKeyReducer;
    const KQexCurveSettings* mBefore; ///< That of the thread before; null: none.
};

} // namespace qexsdk

#endif
