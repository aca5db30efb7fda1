#ifndef QEXSCENE_KQEXGLOBALTRANSFORMS_H
#define QEXSCENE_KQEXGLOBALTRANSFORMS_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/ktime.h>
#include <qexscene/kqexchannel.h>
#include <qexscene/kqexmatrix.h>

#include <cstddef>

namespace qexsdk
{

class KQexAnimLayer;
class KQexNode;

/// The global transforms of a node and of everything below it at one time: what KQexAnimEvaluator::EvaluateGlobalTransforms
/// fills. Items stand in pre-order, so item 0 is the top node and a parent always comes before its children.
///
/// Keep one and use it again for the next frame: as long as the tree and its connections are the same, what was found out
/// about them is used again. The caller owns it; it may outlive the scene, but GetNode must not be used then. 0.3 KB a node.
class QEX_API KQexGlobalTransforms
{
public:
    KQexGlobalTransforms() = default;
    ~KQexGlobalTransforms();
    KQexGlobalTransforms(const KQexGlobalTransforms&) = delete;
    KQexGlobalTransforms& operator=(const KQexGlobalTransforms&) = delete;

    /// Number of items; 0 before the first evaluation and after one that failed.
    int GetCount() const { return mCount; }

    /// Item \p pIndex, 0 to GetCount() - 1: its node.
    KQexNode* GetNode(int pIndex) const { return mItems[pIndex].mNode; }

    /// The item of the node's parent; -1 for item 0.
    int GetParentIndex(int pIndex) const { return mItems[pIndex].mParent; }

    /// The item's global transform.
    const KQexMatrix& GetTransform(int pIndex) const { return mItems[pIndex].mTransform; }

    /// The item of \p pNode, -1 when it is not among them. Looks at every item.
    int Find(const KQexNode* pNode) const;

private:
    friend class KQexAnimEvaluator;

    struct KItem
    {
        KQexMatrix  mTransform;
        KQexNode*   mNode;
        int         mParent;
        KQexChannel mChannels[9]; ///< Translation x, y, z, rotation x, y, z, scaling x, y, z.
    };

    /// No items, and nothing known of any tree.
    void Clear();

    /// Makes room for \p pCount items; those there were are lost if it grows.
    bool Reserve(int pCount);

    /// The items of \p pTop's tree and where their values come from, unless they are known already.
    bool Gather(KQexNode* pTop, const KQexAnimLayer* pLayer);

    /// The transforms of all items; \p pOutside is that of what item 0 hangs under.
    void Evaluate(const KQexMatrix& pOutside, KTime pTime);

    KItem*               mItems = nullptr;
    int                  mCount = 0;
    int                  mCapacity = 0;
    unsigned long long   mScene = 0;       ///< Serial number of the scene that was gathered; 0: none,
    unsigned long long   mVersion = 0;     ///< the state of its connections then,
    const KQexNode*      mTop = nullptr;   ///< from which node,
    const KQexAnimLayer* mLayer = nullptr; ///< and on which layer.
};

} // namespace qexsdk

#endif
