#ifndef QEXSCENE_KQEXANIMSTACK_H
#define QEXSCENE_KQEXANIMSTACK_H

#include <qexscene/kqexanimlayer.h>

namespace qexsdk
{

/// A take: one animation of the scene, named, with its layers as members. The first stack that a scene gets becomes the
/// evaluator's current one. When the current stack ends, the first of the remaining ones takes its place.
class QEX_API KQexAnimStack : public KQexCollection
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// Makes a stack without layers in the scene of \p pContainer. Null when \p pContainer is null or memory runs out.
    /// KQexScene::CreateAnimStack makes one with its base layer.
    static KQexAnimStack* Create(KQexObject* pContainer, const char* pName);

    const kQexClassId& GetClassId() const noexcept override;

    /// Leaves its scene's list of stacks.
    ~KQexAnimStack() override;

    /// Layer 0, made and named "BaseLayer" when the stack has none. Null when memory runs out.
    KQexAnimLayer* GetOrCreateBaseLayer();

protected:
    /// As KQexObject's; objects are made by Create.
    KQexAnimStack(KQexScene* pScene, const char* pName);

private:
    friend class KQexScene;

    KQexListHook<KQexAnimStack> mStackHook; ///< Place among the scene's stacks.
};

} // namespace qexsdk

#endif
