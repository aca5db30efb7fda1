#ifndef QEXSCENE_KQEXTYPE_H
#define QEXSCENE_KQEXTYPE_H

#include <qexscene/kqexvector4.h>
#include <qexscene/kqexvectortemplate3.h>

namespace qexsdk
{

/// Type of a property's value, and of the value passed to KQexProperty::Set and Get.
enum EQexType
{
    eQexUndefined, ///< no value; the type of an invalid property
    eQexBool,      ///< bool
    eQexInt,       ///< int
    eQexFloat,     ///< float
    eQexDouble,    ///< double
    eQexDouble3,   ///< qexVectorTemplate3<double>, or double[3]
    eQexDouble4    ///< KQexVector4, or double[4]
};

/// \name The type code of a value.
/// \{
constexpr EQexType QexTypeOf(const bool&)
{
    return eQexBool;
}
constexpr EQexType QexTypeOf(const int&)
{
    return eQexInt;
}
constexpr EQexType QexTypeOf(const float&)
{
    return eQexFloat;
}
constexpr EQexType QexTypeOf(const double&)
{
    return eQexDouble;
}
constexpr EQexType QexTypeOf(const qexVectorTemplate3<double>&)
{
    return eQexDouble3;
}
constexpr EQexType QexTypeOf(const KQexVector4&)
{
    return eQexDouble4;
}
/// \}

} // namespace qexsdk

#endif
