#include <qexioplugins/acclaim/asf/kqexasfgrammar.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasflocals.h>

#include <cfloat>
#include <cstring>
#include <exception>

namespace qexsdk
{

bool KQexFileAcclaimAsf::ReadBoneData()
{
    if (!CheckRoot("Bone data before :root\n"))
    {
        return false;
    }
    InitTokens(smGroup);
    bool lOk = NextLine();
    while (lOk && Check(smMain) == -1)
    {
        switch (Handle(smGroup))
        {
        case eGROUP_BEGIN:
            lOk = ReadBone();
            break;
        case eGROUP_END:
            lOk = NextLine();
            break;
        default:
            // One warning per misplaced token: the loop goes on with the rest of the line.
            Warning("Begin/End keyword expected\n");
            if (!HasToken())
            {
                lOk = NextLine();
            }
            break;
        }
    }
    return lOk;
}

bool KQexFileAcclaimAsf::ReadBone()
{
    if (!CheckRoot("Bone data before :root\n"))
    {
        return false;
    }
    HKQexAsfNode lNode = QexSdkNew<KQexAsfNode>();
    if (lNode == nullptr)
    {
        Error("Out of memory\n");
        return false;
    }
    InitTokens(smBoneData);
    mFirstLengthDof = mLengthDofs.size();
    if (ReadBoneLines(lNode) && AttachBone(lNode))
    {
        return true;
    }
    mLengthDofs.resize(mFirstLengthDof);
    QexSdkDelete(lNode);
    return false;
}

/// Reads the lines up to the next "begin" or "end", which stays current.
bool KQexFileAcclaimAsf::ReadBoneLines(HKQexAsfNode pNode)
{
    while (NextLine())
    {
        if (Check(smGroup) != -1)
        {
            return true;
        }
        if (!ReadBoneLine(pNode, Handle(smBoneData)))
        {
            return false;
        }
    }
    return false;
}

bool KQexFileAcclaimAsf::ReadBoneLine(HKQexAsfNode pNode, int pKeyword)
{
    double lIgnored = 0.0;
    int    lId = 0;
    switch (pKeyword)
    {
    case eBONE_ID:
        // Ids are ignored: bones are identified by name.
        if (!GetInteger(lId))
        {
            Warning("Can't read bone id value\n");
        }
        return true;
    case eBONE_NAME:
        return ReadBoneName(pNode);
    case eBONE_DIRECTION:
        return ReadBoneDirection(pNode);
    case eBONE_LENGTH:
        return ReadBoneLength(pNode);
    case eBONE_AXIS:
        return ReadBoneAxis(pNode);
    case eBONE_DOF:
        return ReadBoneDof(pNode);
    case eBONE_LIMITS:
        return ReadBoneLimits(pNode);
    case eBONE_BODYMASS:
        if (!GetDouble(lIgnored, mQexAsfScene->mMassUnit))
        {
            Warning("Can't read bodymass value\n");
        }
        return true;
    case eBONE_COFMASS:
        if (!GetDouble(lIgnored, 1.0))
        {
            Warning("Can't read cofmass value\n");
        }
        return true;
    default:
        Warning("Unknown bonedata token\n");
        return true;
    }
}

bool KQexFileAcclaimAsf::ReadBoneName(HKQexAsfNode pNode)
{
    if (!ReadNameWord(pNode->mName))
    {
        Error("Can't read bone name\n");
        return false;
    }
    if (std::strcmp(pNode->mName, kRootName) == 0)
    {
        Error("Forbidden bone name\n");
        return false;
    }
    return true;
}

bool KQexFileAcclaimAsf::ReadBoneDirection(HKQexAsfNode pNode)
{
    if (!GetVector(pNode->mDirectionV.mData, 1.0))
    {
        Error("Can't read bone direction\n");
        return false;
    }
    // A zero direction is kept; only an exact zero has length zero.
    if (KgeLength(pNode->mDirectionV) > 0.0)
    {
        KgeNorm(pNode->mDirectionV, pNode->mDirectionV);
    }
    return true;
}

bool KQexFileAcclaimAsf::ReadBoneLength(HKQexAsfNode pNode)
{
    if (!GetDouble(pNode->mLength, 1.0))
    {
        Error("Can't read bone length\n");
        return false;
    }
    // Divide first: the rounding of that division is part of the result.
    if (mQexAsfScene->mLengthUnit > 0.0)
    {
        pNode->mLength = (kCentimetresPerInch / mQexAsfScene->mLengthUnit) * pNode->mLength;
    }
    return true;
}

bool KQexFileAcclaimAsf::ReadBoneAxis(HKQexAsfNode pNode)
{
    if (!GetVector(pNode->mOrientationV.mData, 1.0))
    {
        Error("Can't read bone local coordinate system\n");
        return false;
    }
    return ReadAxisWord(pNode->mOrientationOrder);
}

bool KQexFileAcclaimAsf::ReadBoneDof(HKQexAsfNode pNode)
{
    bool lWarned = false;
    pNode->mOrderCount = 0;
    mLengthDofs.resize(mFirstLengthDof);
    int lIndex = 0;
    for (int lCode = Handle(smDof); lCode != -1; lCode = Handle(smDof), ++lIndex)
    {
        if (lCode >= kMaxDofs)
        {
            Warning("Unknown degree of freedom (%s)\n", static_cast<char*>(*this));
            if (!AddLengthDof(lIndex))
            {
                return false;
            }
        }
        else if (pNode->mOrderCount < kMaxDofs)
        {
            pNode->mOrderBuf[pNode->mOrderCount++] = lCode;
        }
        else if (!lWarned)
        {
            Warning("Too many degrees of freedom (%s)\n", static_cast<char*>(*this));
            lWarned = true;
        }
    }
    return true;
}

/// Records an "l" of the bone being read, whose name may still follow.
bool KQexFileAcclaimAsf::AddLengthDof(int pIndex)
{
    try
    {
        mLengthDofs.push_back(KQexAsfLengthDof{std::string(), pIndex});
        return true;
    }
    catch (const std::exception&)
    {
        Error("Out of memory\n");
        return false;
    }
}

namespace
{

/// Stores the lower and upper limit \p pPair of DOF \p pCode. An infinity or NaN is no limit.
void StoreLimits(KQexAsfNode& pNode, int pCode, const double* pPair)
{
    pNode.mLimitsActive[pCode][0] = pPair[0] >= -DBL_MAX;
    pNode.mLimitsActive[pCode][1] = pPair[1] <= DBL_MAX;
    for (int i = 0; i < 2; ++i)
    {
        pNode.mLimitsBuf[pCode][i] = pNode.mLimitsActive[pCode][i] ? pPair[i] : 0.0;
    }
}

} // namespace

bool KQexFileAcclaimAsf::ReadBoneLimits(HKQexAsfNode pNode)
{
    for (int i = 0; i < pNode->mOrderCount; ++i)
    {
        double lPair[2] = {0.0, 0.0};
        if (!GetPair(lPair, 1.0) && !(NextLine() && GetPair(lPair, 1.0)))
        {
            Error("Can't read dof limits\n");
            return false;
        }
        // Rows are by DOF code, not by index in the list.
        StoreLimits(*pNode, pNode->mOrderBuf[i], lPair);
    }
    return true;
}

/// Ends a bone group: adds the bone to the root's children; the hierarchy reparents it.
bool KQexFileAcclaimAsf::AttachBone(HKQexAsfNode pNode)
{
    const char* lMessage = nullptr;
    if (smBoneData[eBONE_NAME] == 0)
    {
        lMessage = "Bone has no name\n";
    }
    else if (smBoneData[eBONE_DIRECTION] == 0)
    {
        lMessage = "Bone has no direction\n";
    }
    else if (smBoneData[eBONE_LENGTH] == 0)
    {
        lMessage = "Bone has no length\n";
    }
    if (lMessage == nullptr)
    {
        SetAxisFrame(pNode);
        if (NameLengthDofs(pNode->mName) && mQexAsfScene->mRoot->AddChild(pNode))
        {
            return true;
        }
        lMessage = "Out of memory\n";
    }
    Error("%s", lMessage);
    return false;
}

bool KQexFileAcclaimAsf::NameLengthDofs(const char* pName)
{
    try
    {
        for (size_t i = mFirstLengthDof; i < mLengthDofs.size(); ++i)
        {
            mLengthDofs[i].mBone = pName;
        }
        return true;
    }
    catch (const std::exception&)
    {
        return false;
    }
}

} // namespace qexsdk
