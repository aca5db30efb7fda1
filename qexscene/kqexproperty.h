#ifndef QEXSCENE_KQEXPROPERTY_H
#define QEXSCENE_KQEXPROPERTY_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexclassid.h>
#include <qexscene/kqexconnection.h>
#include <qexscene/kqextype.h>

namespace qexsdk
{

class KQexAnimCurveNode;
class KQexAnimLayer;
class KQexObject;

/// What a property is: a value of a fixed type, the object it belongs to, and the objects that drive it. Lives inside that
/// object and ends with it.
class QEX_API KQexPropertyData
{
public:
    /// \param pOwner object that the property is part of.
    /// \param pName  name; must outlive the property (a literal, or owned by \p pOwner).
    /// \param pType the type of its value, for good.
    /// \param pX,pY,pZ the first values of its components.
    KQexPropertyData(KQexObject* pOwner, const char* pName, EQexType pType, double pX, double pY, double pZ);

    /// Ends every connection to the property.
    ~KQexPropertyData();

    KQexPropertyData(const KQexPropertyData&) = delete;
    KQexPropertyData& operator=(const KQexPropertyData&) = delete;

    KQexObject*                                         mOwner;    ///< The object that the property is part of.
    const char*                                         mName;     ///< Its name; not owned.
    EQexType                                            mType;     ///< The type of its value.
    double                                              mValue[4]; ///< Its components; those that the type does not have are 0.
    KQexList<KQexConnection, &KQexConnection::mSrcHook> mSources;  ///< The connections that drive it, in the order in which they were made.
};

/// A value of an object that can be read, set and animated. This class is a handle: copy it freely, and do not use it after
/// the object it belongs to has ended. A default-made one is not valid, and every operation on it fails without effect.
class QEX_API KQexProperty
{
public:
    KQexProperty() = default;
    /// A handle on \p pData, which it does not own; null: not valid.
    explicit KQexProperty(KQexPropertyData* pData) : mProperty(pData) {}
    ~KQexProperty() = default;
    /// A handle on the same property.
    KQexProperty(const KQexProperty&) = default;
    /// Becomes a handle on the same property; sets no value.
    KQexProperty& operator=(const KQexProperty&) = default;

    /// Whether there is a property behind the handle.
    bool IsValid() const { return mProperty != nullptr; }

    /// Its name ("Lcl Translation", "X"), "" when not valid.
    const char* GetName() const { return mProperty != nullptr ? mProperty->mName : ""; }

    /// The type of its value.
    EQexType GetType() const { return mProperty != nullptr ? mProperty->mType : eQexUndefined; }

    /// The object it belongs to, null when not valid.
    KQexObject* GetObject() const { return mProperty != nullptr ? mProperty->mOwner : nullptr; }

    /// Sets the value, which is what the property has wherever no curve drives it.
    /// \param pValue points to a value of type \p pType; numbers convert to numbers, three and four components to each other.
    /// \param pType  the type of what \p pValue points to.
    /// \param pCheckForValueEquality kept for the callers that pass it; has no effect.
    /// False, and nothing changed, when the property is not valid, \p pValue is null, or the types do not convert.
    bool Set(const void* pValue, EQexType pType, bool pCheckForValueEquality = true);

    /// Stores the value at \p pValue as a value of type \p pType. False, and \p pValue untouched, where Set would fail.
    bool Get(void* pValue, EQexType pType) const;

    /// The curve node that drives the property in the take \p pTakeName: on layer 0 of the animation stack of that name.
    /// \param pCreate true: the stack, its base layer and the curve node are made when missing. The node's channels then
    ///                start with the property's value.
    /// \param pTakeName the stack's name.
    /// Null when there is none, when \p pTakeName is null or empty, or when memory runs out.
    KQexAnimCurveNode* GetCurveNode(bool pCreate, const char* pTakeName);

    /// The curve node that drives the property on \p pLayer (null: gives null), made when missing if \p pCreate is true.
    KQexAnimCurveNode* GetCurveNode(KQexAnimLayer* pLayer, bool pCreate = false);
    /// The same to read, never made.
    const KQexAnimCurveNode* GetCurveNode(const KQexAnimLayer* pLayer) const;

    /// The \p pIndex-th object of class \p pClass (an invalid identifier: any class) that is connected to the property, in
    /// the order in which they were connected, or null.
    KQexObject* GetSrcObject(const kQexClassId& pClass, int pIndex = 0) const;

    /// Makes \p pObject drive the property, after those that do. An object may be connected more than once.
    /// An object that has no scene becomes the property's scene's. False, and nothing changed, when either is missing, they
    /// belong to different scenes, or memory runs out.
    bool ConnectSrcObject(KQexObject* pObject);

    /// Ends the first connection of \p pObject to the property. False when there is none.
    bool DisconnectSrcObject(KQexObject* pObject);

    /// The property's data, for the evaluator; null when not valid.
    KQexPropertyData* GetData() { return mProperty; }
    /// The same to read.
    const KQexPropertyData* GetData() const { return mProperty; }

protected:
    /// The property; null: not valid.
    KQexPropertyData* mProperty = nullptr;
};

/// \p pProperty's value as a T; T() when it has none of that kind.
template <typename T>
T KQexGet(const KQexProperty& pProperty)
{
    T lValue{};
    pProperty.Get(&lValue, QexTypeOf(lValue));
    return lValue;
}

/// Sets \p pProperty to \p pValue, as KQexProperty::Set.
template <typename T>
bool KQexSet(KQexProperty pProperty, const T& pValue, bool pCheckForValueEquality = true)
{
    return pProperty.Set(&pValue, QexTypeOf(pValue), pCheckForValueEquality);
}

/// A property as a member of its object, with a value of type T. Copying it into a KQexProperty gives a handle on it.
template <typename T>
class KQexTypedProperty : public KQexProperty
{
public:
    /// \param pOwner object that the property is a member of.
    /// \param pName  name; must outlive the property.
    /// \param pX,pY,pZ the first values of its components.
    KQexTypedProperty(KQexObject* pOwner, const char* pName, double pX = 0.0, double pY = 0.0, double pZ = 0.0)
        : mStorage(pOwner, pName, QexTypeOf(T()), pX, pY, pZ)
    {
        mProperty = &mStorage;
    }
    ~KQexTypedProperty() = default;
    KQexTypedProperty(const KQexTypedProperty&) = delete;
    KQexTypedProperty& operator=(const KQexTypedProperty&) = delete;

    using KQexProperty::Get;
    using KQexProperty::Set;

    /// The value wherever no curve drives the property.
    T Get() const { return KQexGet<T>(*this); }
    /// Sets that value. Cannot fail for a T that the property is made for.
    bool Set(const T& pValue) { return KQexSet<T>(*this, pValue); }

private:
    KQexPropertyData mStorage;
};

} // namespace qexsdk

#endif
