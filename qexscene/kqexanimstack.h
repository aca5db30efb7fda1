#ifndef QEXSCENE_KQEXANIMSTACK_H
#define QEXSCENE_KQEXANIMSTACK_H

#include <qexscene/kqexanimlayer.h>

namespace qexsdk
{

/// A take: a named animation of the scene, with its layers as members. The first stack of a scene becomes the evaluator's current
/// one. When the current stack is destroyed, the first remaining one becomes current.
class QEX_API KQexAnimStack : public KQexCollection
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// A stack without layers, owned by the scene of \p pContainer. Null when \p pContainer is null or memory runs out.
    /// KQexScene::CreateAnimStack adds a base layer.
    static KQexAnimStack* Create(KQexObject* pContainer, const char* pName);

    const kQexClassId& GetClassId() const noexcept override;

    /// Removes it from the scene's stacks.
    ~KQexAnimStack() override;

    /// Layer 0; created with the name "BaseLayer" if the stack has none. Null when memory runs out.
    KQexAnimLayer* GetOrCreateBaseLayer();

protected:
    /// See KQexObject; use Create.
    KQexAnimStack(KQexScene* pScene, const char* pName);

private:
    friend class KQexScene;

    KQexListHook<KQexAnimStack> mStackHook; ///< In the scene's list of stacks.
};

/// Layer 0 of \p pStack, which evaluation uses; null without a stack or a layer.
inline KQexAnimLayer* KQexLayerOf(const KQexAnimStack* pStack)
{
    return pStack != nullptr ? pStack->GetMember<KQexAnimLayer>(0) : nullptr;
}

} // namespace qexsdk

#endif
