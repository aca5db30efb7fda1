#ifndef QEXSCENE_KQEXCLASSID_H
#define QEXSCENE_KQEXCLASSID_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstring>

namespace qexsdk
{

/// Which class of the scene library an object is of. A small value: pass it by value. Classes form a single-inheritance
/// chain, and each class `K…` has its own as `K…::smClassId`. Constant-initialised, so that it costs nothing at start-up.
class QEX_API kQexClassId
{
public:
    /// The identifier of no class. Where objects are chosen by class it chooses all of them.
    constexpr kQexClassId() noexcept = default;

    /// \param pName   the class's name; must outlive the identifier (a literal).
    /// \param pParent the identifier of its base class, null for KQexObject; must outlive this one.
    constexpr kQexClassId(const char* pName, const kQexClassId* pParent) noexcept : mName(pName), mParent(pParent) {}

    /// False for the identifier of no class.
    constexpr bool IsValid() const noexcept { return mName != nullptr; }

    /// The class's name, null for the identifier of no class.
    constexpr const char* GetName() const noexcept { return mName; }

    /// Whether this class is \p pOther or derived from it. Any class is of the identifier of no class.
    bool Is(const kQexClassId& pOther) const noexcept
    {
        if (!pOther.IsValid())
        {
            return true;
        }
        for (const kQexClassId* lId = this; lId != nullptr; lId = lId->mParent)
        {
            if (*lId == pOther)
            {
                return true;
            }
        }
        return false;
    }

    /// Whether both are the same class: by name, since a shared library may have its own copy.
    bool operator==(const kQexClassId& pOther) const noexcept
    {
        return mName == pOther.mName || (mName != nullptr && pOther.mName != nullptr && std::strcmp(mName, pOther.mName) == 0);
    }
    /// Whether they are different classes.
    bool operator!=(const kQexClassId& pOther) const noexcept { return !(*this == pOther); }

private:
    const char*        mName = nullptr;
    const kQexClassId* mParent = nullptr;
};

} // namespace qexsdk

#endif
