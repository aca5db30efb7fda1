#ifndef QEXIOPLUGINS_ACCLAIM_ASF_KQEXASFGRAMMAR_H
#define QEXIOPLUGINS_ACCLAIM_ASF_KQEXASFGRAMMAR_H

/// \file
/// Indices of the keywords in the skeleton reader's tables.

namespace qexsdk
{

/// Rotation order codes of the words in smAxis, in its order. Deliberate: the codes of "xzy" and "yxz" are swapped, and those of "yzx"
/// and "zxy"; skeletons and motion have always been read and written with these.
inline constexpr int kAxisCodes[] = {10, 6, 2, 8, 4, 0};

/// Begins a line of the documentation that names a bone with an added end.
inline constexpr char kAddedEndWord[] = "added-end";

/// Indices into smMain.
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

/// Indices into smUnits.
enum KQexAsfUnitKeyword
{
    eUNIT_MASS,
    eUNIT_LENGTH,
    eUNIT_ANGLE
};

/// Indices into smAngle.
enum KQexAsfAngleKeyword
{
    eANGLE_DEGREES,
    eANGLE_RADIANS
};

/// Indices into smRoot.
enum KQexAsfRootKeyword
{
    eROOT_AXIS,
    eROOT_ORDER,
    eROOT_POSITION,
    eROOT_ORIENTATION
};

/// Indices into smGroup.
enum KQexAsfGroupKeyword
{
    eGROUP_BEGIN,
    eGROUP_END
};

/// Indices into smBoneData.
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
