#include <qexioplugins/acclaim/kqexasfnameindex.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <exception>
#include <optional>

namespace qexsdk
{

namespace
{

/// Characters kept of a name.
constexpr int kMaxName = 50;
constexpr int kMaxSkinName = 1024;
constexpr int kMaxSkinNames = 3;
constexpr int kMaxDofs = 6;

constexpr double kCentimetresPerInch = 2.54;

/// The name that the root has in the model and in hierarchies; no bone may have it.
constexpr char kRootName[] = "root";

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

/// Rotation order codes of the words in smAxis, in its order. Deliberately so: "xzy" and "yxz", and "yzx" and "zxy", do not get
/// the codes that their letters spell, and skeletons, motion and the writers of both have always been read with these.
constexpr int kAxisCodes[] = {10, 6, 2, 8, 4, 0};

void SetAxis(HKQexAsfNode pNode)
{
    KgeSet(pNode->mAxisRM, pNode->mOrientationV, pNode->mOrientationOrder);
    KgeInverse(pNode->mAxisRMInv, pNode->mAxisRM);
}

} // namespace

bool KQexFileAcclaimAsf::Read(HKQexAsfScene pQexAsfScene, bool pRemoveDummyNodes, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    mQexAsfScene = pQexAsfScene;
    // Set aside, so that nothing of the file is hung under a root of an earlier one.
    HKQexAsfNode lFormerRoot = mQexAsfScene->mRoot;
    mQexAsfScene->mRoot = nullptr;
    mLengthDofs.clear();

    std::optional<KQexAsfNameIndex> lNameIndex(std::in_place);
    mNameIndex = &*lNameIndex;
    bool lOk = ReadSections();
    lOk = SettleFamilies(*lNameIndex) && lOk;
    mNameIndex = nullptr;

    HKQexAsfNode lRoot = mQexAsfScene->mRoot;
    if (lRoot == nullptr)
    {
        lOk = false;
        mQexAsfScene->mRoot = lFormerRoot;
    }
    else
        QexSdkDelete(lFormerRoot);
    if (lOk)
    {
        // Without memory for all of them in the index, up and down the tree does as well.
        if (lNameIndex->Update(lRoot))
            lNameIndex->SetupPosition(pSetRotatePivotOffet, pSetPreRotation);
        else
            lRoot->SetupPosition(pSetRotatePivotOffet, pSetPreRotation);
        // What comes now has a list of its own, which takes less memory than the index did.
        lNameIndex.reset();
        if (pRemoveDummyNodes)
            lRoot->RemoveDummy(pSetRotatePivotOffet, pSetPreRotation);
    }
    mQexAsfScene = nullptr;
    return lOk;
}

bool KQexFileAcclaimAsf::ReadSections()
{
    FirstLine();
    InitTokens(smMain);
    bool lOk = true;
    while (lOk && !Eof())
        lOk = ReadSection(Handle(smMain));
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
        // The names are of no use here, so whatever is wrong with them does not matter.
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
        return true;
    Error("%s", pMessage);
    return false;
}

/// The code of the axis word that comes next. False, with an Error, when there is none.
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

/// A name into pName, which has room for kMaxName + 1 characters.
bool KQexFileAcclaimAsf::ReadNameWord(char* pName)
{
    bool lCut = false;
    if (!GetString(pName, kMaxName, lCut))
        return false;
    if (lCut)
        Warning("Name cut to 50 characters (%s)\n", pName);
    return true;
}

bool KQexFileAcclaimAsf::ReadVersion()
{
    double lVersion = 0.0;
    if (!GetDouble(lVersion, 1.0))
        Warning("Can't read file format version (%s), trying version 1.10\n", static_cast<char*>(*this));
    // Compared as a double: a version may be any number, and not every one fits an integer.
    else if (std::trunc(100.0 * lVersion) != 110.0)
        Warning("Bad File format version (%f), trying 1.10\n", lVersion);
    while (NextLine())
        if (Check(smMain) != -1)
            return true;
    return false;
}

bool KQexFileAcclaimAsf::ReadName()
{
    if (!ReadNameWord(mQexAsfScene->mName))
    {
        std::strcpy(mQexAsfScene->mName, "Untitled");
        Warning("Can't read skeleton name, using \"%s\"\n", mQexAsfScene->mName);
        // Deliberate: although the message names a default, a skeleton without a name is not read.
        return false;
    }
    // Lines behind the name are taken for units; normally the next section follows at once.
    return ReadUnits();
}

bool KQexFileAcclaimAsf::ReadUnits()
{
    while (NextLine())
    {
        if (Check(smMain) != -1)
            return true;
        switch (Handle(smUnits))
        {
        case 0:
            if (!GetDouble(mQexAsfScene->mMassUnit, 1.0))
                Warning("Can't read mass unit, using %f\n", mQexAsfScene->mMassUnit);
            break;
        case 1:
            if (!GetDouble(mQexAsfScene->mLengthUnit, 1.0))
                Warning("Can't read length unit, using %f\n", mQexAsfScene->mLengthUnit);
            break;
        case 2:
        {
            const int lAngle = Handle(smAngle);
            if (lAngle == 0)
                mQexAsfScene->mAngleUnit = 1.0;
            else if (lAngle == 1)
                mQexAsfScene->mAngleUnit = kDegreesPerRadian;
            else
                Warning("Unknown angle unit, using default (deg)\n");
            break;
        }
        default:
            Warning("Unknown unit token\n");
            break;
        }
    }
    return false;
}

bool KQexFileAcclaimAsf::ReadDocumentation()
{
    while (NextLine())
        if (Check(smMain) != -1)
            return true;
    return false;
}

bool KQexFileAcclaimAsf::ReadSkin()
{
    char lName[kMaxSkinName + 1];
    for (int i = 0; i < kMaxSkinNames && GetString(lName, kMaxSkinName); ++i)
        NextLine();
    while (!Eof() && *static_cast<char*>(*this) != ':')
        NextLine();
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
    SetAxis(lNode);
    StoreRoot(lNode);
    return true;
}

bool KQexFileAcclaimAsf::ReadRootLines(HKQexAsfNode pNode)
{
    while (NextLine())
    {
        if (Check(smMain) != -1)
            return true;
        if (!ReadRootLine(pNode))
            return false;
    }
    return false;
}

bool KQexFileAcclaimAsf::ReadRootLine(HKQexAsfNode pNode)
{
    switch (Handle(smRoot))
    {
    case 0:
        return ReadAxisWord(pNode->mOrientationOrder);
    case 1:
        ReadRootOrder(pNode);
        break;
    case 2:
        if (!GetVector(pNode->mPositionV.mData, 1.0))
            Warning("Can't read position, using 0.0 0.0 0.0\n");
        break;
    case 3:
        if (!GetVector(pNode->mOrientationV.mData, 1.0))
            Warning("Can't read orientation, using 0.0 0.0 0.0\n");
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
            pNode->mOrderBuf[pNode->mOrderCount++] = lCode;
        else if (!lWarned)
        {
            Warning("Too many degrees of freedom (%s)\n", static_cast<char*>(*this));
            lWarned = true;
        }
    }
}

/// Makes pNode, just read, the scene's root.
void KQexFileAcclaimAsf::StoreRoot(HKQexAsfNode pNode)
{
    HKQexAsfNode lRoot = mQexAsfScene->mRoot;
    if (lRoot == nullptr)
    {
        mQexAsfScene->mRoot = pNode;
        return;
    }
    // The new root takes over the bones of the old one. Its values move to where the bones are, not the other way: that takes
    // no time per bone, however many such sections there are, and no memory that could be missing half-way.
    std::memcpy(lRoot->mName, pNode->mName, sizeof(lRoot->mName));
    std::memcpy(lRoot->mLimitsActive, pNode->mLimitsActive, sizeof(lRoot->mLimitsActive));
    lRoot->mDirectionV = pNode->mDirectionV;
    lRoot->mLength = pNode->mLength;
    lRoot->mOrderCount = pNode->mOrderCount;
    for (int i = 0; i < pNode->mOrderCount; ++i)
        lRoot->mOrderBuf[i] = pNode->mOrderBuf[i];
    lRoot->mOrientationOrder = pNode->mOrientationOrder;
    lRoot->mOrientationV = pNode->mOrientationV;
    lRoot->mPositionV = pNode->mPositionV;
    lRoot->mAxisRM = pNode->mAxisRM;
    lRoot->mAxisRMInv = pNode->mAxisRMInv;
    QexSdkDelete(pNode);
    Warning("Second :root takes over the bones\n");
}

bool KQexFileAcclaimAsf::ReadBoneData()
{
    if (!CheckRoot("Bone data before :root\n"))
        return false;
    InitTokens(smGroup);
    bool lOk = NextLine();
    while (lOk)
    {
        const int lGroup = Check(smGroup);
        if (lGroup == -1 && Check(smMain) != -1)
            break;
        switch (Take(smGroup, lGroup))
        {
        case eGROUP_BEGIN:
            lOk = ReadBone();
            break;
        case eGROUP_END:
            lOk = NextLine();
            break;
        default:
            // One warning for each misplaced token: the rest of the line is looked at again.
            Warning("Begin/End keyword expected\n");
            if (!HasToken())
                lOk = NextLine();
            break;
        }
    }
    return lOk;
}

bool KQexFileAcclaimAsf::ReadBone()
{
    if (!CheckRoot("Bone data before :root\n"))
        return false;
    HKQexAsfNode lNode = QexSdkNew<KQexAsfNode>();
    if (lNode == nullptr)
    {
        Error("Out of memory\n");
        return false;
    }
    InitTokens(smBoneData);
    mFirstLengthDof = mLengthDofs.size();
    if (ReadBoneLines(lNode) && AttachBone(lNode))
        return true;
    mLengthDofs.resize(mFirstLengthDof);
    QexSdkDelete(lNode);
    return false;
}

/// The lines up to the next "begin" or "end", which stays current.
bool KQexFileAcclaimAsf::ReadBoneLines(HKQexAsfNode pNode)
{
    while (NextLine())
    {
        // Nearly all lines are of the bone, so that is asked first; no word is in both tables.
        const int lKeyword = Check(smBoneData);
        if (lKeyword == -1 && Check(smGroup) != -1)
            return true;
        if (!ReadBoneLine(pNode, Take(smBoneData, lKeyword)))
            return false;
    }
    return false;
}

bool KQexFileAcclaimAsf::ReadBoneLine(HKQexAsfNode pNode, int pKeyword)
{
    double lIgnored = 0.0;
    int    lId = 0;
    switch (pKeyword)
    {
    case 0:
        // Bones are told by their names.
        if (!GetInteger(lId))
            Warning("Can't read bone id value\n");
        return true;
    case 1:
        return ReadBoneName(pNode);
    case 2:
        return ReadBoneDirection(pNode);
    case 3:
        return ReadBoneLength(pNode);
    case 4:
        return ReadBoneAxis(pNode);
    case 5:
        return ReadBoneDof(pNode);
    case 6:
        return ReadBoneLimits(pNode);
    case 7:
        if (!GetDouble(lIgnored, mQexAsfScene->mMassUnit))
            Warning("Can't read bodymass value\n");
        return true;
    case 8:
        if (!GetDouble(lIgnored, 1.0))
            Warning("Can't read cofmass value\n");
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
    if (mNameIndex != nullptr)
        mNameIndex->Expect(pNode->mName);
    return true;
}

bool KQexFileAcclaimAsf::ReadBoneDirection(HKQexAsfNode pNode)
{
    if (!GetVector(pNode->mDirectionV.mData, 1.0))
    {
        Error("Can't read bone direction\n");
        return false;
    }
    // A length of zero is that of an exact zero only.
    const double* lData = pNode->mDirectionV.mData;
    if (lData[0] != 0.0 || lData[1] != 0.0 || lData[2] != 0.0)
        KgeNorm(pNode->mDirectionV, pNode->mDirectionV);
    return true;
}

bool KQexFileAcclaimAsf::ReadBoneLength(HKQexAsfNode pNode)
{
    if (!GetDouble(pNode->mLength, 1.0))
    {
        Error("Can't read bone length\n");
        return false;
    }
    if (mQexAsfScene->mLengthUnit > 0.0)
        pNode->mLength = (kCentimetresPerInch / mQexAsfScene->mLengthUnit) * pNode->mLength;
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
    int lPlace = 0;
    for (int lCode = Handle(smDof); lCode != -1; lCode = Handle(smDof), ++lPlace)
    {
        if (lCode >= kMaxDofs)
        {
            Warning("Unknown degree of freedom (%s)\n", static_cast<char*>(*this));
            if (!AddLengthDof(lPlace))
                return false;
        }
        else if (pNode->mOrderCount < kMaxDofs)
            pNode->mOrderBuf[pNode->mOrderCount++] = lCode;
        else if (!lWarned)
        {
            Warning("Too many degrees of freedom (%s)\n", static_cast<char*>(*this));
            lWarned = true;
        }
    }
    return true;
}

/// Notes a word "l" of the bone being read; the bone's name may still come.
bool KQexFileAcclaimAsf::AddLengthDof(int pPlace)
{
    try
    {
        mLengthDofs.push_back(KQexAsfLengthDof{std::string(), pPlace});
        return true;
    }
    catch (const std::exception&)
    {
        Error("Out of memory\n");
        return false;
    }
}

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
        // The DOF's code says which row, not its place in the list. An infinity or NaN is no limit.
        const int lCode = pNode->mOrderBuf[i];
        pNode->mLimitsActive[lCode][0] = lPair[0] >= -DBL_MAX;
        pNode->mLimitsActive[lCode][1] = lPair[1] <= DBL_MAX;
        for (int j = 0; j < 2; ++j)
            pNode->mLimitsBuf[lCode][j] = pNode->mLimitsActive[lCode][j] ? lPair[j] : 0.0;
    }
    return true;
}

/// Ends a bone group: the bone goes under the root, where the hierarchy will find it.
bool KQexFileAcclaimAsf::AttachBone(HKQexAsfNode pNode)
{
    const char* lMessage = nullptr;
    if (smBoneData[1] == 0)
        lMessage = "Bone has no name\n";
    else if (smBoneData[2] == 0)
        lMessage = "Bone has no direction\n";
    else if (smBoneData[3] == 0)
        lMessage = "Bone has no length\n";
    if (lMessage == nullptr)
    {
        SetAxis(pNode);
        if (NameLengthDofs(pNode->mName) && mQexAsfScene->mRoot->AddChild(pNode))
        {
            // While the bone is at hand; what fails here is tried again, and reported, where the index is needed.
            if (mNameIndex != nullptr)
                mNameIndex->Update(mQexAsfScene->mRoot);
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
            mLengthDofs[i].mBone = pName;
        return true;
    }
    catch (const std::exception&)
    {
        return false;
    }
}

bool KQexFileAcclaimAsf::ReadHierarchy()
{
    if (!CheckRoot("Hierarchy before :root\n"))
        return false;
    InitTokens(smGroup);
    if (mNameIndex != nullptr)
        return ReadFamilies(*mNameIndex);
    KQexAsfNameIndex lIndex;
    const bool       lOk = ReadFamilies(lIndex);
    return SettleFamilies(lIndex) && lOk;
}

/// Hangs the bones where the families said, also when reading them ended early.
bool KQexFileAcclaimAsf::SettleFamilies(KQexAsfNameIndex& pIndex)
{
    if (pIndex.Settle())
        return true;
    Error("Out of memory\n");
    return false;
}

bool KQexFileAcclaimAsf::ReadFamilies(KQexAsfNameIndex& pIndex)
{
    while (NextLine())
    {
        if (Check(smMain) != -1)
            return true;
        const int lGroup = Handle(smGroup);
        if (lGroup == eGROUP_END)
            continue;
        if (lGroup != eGROUP_BEGIN)
        {
            Warning("Begin/End keyword expected\n");
            continue;
        }
        if (!pIndex.Update(mQexAsfScene->mRoot))
        {
            Error("Out of memory\n");
            return false;
        }
        while (NextLine() && Check(smGroup) == -1)
            if (!ReadFamily(pIndex))
                return false;
    }
    return true;
}

bool KQexFileAcclaimAsf::ReadFamily(KQexAsfNameIndex& pIndex)
{
    char lName[kMaxName + 1];
    if (!ReadNameWord(lName))
    {
        Warning("Can't read parent bone name\n");
        return true;
    }
    // Bones already hang under the root.
    if (std::strcmp(lName, kRootName) == 0)
        return true;
    const int lParent = pIndex.Find(lName);
    if (lParent >= 0)
        return ReadChildren(pIndex, lParent);
    Error("Unknown parent bone name (%s)\n", lName);
    return false;
}

bool KQexFileAcclaimAsf::ReadChildren(KQexAsfNameIndex& pIndex, int pParent)
{
    char lName[kMaxName + 1];
    while (HasToken() && ReadNameWord(lName))
    {
        const int lChild = pIndex.Find(lName);
        if (lChild < 0)
        {
            Error("Unknown child bone name (%s)\n", lName);
            return false;
        }
        // The first family that names a bone as a child wins.
        if (!pIndex.IsUnderRoot(lChild))
            continue;
        if (pIndex.IsBelow(pParent, lChild))
            Warning("Bone under itself (%s)\n", lName);
        else
            pIndex.Move(lChild, pParent);
    }
    return true;
}

} // namespace qexsdk
