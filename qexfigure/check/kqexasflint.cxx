#include <qexfigure/check/kqexasflint.h>

#include <qexioplugins/acclaim/asf/kqexasfgrammar.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace qexsdk
{

namespace
{

/// Length units in real files: 0.45 (usually), 1 (inches), 0.3937 (centimetres), 0.03937 (millimetres), 39.37 (metres).
constexpr double kMinLengthUnit = 0.01;
constexpr double kMaxLengthUnit = 50.0;

/// The reader's limit for skin names.
constexpr int kSkinNameSize = 1024;

} // namespace

KQexAsfLint::KQexAsfLint() : KQexTextFile(KQexFileAcclaimAsf::smType, KQexFileAcclaimAsf::smDel, KQexFileAcclaimAsf::smCom, true, false) {}

void KQexAsfLint::Run()
{
    FirstLine();
    InitTokens(KQexFileAcclaimAsf::smMain);
    bool lContinue = true;
    while (lContinue && !Eof())
    {
        const int lLine = GetLineNumber();
        lContinue = Dispatch(Handle(KQexFileAcclaimAsf::smMain), lLine);
    }
    if (lContinue)
    {
        Finish();
    }
    std::stable_sort(mFindings.begin(), mFindings.end(),
                     [](const KQexTextMessage& pOne, const KQexTextMessage& pOther) { return pOne.mLine < pOther.mLine; });
}

bool KQexAsfLint::Dispatch(int pSection, int pLine)
{
    switch (pSection)
    {
    case eMAIN_VERSION:
        return Version() || (StopAtEnd(pLine, ":version"), false);
    case eMAIN_NAME:
        return Name(pLine);
    case eMAIN_UNITS:
        ReportExtraText();
        return Units(pLine, ":units");
    case eMAIN_DOCUMENTATION:
        return Documentation(pLine);
    case eMAIN_ROOT:
        ReportExtraText();
        return Root(pLine);
    case eMAIN_BONEDATA:
        ReportExtraText();
        return BoneData(pLine);
    case eMAIN_HIERARCHY:
        ReportExtraText();
        return Hierarchy();
    case eMAIN_SKIN:
        Skin();
        return true;
    default:
        Skip();
        return true;
    }
}

void KQexAsfLint::AddFinding(int pLine, const char* pFormat, ...)
{
    ++mFindingCount;
    if (mFindings.size() >= kMaxMessages)
    {
        return;
    }
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    char lText[512];
    std::vsnprintf(lText, sizeof lText, pFormat, lArguments);
    va_end(lArguments);
    mFindings.push_back({KQexTextMessage::eWARNING, pLine, lText});
}

void KQexAsfLint::Stop(int pLine, const std::string& pText)
{
    mStopLine = pLine;
    mStopText = pText;
}

void KQexAsfLint::StopAtEnd(int pLine, const char* pWord)
{
    Stop(pLine, std::string("The file ends inside the section ") + pWord + ", which begins here");
}

/// Called where the reader is done with the line's tokens.
void KQexAsfLint::ReportExtraText()
{
    size_t      lLength = 0;
    const char* lText = PeekToken(lLength);
    if (lText != nullptr)
    {
        AddFinding(GetLineNumber(), "Ignoring extra text on the line (%.200s)", lText);
    }
}

void KQexAsfLint::Skip()
{
    while (NextLine() && Check(KQexFileAcclaimAsf::smMain) == -1)
    {
    }
}

bool KQexAsfLint::Version()
{
    double lVersion = 0;
    if (GetDouble(lVersion, 1.0))
    {
        ReportExtraText();
    }
    Skip();
    return !Eof();
}

bool KQexAsfLint::Name(int pLine)
{
    char lName[kMaxName + 1];
    if (!GetString(lName, kMaxName))
    {
        Stop(pLine, "Reading stops here: section :name has no name");
        return false;
    }
    ReportExtraText();
    return Units(pLine, ":name");
}

bool KQexAsfLint::Units(int pLine, const char* pWord)
{
    while (NextLine())
    {
        if (Check(KQexFileAcclaimAsf::smMain) != -1)
        {
            return true;
        }
        Unit(Handle(KQexFileAcclaimAsf::smUnits));
    }
    StopAtEnd(pLine, pWord);
    return false;
}

void KQexAsfLint::Unit(int pUnit)
{
    double lValue = 0;
    if (pUnit == eUNIT_ANGLE)
    {
        const int lAngle = Handle(KQexFileAcclaimAsf::smAngle);
        if (lAngle == eANGLE_RADIANS)
        {
            AddFinding(GetLineNumber(), "Angles are declared in rad, but axes, orientation and limits are read as degrees");
        }
        if (lAngle != -1)
        {
            ReportExtraText();
        }
        return;
    }
    if (pUnit == -1 || !GetDouble(lValue, 1.0))
    {
        return;
    }
    if (pUnit == eUNIT_LENGTH && !(lValue >= kMinLengthUnit && lValue <= kMaxLengthUnit))
    {
        AddFinding(GetLineNumber(), lValue > 0 ? "Unusual length unit %g" : "Invalid length unit %g: lengths are not converted", lValue);
    }
    ReportExtraText();
}

bool KQexAsfLint::Documentation(int pLine)
{
    Skip();
    if (Eof())
    {
        StopAtEnd(pLine, ":documentation");
    }
    return !Eof();
}

bool KQexAsfLint::Root(int pLine)
{
    int    lAxis = -1;
    int    lAxisLine = 0;
    double lAngles[3] = {0, 0, 0};
    while (NextLine())
    {
        if (Check(KQexFileAcclaimAsf::smMain) != -1)
        {
            CheckAxis(lAxisLine, lAxis, lAngles);
            mHasRoot = true;
            return true;
        }
        if (!RootLine(Handle(KQexFileAcclaimAsf::smRoot), lAxis, lAxisLine, lAngles))
        {
            return false;
        }
    }
    StopAtEnd(pLine, ":root");
    return false;
}

/// False where the reader stops with its own error.
bool KQexAsfLint::RootLine(int pWord, int& pAxis, int& pAxisLine, double* pAngles)
{
    std::vector<int> lCodes;
    double           lVector[3] = {0, 0, 0};
    const auto       lIsZero = [](const double* pVector)
    {
        return pVector[0] == 0 && pVector[1] == 0 && pVector[2] == 0;
    };
    switch (pWord)
    {
    case eROOT_AXIS:
        pAxis = Handle(KQexFileAcclaimAsf::smAxis);
        pAxisLine = GetLineNumber();
        if (pAxis == -1)
        {
            return false;
        }
        break;
    case eROOT_ORDER:
        ReadDofs(KQexFileAcclaimAsf::smOrder, lCodes);
        break;
    case eROOT_POSITION:
        if (!GetVector(lVector, 1.0))
        {
            return true;
        }
        if (!lIsZero(lVector))
        {
            AddFinding(GetLineNumber(), "Root position is not zero: importing applies it twice and does not scale it");
        }
        break;
    case eROOT_ORIENTATION:
        if (!GetVector(pAngles, 1.0))
        {
            return true;
        }
        if (!lIsZero(pAngles))
        {
            AddFinding(GetLineNumber(), "Root orientation is not zero: importing rotates the root's translation by it");
        }
        break;
    default:
        return true;
    }
    ReportExtraText();
    return true;
}

/// Reads the DOF words of a line, as the reader does.
void KQexAsfLint::ReadDofs(KToken* pTable, std::vector<int>& pCodes)
{
    pCodes.clear();
    while (Check(pTable) != -1)
    {
        const int lCode = Handle(pTable);
        if (lCode < kMaxDofs && std::find(pCodes.begin(), pCodes.end(), lCode) != pCodes.end())
        {
            AddFinding(GetLineNumber(), "Degree of freedom appears twice on the line (%s)", pTable[lCode].mStr);
        }
        if (lCode < kMaxDofs && pCodes.size() < kMaxDofs)
        {
            pCodes.push_back(lCode);
        }
    }
}

/// Four axis words are read as an order other than their letters; with zero angles that makes no difference.
void KQexAsfLint::CheckAxis(int pLine, int pWord, const double* pAngles)
{
    static const char* const sReadAs[] = {nullptr, "yxz", "xzy", "zxy", "yzx", nullptr};
    const bool               lHasAngle = pAngles[0] != 0 || pAngles[1] != 0 || pAngles[2] != 0;
    if (pWord >= 0 && pWord < 6 && sReadAs[pWord] != nullptr && lHasAngle)
    {
        AddFinding(pLine, "Axis word %s is read as the order %s", KQexFileAcclaimAsf::smAxis[pWord].mStr, sReadAs[pWord]);
    }
}

/// The reader takes up to three lines as skin names, whatever their text.
void KQexAsfLint::Skin()
{
    char lName[kSkinNameSize + 1];
    for (int lIndex = 0; lIndex < 3; ++lIndex)
    {
        const bool lIsKeyword = lIndex > 0 && Check(KQexFileAcclaimAsf::smMain) != -1;
        const int  lLine = GetLineNumber();
        if (!GetString(lName, kSkinNameSize))
        {
            break;
        }
        if (lIsKeyword)
        {
            AddFinding(lLine, "Keyword line is read as a skin name, its section is lost (%.200s)", lName);
        }
        else
        {
            ReportExtraText();
        }
        if (!NextLine())
        {
            break;
        }
    }
    while (!Eof() && Check(KQexFileAcclaimAsf::smMain) == -1 && NextLine())
    {
    }
}

void KQexAsfLint::Finish()
{
    if (!mHasRoot)
    {
        Stop(0, "No section :root");
        return;
    }
    if (!mHasHierarchy && mBones.size() > 1)
    {
        AddFinding(mBones.front().mLine, "No section :hierarchy: every bone stays under root");
        return;
    }
    for (const KBone& lBone : mBones)
    {
        if (mHasHierarchy && !lBone.mIsChild)
        {
            AddFinding(lBone.mLine, "Bone is missing from the hierarchy, it stays under root (%s)", lBone.mName.c_str());
        }
    }
}

} // namespace qexsdk
