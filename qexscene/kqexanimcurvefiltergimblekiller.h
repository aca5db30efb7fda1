#ifndef QEXSCENE_KQEXANIMCURVEFILTERGIMBLEKILLER_H
#define QEXSCENE_KQEXANIMCURVEFILTERGIMBLEKILLER_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexanimcurvefilter.h>

namespace qexsdk
{

/// Does what KQexAnimCurveFilterUnroll does, and takes the spins out of gimbal lock.
///
/// Where the middle angle brings the first and the third axis into line, only the sum (or the difference) of the outer
/// angles matters, and arc tangents put all of it into one of them: a joint that merely passes through such a pose swings
/// both angles there and back. Keys in lock share the two angles out anew: the sum that matters is taken on from the key before
/// by the shorter way round, and what is free makes the path from the key before a run of such keys to the key behind it the
/// shortest (smallest sum of distances between the triples of neighbours); it stays as it was where the run ends the curve.
/// The middle angle is kept, up to whole turns.
///
/// A key counts as locked when its middle angle is within 2e-5 degrees of the pole. Further out the outer angles are not free:
/// to share them out would turn the rotation by more than the 1e-4 degrees that the filters allow themselves.
class QEX_API KQexAnimCurveFilterGimbleKiller : public KQexAnimCurveFilter
{
public:
    /// As KQexAnimCurveFilterUnroll::SetRotationOrder. XYZ until it is set: three curves do not tell their order, so
    /// whoever knows that it is another has to say it.
    void SetRotationOrder(int pOrder) { mOrder = pOrder; }
    /// The order that is set.
    int GetRotationOrder() const { return mOrder; }

    /// As KQexAnimCurveFilterUnroll::Apply.
    bool Apply(KQexAnimCurve** pCurves, int pCount) override;

private:
    int mOrder = 0;
};

} // namespace qexsdk

#endif
