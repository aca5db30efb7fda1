#ifndef QEXSCENE_KQEXCLASSID_H
#define QEXSCENE_KQEXCLASSID_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstring>

namespace qexsdk
{

/// Identifies a class of the scene library. Small: pass it by value. Classes form a single-inheritance chain; the id of class
/// `K…` is `K…::smClassId`. Constant-initialised, so it costs nothing at start-up.
class QEX_API kQexClassId
{
public:
    /// The id of no class. As a filter it matches every class.
    constexpr kQexClassId() noexcept = default;

    /// \param pName   the class's name; must outlive the id (a literal).
    /// \param pParent the id of its base class, null for KQexObject; must outlive this one.
    constexpr kQexClassId(const char* pName, const kQexClassId* pParent) noexcept : mName(pName), mParent(pParent) {}

    /// False for the id of no class.
    constexpr bool IsValid() const noexcept { return mName != nullptr; }

    /// The class's name, null for the id of no class.
    constexpr const char* GetName() const noexcept { return mName; }

    /// Whether this class is \p pOther or derived from it. Always true if \p pOther is the id of no class.
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

    /// Compares names, because a shared library may have its own copy of the id.
    bool operator==(const kQexClassId& pOther) const noexcept
    {
        return mName == pOther.mName || (mName != nullptr && pOther.mName != nullptr && std::strcmp(mName, pOther.mName) == 0);
    }
    /// Not operator==.
    bool operator!=(const kQexClassId& pOther) const noexcept { return !(*this == pOther); }

private:
    const char*        mName = nullptr;
    const kQexClassId* mParent = nullptr;
};

} // namespace qexsdk

#endif
