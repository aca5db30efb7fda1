#include <qexioplugins/acclaim/asf/kqexasfgrammar.h>
#include <qexioplugins/acclaim/asf/kqexasfnameindex.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasflocals.h>

#include <cmath>
#include <cstring>
#include <new>

namespace qexsdk
{

namespace
{

constexpr int kMaxSkinName = 1024;
constexpr int kMaxSkinNames = 3;

} // namespace

bool KQexFileAcclaimAsf::Read(HKQexAsfScene pQexAsfScene, bool pRemoveDummyNodes, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    mQexAsfScene = pQexAsfScene;
    // Detached, so that the file's bones are not added to the root of an earlier read.
    HKQexAsfNode lFormerRoot = mQexAsfScene->mRoot;
    mQexAsfScene->mRoot = nullptr;
    mLengthDofs.clear();
    mAddedEnds.clear();

    bool lOk = ReadSections();

    HKQexAsfNode lRoot = mQexAsfScene->mRoot;
    if (lRoot == nullptr)
    {
        lOk = false;
        mQexAsfScene->mRoot = lFormerRoot;
    }
    else
    {
        QexSdkDelete(lFormerRoot);
    }
    if (lOk)
    {
        lRoot->SetupPosition(pSetRotatePivotOffet, pSetPreRotation);
        if (pRemoveDummyNodes && !lRoot->RemoveDummy(pSetRotatePivotOffet, pSetPreRotation))
        {
            Error("Out of memory\n");
            lOk = false;
        }
    }
    mQexAsfScene = nullptr;
    return lOk;
}

bool KQexFileAcclaimAsf::ReadSections()
{
    // One index for all hierarchy sections: a file may have as many sections as bones.
    KQexAsfNameIndex lNameIndex;
    mNameIndex = &lNameIndex;
    FirstLine();
    InitTokens(smMain);
    bool lOk = true;
    while (lOk && !Eof())
    {
        lOk = ReadSection(Handle(smMain));
    }
    lNameIndex.RemoveNulls();
    mNameIndex = nullptr;
    return lOk && !HasFailed();
}

bool KQexFileAcclaimAsf::ReadSection(int pKeyword)
{
    switch (pKeyword)
    {
    case eMAIN_VERSION:
        return ReadVersion();
    case eMAIN_NAME:
        return ReadName();
    case eMAIN_UNITS:
        return ReadUnits();
    case eMAIN_DOCUMENTATION:
        return ReadDocumentation();
    case eMAIN_ROOT:
        return ReadRoot();
    case eMAIN_BONEDATA:
        return ReadBoneData();
    case eMAIN_HIERARCHY:
        return ReadHierarchy();
    case eMAIN_SKIN:
        // Skin names are not used, so errors in them are ignored.
        ReadSkin();
        return true;
    default:
        SkipSection();
        return true;
    }
}

void KQexFileAcclaimAsf::SkipSection()
{
    Warning("Ignoring unknown keyword (:%s)\n", static_cast<char*>(*this));
    while (NextLine() && *static_cast<char*>(*this) != ':')
    {
    }
}

bool KQexFileAcclaimAsf::CheckRoot(const char* pMessage)
{
    if (mQexAsfScene->mRoot != nullptr)
    {
        return true;
    }
    Error("%s", pMessage);
    return false;
}

/// Reads an axis word into its order code. False, with an Error, when there is none.
bool KQexFileAcclaimAsf::ReadAxisWord(int& pOrder)
{
    const int lAxis = Handle(smAxis);
    if (lAxis < 0)
    {
        Error("Unknown rotation order\n");
        return false;
    }
    pOrder = kAxisCodes[lAxis];
    return true;
}

/// Reads a name into pName, which has room for kMaxName + 1 characters.
bool KQexFileAcclaimAsf::ReadNameWord(char* pName)
{
    bool lCut = false;
    if (!GetString(pName, kMaxName, lCut))
    {
        return false;
    }
    if (lCut)
    {
        Warning("Name cut to 50 characters (%s)\n", pName);
    }
    return true;
}

bool KQexFileAcclaimAsf::ReadVersion()
{
    double lVersion = 0.0;
    // The version is compared as a double: the number may not fit an integer.
    if (!GetDouble(lVersion, 1.0))
    {
        Warning("Can't read file format version (%s), trying version 1.10\n", static_cast<char*>(*this));
    }
    else if (std::trunc(100.0 * lVersion) != 110.0)
    {
        Warning("Bad File format version (%f), trying 1.10\n", lVersion);
    }
    while (NextLine())
    {
        if (Check(smMain) != -1)
        {
            return true;
        }
    }
    return false;
}

bool KQexFileAcclaimAsf::ReadName()
{
    if (!ReadNameWord(mQexAsfScene->mName))
    {
        std::strcpy(mQexAsfScene->mName, "Untitled");
        Warning("Can't read skeleton name, using \"%s\"\n", mQexAsfScene->mName);
        // Deliberate: the message names a default, but a skeleton without a name is not read.
        return false;
    }
    // Lines after the name are read as units; normally the next section follows at once.
    return ReadUnits();
}

bool KQexFileAcclaimAsf::ReadUnits()
{
    while (NextLine())
    {
        if (Check(smMain) != -1)
        {
            return true;
        }
        switch (Handle(smUnits))
        {
        case eUNIT_MASS:
            if (!GetDouble(mQexAsfScene->mMassUnit, 1.0))
            {
                Warning("Can't read mass unit, using %f\n", mQexAsfScene->mMassUnit);
            }
            break;
        case eUNIT_LENGTH:
            if (!GetDouble(mQexAsfScene->mLengthUnit, 1.0))
            {
                Warning("Can't read length unit, using %f\n", mQexAsfScene->mLengthUnit);
            }
            break;
        case eUNIT_ANGLE:
            ReadAngleUnit();
            break;
        default:
            Warning("Unknown unit token\n");
            break;
        }
    }
    return false;
}

void KQexFileAcclaimAsf::ReadAngleUnit()
{
    switch (Handle(smAngle))
    {
    case eANGLE_DEGREES:
        mQexAsfScene->mAngleUnit = 1.0;
        break;
    case eANGLE_RADIANS:
        mQexAsfScene->mAngleUnit = kDegreesPerRadian;
        break;
    default:
        Warning("Unknown angle unit, using default (deg)\n");
        break;
    }
}

bool KQexFileAcclaimAsf::ReadDocumentation()
{
    while (NextLine())
    {
        if (Check(smMain) != -1)
        {
            return true;
        }
        if (!ReadAddedEnd())
        {
            return false;
        }
    }
    return false;
}

/// Records a bone with an added end, if the line of documentation names one. False when memory runs out.
bool KQexFileAcclaimAsf::ReadAddedEnd()
{
    char lWord[sizeof(kAddedEndWord) + 1];
    char lBone[kMaxName + 1];
    if (!GetString(lWord, sizeof(lWord) - 1) || std::strcmp(lWord, kAddedEndWord) != 0 || !GetString(lBone, kMaxName))
    {
        return true;
    }
    try
    {
        mAddedEnds.emplace_back(lBone);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
        return false;
    }
}

bool KQexFileAcclaimAsf::ReadSkin()
{
    char lName[kMaxSkinName + 1];
    for (int i = 0; i < kMaxSkinNames && GetString(lName, kMaxSkinName); ++i)
    {
        NextLine();
    }
    while (!Eof() && *static_cast<char*>(*this) != ':')
    {
        NextLine();
    }
    return true;
}

bool KQexFileAcclaimAsf::ReadRoot()
{
    HKQexAsfNode lNode = QexSdkNew<KQexAsfNode>();
    if (lNode == nullptr)
    {
        Error("Out of memory\n");
        return false;
    }
    std::strcpy(lNode->mName, kRootName);
    InitTokens(smRoot);
    if (!ReadRootLines(lNode))
    {
        QexSdkDelete(lNode);
        return false;
    }
    SetAxisFrame(lNode);
    StoreRoot(lNode);
    return true;
}

bool KQexFileAcclaimAsf::ReadRootLines(HKQexAsfNode pNode)
{
    while (NextLine())
    {
        if (Check(smMain) != -1)
        {
            return true;
        }
        if (!ReadRootLine(pNode))
        {
            return false;
        }
    }
    return false;
}

bool KQexFileAcclaimAsf::ReadRootLine(HKQexAsfNode pNode)
{
    switch (Handle(smRoot))
    {
    case eROOT_AXIS:
        return ReadAxisWord(pNode->mOrientationOrder);
    case eROOT_ORDER:
        ReadRootOrder(pNode);
        break;
    case eROOT_POSITION:
        if (!GetVector(pNode->mPositionV.mData, 1.0))
        {
            Warning("Can't read position, using 0.0 0.0 0.0\n");
        }
        break;
    case eROOT_ORIENTATION:
        if (!GetVector(pNode->mOrientationV.mData, 1.0))
        {
            Warning("Can't read orientation, using 0.0 0.0 0.0\n");
        }
        break;
    default:
        Warning("Unknown %s token (%s)\n", smMain[eMAIN_ROOT].mStr, static_cast<char*>(*this));
        break;
    }
    return true;
}

void KQexFileAcclaimAsf::ReadRootOrder(HKQexAsfNode pNode)
{
    bool lWarned = false;
    pNode->mOrderCount = 0;
    for (int lCode = Handle(smOrder); lCode != -1; lCode = Handle(smOrder))
    {
        if (pNode->mOrderCount < kMaxDofs)
        {
            pNode->mOrderBuf[pNode->mOrderCount++] = lCode;
        }
        else if (!lWarned)
        {
            Warning("Too many degrees of freedom (%s)\n", static_cast<char*>(*this));
            lWarned = true;
        }
    }
}

/// Makes the new pNode the scene's root.
void KQexFileAcclaimAsf::StoreRoot(HKQexAsfNode pNode)
{
    HKQexAsfNode lRoot = mQexAsfScene->mRoot;
    if (lRoot == nullptr)
    {
        mQexAsfScene->mRoot = pNode;
        return;
    }
    // The new root takes over the bones of the old one: its values are copied into the old node, so that no bone has to move and no
    // allocation can fail half-way.
    std::memcpy(lRoot->mName, pNode->mName, sizeof(lRoot->mName));
    std::memcpy(lRoot->mLimitsActive, pNode->mLimitsActive, sizeof(lRoot->mLimitsActive));
    lRoot->mDirectionV = pNode->mDirectionV;
    lRoot->mLength = pNode->mLength;
    lRoot->mOrderCount = pNode->mOrderCount;
    for (int i = 0; i < pNode->mOrderCount; ++i)
    {
        lRoot->mOrderBuf[i] = pNode->mOrderBuf[i];
    }
    lRoot->mOrientationOrder = pNode->mOrientationOrder;
    lRoot->mOrientationV = pNode->mOrientationV;
    lRoot->mPositionV = pNode->mPositionV;
    lRoot->mAxisRM = pNode->mAxisRM;
    lRoot->mAxisRMInv = pNode->mAxisRMInv;
    QexSdkDelete(pNode);
    Warning("Second :root takes over the bones\n");
}

} // namespace qexsdk
