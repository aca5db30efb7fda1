#ifndef QEXSCENE_KQEXNODEATTRIBUTE_H
#define QEXSCENE_KQEXNODEATTRIBUTE_H

#include <qexscene/kqexobject.h>

namespace qexsdk
{

class KQexNode;

/// What a node is, beside a place in space. An attribute belongs to its scene and is attached to one node at most.
class QEX_API KQexNodeAttribute : public KQexObject
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    const kQexClassId& GetClassId() const noexcept override;

    /// Leaves the node it is attached to.
    ~KQexNodeAttribute() override;

    /// The node it is attached to (KQexNode::SetNodeAttribute), or null.
    KQexNode* GetNode() const { return mNode; }

protected:
    /// As KQexObject's; only derived classes make objects.
    KQexNodeAttribute(KQexScene* pScene, const char* pName) : KQexObject(pScene, pName) {}

private:
    friend class KQexNode;

    KQexNode* mNode = nullptr;
};

} // namespace qexsdk

#endif
