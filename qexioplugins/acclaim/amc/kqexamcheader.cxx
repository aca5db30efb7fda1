#include <qexioplugins/acclaim/amc/kqexamcheader.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/klinereader.h>
#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/ktime.h>

#include <cmath>
#include <exception>

namespace qexsdk
{

namespace
{

struct KWordEntry
{
    const char* mText;
    KQexAmcWord mWord;
};

/// Short enough for std::string not to allocate.
const char kNoMemory[] = "Out of memory";

const KWordEntry kWords[] = {
    {":fully-specified", eAMC_FULLY_SPECIFIED},
    {":degrees", eAMC_DEGREES},
    {":radians", eAMC_RADIANS},
    {":samples-per-second", eAMC_SAMPLES_PER_SECOND},
    {":frame-range", eAMC_FRAME_RANGE},
    {":asf-file", eAMC_ASF_FILE},
    {":asf-path", eAMC_ASF_PATH},
};

const char kRateComment[] = "samples-per-second";

bool ParseRate(std::string_view pToken, double& pRate)
{
    double lRate = 0.0;
    if (KNumberParse(pToken, lRate) != KNumberStatus::eOK || !IsAmcRate(lRate))
    {
        return false;
    }
    pRate = lRate;
    return true;
}

/// Ten digits, or as many more as it takes to read back to the same frame time. Empty for a rate that cannot be read back.
std::string RateText(double pRate)
{
    char   lText[kNumberBufferSize];
    double lRead = 0.0;
    for (int lDigits = 10; lDigits <= 17; ++lDigits)
    {
        const char* const      lEnd = KNumberPrint(lText, lText + sizeof lText, pRate, 'g', lDigits);
        const std::string_view lNumber(lText, static_cast<size_t>(lEnd - lText));
        if (ParseRate(lNumber, lRead) && AmcFrameTicks(lRead) == AmcFrameTicks(pRate))
        {
            return std::string(lNumber);
        }
    }
    return std::string();
}

void AppendRate(const char* pWord, double pRate, std::string& pText)
{
    const std::string lRate = RateText(pRate);
    if (!lRate.empty())
    {
        pText.append(pWord).append(" ").append(lRate).append("\n");
    }
}

bool ParseFrameRange(std::string_view pRest, KQexAmcHeader& pHeader)
{
    long long lFirst = 0;
    long long lLast = 0;
    if (KNumberParse(NextAmcToken(pRest), lFirst) != KNumberStatus::eOK || KNumberParse(NextAmcToken(pRest), lLast) != KNumberStatus::eOK)
    {
        return false;
    }
    pHeader.mHasFrameRange = true;
    pHeader.mFrameRange[0] = lFirst;
    pHeader.mFrameRange[1] = lLast;
    return true;
}

bool ParseText(std::string_view pRest, std::string& pText)
{
    const std::string_view lText = TrimAmcText(pRest);
    if (lText.empty())
    {
        return false;
    }
    pText = lText;
    return true;
}

/// Parses one line of the header. False for the first line after it. \p pIsAtStart: the lines before it have no token; cleared at the
/// first one with a token.
bool ParseHeaderLine(std::string_view pLine, bool& pIsAtStart, KQexAmcHeader& pHeader)
{
    if (ParseAmcOmlLine(pLine, pHeader) || (pIsAtStart && ParseAmcRateComment(pLine, pHeader) != eAMC_COMMENT_OTHER))
    {
        return true;
    }
    std::string_view       lRest = pLine.substr(0, pLine.find(KQexFileAcclaimAmc::smCom[0]));
    const std::string_view lWord = NextAmcToken(lRest);
    if (lWord.empty())
    {
        return true;
    }
    pIsAtStart = false;
    if (lWord.front() != ':')
    {
        return false;
    }
    ParseAmcWord(FindAmcWord(lWord), lRest, pHeader);
    return true;
}

/// Why \p pLines could not be opened or read.
std::string ReasonOf(const KLineReader& pLines)
{
    switch (pLines.GetStatus())
    {
    case KLineReader::eTOO_LONG:
        return "Line is too long";
    case KLineReader::eUTF16:
        return "UTF-16 text is not supported";
    case KLineReader::eMEMORY:
        return kNoMemory;
    default:
        return pLines.GetReason();
    }
}

/// Opens \p pLines with \p pOpen and parses the header. False, with the cause in \p pReason, when they cannot be read.
template <typename TOpen>
bool ParseHeader(KQexAmcHeader& pHeader, std::string& pReason, const TOpen& pOpen) noexcept
{
    pHeader = KQexAmcHeader();
    try
    {
        KLineReader lLines;
        bool        lIsAtStart = true;
        for (bool lMore = pOpen(lLines); lMore && lLines.NextLine();)
        {
            lMore = ParseHeaderLine(std::string_view(lLines.GetLine(), lLines.GetLength()), lIsAtStart, pHeader);
        }
        if (!lLines.HasFailed())
        {
            return true;
        }
        pReason = ReasonOf(lLines);
    }
    catch (const std::exception&)
    {
        pReason.assign(kNoMemory);
    }
    return false;
}

} // namespace

KQexAmcWord FindAmcWord(std::string_view pToken)
{
    for (const KWordEntry& lEntry : kWords)
    {
        if (KEqualsIgnoreCase(pToken, lEntry.mText))
        {
            return lEntry.mWord;
        }
    }
    return eAMC_UNKNOWN;
}

KQexAmcWordResult ParseAmcWord(KQexAmcWord pWord, std::string_view pRest, KQexAmcHeader& pHeader)
{
    bool lIsValid = true;
    switch (pWord)
    {
    case eAMC_DEGREES:
        pHeader.mAngle = eAMC_ANGLE_DEGREES;
        break;
    case eAMC_RADIANS:
        pHeader.mAngle = eAMC_ANGLE_RADIANS;
        break;
    case eAMC_SAMPLES_PER_SECOND:
        lIsValid = ParseRate(NextAmcToken(pRest), pHeader.mSamplesPerSecond);
        break;
    case eAMC_FRAME_RANGE:
        lIsValid = ParseFrameRange(pRest, pHeader);
        break;
    case eAMC_ASF_FILE:
        lIsValid = ParseText(pRest, pHeader.mAsfFile);
        break;
    case eAMC_ASF_PATH:
        lIsValid = ParseText(pRest, pHeader.mAsfPath);
        break;
    case eAMC_FULLY_SPECIFIED:
    case eAMC_UNKNOWN:
        break;
    }
    return lIsValid ? eAMC_WORD_VALID : eAMC_WORD_INVALID;
}

bool ParseAmcOmlLine(std::string_view pLine, KQexAmcHeader& pHeader)
{
    std::string_view lRest = pLine;
    if (!KEqualsIgnoreCase(NextAmcToken(lRest), "#!oml:asf"))
    {
        return false;
    }
    // :ASF-FILE is the format's own keyword and wins, wherever it appears.
    if (pHeader.mAsfFile.empty())
    {
        ParseText(lRest, pHeader.mAsfFile);
    }
    return true;
}

KQexAmcCommentResult ParseAmcRateComment(std::string_view pLine, KQexAmcHeader& pHeader)
{
    std::string_view lRest = TrimAmcText(pLine);
    if (lRest.empty() || lRest.front() != KQexFileAcclaimAmc::smCom[0])
    {
        return eAMC_COMMENT_OTHER;
    }
    lRest.remove_prefix(1);
    if (!KEqualsIgnoreCase(NextAmcToken(lRest), kRateComment))
    {
        return eAMC_COMMENT_OTHER;
    }
    const std::string_view lRate = NextAmcToken(lRest);
    return lRest.empty() && ParseRate(lRate, pHeader.mCommentRate) ? eAMC_COMMENT_RATE : eAMC_COMMENT_INVALID;
}

std::string AmcHeaderText(const KQexAmcHeader& pHeader)
{
    std::string lText;
    if (!pHeader.mAsfFile.empty())
    {
        lText.append("#!OML:ASF ").append(pHeader.mAsfFile).append("\n");
    }
    AppendRate("# samples-per-second", pHeader.mCommentRate, lText);
    lText += ":FULLY-SPECIFIED\n";
    if (pHeader.mAngle != eAMC_ANGLE_SKELETON)
    {
        lText += pHeader.mAngle == eAMC_ANGLE_RADIANS ? ":RADIANS\n" : ":DEGREES\n";
    }
    AppendRate(":SAMPLES-PER-SECOND", pHeader.mSamplesPerSecond, lText);
    if (pHeader.mHasFrameRange)
    {
        lText += ":FRAME-RANGE " + std::to_string(pHeader.mFrameRange[0]) + " " + std::to_string(pHeader.mFrameRange[1]) + "\n";
    }
    return lText;
}

double AmcFrameTicks(double pSamplesPerSecond)
{
    const double lTicks = static_cast<double>(KTime::kTicksPerSecond) / pSamplesPerSecond;
    return std::fabs(lTicks - std::round(lTicks)) <= 1e-9 * lTicks ? std::round(lTicks) : lTicks;
}

bool IsAmcRate(double pSamplesPerSecond)
{
    return std::isfinite(pSamplesPerSecond) && pSamplesPerSecond >= 1e-6 &&
           pSamplesPerSecond <= static_cast<double>(KTime::kTicksPerSecond);
}

std::string_view NextAmcToken(std::string_view& pText)
{
    size_t lBegin = 0;
    while (lBegin < pText.size() && IsAmcBlank(pText[lBegin]))
    {
        ++lBegin;
    }
    size_t lEnd = lBegin;
    while (lEnd < pText.size() && !IsAmcBlank(pText[lEnd]))
    {
        ++lEnd;
    }
    const std::string_view lToken = pText.substr(lBegin, lEnd - lBegin);
    pText.remove_prefix(lEnd);
    return lToken;
}

std::string_view TrimAmcText(std::string_view pText)
{
    while (!pText.empty() && IsAmcBlank(pText.front()))
    {
        pText.remove_prefix(1);
    }
    while (!pText.empty() && IsAmcBlank(pText.back()))
    {
        pText.remove_suffix(1);
    }
    return pText;
}

bool KQexFileAcclaimAmc::PeekHeader(const char* pPath, KQexAmcHeader& pHeader, std::string& pReason)
{
    return ParseHeader(pHeader, pReason, [pPath](KLineReader& pLines) { return pLines.OpenPath(pPath); });
}

bool KQexFileAcclaimAmc::PeekHeaderBuffer(const char* pData, size_t pSize, KQexAmcHeader& pHeader)
{
    std::string lReason;
    return ParseHeader(pHeader, lReason, [pData, pSize](KLineReader& pLines) { return pLines.OpenBuffer(pData, pSize); });
}

} // namespace qexsdk
