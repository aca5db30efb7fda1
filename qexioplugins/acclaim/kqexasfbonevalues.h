#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFBONEVALUES_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFBONEVALUES_H

#include <kbaselib/kmath/kgeom.h>
#include <qexioplugins/acclaim/kqexasfgrammar.h>
#include <qexioplugins/acclaim/kqexasfnode.h>

#include <cfloat>

/// \file
/// What becomes of the values on the lines of a bone, whoever read them.

namespace qexsdk
{

/// The direction, just put into mDirectionV, as a vector of length 1; zero stays zero.
inline void SettleDirection(KQexAsfNode& pNode)
{
    // A length of zero is that of an exact zero only.
    const double* lData = pNode.mDirectionV.mData;
    if (lData[0] != 0.0 || lData[1] != 0.0 || lData[2] != 0.0)
        KgeNorm(pNode.mDirectionV, pNode.mDirectionV);
}

/// The length, just put into mLength in units of the file, in centimetres.
inline void SettleLength(KQexAsfNode& pNode, double pLengthUnit)
{
    if (pLengthUnit > 0.0)
        pNode.mLength = (kCentimetresPerInch / pLengthUnit) * pNode.mLength;
}

/// The limits of the DOF with code \p pCode: \p pPair is the lower and the upper one. An infinity or NaN is no limit.
inline void StoreLimits(KQexAsfNode& pNode, int pCode, const double* pPair)
{
    pNode.mLimitsActive[pCode][0] = pPair[0] >= -DBL_MAX;
    pNode.mLimitsActive[pCode][1] = pPair[1] <= DBL_MAX;
    for (int i = 0; i < 2; ++i)
        pNode.mLimitsBuf[pCode][i] = pNode.mLimitsActive[pCode][i] ? pPair[i] : 0.0;
}

} // namespace qexsdk

#endif
