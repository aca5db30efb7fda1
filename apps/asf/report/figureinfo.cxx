#include <apps/asf/report/figureinfo.h>

#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/numbertext.h>

#include <algorithm>

namespace asfapp
{

namespace
{

/// Maximum depth of indentation, so that the output stays linear in the number of joints.
constexpr int kMaxJointIndent = 32;

constexpr size_t kMaxJointWidth = 60;

const char* FormatWord(const qexsdk::KQexFigureFile& pFile)
{
    return pFile.GetFormat() == qexsdk::eFIGURE_BVH ? "BVH" : "glTF";
}

std::string IndentedJoint(const qexsdk::KQexFigureSurvey& pSurvey, size_t pJoint)
{
    const int lIndent = std::min(pSurvey.GetDepths()[pJoint], kMaxJointIndent);
    return std::string(2 * static_cast<size_t>(lIndent), ' ') + Printable(pSurvey.GetJoints()[pJoint].mName);
}

std::string MovesText(const qexsdk::KQexFigureSurvey& pSurvey, size_t pJoint)
{
    const qexsdk::KQexJointMoves& lMoves = pSurvey.GetMoves()[pJoint];
    std::string                   lText = lMoves.mTranslates ? "translation" : "";
    lText += !lMoves.mRotates ? "" : lText.empty() ? "rotation" : ", rotation";
    lText += !lMoves.mScales ? "" : lText.empty() ? "scaling" : ", scaling";
    return lText;
}

KJson MovesJson(const qexsdk::KQexJointMoves& pMoves)
{
    KJson lMoves = KJson::array();
    for (const auto& [lMovesSo, lWord] :
         {std::pair(pMoves.mTranslates, "translation"), std::pair(pMoves.mRotates, "rotation"), std::pair(pMoves.mScales, "scaling")})
    {
        if (lMovesSo)
        {
            lMoves.push_back(lWord);
        }
    }
    return lMoves;
}

/// Degrees of freedom with their limits, where the file has them.
std::string DofsText(const qexsdk::KQexFigureSurvey& pSurvey, const std::string& pJoint)
{
    std::string lText;
    const auto* lDofs = pSurvey.GetBoneDofs();
    const auto  lFound = lDofs != nullptr ? lDofs->find(pJoint) : qexsdk::KQexBoneDofs::const_iterator();
    if (lDofs == nullptr || lFound == lDofs->end())
    {
        return lText;
    }
    for (const qexsdk::KQexBoneDof& lDof : lFound->second)
    {
        lText += (lText.empty() ? "" : "  ") + lDof.mWord;
        if (lDof.mHasMin || lDof.mHasMax)
        {
            lText += LimitsText(lDof.mHasMin, lDof.mMin, lDof.mHasMax, lDof.mMax);
        }
    }
    return lText;
}

void WriteFigureSummary(const qexsdk::KQexFigureSurvey& pSurvey, KConsole& pConsole)
{
    KPoint lMin;
    KPoint lMax;
    pSurvey.GetBounds(lMin, lMax);
    const int lEnds = pSurvey.CountEnds();
    pConsole.Out("  joints  " + std::to_string(static_cast<int>(pSurvey.GetJoints().size()) - lEnds) + ", " +
                 CountText(lEnds, "end", "ends") + ", " + CountText(pSurvey.GetDepth(), "level", "levels") + " deep\n");
    pConsole.Out("  height  " + FixedText(lMax.mY - lMin.mY, 1) + " cm at rest (" + FixedText(lMax.mX - lMin.mX, 1) + " wide, " +
                 FixedText(lMax.mZ - lMin.mZ, 1) + " deep)\n");
    for (const qexsdk::KQexTakeSurvey& lTake : pSurvey.GetTakes())
    {
        pConsole.Out("  take    " + Printable(lTake.mName) + ": " + CountText(lTake.mFrameCount, "frame", "frames") + " (" +
                     std::to_string(lTake.mFirstFrame) + " to " + std::to_string(lTake.mLastFrame) + "), " + ShortText(lTake.mRate) +
                     " a second, " + FixedText(lTake.mSeconds, 3) + " s\n");
        pConsole.Out("          " + CountText(lTake.mMoving, "joint moves", "joints move") + "; root " + FixedText(lTake.mRootTravel, 1) +
                     " cm from start to end, " + FixedText(lTake.mRootPathLength, 1) + " cm along its path\n");
    }
    pConsole.Out(pSurvey.GetTakes().empty() ? "  take    none\n\n" : "\n");
}

KJson JsonTake(const qexsdk::KQexTakeSurvey& pTake)
{
    KJson lTake;
    lTake["name"] = pTake.mName;
    lTake["frameCount"] = pTake.mFrameCount;
    lTake["firstFrame"] = pTake.mFirstFrame;
    lTake["lastFrame"] = pTake.mLastFrame;
    lTake["framesPerSecond"] = pTake.mRate;
    lTake["seconds"] = pTake.mSeconds;
    lTake["jointsMoved"] = pTake.mMoving;
    lTake["rootTravel"] = pTake.mRootTravel;
    lTake["rootPathLength"] = pTake.mRootPathLength;
    return lTake;
}

KJson JsonJoint(const qexsdk::KQexFigureSurvey& pSurvey, size_t pJoint)
{
    const qexsdk::KQexFigureJoint& lSource = pSurvey.GetJoints()[pJoint];
    KJson                          lJoint;
    lJoint["name"] = lSource.mName;
    lJoint["parent"] = lSource.mParent < 0 ? KJson(nullptr) : KJson(lSource.mParent);
    lJoint["depth"] = pSurvey.GetDepths()[pJoint];
    lJoint["isEnd"] = lSource.mIsEnd;
    lJoint["length"] = pSurvey.GetLength(pJoint);
    lJoint["position"] = JsonPoint(pSurvey.GetRest()[pJoint]);
    lJoint["moves"] = MovesJson(pSurvey.GetMoves()[pJoint]);
    return lJoint;
}

KJson JsonFigure(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexFigureSurvey& pSurvey)
{
    KJson lTakes = KJson::array();
    for (const qexsdk::KQexTakeSurvey& lTake : pSurvey.GetTakes())
    {
        lTakes.push_back(JsonTake(lTake));
    }
    KJson lJoints = KJson::array();
    for (size_t lJoint = 0; lJoint < pSurvey.GetJoints().size(); ++lJoint)
    {
        lJoints.push_back(JsonJoint(pSurvey, lJoint));
    }
    KPoint lMin;
    KPoint lMax;
    pSurvey.GetBounds(lMin, lMax);
    KJson lFigure;
    lFigure["format"] = FormatWord(pFile);
    lFigure["jointCount"] = static_cast<int>(pSurvey.GetJoints().size()) - pSurvey.CountEnds();
    lFigure["endCount"] = pSurvey.CountEnds();
    lFigure["depth"] = pSurvey.GetDepth();
    lFigure["height"] = lMax.mY - lMin.mY;
    lFigure["bounds"] = {{"min", JsonPoint(lMin)}, {"max", JsonPoint(lMax)}};
    lFigure["takes"] = lTakes;
    lFigure["joints"] = lJoints;
    return lFigure;
}

} // namespace

void WriteFigureInfo(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexFigureSurvey& pSurvey, KConsole& pConsole)
{
    pConsole.Out(pConsole.Bold(Printable(pFile.GetDisplayPath())) + ": a figure in " + FormatWord(pFile) + "\n");
    WriteFigureSummary(pSurvey, pConsole);
    size_t lNameWidth = 5;
    size_t lLengthWidth = 2;
    for (size_t lJoint = 0; lJoint < pSurvey.GetJoints().size(); ++lJoint)
    {
        lNameWidth = std::max(lNameWidth, std::min(IndentedJoint(pSurvey, lJoint).size(), kMaxJointWidth));
        lLengthWidth = std::max(lLengthWidth, FixedText(pSurvey.GetLength(lJoint), 3).size());
    }
    const bool lHasDofs = pSurvey.GetBoneDofs() != nullptr;
    const auto lWriteLine = [&](const std::string& pName, const std::string& pLength, const std::string& pMoves, const std::string& pDofs)
    {
        std::string lLine = "  " + PadRight(pName, lNameWidth) + "  " + PadLeft(pLength, lLengthWidth) + "  " +
                            (lHasDofs ? PadRight(pMoves, 22) + "  " + pDofs : pMoves);
        lLine.erase(lLine.find_last_not_of(' ') + 1);
        return pConsole.Out(lLine + "\n");
    };
    lWriteLine("joint", "cm", "moves by", lHasDofs ? "degrees of freedom (lower and upper limit)" : "");
    for (size_t lJoint = 0; lJoint < pSurvey.GetJoints().size(); ++lJoint)
    {
        const qexsdk::KQexFigureJoint& lSource = pSurvey.GetJoints()[lJoint];
        const std::string              lLength = lSource.mParent < 0 ? std::string() : FixedText(pSurvey.GetLength(lJoint), 3);
        if (!lWriteLine(IndentedJoint(pSurvey, lJoint), lLength, MovesText(pSurvey, lJoint), DofsText(pSurvey, lSource.mName)))
        {
            return;
        }
    }
}

void WriteFigureJson(const qexsdk::KQexFigureFile& pFile, const qexsdk::KQexFigureSurvey& pSurvey, KConsole& pConsole)
{
    KJson lObject = JsonHead("figure", pFile.GetPath(), pSurvey.IsOk(), pSurvey.GetMessages());
    lObject["figure"] = pSurvey.IsOk() ? JsonFigure(pFile, pSurvey) : KJson(nullptr);
    PrintJsonLine(lObject, pConsole);
}

} // namespace asfapp
