#ifndef QEXSCENE_KQEXANIMLAYER_H
#define QEXSCENE_KQEXANIMLAYER_H

#include <qexscene/kqexcollection.h>

namespace qexsdk
{

/// One layer of a take: its members are the curve nodes of the properties that are animated on it. Only a stack's first
/// layer is evaluated.
class QEX_API KQexAnimLayer : public KQexCollection
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// A layer without a stack, owned by the scene of \p pContainer; add it to a stack with AddMember. Null when \p pContainer is
    /// null or memory runs out.
    static KQexAnimLayer* Create(KQexObject* pContainer, const char* pName);

    const kQexClassId& GetClassId() const noexcept override;

protected:
    /// See KQexObject; use Create.
    KQexAnimLayer(KQexScene* pScene, const char* pName) : KQexCollection(pScene, pName) {}
};

} // namespace qexsdk

#endif
