#ifndef QEXSCENE_KQEXSKELETON_H
#define QEXSCENE_KQEXSKELETON_H

#include <qexscene/kqexnodeattribute.h>

namespace qexsdk
{

/// Makes a node a part of a skeleton.
class QEX_API KQexSkeleton : public KQexNodeAttribute
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// What part of a skeleton the node is.
    enum ESkeletonType
    {
        eSKELETON_ROOT = 0,  ///< where a skeleton begins
        eSKELETON_BONE = 1,  ///< a bone with a length of its own
        eSKELETON_JOINT = 2, ///< a joint: its bones reach to its children
        eSKELETON_END = 3    ///< the end of a chain
    };

    /// Makes an attribute of type eSKELETON_ROOT, owned by the scene of \p pContainer. Null when \p pContainer is null or
    /// memory runs out.
    static KQexSkeleton* Create(KQexObject* pContainer, const char* pName);

    const kQexClassId& GetClassId() const noexcept override;

    /// Says what part of a skeleton the node is.
    void SetSkeletonType(ESkeletonType pType) { mSkeletonType = pType; }
    /// What was said last.
    ESkeletonType GetSkeletonType() const { return mSkeletonType; }

protected:
    /// As KQexObject's; objects are made by Create.
    KQexSkeleton(KQexScene* pScene, const char* pName) : KQexNodeAttribute(pScene, pName) {}

private:
    ESkeletonType mSkeletonType = eSKELETON_ROOT;
};

} // namespace qexsdk

#endif
