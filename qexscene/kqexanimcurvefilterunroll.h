#ifndef QEXSCENE_KQEXANIMCURVEFILTERUNROLL_H
#define QEXSCENE_KQEXANIMCURVEFILTERUNROLL_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexanimcurvefilter.h>

namespace qexsdk
{

/// Takes the jumps out of sampled Euler angles, which come from arc tangents and so leap by a whole turn, or from one to the
/// other of the two triples that give a rotation.
///
/// From the second key on each key becomes the triple nearest to the key before it (smallest sum of squared differences)
/// among those that give the same rotation: whole turns of any angle, and the flipped triple (first and third angle half a
/// turn on, the middle one mirrored at 90 degrees, or at 0 where the first axis repeats). So no angle differs by more than
/// 180 degrees from its neighbour's. The first key stays, and so, bit by bit, does every key that is nearest already. A key
/// with an angle that is not finite stays and is passed over.
///
/// New angles are computed in double precision and kept in single: the rotation at a key changes by less than 1e-4 degrees
/// as long as its angles are below 1,000 degrees, beyond that by the rounding of those angles.
class QEX_API KQexAnimCurveFilterUnroll : public KQexAnimCurveFilter
{
public:
    /// The order of application of the three angles, as the math library's code (KmEulerAxis: XYZ 0, XZY 2, YZX 4, YXZ 6, ZXY 8,
    /// ZYX 10), which is twice the number of the node's ERotationOrder. Other codes count as the matrix functions take them.
    /// XYZ until it is set.
    void SetRotationOrder(int pOrder) { mOrder = pOrder; }
    /// The order that is set.
    int GetRotationOrder() const { return mOrder; }

    /// \param pCurves the angles about x, y and z in degrees, with keys at equal times.
    /// \param pCount  how many there are: 3.
    /// \return false, and nothing changed, when there are not exactly three curves, one is null or given twice, their key
    ///     times differ, or memory runs out.
    bool Apply(KQexAnimCurve** pCurves, int pCount) override;

private:
    int mOrder = 0;
};

} // namespace qexsdk

#endif
