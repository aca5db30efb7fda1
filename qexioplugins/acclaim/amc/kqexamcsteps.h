#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCSTEPS_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCSTEPS_H

#include <qexioplugins/acclaim/amc/kqexamcframes.h>

#include <cstddef>
#include <vector>

namespace qexsdk
{

/// A bone's node, for KQexAmcSteps.
struct KQexAmcJoint
{
    KQexNode* mNode = nullptr; ///< Null: none. Not owned.
    int       mPose = -1;      ///< Index of that node in a frame; -1 without a node.
    int       mParent = -1;    ///< Index of the nearest ancestor joint with a node; -1: none, the step is then in world space.
};

/// Transform of a bone's node relative to the node of its nearest ancestor bone, at one time.
struct KQexAmcStep
{
    KgeRMatrix mRotation;            ///< Rotation.
    double     mTranslation[3] = {}; ///< Translation, centimetres.
};

/// Evaluation state, one per thread.
struct KQexAmcStepState
{
    const KQexFrame* mFrame = nullptr; ///< Of the last Begin().
    KQexJointFrames  mFrames;          ///< All nodes' frames in it, when steps are computed from them.
};

/// Evaluates the steps of all bones' nodes (see KQexAmcStep) in one take.
///
/// When no node is scaled a step is the product of the local transforms between the two nodes, most often a single one; else it comes
/// from the nodes' frames, without scaling and shear. After Prepare(), usable from several threads at once.
class KQexAmcSteps
{
public:
    /// For frames of \p pNodes, which have the nodes of all joints. May throw std::bad_alloc.
    void Prepare(const KQexFrameNodes& pNodes, const std::vector<KQexAmcJoint>& pJoints);

    /// What frames need, as a sum of KQexFrameParts.
    unsigned int GetParts() const { return mIsLocal ? eFRAME_CHANNELS : eFRAME_WORLD; }

    /// Begins frame \p pFrame, which must outlive the calls below; \p pState is the thread's own.
    void Begin(const KQexFrame& pFrame, KQexAmcStepState& pState) const;

    /// The step of joint \p pJoint, which must have a node.
    void Get(size_t pJoint, const KQexAmcStepState& pState, KQexAmcStep& pStep) const;

    /// Whether the step's translation is constant.
    bool IsTranslationFixed(size_t pJoint) const { return mIsLocal && mSpans[pJoint].mIsTranslationFixed; }

    /// Whether the step's rotation is that of a single node: pre-rotation × GetAngles() in the node's order × inverse post-rotation.
    bool IsOneNode(size_t pJoint) const { return mIsLocal && mSpans[pJoint].mEnd == mSpans[pJoint].mFirst + 1; }

    /// The node's rotation about x, y and z in degrees. Requires IsOneNode().
    void GetAngles(size_t pJoint, const KQexAmcStepState& pState, double* pAngles) const;

private:
    /// A node between two bones' nodes, or the descendant itself.
    struct KLink
    {
        const KQexNode* mNode = nullptr;
        size_t          mIndex = 0; ///< Its index in a frame.
    };

    /// The chain from an ancestor bone's node, excluded, down to a bone's node: mLinks[mFirst] to mLinks[mEnd - 1].
    struct KSpan
    {
        size_t mFirst = 0;
        size_t mEnd = 0;
        bool   mIsTranslationFixed = false;
    };

    bool AddSpan(const KQexAmcJoint& pJoint, const KQexNode* pFrom, const KQexFrameNodes& pNodes);
    void FindSpans(const KQexFrameNodes& pNodes);
    void GetLocal(const KSpan& pSpan, const KQexFrame& pFrame, KQexAmcStep& pStep) const;
    void GetGlobal(size_t pJoint, const KQexJointFrames& pFrames, KQexAmcStep& pStep) const;

    bool                      mIsLocal = false;
    std::vector<KQexAmcJoint> mJoints;
    std::vector<KSpan>        mSpans; ///< One per joint.
    std::vector<KLink>        mLinks;
};

} // namespace qexsdk

#endif
