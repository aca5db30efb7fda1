#include <qexioplugins/acclaim/exchange/kqexasfwarnings.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/klinereader.h>
#include <qexioplugins/acclaim/amc/kqexamcheader.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <string_view>

namespace qexsdk
{

namespace
{

bool IsZero(const KgeRVector& pVector)
{
    return pVector[0] == 0.0 && pVector[1] == 0.0 && pVector[2] == 0.0;
}

bool IsZero(const KgeTVector& pVector)
{
    return pVector[0] == 0.0 && pVector[1] == 0.0 && pVector[2] == 0.0;
}

/// Whether the bone's axis word is one of the four that get the order of another word (see kAxisCodes), and its angles are not zero.
bool HasSwappedAxisWord(const KQexAsfNode& pBone)
{
    const int lOrder = pBone.mOrientationOrder;
    return (lOrder == 2 || lOrder == 4 || lOrder == 6 || lOrder == 8) && !IsZero(pBone.mOrientationV);
}

bool RepeatsRotationAxis(const KQexAsfNode& pBone)
{
    for (int i = 0; i < pBone.mOrderCount; ++i)
    {
        for (int j = 0; j < i; ++j)
        {
            if (pBone.mOrderBuf[i] == pBone.mOrderBuf[j] && pBone.mOrderBuf[i] >= 3)
            {
                return true;
            }
        }
    }
    return false;
}

/// One warning for all bones of a kind, naming the first.
class KBoneWarning
{
public:
    explicit KBoneWarning(const char* pText) : mText(pText) {}

    void AddBone(const KQexAsfNode& pBone)
    {
        if (mFirst.empty())
        {
            mFirst = pBone.mName;
        }
        ++mCount;
    }

    void AppendTo(std::vector<KQexTextMessage>& pWarnings) const
    {
        if (mCount == 0)
        {
            return;
        }
        const std::string lOthers = mCount > 1 ? " and " + std::to_string(mCount - 1) + " more" : "";
        pWarnings.push_back({KQexTextMessage::eWARNING, 0, mText + (" (" + mFirst + lOthers + ")")});
    }

private:
    std::string mText;
    std::string mFirst;
    int         mCount = 0;
};

/// The section that a line of the file opens, or "".
std::string_view SectionOf(const KLineReader& pLines)
{
    std::string_view       lText(pLines.GetLine(), pLines.GetLength());
    const std::string_view lToken = NextAmcToken(lText);
    return !lToken.empty() && lToken.front() == ':' ? lToken : std::string_view();
}

bool Open(KLineReader& pLines, const KQexAcclaimSource& pSource)
{
    if (pSource.mData != nullptr)
    {
        return pLines.OpenBuffer(pSource.mData, pSource.mSize);
    }
    // Standard input cannot be read again.
    return pSource.mPath != "-" && pLines.OpenPath(pSource.mPath.c_str());
}

} // namespace

void WarnAboutSkeleton(KQexAsfScene& pAsfScene, const KQexImportAcclaimOptions& pOptions, std::vector<KQexTextMessage>& pWarnings)
{
    KBoneWarning lRoot("The root's position or orientation is not zero; it is imported as it is, which may misplace the figure");
    KBoneWarning lLeaf("A leaf without a degree of freedom is removed and its length lost");
    KBoneWarning lAxis("An axis word means another order than its letters");
    KBoneWarning lTwice("A rotation axis is listed twice; with pre-rotation its angles are summed");

    if (!IsZero(pAsfScene.mRoot->mPositionV) || !IsZero(pAsfScene.mRoot->mOrientationV))
    {
        lRoot.AddBone(*pAsfScene.mRoot);
    }
    KQexAsfWalk lWalk(pAsfScene.mRoot);
    while (const HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            continue;
        }
        if (pOptions.mRemoveDummies && lBone != pAsfScene.mRoot && lBone->mChildBuf.GetCount() == 0 && lBone->mOrderCount == 0 &&
            lBone->mLength > 0.0)
        {
            lLeaf.AddBone(*lBone);
        }
        if (HasSwappedAxisWord(*lBone))
        {
            lAxis.AddBone(*lBone);
        }
        if (pOptions.mSetPreRotation && RepeatsRotationAxis(*lBone))
        {
            lTwice.AddBone(*lBone);
        }
    }
    for (const KBoneWarning* lWarning : {&lRoot, &lLeaf, &lAxis, &lTwice})
    {
        lWarning->AppendTo(pWarnings);
    }
}

KQexTextMessage ExplainSilentFailure(const KQexAcclaimSource& pSkeleton, int pLine)
{
    std::string lSection;
    int         lBegin = 0;
    bool        lHasRoot = false;
    KLineReader lLines;
    if (Open(lLines, pSkeleton))
    {
        while (lLines.GetLineNumber() < pLine && lLines.NextLine())
        {
            const std::string_view lName = SectionOf(lLines);
            if (lName.empty())
            {
                continue;
            }
            lSection = lName.substr(0, kMaxName);
            lBegin = static_cast<int>(lLines.GetLineNumber());
            lHasRoot = lHasRoot || KEqualsIgnoreCase(lName, ":root");
        }
    }

    std::string lText = "The skeleton is incomplete";
    if (lHasRoot || KEqualsIgnoreCase(lSection, ":name"))
    {
        lText += ": reading ended in the section " + lSection + " that begins at line " + std::to_string(lBegin);
    }
    else if (pSkeleton.mData != nullptr || pSkeleton.mPath != "-")
    {
        lText += lBegin > 0 ? ": there is no :root" : ": there is no section";
        lBegin = 0;
    }
    return {KQexTextMessage::eERROR, lBegin, lText};
}

} // namespace qexsdk
