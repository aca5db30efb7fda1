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

/// Data of a property: a value of a fixed type, the object it belongs to, and its connections. Part of that object.
class QEX_API KQexPropertyData
{
public:
    /// \param pOwner object of which the property is part.
    /// \param pName  name; must outlive the property (a literal, or owned by \p pOwner).
    /// \param pType the type of its value.
    /// \param pX,pY,pZ initial value.
    KQexPropertyData(KQexObject* pOwner, const char* pName, EQexType pType, double pX, double pY, double pZ);

    /// Removes all connections to the property.
    ~KQexPropertyData();

    KQexPropertyData(const KQexPropertyData&) = delete;
    KQexPropertyData& operator=(const KQexPropertyData&) = delete;

    KQexObject*                                         mOwner;    ///< The object that the property is part of.
    const char*                                         mName;     ///< Its name; not owned.
    EQexType                                            mType;     ///< The type of its value.
    double                                              mValue[4]; ///< Components; those beyond the type's are 0.
    KQexList<KQexConnection, &KQexConnection::mSrcHook> mSources;  ///< The connections that drive it, oldest first.
};

/// A value of an object that can be read, set and animated. This class is a handle: copy it freely, but do not use it after the
/// object is destroyed. A default-constructed one is invalid, and every operation on it fails without effect.
class QEX_API KQexProperty
{
public:
    KQexProperty() = default;
    /// A handle on \p pData, which it does not own; null: invalid.
    explicit KQexProperty(KQexPropertyData* pData) : mProperty(pData) {}
    ~KQexProperty() = default;
    /// A handle on the same property.
    KQexProperty(const KQexProperty&) = default;
    /// Rebinds the handle; does not copy the value.
    KQexProperty& operator=(const KQexProperty&) = default;

    /// Whether the handle refers to a property.
    bool IsValid() const { return mProperty != nullptr; }

    /// Its name ("Lcl Translation", "X"), "" when not valid.
    const char* GetName() const { return mProperty != nullptr ? mProperty->mName : ""; }

    /// The type of its value.
    EQexType GetType() const { return mProperty != nullptr ? mProperty->mType : eQexUndefined; }

    /// The object it belongs to, null when not valid.
    KQexObject* GetObject() const { return mProperty != nullptr ? mProperty->mOwner : nullptr; }

    /// Sets the value, which applies while no curve drives the property.
    /// \param pValue points to a value of type \p pType; numbers convert to numbers, three and four components to each other.
    /// \param pType  the type of the value at \p pValue.
    /// \param pCheckForValueEquality ignored; for compatibility.
    /// False, and nothing changed, when the property is not valid, \p pValue is null, or the types do not convert.
    bool Set(const void* pValue, EQexType pType, bool pCheckForValueEquality = true);

    /// Stores the value at \p pValue, converted to \p pType. False, and nothing stored, where Set would fail.
    bool Get(void* pValue, EQexType pType) const;

    /// The curve node that drives the property in the take \p pTakeName: on layer 0 of the animation stack of that name.
    /// \param pCreate true: creates the stack, its base layer and the curve node if missing. The channels of a new node get the
    ///                property's value.
    /// \param pTakeName the stack's name.
    /// Null when there is none, the type is not eQexDouble3, \p pTakeName is null or empty, or memory runs out.
    KQexAnimCurveNode* GetCurveNode(bool pCreate, const char* pTakeName);

    /// The curve node that drives the property on \p pLayer, or null; with \p pCreate, created if missing, for the type eQexDouble3.
    KQexAnimCurveNode* GetCurveNode(KQexAnimLayer* pLayer, bool pCreate = false);
    /// The same, never created.
    const KQexAnimCurveNode* GetCurveNode(const KQexAnimLayer* pLayer) const;

    /// The \p pIndex-th object of class \p pClass (an invalid identifier: any class) that is connected to the property, in
    /// the order in which they were connected, or null.
    KQexObject* GetSrcObject(const kQexClassId& pClass, int pIndex = 0) const;

    /// Connects \p pObject to the property, after its other sources. An object may be connected more than once. An object without a
    /// scene is added to the property's. False, and nothing changed, when the property is invalid, \p pObject is null, they belong
    /// to different scenes, or memory runs out.
    bool ConnectSrcObject(KQexObject* pObject);

    /// Removes the oldest connection of \p pObject to the property. False when there is none.
    bool DisconnectSrcObject(KQexObject* pObject);

    /// The property's data, for the evaluator; null when not valid.
    KQexPropertyData* GetData() { return mProperty; }
    /// The property's data; null when not valid.
    const KQexPropertyData* GetData() const { return mProperty; }

protected:
    /// The property; null: not valid.
    KQexPropertyData* mProperty = nullptr;
};

/// \p pProperty's value as a T; T() when it does not convert.
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

/// A property with a value of type T, as a member of its object. Convert it to a KQexProperty for a handle.
template <typename T>
class KQexTypedProperty : public KQexProperty
{
public:
    /// \param pOwner object that the property is a member of.
    /// \param pName  name; must outlive the property.
    /// \param pX,pY,pZ initial value.
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

    /// The value that applies while no curve drives the property.
    T Get() const { return KQexGet<T>(*this); }
    /// Sets that value. Cannot fail.
    bool Set(const T& pValue) { return KQexSet<T>(*this, pValue); }

private:
    KQexPropertyData mStorage;
};

} // namespace qexsdk

#endif
