#ifndef QEXSCENE_KQEXANIMCURVEFILTERUNROLL_H
#define QEXSCENE_KQEXANIMCURVEFILTERUNROLL_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexanimcurvefilter.h>

namespace qexsdk
{

/// Removes the jumps from sampled Euler angles, which come from arc tangents and so jump by a whole turn, or between the two
/// triples that give a rotation.
///
/// From the second key on, each key becomes the triple nearest to the previous key's (smallest sum of squared differences) among
/// those that give the same rotation: whole turns added to any angle, and the flipped triple (first and third angle plus 180
/// degrees, the middle one mirrored at 90 degrees, or at 0 where the first axis repeats). So no angle differs from the previous
/// key's by more than 180 degrees. The first key, and every key that is already nearest, is unchanged to the last bit. A key with
/// a non-finite angle is left unchanged and skipped.
///
/// New angles are computed in double precision and stored in single: the rotation at a key changes by less than 1e-4 degrees
/// while its angles are below 1,000 degrees, above that by the rounding of those angles.
class QEX_API KQexAnimCurveFilterUnroll : public KQexAnimCurveFilter
{
public:
    /// The order of application of the three angles, as the math library's code (KmEulerAxis: XYZ 0, XZY 2, YZX 4, YXZ 6, ZXY 8,
    /// ZYX 10), which is twice the node's ERotationOrder. Other codes mean what they mean to the matrix functions.
    /// Default XYZ.
    void SetRotationOrder(int pOrder) { mOrder = pOrder; }
    /// The order set, default XYZ (0).
    int GetRotationOrder() const { return mOrder; }

    /// \param pCurves the angles about x, y and z in degrees, with keys at equal times.
    /// \param pCount  must be 3.
    /// \return false, and nothing changed, when there are not exactly three curves, one is null or appears twice, their key
    ///     times differ, or memory runs out.
    bool Apply(KQexAnimCurve** pCurves, int pCount) override;

private:
    int mOrder = 0;
};

} // namespace qexsdk

#endif
