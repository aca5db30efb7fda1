#ifndef QEXSCENE_KQEXANIMEVALUATOR_H
#define QEXSCENE_KQEXANIMEVALUATOR_H

#include <kbaselib/kbase/ktime.h>
#include <qexscene/kqexglobaltransforms.h>
#include <qexscene/kqexmatrix.h>
#include <qexscene/kqexobject.h>

namespace qexsdk
{

class KQexAnimLayer;
class KQexAnimStack;
class KQexNode;

/// Evaluates node transforms at a time, in the current animation stack. Only layer 0 of the stack counts: a property with a curve
/// node there has the values of its channels (see KQexAnimCurveNode::Evaluate), any other property its own value. Without a
/// current stack all properties have their own values. Every scene has one evaluator.
class QEX_API KQexAnimEvaluator : public KQexObject
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// Does nothing: the evaluator lives as long as its scene.
    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;

    /// The current animation stack, null when there is none.
    KQexAnimStack* GetContext() const { return mContext; }

    /// Makes \p pStack current; null: none. False, and nothing changed, when it belongs to another scene.
    bool SetContext(KQexAnimStack* pStack);

    /// Layer 0 of the current stack, or null.
    KQexAnimLayer* GetLayer() const;

    /// \p pNode's transform relative to its parent at \p pTime, by the formula of KQexNode. Identity for null.
    KQexMatrix GetNodeLocalTransform(const KQexNode* pNode, KTime pTime) const;

    /// \p pNode's transform relative to the world: the product of its ancestors' local transforms and its own. Identity for null.
    /// Linear in the node's depth; EvaluateGlobalTransforms does a whole tree with one local transform per node.
    KQexMatrix GetNodeGlobalTransform(const KQexNode* pNode, KTime pTime) const;

    /// The local translation in centimetres, w = 0. (0, 0, 0) for null.
    KQexVector4 GetNodeLocalTranslation(const KQexNode* pNode, KTime pTime) const;
    /// The local rotation in degrees about x, y, z, w = 0, without pre- and post-rotation. (0, 0, 0) for null.
    KQexVector4 GetNodeLocalRotation(const KQexNode* pNode, KTime pTime) const;
    /// The local scaling factors, w = 0. (1, 1, 1) for null.
    KQexVector4 GetNodeLocalScaling(const KQexNode* pNode, KTime pTime) const;

    /// The global transforms of \p pRoot and its descendants at \p pTime, into \p pBuffer. One pass, linear in the nodes, without
    /// recursion. False, and \p pBuffer empty, when \p pRoot is null or of another scene, or memory runs out.
    bool EvaluateGlobalTransforms(KQexNode* pRoot, KTime pTime, KQexGlobalTransforms& pBuffer) const;

protected:
    /// See KQexObject; the scene creates its evaluator.
    KQexAnimEvaluator(KQexScene* pScene, const char* pName) : KQexObject(pScene, pName) {}

private:
    friend class KQexScene;

    static KQexAnimEvaluator* Create(KQexScene* pScene);

    KQexAnimStack* mContext = nullptr;
};

} // namespace qexsdk

#endif
