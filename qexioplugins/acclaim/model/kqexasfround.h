#ifndef QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFROUND_H
#define QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFROUND_H

#include <qexioplugins/acclaim/kqexasfnode.h>

namespace qexsdk
{

/// Rounds a bone's direction, length and axis to values that the written text holds and that are unchanged after it is read and the
/// skeleton extracted again; updates the matrices. \p pLengthUnit is the scene's.
void RoundBone(KQexAsfNode& pBone, double pLengthUnit);

} // namespace qexsdk

#endif
