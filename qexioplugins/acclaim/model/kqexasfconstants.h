#ifndef QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFCONSTANTS_H
#define QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFCONSTANTS_H

/// \file
/// Constants of skeletons and motion: sizes of names and lists, the unit of lengths, the root's name.

namespace qexsdk
{

/// Longest name, in characters.
inline constexpr int kMaxName = 50;
/// Maximum number of degrees of freedom of a bone.
inline constexpr int kMaxDofs = 6;

/// Centimetres per unit of length in a file whose length unit is 1; in general, this divided by the length unit.
inline constexpr double kCentimetresPerInch = 2.54;

/// The name that the root has in the model and in hierarchies; no bone may have it.
inline constexpr char kRootName[] = "root";

} // namespace qexsdk

#endif
