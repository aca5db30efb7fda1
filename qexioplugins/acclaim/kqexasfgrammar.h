#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFGRAMMAR_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFGRAMMAR_H

#include <cstddef>
#include <cstring>

/// \file
/// What the parts of the skeleton reader know in common: the places of keywords in its tables, and the sizes of names and lists.

namespace qexsdk
{

/// Characters kept of a name.
inline constexpr int kMaxName = 50;
/// Degrees of freedom kept of a bone.
inline constexpr int kMaxDofs = 6;

/// Centimetres of a length of 1 in a file whose length unit is 1. In general they are this over the length unit.
inline constexpr double kCentimetresPerInch = 2.54;

/// The name that the root has in the model and in hierarchies; no bone may have it.
inline constexpr char kRootName[] = "root";

/// Whether the \p pLength characters at \p pName are the root's name.
inline bool IsRootName(const char* pName, size_t pLength)
{
    return pLength == sizeof(kRootName) - 1 && std::memcmp(pName, kRootName, pLength) == 0;
}

/// Rotation order codes of the words in smAxis, in its order. Deliberately so: "xzy" and "yxz", and "yzx" and "zxy", do not get
/// the codes that their letters spell, and skeletons, motion and the writers of both have always been read with these.
inline constexpr int kAxisCodes[] = {10, 6, 2, 8, 4, 0};

/// Places in smMain.
enum KMainKeyword
{
    eMAIN_VERSION,
    eMAIN_NAME,
    eMAIN_UNITS,
    eMAIN_DOCUMENTATION,
    eMAIN_ROOT,
    eMAIN_BONEDATA,
    eMAIN_HIERARCHY,
    eMAIN_SKIN
};

/// Places in smUnits.
enum KUnitKeyword
{
    eUNIT_MASS,
    eUNIT_LENGTH,
    eUNIT_ANGLE
};

/// Places in smAngle.
enum KAngleKeyword
{
    eANGLE_DEGREES,
    eANGLE_RADIANS
};

/// Places in smRoot.
enum KRootKeyword
{
    eROOT_AXIS,
    eROOT_ORDER,
    eROOT_POSITION,
    eROOT_ORIENTATION
};

/// Places in smGroup.
enum KGroupKeyword
{
    eGROUP_BEGIN,
    eGROUP_END
};

/// Places in smBoneData.
enum KBoneKeyword
{
    eBONE_ID,
    eBONE_NAME,
    eBONE_DIRECTION,
    eBONE_LENGTH,
    eBONE_AXIS,
    eBONE_DOF,
    eBONE_LIMITS,
    eBONE_BODYMASS,
    eBONE_COFMASS
};

} // namespace qexsdk

#endif
