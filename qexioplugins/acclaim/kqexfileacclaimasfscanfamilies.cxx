#include <qexioplugins/acclaim/kqexasfgrammar.h>
#include <qexioplugins/acclaim/kqexasfnameindex.h>
#include <qexioplugins/acclaim/kqexasfscan.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

namespace qexsdk
{

/// A name in a line of a family.
struct KQexFileAcclaimAsf::KFamilyWord
{
    KQexAsfNameIndex::KName mName;
    bool                    mIsParent; ///< The line's first.
    bool                    mIsLast;   ///< The line's last.
    KQexAsfScan::KPlace     mBehind;   ///< Behind the line, when it is the last.
};

/// Takes lines of families as far as they are those that nearly all files have: names of bones that there are, and nothing else. From
/// the first other word on, ReadFamily() reads.
///
/// Names that are asked for here and there lie far apart in memory. A number of them is asked for together.
/// \return how many words of the next line are done; their line is that of the bone pParent, when there are any
int KQexFileAcclaimAsf::ScanFamilies(KQexAsfNameIndex& pIndex, int& pParent)
{
    constexpr int kWords = 32;
    KFamilyWord   lWords[kWords];
    KQexAsfScan   lScan(GetInput());
    bool          lIsParent = true;
    int           lDone = 0;
    int           lCount = kWords;
    while (lCount == kWords)
    {
        for (lCount = 0; lCount < kWords && ScanFamilyWord(lScan, lIsParent, lWords[lCount]); ++lCount)
        {
            lIsParent = lWords[lCount].mIsLast;
            pIndex.Approach(lWords[lCount].mName);
        }
        for (int i = 0; i < lCount; ++i)
            pIndex.ApproachFound(lWords[i].mName);
        for (int i = 0; i < lCount; ++i)
        {
            if (!TakeFamilyWord(pIndex, lWords[i], pParent))
            {
                lCount = 0;
                break;
            }
            ++lDone;
            if (!lWords[i].mIsLast)
                continue;
            lDone = 0;
            lScan.Keep(lWords[i].mBehind);
        }
    }
    lScan.TakeLines();
    return lDone;
}

bool KQexFileAcclaimAsf::ScanFamilyWord(KQexAsfScan& pScan, bool pIsParent, KFamilyWord& pWord)
{
    // Of a line that is not there as a whole nothing is done yet: it may never come.
    if (pIsParent && (!pScan.HasWholeLine() || pScan.Letters(smGroup) >= 0))
        return false;
    size_t      lLength = 0;
    const char* lText = pScan.Text(lLength, kMaxName);
    // Lines of the root are passed over as a whole, which is not to be beaten.
    if (lText == nullptr || (pIsParent && IsRootName(lText, lLength)))
        return false;
    pWord.mName = KQexAsfNameIndex::KName(lText, lLength);
    pWord.mIsParent = pIsParent;
    pWord.mIsLast = pScan.LineEnd();
    pWord.mBehind = pScan.GetPlace();
    return true;
}

/// Does what the word asks for; pParent is the bone that its line's first word named. False when there is something to say about it.
bool KQexFileAcclaimAsf::TakeFamilyWord(KQexAsfNameIndex& pIndex, const KFamilyWord& pWord, int& pParent)
{
    const int lBone = pIndex.FindApproached(pWord.mName);
    if (lBone < 0)
        return false;
    if (pWord.mIsParent)
    {
        pParent = lBone;
        return true;
    }
    // The first family that names a bone as a child wins.
    if (!pIndex.IsUnderRoot(lBone))
        return true;
    if (pIndex.IsBelow(pParent, lBone))
        return false;
    pIndex.Move(lBone, pParent);
    return true;
}

} // namespace qexsdk
