#include <apps/asf/report/asflint.h>
#include <kbaselib/kbase/kletters.h>
#include <qexioplugins/acclaim/asf/kqexasfgrammar.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

namespace asfapp
{

using qexsdk::KEqualsFolded;
using qexsdk::KQexFileAcclaimAsf;

bool KAsfLint::BoneData(int pLine)
{
    bool lMore = NextLine();
    while (lMore && Check(KQexFileAcclaimAsf::smMain) == -1)
    {
        const int lGroupLine = GetLineNumber();
        switch (Handle(KQexFileAcclaimAsf::smGroup))
        {
        case qexsdk::eGROUP_BEGIN:
            LeftOver();
            if (!Bone(lGroupLine))
            {
                return false;
            }
            break;
        case qexsdk::eGROUP_END:
            LeftOver();
            lMore = NextLine();
            break;
        default:
            lMore = HasToken() || NextLine();
            break;
        }
    }
    if (!lMore)
    {
        StopAtEnd(pLine, ":bonedata");
    }
    return lMore;
}

/// False when the reader gives up inside the group.
bool KAsfLint::Bone(int pLine)
{
    KGroup lGroup;
    while (NextLine())
    {
        if (Check(KQexFileAcclaimAsf::smGroup) != -1)
        {
            EndBone(lGroup);
            return true;
        }
        if (!BoneLine(Handle(KQexFileAcclaimAsf::smBoneData), lGroup))
        {
            return false;
        }
    }
    Stop(pLine, "The file ends inside the bone" + (lGroup.mName.empty() ? "" : " " + lGroup.mName) + " that begins here");
    return false;
}

/// False when the reader gives up with an error of its own.
bool KAsfLint::BoneLine(int pWord, KGroup& pGroup)
{
    int    lInteger = 0;
    double lValue = 0;
    double lVector[3] = {0, 0, 0};
    bool   lTaken = true; // False: the reader has a message about the line already.
    switch (pWord)
    {
    case qexsdk::eBONE_ID:
        lTaken = GetInteger(lInteger);
        break;
    case qexsdk::eBONE_NAME:
        if (!BoneName(pGroup))
        {
            return false;
        }
        break;
    case qexsdk::eBONE_DIRECTION:
        if (!GetVector(lVector, 1.0))
        {
            return false;
        }
        pGroup.mDirectionLine = GetLineNumber();
        pGroup.mZeroDirection = lVector[0] == 0 && lVector[1] == 0 && lVector[2] == 0;
        break;
    case qexsdk::eBONE_LENGTH:
        if (!GetDouble(lValue, 1.0))
        {
            return false;
        }
        pGroup.mHasLength = lValue != 0;
        break;
    case qexsdk::eBONE_AXIS:
        if (!BoneAxis())
        {
            return false;
        }
        break;
    case qexsdk::eBONE_DOF:
        Channels(KQexFileAcclaimAsf::smDof, pGroup.mCodes);
        break;
    case qexsdk::eBONE_LIMITS:
        if (!Limits(pGroup))
        {
            return false;
        }
        break;
    case qexsdk::eBONE_BODYMASS:
    case qexsdk::eBONE_COFMASS:
        lTaken = GetDouble(lValue, 1.0);
        break;
    default:
        lTaken = false;
        break;
    }
    if (lTaken)
    {
        LeftOver();
    }
    return true;
}

bool KAsfLint::BoneName(KGroup& pGroup)
{
    char lName[qexsdk::kMaxName + 1];
    if (!GetString(lName, qexsdk::kMaxName))
    {
        return false;
    }
    pGroup.mName = lName;
    pGroup.mNameLine = GetLineNumber();
    if (KEqualsFolded(pGroup.mName, "begin") || KEqualsFolded(pGroup.mName, "end"))
    {
        Find(pGroup.mNameLine, "Bone is named like a group word, the hierarchy cannot name it first on a line (%s)", lName);
    }
    return pGroup.mName != "root";
}

bool KAsfLint::BoneAxis()
{
    double lAngles[3] = {0, 0, 0};
    if (!GetVector(lAngles, 1.0))
    {
        return false;
    }
    const int lWord = Handle(KQexFileAcclaimAsf::smAxis);
    CheckAxis(GetLineNumber(), lWord, lAngles);
    return lWord != -1;
}

bool KAsfLint::Limits(const KGroup& pGroup)
{
    for (const int lCode : pGroup.mCodes)
    {
        double lPair[2] = {0, 0};
        bool   lGot = GetPair(lPair, 1.0);
        if (!lGot)
        {
            LeftOver();
            lGot = NextLine() && GetPair(lPair, 1.0);
        }
        if (!lGot)
        {
            return false;
        }
        if (lPair[0] > lPair[1])
        {
            Find(GetLineNumber(), "Lower limit exceeds the upper one (%s %g %g)", KQexFileAcclaimAsf::smDof[lCode].mStr, lPair[0],
                 lPair[1]);
        }
    }
    return true;
}

void KAsfLint::EndBone(const KGroup& pGroup)
{
    if (pGroup.mZeroDirection && pGroup.mHasLength)
    {
        Find(pGroup.mDirectionLine, "Bone has a length but its direction is zero (%s)", pGroup.mName.c_str());
    }
    if (pGroup.mName.empty())
    {
        return;
    }
    const auto lPlace = mByName.emplace(pGroup.mName, mBones.size());
    if (!lPlace.second)
    {
        Find(pGroup.mNameLine, "Bone name is taken already, by the bone of line %d (%s)", mBones[lPlace.first->second].mLine,
             pGroup.mName.c_str());
        return;
    }
    KBone lBone;
    lBone.mName = pGroup.mName;
    lBone.mLine = pGroup.mNameLine;
    mBones.push_back(lBone);
}

bool KAsfLint::Hierarchy()
{
    mHasHierarchy = true;
    while (NextLine() && Check(KQexFileAcclaimAsf::smMain) == -1)
    {
        const int lWord = Handle(KQexFileAcclaimAsf::smGroup);
        if (lWord != -1)
        {
            LeftOver();
        }
        if (lWord != qexsdk::eGROUP_BEGIN)
        {
            continue;
        }
        while (NextLine() && Check(KQexFileAcclaimAsf::smGroup) == -1)
        {
            Family();
        }
        if (!Eof())
        {
            Handle(KQexFileAcclaimAsf::smGroup);
            LeftOver();
        }
    }
    return true;
}

void KAsfLint::Family()
{
    char lName[qexsdk::kMaxName + 1];
    if (!GetString(lName, qexsdk::kMaxName))
    {
        return;
    }
    const std::string lParent = lName;
    while (GetString(lName, qexsdk::kMaxName))
    {
        Child(lParent, lName);
    }
}

void KAsfLint::Child(const std::string& pParent, const std::string& pName)
{
    const auto lFound = mByName.find(pName);
    if (lFound == mByName.end())
    {
        // Behind any other parent the reader stops at an unknown name.
        if (pParent == "root")
        {
            Find(GetLineNumber(), "Unknown bone under root (%s)", pName.c_str());
        }
        return;
    }
    KBone& lBone = mBones[lFound->second];
    lBone.mIsChild = true;
    if (pParent == "root")
    {
        return;
    }
    if (!lBone.mParent.empty() && lBone.mParent != pParent)
    {
        Find(GetLineNumber(), "Bone stays under its first parent %s (%s)", lBone.mParent.c_str(), pName.c_str());
    }
    if (lBone.mParent.empty())
    {
        lBone.mParent = pParent;
    }
}

} // namespace asfapp
