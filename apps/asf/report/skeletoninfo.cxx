#include <apps/asf/report/skeletoninfo.h>

#include <apps/asf/report/numbertext.h>
#include <kbaselib/kmath/kdofcodes.h>

#include <algorithm>

namespace asfapp
{

namespace
{

/// Maximum depth of indentation, so that the output stays linear in the number of bones.
constexpr int kMaxIndent = 32;

constexpr size_t kMaxNameWidth = 60;

std::string Indented(const qexsdk::KQexRestBone& pBone)
{
    return std::string(2 * static_cast<size_t>(std::min(pBone.mDepth, kMaxIndent)), ' ') + Printable(pBone.mNode->mName);
}

/// "" without limits.
std::string LimitsOf(const qexsdk::KQexAsfNode& pNode, int pCode)
{
    const bool* lActive = pNode.mLimitsActive[pCode];
    if (!lActive[0] && !lActive[1])
    {
        return std::string();
    }
    const double* lLimit = pNode.mLimitsBuf[pCode];
    return LimitsText(lActive[0], lLimit[0], lActive[1], lLimit[1]);
}

std::string DofText(const qexsdk::KQexAsfNode& pNode)
{
    std::string lText;
    for (int lIndex = 0; lIndex < pNode.mOrderCount; ++lIndex)
    {
        const int lCode = pNode.mOrderBuf[lIndex];
        lText += lIndex > 0 ? "  " : "";
        lText += qexsdk::kDofWords[lCode] + LimitsOf(pNode, lCode);
    }
    return lText;
}

/// The root has no length of its own.
std::string LengthText(const qexsdk::KQexRestBone& pBone, double pScale)
{
    return pBone.mParent < 0 ? std::string() : FixedText(pBone.mNode->mLength * pScale, 3);
}

void WriteSummary(const qexsdk::KQexSkeletonFile& pSkeleton, KConsole& pConsole)
{
    const qexsdk::KQexAsfScene& lScene = *pSkeleton.GetScene();
    const auto&                 lBones = pSkeleton.GetBones();
    const double                lScale = pSkeleton.GetCentimetresPerUnit();
    long long                   lDofs = 0;
    int                         lDepth = 0;
    for (const qexsdk::KQexRestBone& lBone : lBones)
    {
        lDofs += lBone.mNode->mOrderCount;
        lDepth = std::max(lDepth, lBone.mDepth);
    }
    KPoint lMin;
    KPoint lMax;
    pSkeleton.GetBounds(lMin, lMax);
    pConsole.Out("  units   mass " + ShortText(lScene.mMassUnit) + ", length " + ShortText(lScene.mLengthUnit) + " (1 unit is " +
                 ShortText(lScale) + " cm), angle " + (lScene.mAngleUnit == 1.0 ? "deg" : "rad") + "\n");
    pConsole.Out("  bones   " + std::to_string(lBones.size() - 1) + " below the root, " + CountText(lDofs, "degree", "degrees") +
                 " of freedom, " + CountText(lDepth, "level", "levels") + " deep\n");
    pConsole.Out("  height  " + FixedText(lMax.mY - lMin.mY, 1) + " cm at rest (" + FixedText(lMax.mX - lMin.mX, 1) + " wide, " +
                 FixedText(lMax.mZ - lMin.mZ, 1) + " deep)\n\n");
}

} // namespace

void WriteSkeletonInfo(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexSkeletonFile& pSkeleton, KConsole& pConsole)
{
    const std::string lName = pSkeleton.GetScene()->mName;
    pConsole.Out(pConsole.Bold(Printable(pFile.GetDisplayPath())) + ": " +
                 (lName.empty() ? "a skeleton without a name" : Printable(lName)) + "\n");
    WriteSummary(pSkeleton, pConsole);

    size_t lNameWidth = 4;
    size_t lLengthWidth = 2;
    for (const qexsdk::KQexRestBone& lBone : pSkeleton.GetBones())
    {
        lNameWidth = std::max(lNameWidth, std::min(Indented(lBone).size(), kMaxNameWidth));
        lLengthWidth = std::max(lLengthWidth, LengthText(lBone, 1.0).size());
    }
    const auto lWriteLine =
        [&](const std::string& pName, const std::string& pCentimetres, const std::string& pUnits, const std::string& pDofs)
    {
        std::string lLine =
            "  " + PadRight(pName, lNameWidth) + "  " + PadLeft(pCentimetres, lLengthWidth) + "  " + PadLeft(pUnits, 9) + "  " + pDofs;
        lLine.erase(lLine.find_last_not_of(' ') + 1);
        return pConsole.Out(lLine + "\n");
    };
    lWriteLine("bone", "cm", "in file", "degrees of freedom (lower and upper limit)");
    for (const qexsdk::KQexRestBone& lBone : pSkeleton.GetBones())
    {
        const std::string lUnits = LengthText(lBone, 1.0 / pSkeleton.GetCentimetresPerUnit());
        if (!lWriteLine(Indented(lBone), LengthText(lBone, 1.0), lUnits, DofText(*lBone.mNode)))
        {
            return;
        }
    }
}

} // namespace asfapp
