#ifndef QEXSCENE_KQEXFRAME_H
#define QEXSCENE_KQEXFRAME_H

#include <qexscene/kqexmatrix.h>
#include <qexscene/kqexnodepose.h>
#include <qexscene/kqexquaternion.h>

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace qexsdk
{

/// The nodes of some trees in one take, whose transforms a KQexFrame holds: the nodes above the roots, then each tree in pre-order, so
/// parents come before their children. Valid as long as nodes, connections and curves of the scene do not change. It does not change once
/// it is made: any number of threads may use it.
class QEX_API KQexFrameNodes
{
public:
    /// \p pLayer is the take's layer; null: the rest pose. May throw std::bad_alloc.
    KQexFrameNodes(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer);

    /// Number of nodes.
    size_t GetCount() const { return mItems.size(); }

    /// Node \p pIndex, 0 to GetCount() - 1.
    KQexNode* GetNode(size_t pIndex) const { return mItems[pIndex].mNode; }

    /// Index of the node's parent, below its own; -1 for a node at the top of the scene.
    int GetParent(size_t pIndex) const { return mItems[pIndex].mParent; }

    /// The node's transform in the take.
    const KQexNodePose& GetPose(size_t pIndex) const { return mItems[pIndex].mPose; }

    /// A channel with keys.
    struct KKeyed
    {
        const KQexAnimCurve* mCurve;   ///< Its curve.
        size_t               mChannel; ///< 9 times the node's index, plus the index among its channels.
    };

    /// All channels with keys, in the order of the nodes: what changes from frame to frame.
    const std::vector<KKeyed>& GetKeyed() const { return mKeyed; }

    /// The nodes whose rotation has keys, ascending.
    const std::vector<size_t>& GetRotating() const { return mRotating; }

    /// Index of \p pNode; -1 if it is none of these nodes.
    int Find(const KQexNode* pNode) const;

private:
    struct KItem
    {
        KQexNode*    mNode;
        int          mParent;
        KQexNodePose mPose;
    };

    void Add(KQexNode* pNode, const KQexAnimLayer* pLayer);
    void AddAncestors(KQexNode* pRoot, const KQexAnimLayer* pLayer);

    std::vector<KItem>                          mItems;
    std::vector<KKeyed>                         mKeyed;
    std::vector<size_t>                         mRotating;
    std::unordered_map<const KQexNode*, size_t> mIndices;
};

/// What a frame holds beside the values of the channels, as a sum.
enum KQexFrameParts : unsigned int
{
    eFRAME_CHANNELS = 0,  ///< Nothing else.
    eFRAME_WORLD = 1,     ///< Transforms relative to the world.
    eFRAME_ROTATIONS = 2, ///< Rotations relative to the parent, as quaternions.
    eFRAME_ALL = 3
};

/// The transforms of all nodes at one time, in double precision. Used by one thread at a time.
class QEX_API KQexFrame
{
public:
    /// \p pNodes must outlive it. \p pParts is a sum of KQexFrameParts. May throw std::bad_alloc.
    KQexFrame(const KQexFrameNodes& pNodes, unsigned int pParts);

    /// Evaluates all nodes at \p pTime, frame \p pIndex of a sampling. Does not allocate.
    void Evaluate(long long pIndex, KTime pTime);

    /// Its number in the sampling, from 0.
    long long GetIndex() const { return mIndex; }
    /// Its time in the scene.
    KTime GetTime() const { return mTime; }
    /// The nodes.
    const KQexFrameNodes& GetNodes() const { return *mNodes; }

    /// Local translation of node \p pNode: x, y, z in centimetres, rotation offset included.
    void GetTranslation(size_t pNode, double pResult[3]) const;
    /// Its local rotation about x, y and z in degrees, without pre- and post-rotation.
    const double* GetAngles(size_t pNode) const { return mChannels.data() + 9 * pNode + 3; }
    /// Its scale factors.
    const double* GetScaling(size_t pNode) const { return mChannels.data() + 9 * pNode + 6; }
    /// Its nine channels, see KQexNodePose::EvaluateChannels().
    const double* GetChannels(size_t pNode) const { return mChannels.data() + 9 * pNode; }
    /// Its rotation relative to its parent, pre- and post-rotation included. Needs eFRAME_ROTATIONS.
    const KQexQuaternion& GetRotation(size_t pNode) const { return mRotations[pNode]; }
    /// Its transform relative to the world. Needs eFRAME_WORLD.
    const KQexMatrix& GetWorld(size_t pNode) const { return mWorlds[pNode]; }

private:
    void EvaluateWorld(size_t pNode);

    const KQexFrameNodes*       mNodes;
    long long                   mIndex = 0;
    KTime                       mTime = KTime(0);
    std::vector<double>         mChannels;  ///< Nine for each node.
    std::vector<KQexQuaternion> mRotations; ///< One for each node, or empty.
    std::vector<KQexMatrix>     mWorlds;    ///< One for each node, or empty.
};

} // namespace qexsdk

#endif
