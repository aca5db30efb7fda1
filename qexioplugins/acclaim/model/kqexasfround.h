#ifndef QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFROUND_H
#define QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFROUND_H

#include <qexioplugins/acclaim/kqexasfnode.h>

namespace qexsdk
{

/// Rounds a bone's direction, length and axis to values that the file holds exactly and that do not change when the file is read and
/// the skeleton is extracted from the scene again; updates the matrices. \p pLengthUnit is the scene's.
void RoundBone(KQexAsfNode& pBone, double pLengthUnit);

} // namespace qexsdk

#endif
