#include <qexioplugins/acclaim/amc/kqexamcbones.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <algorithm>
#include <cstring>

namespace qexsdk
{

namespace
{

/// Compares two names, ignoring case: negative, positive or 0.
int CompareFolded(std::string_view pLeft, std::string_view pRight)
{
    const size_t lCount = std::min(pLeft.size(), pRight.size());
    for (size_t i = 0; i < lCount; ++i)
    {
        const auto lLeft = static_cast<unsigned char>(KToLower(pLeft[i]));
        const auto lRight = static_cast<unsigned char>(KToLower(pRight[i]));
        if (lLeft != lRight)
        {
            return lLeft < lRight ? -1 : 1;
        }
    }
    return pLeft.size() == pRight.size() ? 0 : pLeft.size() < pRight.size() ? -1 : 1;
}

/// Orders names such that those that differ only in case are adjacent.
bool NameLess(std::string_view pLeft, std::string_view pRight)
{
    const int lFolded = CompareFolded(pLeft, pRight);
    return lFolded != 0 ? lFolded < 0 : pLeft < pRight;
}

} // namespace

void KQexAmcBones::Build(HKQexAsfNode pRoot, const KQexAmcSkeletonNotes& pNotes)
{
    AddTree(pRoot);
    AddRemoved(pNotes);
    SortNames();
    AddLengths(pNotes);
    for (size_t i = 0; i < mLines.size(); ++i)
    {
        mLines[i].mNext = i + 1 < mLines.size() ? static_cast<int>(i + 1) : 0;
    }
}

void KQexAmcBones::AddTree(HKQexAsfNode pRoot)
{
    KQexAsfWalk lWalk(pRoot);
    while (const HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            continue;
        }
        KQexAmcLine& lLine = mLines.emplace_back();
        lLine.mName = lBone->mName;
        if (lBone->mOrderCount == 0)
        {
            continue;
        }
        lLine.mBone = static_cast<int>(mBones.size());
        lLine.mValueCount = lBone->mOrderCount;
        mBones.emplace_back().mNode = lBone;
    }
}

void KQexAmcBones::AddRemoved(const KQexAmcSkeletonNotes& pNotes)
{
    for (const std::string& lName : pNotes.mRemovedBones)
    {
        KQexAmcLine& lLine = mLines.emplace_back();
        lLine.mName = lName;
        lLine.mIsRemoved = true;
    }
}

void KQexAmcBones::AddLengths(const KQexAmcSkeletonNotes& pNotes)
{
    for (const KQexAsfLengthDof& lLength : pNotes.mLengthDofs)
    {
        const int lFound = Find(lLength.mBone);
        if (lFound < 0 || lLength.mIndex < 0)
        {
            continue;
        }
        KQexAmcLine& lLine = mLines[static_cast<size_t>(lFound)];
        lLine.mValueCount += AddLengthIndex(lLine.mLengthIndices, lLength.mIndex) ? 1 : 0;
    }
}

void KQexAmcBones::SortNames()
{
    mNames.reserve(mLines.size());
    for (size_t i = 0; i < mLines.size(); ++i)
    {
        mNames.push_back({mLines[i].mName, static_cast<int>(i)});
    }
    std::stable_sort(mNames.begin(), mNames.end(),
                     [](const KEntry& pLeft, const KEntry& pRight) { return NameLess(pLeft.mName, pRight.mName); });
    mNames.erase(
        std::unique(mNames.begin(), mNames.end(), [](const KEntry& pLeft, const KEntry& pRight) { return pLeft.mName == pRight.mName; }),
        mNames.end());
}

int KQexAmcBones::Find(std::string_view pName) const
{
    const auto lExact = std::lower_bound(mNames.begin(), mNames.end(), pName,
                                         [](const KEntry& pEntry, std::string_view pWanted) { return NameLess(pEntry.mName, pWanted); });
    if (lExact != mNames.end() && lExact->mName == pName)
    {
        return lExact->mLine;
    }

    const auto lFolded =
        std::lower_bound(mNames.begin(), mNames.end(), pName,
                         [](const KEntry& pEntry, std::string_view pWanted) { return CompareFolded(pEntry.mName, pWanted) < 0; });
    return lFolded != mNames.end() && CompareFolded(lFolded->mName, pName) == 0 ? lFolded->mLine : -1;
}

const char* KQexAmcBones::Word(const KQexAmcLine& pLine, int pIndex) const
{
    const auto lFirst = pLine.mLengthIndices.begin();
    const auto lLength = std::lower_bound(lFirst, pLine.mLengthIndices.end(), pIndex);
    if (lLength != pLine.mLengthIndices.end() && *lLength == pIndex)
    {
        return "l";
    }

    const int lDof = pIndex - static_cast<int>(lLength - lFirst);
    if (pLine.mBone < 0)
    {
        return "l";
    }
    const HKQexAsfNode lBone = mBones[static_cast<size_t>(pLine.mBone)].mNode;
    const int          lCode = lDof < lBone->mOrderCount ? lBone->mOrderBuf[lDof] : -1;
    return lCode >= 0 && lCode < eDOF_COUNT ? kDofWords[lCode] : "l";
}

std::string KQexAmcBones::Words(const KQexAmcLine& pLine) const
{
    // Many `l` words would bury the rest of the message.
    const int   kMaxWords = 12;
    std::string lWords;
    for (int i = 0; i < pLine.mValueCount && i < kMaxWords; ++i)
    {
        if (i > 0)
        {
            lWords += ' ';
        }
        lWords += Word(pLine, i);
    }
    if (pLine.mValueCount > kMaxWords)
    {
        lWords += " ...";
    }
    return lWords;
}

} // namespace qexsdk
