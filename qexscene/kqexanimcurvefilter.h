#ifndef QEXSCENE_KQEXANIMCURVEFILTER_H
#define QEXSCENE_KQEXANIMCURVEFILTER_H

#include <kbaselib/kbase/kbaseexport.h>

namespace qexsdk
{

class KQexAnimCurve;

/// Rewrites the keys of curves that belong together. A filter holds settings only: it may be applied any number of times, to
/// different curves. It does not own them.
class QEX_API KQexAnimCurveFilter
{
public:
    KQexAnimCurveFilter() = default;
    virtual ~KQexAnimCurveFilter();
    /// A filter with the same settings.
    KQexAnimCurveFilter(const KQexAnimCurveFilter&) = default;
    /// Takes over the settings.
    KQexAnimCurveFilter& operator=(const KQexAnimCurveFilter&) = default;

    /// Applies the filter.
    /// \param pCurves array of \p pCount curves, as the filter asks for them.
    /// \param pCount  how many there are.
    /// \return false, and every curve unchanged, when they are not what the filter asks for or memory runs out.
    virtual bool Apply(KQexAnimCurve** pCurves, int pCount) = 0;
};

} // namespace qexsdk

#endif
