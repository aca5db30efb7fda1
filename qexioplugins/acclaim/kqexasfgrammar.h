#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFGRAMMAR_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFGRAMMAR_H

/// \file
/// What the parts of the skeleton reader know in common: the places of keywords in its tables, and the sizes of names and lists.

namespace qexsdk
{

/// Characters kept of a name.
inline constexpr int kMaxName = 50;
/// Degrees of freedom kept of a bone.
inline constexpr int kMaxDofs = 6;

/// The name that the root has in the model and in hierarchies; no bone may have it.
inline constexpr char kRootName[] = "root";

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

/// Places in smGroup.
enum KGroupKeyword
{
    eGROUP_BEGIN,
    eGROUP_END
};

} // namespace qexsdk

#endif
