#ifndef QEXSCENE_KQEXCHANNEL_H
#define QEXSCENE_KQEXCHANNEL_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexanimcurve.h>

namespace qexsdk
{

class KQexAnimLayer;
class KQexProperty;

/// The source of one component of a property's value on a layer. Look it up once and evaluate it for every frame; valid until the
/// scene's connections change.
struct QEX_API KQexChannel
{
    const KQexAnimCurve* mCurve = nullptr; ///< Null: no curve.
    const double*        mValue = nullptr; ///< Used without a curve with keys; never null once found.

    /// Whether there is a curve with keys.
    bool IsAnimated() const { return mCurve != nullptr && mCurve->GetKeyCount() > 0; }

    /// The value at \p pTime; see KQexAnimCurve::Evaluate.
    double Evaluate(KTime pTime, KQexKeyTimes::KCursor& pCursor) const { return IsAnimated() ? mCurve->Evaluate(pTime, pCursor) : *mValue; }

    /// Whether the value is \p pValue at all times. Looks at every key.
    bool IsConstantAt(double pValue) const;

    /// Sets \p pChannels[0..2] to the components of \p pProperty; \p pLayer null: the property's own values.
    static void Find(KQexChannel* pChannels, const KQexProperty& pProperty, const KQexAnimLayer* pLayer);
};

} // namespace qexsdk

#endif
