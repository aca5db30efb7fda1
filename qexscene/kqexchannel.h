#ifndef QEXSCENE_KQEXCHANNEL_H
#define QEXSCENE_KQEXCHANNEL_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexanimcurve.h>

namespace qexsdk
{

class KQexAnimLayer;
class KQexProperty;

/// Where one component of a property's value comes from on a layer. Found once, it is asked frame by frame; valid while the scene's
/// connections stay as they are.
struct QEX_API KQexChannel
{
    const KQexAnimCurve* mCurve = nullptr; ///< Null: no curve.
    const double*        mValue = nullptr; ///< The value without a curve, or with one that has no keys.

    /// Whether there is a curve with keys.
    bool IsAnimated() const { return mCurve != nullptr && mCurve->GetKeyCount() > 0; }

    /// The value at \p pTime; see KQexAnimCurve::Evaluate.
    double Evaluate(KTime pTime, KQexKeyTimes::KSpot& pSpot) const { return IsAnimated() ? mCurve->Evaluate(pTime, pSpot) : *mValue; }

    /// Whether the value is \p pValue at all times. Looks at every key.
    bool IsAlways(double pValue) const;

    /// The three components of \p pProperty; \p pLayer null: as without any take.
    static void Find(KQexChannel* pChannels, const KQexProperty& pProperty, const KQexAnimLayer* pLayer);
};

} // namespace qexsdk

#endif
