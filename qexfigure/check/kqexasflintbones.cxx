#include <kbaselib/kbase/kletters.h>
#include <qexfigure/check/kqexasflint.h>
#include <qexioplugins/acclaim/asf/kqexasfgrammar.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

namespace qexsdk
{

bool KQexAsfLint::BoneData(int pLine)
{
    bool lMore = NextLine();
    while (lMore && Check(KQexFileAcclaimAsf::smMain) == -1)
    {
        const int lGroupLine = GetLineNumber();
        switch (Handle(KQexFileAcclaimAsf::smGroup))
        {
        case eGROUP_BEGIN:
            ReportExtraText();
            if (!Bone(lGroupLine))
            {
                return false;
            }
            break;
        case eGROUP_END:
            ReportExtraText();
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

/// False where the reader stops inside the group.
bool KQexAsfLint::Bone(int pLine)
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
    Stop(pLine, "The file ends inside the bone" + (lGroup.mName.empty() ? "" : " " + lGroup.mName) + ", which begins here");
    return false;
}

/// False where the reader stops with its own error.
bool KQexAsfLint::BoneLine(int pWord, KGroup& pGroup)
{
    int    lInteger = 0;
    double lValue = 0;
    double lVector[3] = {0, 0, 0};
    bool   lIsRead = true; // False: the reader itself warns about the line.
    switch (pWord)
    {
    case eBONE_ID:
        lIsRead = GetInteger(lInteger);
        break;
    case eBONE_NAME:
        if (!BoneName(pGroup))
        {
            return false;
        }
        break;
    case eBONE_DIRECTION:
        if (!GetVector(lVector, 1.0))
        {
            return false;
        }
        pGroup.mDirectionLine = GetLineNumber();
        pGroup.mZeroDirection = lVector[0] == 0 && lVector[1] == 0 && lVector[2] == 0;
        break;
    case eBONE_LENGTH:
        if (!GetDouble(lValue, 1.0))
        {
            return false;
        }
        pGroup.mHasLength = lValue != 0;
        break;
    case eBONE_AXIS:
        if (!BoneAxis())
        {
            return false;
        }
        break;
    case eBONE_DOF:
        ReadDofs(KQexFileAcclaimAsf::smDof, pGroup.mCodes);
        break;
    case eBONE_LIMITS:
        if (!Limits(pGroup))
        {
            return false;
        }
        break;
    case eBONE_BODYMASS:
    case eBONE_COFMASS:
        lIsRead = GetDouble(lValue, 1.0);
        break;
    default:
        lIsRead = false;
        break;
    }
    if (lIsRead)
    {
        ReportExtraText();
    }
    return true;
}

bool KQexAsfLint::BoneName(KGroup& pGroup)
{
    char lName[kMaxName + 1];
    if (!GetString(lName, kMaxName))
    {
        return false;
    }
    pGroup.mName = lName;
    pGroup.mNameLine = GetLineNumber();
    if (KEqualsIgnoreCase(pGroup.mName, "begin") || KEqualsIgnoreCase(pGroup.mName, "end"))
    {
        AddFinding(pGroup.mNameLine, "Bone is named like a keyword, so it cannot start a hierarchy line (%s)", lName);
    }
    return pGroup.mName != "root";
}

bool KQexAsfLint::BoneAxis()
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

bool KQexAsfLint::Limits(const KGroup& pGroup)
{
    for (const int lCode : pGroup.mCodes)
    {
        double lPair[2] = {0, 0};
        bool   lGot = GetPair(lPair, 1.0);
        if (!lGot)
        {
            ReportExtraText();
            lGot = NextLine() && GetPair(lPair, 1.0);
        }
        if (!lGot)
        {
            return false;
        }
        if (lPair[0] > lPair[1])
        {
            AddFinding(GetLineNumber(), "Lower limit exceeds upper limit (%s %g %g)", KQexFileAcclaimAsf::smDof[lCode].mStr, lPair[0],
                       lPair[1]);
        }
    }
    return true;
}

void KQexAsfLint::EndBone(const KGroup& pGroup)
{
    if (pGroup.mZeroDirection && pGroup.mHasLength)
    {
        AddFinding(pGroup.mDirectionLine, "Bone has a length but its direction is zero (%s)", pGroup.mName.c_str());
    }
    if (pGroup.mName.empty())
    {
        return;
    }
    const auto lInserted = mByName.emplace(pGroup.mName, mBones.size());
    if (!lInserted.second)
    {
        AddFinding(pGroup.mNameLine, "Duplicate bone name, first used on line %d (%s)", mBones[lInserted.first->second].mLine,
                   pGroup.mName.c_str());
        return;
    }
    KBone lBone;
    lBone.mName = pGroup.mName;
    lBone.mLine = pGroup.mNameLine;
    mBones.push_back(lBone);
}

bool KQexAsfLint::Hierarchy()
{
    mHasHierarchy = true;
    while (NextLine() && Check(KQexFileAcclaimAsf::smMain) == -1)
    {
        const int lWord = Handle(KQexFileAcclaimAsf::smGroup);
        if (lWord != -1)
        {
            ReportExtraText();
        }
        if (lWord != eGROUP_BEGIN)
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
            ReportExtraText();
        }
    }
    return true;
}

void KQexAsfLint::Family()
{
    char lName[kMaxName + 1];
    if (!GetString(lName, kMaxName))
    {
        return;
    }
    const std::string lParent = lName;
    while (GetString(lName, kMaxName))
    {
        Child(lParent, lName);
    }
}

void KQexAsfLint::Child(const std::string& pParent, const std::string& pName)
{
    const auto lFound = mByName.find(pName);
    if (lFound == mByName.end())
    {
        // Below any other parent, the reader stops at an unknown name.
        if (pParent == "root")
        {
            AddFinding(GetLineNumber(), "Unknown bone under root (%s)", pName.c_str());
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
        AddFinding(GetLineNumber(), "Bone keeps its first parent %s (%s)", lBone.mParent.c_str(), pName.c_str());
    }
    if (lBone.mParent.empty())
    {
        lBone.mParent = pParent;
    }
}

} // namespace qexsdk
