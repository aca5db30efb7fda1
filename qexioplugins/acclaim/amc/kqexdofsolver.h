#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXDOFSOLVER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXDOFSOLVER_H

#include <kbaselib/kmath/keulertable.h>
#include <kbaselib/kmath/kgeom.h>

namespace qexsdk
{

/// Finds the angles of a bone's rotation DOFs for a given rotation, or for the nearest that they can reach: the inverse of multiplying
/// single-axis rotations in the order of the DOF list, each later one on the left.
class KQexDofSolver
{
public:
    KQexDofSolver() = default;

    /// For the first \p pCount codes of \p pCodes; translation codes are ignored.
    KQexDofSolver(const int* pCodes, int pCount);

    /// Number of rotation DOFs, 0 to 6.
    int GetCount() const { return mCount; }

    /// Writes one angle (degrees) per rotation DOF, in their order, to \p pAngles; \p pReached receives their rotation. Three DOFs,
    /// each about another axis than the one before, reach every rotation, whatever else is in the list; other lists leave a residual
    /// between \p pTarget and \p pReached, minimised by refining one DOF at a time.
    /// \return the residual, degrees
    double Solve(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const;

    /// Replaces the angles by the equivalent ones nearest to \p pLast: whole turns, and for three axes the flipped triple.
    void MakeContinuous(double* pAngles, const double* pLast) const;

    /// Factor by which an error of the rotation can grow in the angles: 1 far from gimbal lock, up to 1e6 close to it.
    double GetGain(const double* pAngles) const;

    /// Near gimbal lock, rounds the first of three angles to a multiple of \p pStep degrees and compensates with the third: only their sum
    /// or difference is precise there. Does nothing for other DOF lists.
    void RoundInLock(double* pAngles, double pStep) const;

    /// Upper bound of the gain, without trigonometry.
    double GetGainBound(const double* pAngles) const;

    /// Whether TryAngles() can solve rotations by Euler angles in the order \p pOrder: the DOFs have different axes, in that order.
    bool MatchesOrder(ERotationOrder pOrder) const;

    /// Shortcut for Solve(): copies the angles \p pByAxis[0 to 2] about x, y and z, in an order that MatchesOrder() accepts. False, with
    /// \p pAngles undefined, when an axis without a DOF has an angle or gimbal lock is near.
    bool TryAngles(const double* pByAxis, double* pAngles) const;

private:
    double SolveOne(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const;
    double SolveTwo(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const;
    double SolveTwoInLock(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const;
    double SolveRepeated(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const;
    void   Refine(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const;
    void   RefineFromOpposite(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const;
    void   Compose(const double* pAngles, int pFrom, int pTo, KgeRMatrix& pResult) const;

    int  mAxes[6] = {};
    int  mCount = 0;
    int  mCode = 0;           ///< Order code that begins with the DOFs' axes.
    bool mIsComplete = false; ///< Three DOFs that reach every rotation.
    bool mIsDistinct = true;  ///< No axis appears twice.
    bool mHasAxis[3] = {};    ///< Whether there is a DOF about x, y, z.
};

/// Angle between two rotations, degrees.
double AngleBetween(const KgeRMatrix& pA, const KgeRMatrix& pB);

} // namespace qexsdk

#endif
