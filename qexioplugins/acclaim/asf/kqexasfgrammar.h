#ifndef QEXIOPLUGINS_ACCLAIM_ASF_KQEXASFGRAMMAR_H
#define QEXIOPLUGINS_ACCLAIM_ASF_KQEXASFGRAMMAR_H

/// \file
/// The places of keywords in the skeleton reader's tables.

namespace qexsdk
{

/// Rotation order codes of the words in smAxis, in its order. Deliberately so: "xzy" and "yxz", and "yzx" and "zxy", do not get
/// the codes that their letters spell, and skeletons, motion and the writers of both have always been read with these.
inline constexpr int kAxisCodes[] = {10, 6, 2, 8, 4, 0};

/// Places in smMain.
enum KQexAsfMainKeyword
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
enum KQexAsfUnitKeyword
{
    eUNIT_MASS,
    eUNIT_LENGTH,
    eUNIT_ANGLE
};

/// Places in smAngle.
enum KQexAsfAngleKeyword
{
    eANGLE_DEGREES,
    eANGLE_RADIANS
};

/// Places in smRoot.
enum KQexAsfRootKeyword
{
    eROOT_AXIS,
    eROOT_ORDER,
    eROOT_POSITION,
    eROOT_ORIENTATION
};

/// Places in smGroup.
enum KQexAsfGroupKeyword
{
    eGROUP_BEGIN,
    eGROUP_END
};

/// Places in smBoneData.
enum KQexAsfBoneKeyword
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
