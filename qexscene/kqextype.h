#ifndef QEXSCENE_KQEXTYPE_H
#define QEXSCENE_KQEXTYPE_H

#include <qexscene/kqexvector4.h>
#include <qexscene/kqexvectortemplate3.h>

namespace qexsdk
{

/// What a property holds, and what a caller of KQexProperty::Set and Get has behind its pointer.
enum EQexType
{
    eQexUndefined, ///< nothing; the type of a property that is not valid
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
