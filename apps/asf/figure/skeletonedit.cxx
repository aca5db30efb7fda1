#include <apps/asf/figure/skeletonedit.h>

#include <apps/asf/figure/rootmotion.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kbase/kletters.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfround.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace asfapp
{

namespace
{

using qexsdk::HKQexAsfNode;
using qexsdk::KEqualsIgnoreCase;
using qexsdk::kMaxName;
using qexsdk::KQexAsfNode;
using qexsdk::KQexAsfWalk;

/// "" if the reader reads \p pName back unchanged: a single token that is not a keyword. Else an error text.
std::string NameError(const std::string& pName)
{
    const bool lIsWord =
        std::all_of(pName.begin(), pName.end(),
                    [](char pC) { return static_cast<unsigned char>(pC) > ' ' && pC != '\x7f' && std::strchr(",()#", pC) == nullptr; });
    if (pName.empty() || !lIsWord || pName[0] == ':')
    {
        return "a name may not contain blanks, commas, parentheses or #, or begin with a colon";
    }
    if (KEqualsIgnoreCase(pName, "root") || KEqualsIgnoreCase(pName, "begin") || KEqualsIgnoreCase(pName, "end"))
    {
        return pName + " is a keyword";
    }
    return pName.size() > kMaxName ? "a name has at most 50 characters" : "";
}

/// All bones but the root, parents before children.
std::vector<HKQexAsfNode> Bones(HKQexAsfNode pRoot)
{
    std::vector<HKQexAsfNode> lBones;
    KQexAsfWalk               lWalk(pRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (lWalk.IsEntering() && lBone != pRoot)
        {
            lBones.push_back(lBone);
        }
    }
    return lBones;
}

void SetVector(KQexAsfNode& pBone, const double* pVector)
{
    const double lLength = std::sqrt(pVector[0] * pVector[0] + pVector[1] * pVector[1] + pVector[2] * pVector[2]);
    for (int lAxis = 0; lAxis < 3 && lLength > 0; ++lAxis)
    {
        pBone.mDirectionV.mData[lAxis] = pVector[lAxis] / lLength;
    }
    pBone.mLength = lLength;
}

} // namespace

void KSkeletonEdit::SetAddedEnds(const std::vector<std::string>& pBones)
{
    const std::unordered_set<std::string> lNames(pBones.begin(), pBones.end());
    for (const KQexAsfNode* lBone : Bones(mScene.mRoot))
    {
        if (lNames.count(lBone->mName) > 0)
        {
            mAddedEnds.insert(lBone);
        }
    }
}

std::vector<std::string> KSkeletonEdit::GetAddedEnds() const
{
    std::vector<std::string> lNames;
    for (const KQexAsfNode* lBone : Bones(mScene.mRoot))
    {
        if (mAddedEnds.count(lBone) > 0)
        {
            lNames.emplace_back(lBone->mName);
        }
    }
    return lNames;
}

std::string KSkeletonEdit::Rename(const std::string& pFrom, const std::string& pTo)
{
    HKQexAsfNode      lBone = mScene.mRoot->Find(pFrom.c_str());
    const std::string lError = NameError(pTo);
    if (lBone == nullptr || lBone == mScene.mRoot)
    {
        return lBone == nullptr ? "the skeleton has no bone " + pFrom : "the root cannot be renamed";
    }
    if (!lError.empty())
    {
        return lError;
    }
    if (pFrom != pTo && mScene.mRoot->Find(pTo.c_str()) != nullptr)
    {
        return "bone " + pTo + " already exists";
    }
    std::snprintf(lBone->mName, sizeof lBone->mName, "%s", pTo.c_str());
    return std::string();
}

void KSkeletonEdit::Scale(double pFactor)
{
    for (HKQexAsfNode lBone : Bones(mScene.mRoot))
    {
        lBone->mLength *= pFactor;
        for (int lRow = 0; lRow < 3; ++lRow)
        {
            for (int lBound = 0; lBound < 2; ++lBound)
            {
                lBone->mLimitsBuf[lRow][lBound] *= lBone->mLimitsActive[lRow][lBound] ? pFactor : 1.0;
            }
        }
    }
}

void KSkeletonEdit::DropLimits()
{
    for (HKQexAsfNode lBone : Bones(mScene.mRoot))
    {
        std::memset(lBone->mLimitsActive, 0, sizeof lBone->mLimitsActive);
    }
}

bool KSkeletonEdit::IsDummy(const KQexAsfNode& pBone) const
{
    return pBone.mOrderCount == 0;
}

/// The bone's children are appended to the parent's. False, and nothing changed, if another joint would move.
bool KSkeletonEdit::MergeIntoParent(HKQexAsfNode pBone)
{
    HKQexAsfNode lParent = pBone->mParent;
    const bool   lIsOnlyChild = lParent != mScene.mRoot && lParent->mChildBuf.GetCount() == 1;
    if (pBone->mLength > 0 && !lIsOnlyChild)
    {
        return false;
    }
    double lVector[3];
    for (int lAxis = 0; lAxis < 3; ++lAxis)
    {
        lVector[lAxis] = lParent->mDirectionV.mData[lAxis] * lParent->mLength + pBone->mDirectionV.mData[lAxis] * pBone->mLength;
    }
    for (int lChild = 0; lChild < pBone->mChildBuf.GetCount(); ++lChild)
    {
        if (!lParent->AddChild(pBone->mChildBuf[lChild]))
        {
            throw std::bad_alloc();
        }
    }
    if (pBone->mLength > 0)
    {
        SetVector(*lParent, lVector);
    }
    pBone->mChildBuf.Clear();
    lParent->RemoveChild(pBone);
    mAddedEnds.erase(pBone);
    qexsdk::QexSdkDelete(pBone);
    return true;
}

void KSkeletonEdit::RemoveDummies()
{
    std::string               lKept;
    std::vector<HKQexAsfNode> lBones = Bones(mScene.mRoot);
    // From the leaves up, so that a chain of dummies is removed completely.
    for (auto lBone = lBones.rbegin(); lBone != lBones.rend(); ++lBone)
    {
        if (IsDummy(**lBone))
        {
            const std::string lName = (*lBone)->mName;
            lKept = MergeIntoParent(*lBone) ? lKept : lName + (lKept.empty() ? "" : ", ") + lKept;
        }
    }
    if (!lKept.empty())
    {
        mWarnings.push_back("Kept bones without degrees of freedom that cannot be merged into their parent (" + lKept + ")");
    }
}

void KSkeletonEdit::WarnAboutRoot()
{
    if (HasRestPosition(*mScene.mRoot))
    {
        mWarnings.push_back("The root's position is written as zero");
    }
    if (HasRestOrientation(*mScene.mRoot))
    {
        mWarnings.push_back("The root's orientation is written as zero");
    }
}

void KSkeletonEdit::WarnAboutUnits()
{
    if (mScene.mMassUnit != 1)
    {
        mWarnings.push_back("The mass unit " + ShortText(mScene.mMassUnit) + " is written as 1");
    }
    if (mScene.mAngleUnit != 1)
    {
        mWarnings.push_back("The angle unit is written as degrees");
    }
}

void KSkeletonEdit::MakeWritable(const qexsdk::KQexAmcSkeletonNotes& pNotes)
{
    WarnAboutRoot();
    WarnAboutUnits();
    for (const qexsdk::KQexAsfLengthDof& lDof : pNotes.mLengthDofs)
    {
        mWarnings.push_back("Bone " + lDof.mBone + " loses its degree of freedom l");
    }
    const double lUnitsPerCentimetre = mScene.mLengthUnit > 0 ? mScene.mLengthUnit / qexsdk::kCentimetresPerInch : 1.0;
    for (HKQexAsfNode lBone : Bones(mScene.mRoot))
    {
        lBone->mLength *= lUnitsPerCentimetre;
        qexsdk::RoundBone(*lBone, mScene.mLengthUnit);
    }
}

} // namespace asfapp
