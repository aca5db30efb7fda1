#ifndef QEXSCENE_KQEXNODE_H
#define QEXSCENE_KQEXNODE_H

#include <kbaselib/kbase/ktime.h>
#include <kbaselib/kmath/keulertable.h>
#include <qexscene/kqexindexedlist.h>
#include <qexscene/kqexmatrix.h>
#include <qexscene/kqexnodelimits.h>
#include <qexscene/kqexobject.h>
#include <qexscene/kqexproperty.h>

namespace qexsdk
{

class KQexNodeAttribute;
class KQexSkeleton;

/// The pivot set in which a node's own pivots are stored. There is no other one: the operations that take a pivot set treat
/// any value as this one.
constexpr int kPivotSet0 = 0;

/// A place in the scene: a node of its tree, with a transform relative to its parent that can be animated.
///
/// Local transform, as a product of column-vector matrices (the rightmost is applied first):
///
///     T(local translation) · T(rotation offset) · R(pre-rotation) · R(local rotation) · R(post-rotation)⁻¹ · S(local scaling)
///
/// with translations in centimetres, rotations as Euler angles in degrees about x, y, z. Pre- and post-rotation apply x
/// first, then y, then z; the local rotation applies them in the node's rotation order. While rotation is not active, which
/// is the default, the order, the pre- and the post-rotation are ignored and the local rotation is XYZ. A spheric order
/// counts as XYZ.
///
/// Destroy(true, …) also ends the node's whole subtree, with the attributes, curve nodes and curves of every node in it.
/// Destroy(false, …) leaves the children without a parent and everything else in the scene. The scene's root node cannot be
/// destroyed by itself: Destroy(false, …) does nothing to it, Destroy(true, …) ends what is below it.
class QEX_API KQexNode : public KQexObject
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// Makes a node named exactly \p pName (null counts as "") without a parent, owned by the scene of \p pContainer.
    /// Null when \p pContainer is null or memory runs out.
    static KQexNode* Create(KQexObject* pContainer, const char* pName);

    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;
    KQexObject*        GetSrcObject(kQexClassId pClass, int pIndex) const override;

    /// Leaves its parent, attribute and children.
    ~KQexNode() override;

    /// \name Attribute
    /// \{

    /// Attaches \p pAttribute, which leaves the node it was attached to; the one attached before stays in the scene. Null
    /// only detaches. False, and nothing changed, when it is of another scene.
    bool SetNodeAttribute(KQexNodeAttribute* pAttribute);
    /// The attached attribute, or null.
    KQexNodeAttribute* GetNodeAttribute() const { return mAttribute; }

    /// The attribute if it is a skeleton's, else null.
    KQexSkeleton* GetSkeleton() const;
    /// \}

    /// \name Tree
    /// \{

    /// Appends \p pChild to the children, after taking it from its former parent. O(1), except that moving a node that has
    /// children looks at the ancestors of this one. False, and nothing changed, when \p pChild is null, the scene's root, of
    /// another scene, this node or one of its ancestors.
    bool AddChild(KQexNode* pChild);

    /// Takes \p pChild out; it has no parent then. False when it is not a child of this node. O(1).
    bool RemoveChild(KQexNode* pChild);

    /// The parent, or null.
    KQexNode* GetParent() const { return mParent; }

    /// Child \p pIndex, in the order in which they were added; null when there is none. See KQexIndexedList for the cost.
    KQexNode* GetChild(int pIndex) const { return mChildren.GetAt(pIndex); }

    /// \param pRecursive true: the number of all nodes below this one.
    int GetChildCount(bool pRecursive = false) const;

    /// The first node named exactly \p pName below this one (itself excluded) in pre-order, or null.
    /// \param pName      the name, letter by letter; null finds nothing.
    /// \param pRecursive true: at any depth; false: among the direct children.
    /// \param pInitial   kept for the callers that pass it; has no effect.
    KQexNode* FindChild(const char* pName, bool pRecursive = true, bool pInitial = false) const;

    /// The first child, or null.
    KQexNode* GetFirstChild() const { return mChildren.GetFirst(); }
    /// The child after this one of the same parent, or null.
    KQexNode* GetNextSibling() const { return KChildren::GetNext(this); }

    /// The node after this one in pre-order within the tree below \p pTop, or null after the last. A walk begins at
    /// \p pTop; it needs no memory and no stack: for (n = top; n != null; n = n->GetNextInTree(top)).
    KQexNode* GetNextInTree(const KQexNode* pTop) const;
    /// \}

    /// \name Transform
    /// \{

    /// Whether rotation order, pre- and post-rotation count. From the start they do not.
    void SetRotationActive(bool pActive) { mRotationActive = pActive; }
    /// Whether they do.
    bool GetRotationActive() const { return mRotationActive; }

    /// Kept and given back while rotation is not active, too. Default eEULER_XYZ.
    void SetRotationOrder(int pPivotSet, ERotationOrder pOrder);
    /// The order that was set.
    ERotationOrder GetRotationOrder(int pPivotSet = kPivotSet0) const;
    /// The same, stored in \p pOrder.
    void GetRotationOrder(int pPivotSet, ERotationOrder& pOrder) const;

    /// Centimetres, in the parent's space. The w given is dropped, the w returned is 0; so for the next two.
    void SetRotationOffset(int pPivotSet, KQexVector4 pOffset);
    /// The offset that was set, w = 0.
    KQexVector4 GetRotationOffset(int pPivotSet = kPivotSet0) const;

    /// XYZ Euler angles in degrees.
    void SetPreRotation(int pPivotSet, KQexVector4 pRotation);
    /// The pre-rotation that was set, w = 0.
    KQexVector4 GetPreRotation(int pPivotSet = kPivotSet0) const;
    /// XYZ Euler angles in degrees, of the rotation whose inverse is applied.
    void SetPostRotation(int pPivotSet, KQexVector4 pRotation);
    /// The post-rotation that was set, w = 0.
    KQexVector4 GetPostRotation(int pPivotSet = kPivotSet0) const;

    /// The local values at \p pTime in the evaluator's current stack, as x, y, z and w = 0. The flags and the pivot set are
    /// kept for the callers that pass them and have no effect: no target is evaluated and no limit applied.
    KQexVector4 EvaluateLocalTranslation(KTime pTime, int pPivotSet = kPivotSet0, bool pApplyTarget = false, bool pForceEval = false) const;
    /// The same for the rotation: degrees about x, y, z, without pre- and post-rotation.
    KQexVector4 EvaluateLocalRotation(KTime pTime, int pPivotSet = kPivotSet0, bool pApplyTarget = false, bool pForceEval = false) const;
    /// The same for the scaling: factors.
    KQexVector4 EvaluateLocalScaling(KTime pTime, int pPivotSet = kPivotSet0, bool pApplyTarget = false, bool pForceEval = false) const;

    /// The local transform for the given local values, by the formula of the class. Reads nothing but the node's pivots.
    void ComposeLocalTransform(KQexMatrix& pResult, const double pTranslation[3], const double pRotation[3],
                               const double pScaling[3]) const;
    /// \}

    /// The node's limits, part of the node.
    KQexNodeLimits& GetLimits() { return mLimits; }
    /// The node's limits to read.
    const KQexNodeLimits& GetLimits() const { return mLimits; }

    KQexTypedProperty<qexVectorTemplate3<double>> mLocalTranslation; ///< Centimetres, parent's space; (0, 0, 0).
    KQexTypedProperty<qexVectorTemplate3<double>> mLocalRotation;    ///< Degrees about x, y, z; (0, 0, 0).
    KQexTypedProperty<qexVectorTemplate3<double>> mLocalScaling;     ///< Factors; (1, 1, 1).

protected:
    /// As KQexObject's; objects are made by Create.
    KQexNode(KQexScene* pScene, const char* pName);

private:
    /// A pivot rotation with its matrix, which is needed at every frame and changes almost never.
    struct KPivotRotation
    {
        void Set(const KQexVector4& pAngles);

        KQexVector4 mAngles;          ///< XYZ, degrees, w = 0.
        double      mMatrix[3][4];    ///< mMatrix[j]: image of axis j. Written by Set.
        bool        mIdentity = true; ///< No rotation: the matrix is not used.
    };

    void        Detach(KQexNode* pChild);
    bool        IsSceneRoot() const;
    static void DestroyBelongings(KQexNode* pNode);

    KQexListHook<KQexNode> mSiblingHook;
    using KChildren = KQexIndexedList<KQexNode, &KQexNode::mSiblingHook>;

    KChildren          mChildren;
    KQexNode*          mParent = nullptr;
    KQexNodeAttribute* mAttribute = nullptr;
    KQexNodeLimits     mLimits;
    KQexVector4        mRotationOffset;
    KPivotRotation     mPreRotation;
    KPivotRotation     mPostRotation;
    ERotationOrder     mRotationOrder = eEULER_XYZ;
    bool               mRotationActive = false;
};

} // namespace qexsdk

#endif
