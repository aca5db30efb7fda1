#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCFIT_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCFIT_H

#include <qexioplugins/acclaim/amc/kqexamcsteps.h>
#include <qexioplugins/acclaim/amc/kqexdofsolver.h>
#include <qexioplugins/acclaim/kqexasfnode.h>

namespace qexsdk
{

/// How far a bone's DOFs left it from where its node is.
struct KQexAmcStray
{
    bool       mIs = false; ///< Whether it did not get all the way.
    KgeRMatrix mTurn;       ///< From the reached rotation to the wanted one, in the frame of the skeleton's rest pose.
};

/// Finds what a bone's DOFs must be for the bone to move as its node does: what is known of that before the first frame.
class KQexAmcFit
{
public:
    /// For the DOFs of \p pBone.
    explicit KQexAmcFit(const KQexAsfNode& pBone);

    /// Takes the poses at rest, which both turn from: the bone's is its axis, the nodes' is given.
    /// \param pNode the node's global transform
    /// \param pFrom the one of the nearest bone's node above; null: none
    /// \param pAlign from the skeleton's rest pose to the nodes'
    /// \param pScale factor of the nodes' places
    void SetRest(const KQexMatrix& pNode, const KQexMatrix* pFrom, const KgeRMatrix& pAlign, double pScale);

    /// Whether the node's own angles are those of the DOFs where KQexDofSolver::TakeAngles() takes them: nothing but they turns the bone,
    /// and their order is the DOFs'.
    bool TakesAngles(const KQexNode& pNode) const;

    /// The displacement from the place at rest, in the bone's axis frame, centimetres.
    /// \param pStep how the bone's node stands as seen from the node above
    /// \param pAbove where the bone above strayed to; null: it did not
    /// \param pMove receives x, y, z
    void GetMove(const KQexAmcStep& pStep, const KQexAmcStray* pAbove, double* pMove) const;

    /// The angles of the rotation DOFs, and by how many degrees they fail; \p pStray then says how.
    double Solve(const KQexAmcStep& pStep, const KQexAmcStray* pAbove, double* pAngles, KQexAmcStray& pStray) const;

    /// What finds the angles; part of this.
    const KQexDofSolver& GetSolver() const { return mSolver; }

    /// The distance at rest to the nearest bone above that has a node, centimetres.
    double GetRestLength() const { return mRestLength; }

private:
    KQexDofSolver mSolver;
    KgeRMatrix    mAxis; ///< The bone's axis, world.
    KgeRMatrix    mAxisInv;
    KgeRMatrix    mBack;             ///< From the frame of the node above to the skeleton's rest pose.
    KgeRMatrix    mLeft;             ///< The rotation of the DOFs is mLeft × the step of the node × mRight.
    KgeRMatrix    mRight;            ///< See mLeft.
    bool          mHasRight = false; ///< Whether mRight turns at all.
    bool          mHasFrom = false;  ///< Whether a bone above has a node.
    double        mRest[3] = {};     ///< From its place to the bone's own at rest, centimetres, as the skeleton's rest pose has it.
    double        mRestLength = 0.0; ///< Length of mRest.
    double        mScale = 1.0;
};

} // namespace qexsdk

#endif
