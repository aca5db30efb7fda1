#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCSTEPS_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCSTEPS_H

#include <kbaselib/kmath/kgeom.h>
#include <qexscene/kqexscene.h>

#include <cstddef>
#include <vector>

namespace qexsdk
{

/// A bone's node, for KQexAmcSteps.
struct KQexAmcJoint
{
    KQexNode* mNode = nullptr; ///< Null: none. Not owned.
    int       mPose = -1;      ///< Index of that node in the global transforms of the nodes' root; -1 without a node.
    int       mFrom = -1;      ///< Index of the nearest bone above that has a node; -1: none, the node is then seen from the world.
};

/// How a node stands as seen from the node of the bone above at one time.
struct KQexAmcStep
{
    KgeRMatrix mTurn;          ///< Its rotation.
    double     mReach[3] = {}; ///< Its place, centimetres.
};

/// What a thread keeps from one question to the next.
struct KQexAmcMoment
{
    KTime                mTime; ///< The time asked for last.
    KQexGlobalTransforms mPose; ///< At that time, where steps are told by global transforms.
    KQexKeyTimes::KSpot  mSpot; ///< Its place among the times of keys.
};

/// Tells how every bone's node stands as seen from the node of the nearest bone above, in one take.
///
/// Where no node between them is scaled that takes the local transforms between the two alone, most often one; else it comes from
/// global transforms, without their scaling and shear. Several threads may ask one object.
class KQexAmcSteps
{
public:
    /// For the evaluator's current take; \p pRoot is at or above all nodes. May throw std::bad_alloc.
    void Prepare(KQexNode* pRoot, const std::vector<KQexAmcJoint>& pJoints);

    /// Goes to a time; \p pMoment is the thread's own. False when memory runs out.
    bool Begin(KTime pTime, KQexAmcMoment& pMoment) const;

    /// The step to the node of joint \p pJoint, which has one.
    void Get(size_t pJoint, KQexAmcMoment& pMoment, KQexAmcStep& pStep) const;

    /// Whether the step's reach never changes.
    bool IsReachFixed(size_t pJoint) const { return mIsLocal && mSpans[pJoint].mIsReachFixed; }

    /// Whether the step's turn is the node's pre-rotation, the turn by GetAngles() in the node's order and the inverse post-rotation.
    bool IsOneNode(size_t pJoint) const { return mIsLocal && mSpans[pJoint].mEnd == mSpans[pJoint].mFirst + 1; }

    /// The node's rotation about x, y and z in degrees.
    void GetAngles(size_t pJoint, KQexAmcMoment& pMoment, double* pAngles) const;

private:
    /// A node between two bones' nodes, or the lower one itself.
    struct KLink
    {
        const KQexNode* mNode = nullptr;
        KQexChannel     mChannels[6]; ///< Translation and rotation about x, y, z.
    };

    /// The links from one bone's node to another's: mLinks[mFirst] to before mLinks[mEnd], the upper ones first.
    struct KSpan
    {
        size_t mFirst = 0;
        size_t mEnd = 0;
        bool   mIsReachFixed = false;
    };

    bool AddSpan(const KQexAmcJoint& pJoint, const KQexNode* pFrom, const KQexAnimLayer* pLayer, size_t pMostLinks);
    void FindSpans(const KQexAnimLayer* pLayer, size_t pNodes);
    void GetLocal(const KSpan& pSpan, KQexAmcMoment& pMoment, KQexAmcStep& pStep) const;
    void GetGlobal(size_t pJoint, const KQexGlobalTransforms& pPose, KQexAmcStep& pStep) const;

    KQexNode*                 mRoot = nullptr;
    bool                      mIsLocal = false;
    std::vector<KQexAmcJoint> mJoints;
    std::vector<KSpan>        mSpans; ///< One for each joint.
    std::vector<KLink>        mLinks;
};

} // namespace qexsdk

#endif
