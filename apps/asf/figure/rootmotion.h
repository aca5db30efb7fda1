#ifndef APPS_ASF_FIGURE_ROOTMOTION_H
#define APPS_ASF_FIGURE_ROOTMOTION_H

#include <kbaselib/kmath/kgeom.h>
#include <qexioplugins/acclaim/amc/kqexdofsolver.h>
#include <qexioplugins/acclaim/kqexasfnode.h>

namespace asfapp
{

/// Whether the root \p pRoot as read from a file has a position, or an orientation, that a written skeleton cannot hold.
bool HasRestPosition(const qexsdk::KQexAsfNode& pRoot);
bool HasRestOrientation(const qexsdk::KQexAsfNode& pRoot);

/// Converts the values of a root that has a position or an orientation at rest to those of one that has neither, as every written
/// skeleton has it. All bones stay where they are; only the root's own joint moves, to its children's start.
class KRootMotion
{
public:
    /// For \p pRoot as read from a file, which must outlive this.
    explicit KRootMotion(const qexsdk::KQexAsfNode& pRoot);

    /// False if the values stay as they are.
    bool IsNeeded() const { return mIsNeeded; }

    /// Converts the values of the root's DOFs, in their order, in the units of a motion whose factors to centimetres and degrees are
    /// \p pLengthFactor and \p pAngleFactor. Angles continue those of the call before.
    void Convert(double* pValues, double pLengthFactor, double pAngleFactor);

    /// Largest rotation and translation that the DOFs could not express.
    double GetLostDegrees() const { return mLostDegrees; }
    double GetLostCentimetres() const { return mLostCentimetres; }

private:
    void GetRotation(const double* pValues, double pAngleFactor, qexsdk::KgeRMatrix& pRotation) const;
    void SetRotation(const qexsdk::KgeRMatrix& pRotation, double* pValues, double pAngleFactor);
    void SetTranslation(const qexsdk::KgeTVector& pTranslation, double* pValues, double pLengthFactor);

    const qexsdk::KQexAsfNode& mRoot;
    qexsdk::KQexDofSolver      mSolver;
    bool                       mIsNeeded;
    bool                       mHasLast = false;
    double                     mLast[6] = {}; ///< Angles of the call before, degrees.
    double                     mLostDegrees = 0;
    double                     mLostCentimetres = 0;
};

} // namespace asfapp

#endif
