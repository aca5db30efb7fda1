#ifndef QEXSCENE_KQEXANIMCURVEFILTERCONSTANTKEYREDUCER_H
#define QEXSCENE_KQEXANIMCURVEFILTERCONSTANTKEYREDUCER_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexanimcurvefilter.h>

namespace qexsdk
{

/// Removes the keys strictly inside a run of equal values: a run keeps its first and last key, and the curve evaluates the same at
/// every time. Values are compared by ==, so 0 equals -0 and NaN equals nothing.
class QEX_API KQexAnimCurveFilterConstantKeyReducer : public KQexAnimCurveFilter
{
public:
    /// \param pCurves any number of curves, each reduced by itself; null ones are skipped.
    /// \param pCount  number of curves.
    /// \return false when \p pCurves is null and \p pCount is not 0, when \p pCount is negative, or when memory runs out; in
    ///     the last case the curves before the one that failed are reduced, the others unchanged.
    bool Apply(KQexAnimCurve** pCurves, int pCount) override;
};

} // namespace qexsdk

#endif
