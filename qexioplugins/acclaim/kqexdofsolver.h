#ifndef QEXIOPLUGINS_ACCLAIM_KQEXDOFSOLVER_H
#define QEXIOPLUGINS_ACCLAIM_KQEXDOFSOLVER_H

#include <kbaselib/kmath/kgeom.h>

namespace qexsdk
{

/// Finds the values of a bone's rotation DOFs that turn it as a rotation does, or as nearly as they can: the inverse of
/// multiplying single-axis rotations in the order of the DOF list, each later one on the left.
class KDofSolver
{
public:
    KDofSolver() = default;

    /// For the first \p pCount codes of \p pCodes, of which those for translations are passed over.
    KDofSolver(const int* pCodes, int pCount);

    /// Number of rotation DOFs, 0 to 6.
    int GetCount() const { return mCount; }

    /// Writes one angle (degrees) for each rotation DOF, in their order, into \p pAngles. \p pReached receives the rotation that
    /// they make. Three DOFs, each about another axis than the one before, reach every rotation; for other lists the angle left over
    /// between \p pWanted and \p pReached is as small as going around the DOFs one by one makes it.
    void Solve(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;

    /// Replaces angles by equivalent ones nearest to \p pLast: whole turns, and for three axes the flipped triple.
    void Continue(double* pAngles, const double* pLast) const;

    /// How much an error of the rotation can grow in the angles: 1 far from gimbal lock, without bound close to it.
    double GetGain(const double* pAngles) const;

private:
    void Refine(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;
    void RefineFromBehind(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const;
    void Compose(const double* pAngles, int pFrom, int pTo, KgeRMatrix& pResult) const;

    int  mAxes[6] = {};
    int  mCount = 0;
    int  mCode = 0;          ///< Order code that begins with the DOFs' axes.
    bool mIsWhole = false;   ///< Three different axes.
    bool mIsDistinct = true; ///< No axis twice.
};

/// Degrees by which two rotations differ.
double AngleBetween(const KgeRMatrix& pA, const KgeRMatrix& pB);

} // namespace qexsdk

#endif
