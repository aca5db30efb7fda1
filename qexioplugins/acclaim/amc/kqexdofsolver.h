#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXDOFSOLVER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXDOFSOLVER_H

#include <kbaselib/kmath/keulertable.h>
#include <kbaselib/kmath/kgeom.h>

namespace qexsdk
{

/// Finds the values of a bone's rotation DOFs that turn it as a rotation does, or as nearly as they can: the inverse of
/// multiplying single-axis rotations in the order of the DOF list, each later one on the left.
class KQexDofSolver
{
public:
    KQexDofSolver() = default;

    /// For the first \p pCount codes of \p pCodes, of which those for translations are passed over.
    KQexDofSolver(const int* pCodes, int pCount);

    /// Number of rotation DOFs, 0 to 6.
    int GetCount() const { return mCount; }

    /// Writes one angle (degrees) for each rotation DOF, in their order, into \p pAngles. \p pReached receives the rotation that
    /// they make. Three DOFs, each about another axis than the one before, reach every rotation, whatever else is in the list; for
    /// other lists the angle left over between \p pWanted and \p pReached is as small as going around the DOFs one by one makes it.
    /// \return the angle left over, degrees
    double Solve(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;

    /// Replaces angles by equivalent ones nearest to \p pLast: whole turns, and for three axes the flipped triple.
    void Continue(double* pAngles, const double* pLast) const;

    /// How much an error of the rotation can grow in the angles: 1 far from gimbal lock, without bound close to it.
    double GetGain(const double* pAngles) const;

    /// Rounds the first of three angles near gimbal lock to a multiple of \p pStep degrees and lets the third make up for it: only their sum
    /// or difference is known well there. Other DOFs stay as they are.
    void RoundInLock(double* pAngles, double pStep) const;

    /// What the gain is not above, told without trigonometry.
    double GetGainBound(const double* pAngles) const;

    /// Whether rotations made of angles about three axes in the order \p pOrder may be solved by TakeAngles(): the DOFs turn about
    /// different axes, in that order.
    bool Follows(ERotationOrder pOrder) const;

    /// Solve() for the rotation by \p pByAxis[0 to 2] about x, y and z in an order that the DOFs follow: the angles are those. False,
    /// and \p pAngles undefined, where that does not settle it: an axis without a DOF is turned about, or gimbal lock is near.
    bool TakeAngles(const double* pByAxis, double* pAngles) const;

private:
    double SolveOne(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;
    double SolveTwo(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;
    double SolveTwoInLock(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;
    double SolveRepeated(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;
    void   Refine(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;
    void   RefineFromBehind(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;
    void   Compose(const double* pAngles, int pFrom, int pTo, KgeRMatrix& pResult) const;

    int  mAxes[6] = {};
    int  mCount = 0;
    int  mCode = 0;          ///< Order code that begins with the DOFs' axes.
    bool mIsWhole = false;   ///< Three different axes.
    bool mIsDistinct = true; ///< No axis twice.
    bool mHas[3] = {};       ///< Whether there is a DOF about x, y, z.
};

/// Degrees by which two rotations differ.
double AngleBetween(const KgeRMatrix& pA, const KgeRMatrix& pB);

} // namespace qexsdk

#endif
