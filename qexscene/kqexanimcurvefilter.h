#ifndef QEXSCENE_KQEXANIMCURVEFILTER_H
#define QEXSCENE_KQEXANIMCURVEFILTER_H

#include <kbaselib/kbase/kbaseexport.h>

namespace qexsdk
{

class KQexAnimCurve;

/// Rewrites the keys of curves that belong together. A filter holds only settings: it can be applied any number of times, to any
/// curves, and owns none.
class QEX_API KQexAnimCurveFilter
{
public:
    KQexAnimCurveFilter() = default;
    virtual ~KQexAnimCurveFilter();
    /// Copies the settings.
    KQexAnimCurveFilter(const KQexAnimCurveFilter&) = default;
    /// Copies the settings.
    KQexAnimCurveFilter& operator=(const KQexAnimCurveFilter&) = default;

    /// Applies the filter.
    /// \param pCurves array of \p pCount curves, as the filter requires them.
    /// \param pCount  number of curves.
    /// \return false when the curves do not meet the filter's requirements (all are then unchanged) or when memory runs out (each
    /// curve is then either rewritten or unchanged).
    virtual bool Apply(KQexAnimCurve** pCurves, int pCount) = 0;
};

} // namespace qexsdk

#endif
