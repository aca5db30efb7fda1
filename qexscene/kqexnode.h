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

/// The only pivot set. Operations that take a pivot set treat any value as this one.
constexpr int kPivotSet0 = 0;

/// A node of the scene's tree, with an animatable transform relative to its parent.
///
/// Local transform, as a product of column-vector matrices (the rightmost is applied first):
///
///     T(local translation) · T(rotation offset) · R(pre-rotation) · R(local rotation) · R(post-rotation)⁻¹ · S(local scaling)
///
/// with translations in centimetres, rotations as Euler angles in degrees about x, y, z. Pre- and post-rotation apply x
/// first, then y, then z; the local rotation applies them in the node's rotation order. While rotation is not active (the
/// default), order, pre- and post-rotation are ignored and the local rotation is XYZ. A spheric order counts as XYZ.
///
/// Destroy(true, …) also destroys the node's subtree, with the attributes, curve nodes and curves of its nodes. Destroy(false, …)
/// leaves the children without a parent, and the rest in the scene. Only the scene destroys its root node:
/// Destroy(false, …) does nothing to it, Destroy(true, …) destroys its descendants.
class QEX_API KQexNode : public KQexObject
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// A node named exactly \p pName (null counts as "") without a parent, owned by the scene of \p pContainer.
    /// Null when \p pContainer is null or memory runs out.
    static KQexNode* Create(KQexObject* pContainer, const char* pName);

    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;
    KQexObject*        GetSrcObject(kQexClassId pClass, int pIndex) const override;

    /// Detaches it from its parent, attribute and children.
    ~KQexNode() override;

    /// \name Attribute
    /// \{

    /// Attaches \p pAttribute, detaching it from its previous node; the node's previous attribute stays in the scene. Null only
    /// detaches. False, and nothing changed, when it belongs to another scene.
    bool SetNodeAttribute(KQexNodeAttribute* pAttribute);
    /// The attached attribute, or null.
    KQexNodeAttribute* GetNodeAttribute() const { return mAttribute; }

    /// The attribute if it is a KQexSkeleton, else null.
    KQexSkeleton* GetSkeleton() const;
    /// \}

    /// \name Tree
    /// \{

    /// Appends \p pChild to the children, reparenting it if it has a parent. O(1) for a leaf; a node with children is compared with
    /// this node's ancestors. False, and nothing changed, when \p pChild is null, the scene's root, of another scene, this node or
    /// one of its ancestors.
    bool AddChild(KQexNode* pChild);

    /// Detaches \p pChild, which then has no parent. False when it is not a child of this node. O(1).
    bool RemoveChild(KQexNode* pChild);

    /// The parent, or null.
    KQexNode* GetParent() const { return mParent; }

    /// Child \p pIndex, in the order of adding; null when there is none. See KQexIndexedList for the cost.
    KQexNode* GetChild(int pIndex) const { return mChildren.GetAt(pIndex); }

    /// Number of children.
    /// \param pRecursive true: of all descendants; O(n).
    int GetChildCount(bool pRecursive = false) const;

    /// The first descendant named exactly \p pName, in pre-order, or null.
    /// \param pName      the name, case-sensitive; null finds nothing.
    /// \param pRecursive true: at any depth; false: among the direct children.
    /// \param pInitial   ignored; for compatibility.
    KQexNode* FindChild(const char* pName, bool pRecursive = true, bool pInitial = false) const;

    /// The first child, or null.
    KQexNode* GetFirstChild() const { return mChildren.GetFirst(); }
    /// The next child of the same parent, or null.
    KQexNode* GetNextSibling() const { return KChildren::GetNext(this); }

    /// The next node in pre-order within the tree at \p pRoot, or null after the last. Walks a tree without recursion or memory:
    /// for (n = root; n != null; n = n->GetNextInTree(root)).
    KQexNode* GetNextInTree(const KQexNode* pRoot) const;
    /// \}

    /// \name Transform
    /// \{

    /// Enables rotation order, pre- and post-rotation. Default false.
    void SetRotationActive(bool pActive) { mRotationActive = pActive; }
    /// Whether rotation order, pre- and post-rotation are enabled.
    bool GetRotationActive() const { return mRotationActive; }

    /// The rotation order; stored even while rotation is not active. Default eEULER_XYZ.
    void SetRotationOrder(int pPivotSet, ERotationOrder pOrder);
    /// The rotation order, active or not.
    ERotationOrder GetRotationOrder(int pPivotSet = kPivotSet0) const;
    /// The same, stored in \p pOrder.
    void GetRotationOrder(int pPivotSet, ERotationOrder& pOrder) const;

    /// The rotation offset in centimetres, parent's space. w is ignored, and returned as 0, here and for both rotations below.
    void SetRotationOffset(int pPivotSet, KQexVector4 pOffset);
    /// The rotation offset, w = 0.
    KQexVector4 GetRotationOffset(int pPivotSet = kPivotSet0) const;

    /// The pre-rotation: XYZ Euler angles in degrees.
    void SetPreRotation(int pPivotSet, KQexVector4 pRotation);
    /// The pre-rotation, w = 0.
    KQexVector4 GetPreRotation(int pPivotSet = kPivotSet0) const;
    /// The post-rotation, whose inverse is applied: XYZ Euler angles in degrees.
    void SetPostRotation(int pPivotSet, KQexVector4 pRotation);
    /// The post-rotation, w = 0.
    KQexVector4 GetPostRotation(int pPivotSet = kPivotSet0) const;

    /// The local translation at \p pTime in the evaluator's current stack, w = 0. The pivot set and the flags are ignored; they are
    /// for compatibility.
    KQexVector4 EvaluateLocalTranslation(KTime pTime, int pPivotSet = kPivotSet0, bool pApplyTarget = false, bool pForceEval = false) const;
    /// The same for the rotation: degrees about x, y, z, without pre- and post-rotation.
    KQexVector4 EvaluateLocalRotation(KTime pTime, int pPivotSet = kPivotSet0, bool pApplyTarget = false, bool pForceEval = false) const;
    /// The same for the scaling factors.
    KQexVector4 EvaluateLocalScaling(KTime pTime, int pPivotSet = kPivotSet0, bool pApplyTarget = false, bool pForceEval = false) const;

    /// The local transform for the given local values, by the class's formula. Uses only the node's pivots and rotation order.
    void ComposeLocalTransform(KQexMatrix& pResult, const double pTranslation[3], const double pRotation[3],
                               const double pScaling[3]) const;
    /// \}

    /// The node's limits.
    KQexNodeLimits& GetLimits() { return mLimits; }
    /// The node's limits.
    const KQexNodeLimits& GetLimits() const { return mLimits; }

    KQexTypedProperty<qexVectorTemplate3<double>> mLocalTranslation; ///< Centimetres, parent's space; (0, 0, 0).
    KQexTypedProperty<qexVectorTemplate3<double>> mLocalRotation;    ///< Degrees about x, y, z; (0, 0, 0).
    KQexTypedProperty<qexVectorTemplate3<double>> mLocalScaling;     ///< Factors; (1, 1, 1).

protected:
    /// See KQexObject; use Create.
    KQexNode(KQexScene* pScene, const char* pName);

private:
    /// A pivot rotation with its matrix, cached because every frame needs it.
    struct KPivotRotation
    {
        void Set(const KQexVector4& pAngles);

        KQexVector4 mAngles;          ///< XYZ, degrees, w = 0.
        double      mMatrix[3][4];    ///< mMatrix[j]: image of axis j. Written by Set.
        bool        mIdentity = true; ///< The matrix is unused.
    };

    void        Detach(KQexNode* pChild);
    bool        IsSceneRoot() const;
    static void DestroyAttributeAndCurves(KQexNode* pNode);

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
