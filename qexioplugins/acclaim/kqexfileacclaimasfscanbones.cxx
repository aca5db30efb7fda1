#include <kbaselib/kbase/kprefetch.h>
#include <qexioplugins/acclaim/kqexasfbonevalues.h>
#include <qexioplugins/acclaim/kqexasfgrammar.h>
#include <qexioplugins/acclaim/kqexasfnameindex.h>
#include <qexioplugins/acclaim/kqexasfscan.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <algorithm>
#include <cstring>

namespace qexsdk
{

/// Takes the lines of a bone as far as they are those that nearly all files have: one of each, in the order of smBoneData, up to the
/// limits. From the first other line on, ReadBoneLines() reads; what a line comes to is the same there. False when the lines
/// that every bone has were not all there.
bool KQexFileAcclaimAsf::ScanBone(KQexAsfNode& pNode, KPrefetchSteps& pNext)
{
    KQexAsfScan lScan(GetInput());
    const bool  lPlain = ScanBoneHead(lScan, pNode, pNext);
    if (lPlain && ScanBoneDof(lScan, pNode))
        ScanBoneLimits(lScan, pNode);
    lScan.TakeLines();
    return lPlain;
}

/// Takes a line that consists of the word of smGroup. False, and nothing taken, when it may be another.
bool KQexFileAcclaimAsf::ScanGroupWord(int pKeyword)
{
    KQexAsfScan lScan(GetInput());
    if (!lScan.Word(smGroup[pKeyword].mStr) || !lScan.LineEnd())
        return false;
    ++smGroup[pKeyword].mCount;
    lScan.Keep();
    lScan.TakeLines();
    return true;
}

/// The lines that every bone has.
bool KQexFileAcclaimAsf::ScanBoneHead(KQexAsfScan& pScan, KQexAsfNode& pNode, KPrefetchSteps& pNext)
{
    pNext.Step();
    if (!pScan.Word(smBoneData[eBONE_ID].mStr) || !pScan.Digits() || !pScan.LineEnd())
        return false;
    KeepBoneLine(pScan, eBONE_ID);
    pNext.Step();
    if (!ScanBoneName(pScan, pNode))
        return false;
    pNext.Step();
    if (!ScanBoneDirection(pScan, pNode))
        return false;
    pNext.Step();
    if (!ScanBoneLength(pScan, pNode))
        return false;
    pNext.Step();
    return ScanBoneAxis(pScan, pNode);
}

bool KQexFileAcclaimAsf::ScanBoneName(KQexAsfScan& pScan, KQexAsfNode& pNode)
{
    if (!pScan.Word(smBoneData[eBONE_NAME].mStr))
        return false;
    size_t      lLength = 0;
    const char* lName = pScan.Text(lLength, kMaxName);
    if (lName == nullptr || !pScan.LineEnd() || IsRootName(lName, lLength))
        return false;
    std::memcpy(pNode.mName, lName, lLength);
    KeepBoneLine(pScan, eBONE_NAME);
    if (mNameIndex != nullptr)
        mNameIndex->Expect(pNode.mName, lLength);
    return true;
}

bool KQexFileAcclaimAsf::ScanBoneDirection(KQexAsfScan& pScan, KQexAsfNode& pNode)
{
    double lVector[3];
    if (!pScan.Word(smBoneData[eBONE_DIRECTION].mStr) || !pScan.Numbers(lVector, 3) || !pScan.LineEnd())
        return false;
    KgeSet(pNode.mDirectionV, lVector[0], lVector[1], lVector[2]);
    SettleDirection(pNode);
    KeepBoneLine(pScan, eBONE_DIRECTION);
    return true;
}

bool KQexFileAcclaimAsf::ScanBoneLength(KQexAsfScan& pScan, KQexAsfNode& pNode)
{
    double lLength;
    if (!pScan.Word(smBoneData[eBONE_LENGTH].mStr) || !pScan.Numbers(&lLength, 1) || !pScan.LineEnd())
        return false;
    pNode.mLength = lLength;
    SettleLength(pNode, mQexAsfScene->mLengthUnit);
    KeepBoneLine(pScan, eBONE_LENGTH);
    return true;
}

bool KQexFileAcclaimAsf::ScanBoneAxis(KQexAsfScan& pScan, KQexAsfNode& pNode)
{
    double lAngles[3];
    if (!pScan.Word(smBoneData[eBONE_AXIS].mStr) || !pScan.Numbers(lAngles, 3))
        return false;
    const int lAxis = pScan.Letters(smAxis);
    if (lAxis < 0 || !pScan.LineEnd())
        return false;
    std::copy(lAngles, lAngles + 3, pNode.mOrientationV.mData);
    pNode.mOrientationOrder = kAxisCodes[lAxis];
    ++smAxis[lAxis].mCount;
    KeepBoneLine(pScan, eBONE_AXIS);
    return true;
}

bool KQexFileAcclaimAsf::ScanBoneDof(KQexAsfScan& pScan, KQexAsfNode& pNode)
{
    if (!pScan.Word(smBoneData[eBONE_DOF].mStr))
        return false;
    int lCodes[kMaxDofs];
    int lCount = 0;
    // smDof begins with the words of smOrder; its last one is a single letter.
    for (int lCode = pScan.Letters(smOrder); lCode >= 0; lCode = pScan.Letters(smOrder))
    {
        if (lCount == kMaxDofs)
            return false;
        lCodes[lCount++] = lCode;
    }
    if (lCount == 0 || !pScan.LineEnd())
        return false;
    for (int i = 0; i < lCount; ++i)
    {
        pNode.mOrderBuf[i] = lCodes[i];
        ++smDof[lCodes[i]].mCount;
    }
    pNode.mOrderCount = lCount;
    KeepBoneLine(pScan, eBONE_DOF);
    return true;
}

/// The limits, a line for each DOF.
bool KQexFileAcclaimAsf::ScanBoneLimits(KQexAsfScan& pScan, KQexAsfNode& pNode)
{
    if (!pScan.Word(smBoneData[eBONE_LIMITS].mStr))
        return false;
    double lPairs[kMaxDofs][2];
    for (int i = 0; i < pNode.mOrderCount; ++i)
        if (!pScan.Numbers(lPairs[i], 2) || !pScan.LineEnd())
            return false;
    for (int i = 0; i < pNode.mOrderCount; ++i)
        StoreLimits(pNode, pNode.mOrderBuf[i], lPairs[i]);
    KeepBoneLine(pScan, eBONE_LIMITS);
    return true;
}

/// The line just found is one of the bone's. Its words count as ones that Handle() met, as all that are taken here do.
void KQexFileAcclaimAsf::KeepBoneLine(KQexAsfScan& pScan, int pKeyword)
{
    ++smBoneData[pKeyword].mCount;
    pScan.Keep();
}

} // namespace qexsdk
