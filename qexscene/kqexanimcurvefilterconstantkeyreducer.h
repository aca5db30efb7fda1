#ifndef QEXSCENE_KQEXANIMCURVEFILTERCONSTANTKEYREDUCER_H
#define QEXSCENE_KQEXANIMCURVEFILTERCONSTANTKEYREDUCER_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexanimcurvefilter.h>

namespace qexsdk
{

/// Drops the keys that stand strictly inside a run of equal values: a run keeps its first and its last key, and the curve
/// has the same value as before at every time. Values count as equal by ==, so 0 and -0 do and NaN equals nothing.
class QEX_API KQexAnimCurveFilterConstantKeyReducer : public KQexAnimCurveFilter
{
public:
    /// \param pCurves any number of curves, each treated by itself; null ones are passed over.
    /// \param pCount  how many there are.
    /// \return false when \p pCurves is null and \p pCount is not 0, when \p pCount is negative, or when memory runs out; in
    ///     the last case the curves before the one that could not be done are reduced, it and those behind it unchanged.
    bool Apply(KQexAnimCurve** pCurves, int pCount) override;
};

} // namespace qexsdk

#endif
