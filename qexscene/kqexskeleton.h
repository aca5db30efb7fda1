#ifndef QEXSCENE_KQEXSKELETON_H
#define QEXSCENE_KQEXSKELETON_H

#include <qexscene/kqexnodeattribute.h>

namespace qexsdk
{

/// Marks a node as part of a skeleton.
class QEX_API KQexSkeleton : public KQexNodeAttribute
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// The node's role in the skeleton.
    enum ESkeletonType
    {
        eSKELETON_ROOT = 0,  ///< root of a skeleton
        eSKELETON_BONE = 1,  ///< a bone with a length of its own
        eSKELETON_JOINT = 2, ///< a joint, whose bones extend to its children
        eSKELETON_END = 3    ///< the end of a chain
    };

    /// An attribute of type eSKELETON_ROOT, owned by the scene of \p pContainer. Null when \p pContainer is null or
    /// memory runs out.
    static KQexSkeleton* Create(KQexObject* pContainer, const char* pName);

    const kQexClassId& GetClassId() const noexcept override;

    /// Sets the node's role in the skeleton.
    void SetSkeletonType(ESkeletonType pType) { mSkeletonType = pType; }
    /// The node's role in the skeleton.
    ESkeletonType GetSkeletonType() const { return mSkeletonType; }

protected:
    /// See KQexObject; use Create.
    KQexSkeleton(KQexScene* pScene, const char* pName) : KQexNodeAttribute(pScene, pName) {}

private:
    ESkeletonType mSkeletonType = eSKELETON_ROOT;
};

} // namespace qexsdk

#endif
