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

/// The global transforms of a node and its descendants at one time, filled by KQexAnimEvaluator::EvaluateGlobalTransforms. Items are
/// in pre-order, so item 0 is the root and a parent comes before its children.
///
/// Reuse one for all frames: it caches the tree and its channels until they change. The caller owns it; it may outlive the scene,
/// but then do not call GetNode. 0.3 KB per node.
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

    /// Index of the parent's item; -1 for item 0.
    int GetParentIndex(int pIndex) const { return mItems[pIndex].mParent; }

    /// The item's global transform.
    const KQexMatrix& GetTransform(int pIndex) const { return mItems[pIndex].mTransform; }

    /// Index of \p pNode's item, -1 when there is none. O(n).
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

    /// Removes all items and invalidates the cache.
    void Clear();

    /// Makes the capacity at least \p pCount items; growing loses the items.
    bool Reserve(int pCount);

    /// Collects the nodes of \p pRoot's tree and their channels, unless the cached ones are still valid.
    bool Collect(KQexNode* pRoot, const KQexAnimLayer* pLayer);

    /// Evaluates all items; \p pParentTransform is the global transform of item 0's parent.
    void Evaluate(const KQexMatrix& pParentTransform, KTime pTime);

    KItem*               mItems = nullptr;
    int                  mCount = 0;
    int                  mCapacity = 0;
    unsigned long long   mScene = 0;       ///< What is cached: serial number of the scene (0: nothing),
    unsigned long long   mVersion = 0;     ///< its version,
    const KQexNode*      mRoot = nullptr;  ///< the tree's root
    const KQexAnimLayer* mLayer = nullptr; ///< and the layer.
};

} // namespace qexsdk

#endif
