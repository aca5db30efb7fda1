#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCFIT_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCFIT_H

#include <qexioplugins/acclaim/amc/kqexamcsteps.h>
#include <qexioplugins/acclaim/amc/kqexdofsolver.h>
#include <qexioplugins/acclaim/kqexasfnode.h>

namespace qexsdk
{

/// What a bone's DOFs miss of its node's rotation.
struct KQexAmcResidual
{
    bool       mIsSet = false; ///< False: no residual, mRotation is undefined.
    KgeRMatrix mRotation;      ///< From the reached rotation to the target, in the frame of the skeleton's rest pose.
};

/// Fits a bone's DOFs to the motion of its node. Holds what is constant over the frames.
class KQexAmcFit
{
public:
    /// For the DOFs of \p pBone.
    explicit KQexAmcFit(const KQexAsfNode& pBone);

    /// Sets the rest pose of the nodes; that of the bone is its axis frame.
    /// \param pNode the node's frame at rest
    /// \param pParent that of the nearest ancestor bone's node; null: none
    /// \param pAlign rotation from the skeleton's rest pose to the nodes'
    /// \param pScale factor of the nodes' positions
    void SetRest(const KQexJointFrame& pNode, const KQexJointFrame* pParent, const KgeRMatrix& pAlign, double pScale);

    /// Whether the node's rotation angles can be used as DOF angles, wherever KQexDofSolver::TryAngles() accepts them: no other rotation
    /// is involved, and their order is that of the DOFs.
    bool CanUseNodeAngles(const KQexNode& pNode) const;

    /// The displacement from the rest position, in the bone's axis frame, centimetres.
    /// \param pStep transform of the bone's node relative to the parent's
    /// \param pParent residual of the parent bone; null: none
    /// \param pDisplacement receives x, y, z
    void GetDisplacement(const KQexAmcStep& pStep, const KQexAmcResidual* pParent, double* pDisplacement) const;

    /// Computes the angles of the rotation DOFs. \return the residual in degrees; \p pResidual receives it as a rotation
    double Solve(const KQexAmcStep& pStep, const KQexAmcResidual* pParent, double* pAngles, KQexAmcResidual& pResidual) const;

    /// The solver for the rotation DOFs; part of this.
    const KQexDofSolver& GetSolver() const { return mSolver; }

    /// The distance at rest to the nearest ancestor bone that has a node, centimetres.
    double GetRestLength() const { return mRestLength; }

private:
    KQexDofSolver mSolver;
    KgeRMatrix    mAxis; ///< The bone's axis, world.
    KgeRMatrix    mAxisInv;
    KgeRMatrix    mParentToRest;      ///< From the frame of the parent's node to the skeleton's rest pose.
    KgeRMatrix    mLeft;              ///< The rotation of the DOFs is mLeft × the step's rotation × mRight.
    KgeRMatrix    mRight;             ///< See mLeft.
    bool          mHasRight = false;  ///< False: mRight is the identity.
    bool          mHasParent = false; ///< Whether an ancestor bone has a node.
    double        mRest[3] = {}; ///< Rest offset from that node to the bone's own, centimetres, in the frame of the skeleton's rest pose.
    double        mRestLength = 0.0; ///< Length of mRest.
    double        mScale = 1.0;
};

} // namespace qexsdk

#endif
