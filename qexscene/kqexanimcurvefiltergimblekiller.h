#ifndef QEXSCENE_KQEXANIMCURVEFILTERGIMBLEKILLER_H
#define QEXSCENE_KQEXANIMCURVEFILTERGIMBLEKILLER_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexanimcurvefilter.h>

namespace qexsdk
{

/// Unrolls like KQexAnimCurveFilterUnroll, and removes spins in gimbal lock.
///
/// Where the middle angle aligns the first and the third axis, the rotation depends only on the sum (or the difference) of the
/// outer angles, and arc tangents put all of it into one of them: a joint that merely passes through such a pose swings both
/// angles there and back. Locked keys get new outer angles. Their sum (or difference) follows that of the previous key by the
/// shorter way. The other combination, which is free, is chosen so that the path from the key before a run of locked keys to the
/// key after it is shortest (smallest sum of distances between neighbouring triples); in a run that ends the curve it keeps the
/// value of the key before the run. The middle angle is kept, up to whole turns.
///
/// A key counts as locked when its middle angle is within 2e-5 degrees of the pole. Further away, redistributing the outer angles
/// could change the rotation by more than the filters' limit of 1e-4 degrees.
class QEX_API KQexAnimCurveFilterGimbleKiller : public KQexAnimCurveFilter
{
public:
    /// As KQexAnimCurveFilterUnroll::SetRotationOrder. Default XYZ.
    void SetRotationOrder(int pOrder) { mOrder = pOrder; }
    /// The order set, default XYZ (0).
    int GetRotationOrder() const { return mOrder; }

    /// As KQexAnimCurveFilterUnroll::Apply.
    bool Apply(KQexAnimCurve** pCurves, int pCount) override;

private:
    int mOrder = 0;
};

} // namespace qexsdk

#endif
