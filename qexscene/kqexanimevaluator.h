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

/// Tells where nodes are at a time, in the current animation stack. Only layer 0 of the stack counts: a property with a curve
/// node there has the values of its channels (a curve's value, or the channel's where there is no curve or one without
/// keys), any other property its own value; so have all of them while no stack is current. Every scene has one.
class QEX_API KQexAnimEvaluator : public KQexObject
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// The evaluator is its scene's for as long as the scene lives: does nothing.
    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;

    /// The current animation stack, null when there is none.
    KQexAnimStack* GetContext() const { return mContext; }

    /// Makes \p pStack current; null: none. False, and nothing changed, when it is of another scene.
    bool SetContext(KQexAnimStack* pStack);

    /// Layer 0 of the current stack, or null.
    KQexAnimLayer* GetLayer() const;

    /// \p pNode's transform relative to its parent at \p pTime, by the formula of KQexNode. Identity for null.
    KQexMatrix GetNodeLocalTransform(const KQexNode* pNode, KTime pTime) const;

    /// \p pNode's transform relative to the world: of all its ancestors' local transforms and its own. Identity for null.
    /// Costs as many local transforms as the node is deep; EvaluateGlobalTransforms does a whole tree for one each.
    KQexMatrix GetNodeGlobalTransform(const KQexNode* pNode, KTime pTime) const;

    /// The local values themselves, as x, y, z and w = 0: centimetres, degrees, factors.
    KQexVector4 GetNodeLocalTranslation(const KQexNode* pNode, KTime pTime) const;
    /// The same for the rotation: degrees about x, y, z, without pre- and post-rotation.
    KQexVector4 GetNodeLocalRotation(const KQexNode* pNode, KTime pTime) const;
    /// The same for the scaling: factors.
    KQexVector4 GetNodeLocalScaling(const KQexNode* pNode, KTime pTime) const;

    /// The global transforms of \p pRoot and of every node below it at \p pTime, into \p pBuffer, in one pass whose cost is
    /// linear in the nodes and whose stack does not grow with their depth. False, and \p pBuffer without items, when
    /// \p pRoot is null or of another scene, or memory runs out.
    bool EvaluateGlobalTransforms(KQexNode* pRoot, KTime pTime, KQexGlobalTransforms& pBuffer) const;

protected:
    /// As KQexObject's; the scene makes its evaluator itself.
    KQexAnimEvaluator(KQexScene* pScene, const char* pName) : KQexObject(pScene, pName) {}

private:
    friend class KQexScene;

    static KQexAnimEvaluator* Create(KQexScene* pScene);

    KQexAnimStack* mContext = nullptr;
};

} // namespace qexsdk

#endif
