#ifndef QEXSCENE_KQEXNODEATTRIBUTE_H
#define QEXSCENE_KQEXNODEATTRIBUTE_H

#include <qexscene/kqexobject.h>

namespace qexsdk
{

class KQexNode;

/// What kind of thing a node is. Owned by its scene, and attached to at most one node.
class QEX_API KQexNodeAttribute : public KQexObject
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    const kQexClassId& GetClassId() const noexcept override;

    /// Detaches it from its node.
    ~KQexNodeAttribute() override;

    /// The node it is attached to (KQexNode::SetNodeAttribute), or null.
    KQexNode* GetNode() const { return mNode; }

protected:
    /// See KQexObject; for derived classes.
    KQexNodeAttribute(KQexScene* pScene, const char* pName) : KQexObject(pScene, pName) {}

private:
    friend class KQexNode;

    KQexNode* mNode = nullptr;
};

} // namespace qexsdk

#endif
