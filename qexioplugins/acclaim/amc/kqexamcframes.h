#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCFRAMES_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCFRAMES_H

#include <kbaselib/kmath/kgeom.h>
#include <qexscene/kqexscene.h>

#include <cstddef>
#include <vector>

namespace qexsdk
{

/// Where a joint is and how it is turned, world space.
struct KQexJointFrame
{
    KgeRMatrix mRotation;         ///< A rotation, whatever scaling and shear the node has.
    double     mPosition[3] = {}; ///< Centimetres.
};

/// The frames of a tree's nodes at one time, numbered as in KQexGlobalTransforms.
class KQexJointFrames
{
public:
    /// Evaluates the nodes at and below \p pRoot in the evaluator's current take. The rotation is that of the global transform; where
    /// that has none, because the node or an ancestor is scaled to zero, its local rotation continues its parent's frame.
    /// False when memory runs out.
    bool Evaluate(KQexNode* pRoot, KTime pTime);

    /// Number of nodes.
    int GetCount() const { return mPose.GetCount(); }

    /// Node \p pIndex, in pre-order from 0.
    KQexNode* GetNode(int pIndex) const { return mPose.GetNode(pIndex); }

    /// Its frame.
    const KQexJointFrame& GetFrame(int pIndex) const { return mFrames[static_cast<std::size_t>(pIndex)]; }

private:
    void ContinueParent(int pIndex, KTime pTime, KgeRMatrix& pRotation) const;

    KQexGlobalTransforms        mPose;
    std::vector<KQexJointFrame> mFrames; ///< One per node.
};

} // namespace qexsdk

#endif
