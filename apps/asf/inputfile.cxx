#include <apps/asf/inputfile.h>

#include <kbaselib/kbase/kfilecalls.h>
#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/klinereader.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace asfapp
{

namespace
{

constexpr size_t kHeadSize = 1 << 16;

/// Limit for inputs read from a pipe, which are kept in memory. Real ones are far smaller.
constexpr size_t kMemoryLimit = size_t(1) << 30;

constexpr size_t kMaxGrowth = 1 << 24;

enum EReadResult
{
    eREAD_ALL,
    eREAD_MORE,
    eREAD_FAILED
};

/// True for glTF, the only format whose lines may be of any length: JSON or binary.
bool MayHaveLongLines(std::string_view pBytes)
{
    const size_t lFirst = pBytes.find_first_not_of(" \t\r\n\xef\xbb\xbf");
    return pBytes.substr(0, 4) == "glTF" || (lFirst != std::string_view::npos && pBytes[lFirst] == '{');
}

/// Reads at most \p pLimit bytes. Stops after a line that is too long for the text readers, so that they report it.
EReadResult ReadUpTo(int pFile, size_t pLimit, std::string& pBytes)
{
    const qexsdk::KFileCalls& lCalls = qexsdk::KFileCallsInUse();
    size_t                    lSize = 0;
    size_t                    lLineStart = 0;
    EReadResult               lResult = eREAD_MORE;
    while (lSize < pLimit && lResult == eREAD_MORE)
    {
        // Grow in large steps: a pipe delivers little at a time.
        if (lSize == pBytes.size())
        {
            pBytes.resize(std::min(pLimit, lSize + std::clamp(lSize / 2, kHeadSize, kMaxGrowth)));
        }
        const ssize_t lGot = lCalls.mRead(pFile, pBytes.data() + lSize, pBytes.size() - lSize);
        if (lGot == 0 || (lGot < 0 && errno != EINTR))
        {
            lResult = lGot == 0 ? eREAD_ALL : eREAD_FAILED;
        }
        const std::string_view lNew(pBytes.data() + lSize, static_cast<size_t>(std::max<ssize_t>(lGot, 0)));
        const size_t           lEnd = lNew.find_last_of("\r\n");
        lLineStart = lEnd == std::string_view::npos ? lLineStart : lSize + lEnd + 1;
        lSize += lNew.size();
        if (lSize - lLineStart > qexsdk::KLineReader::kMaxLine && !MayHaveLongLines(std::string_view(pBytes.data(), lSize)))
        {
            lResult = eREAD_ALL;
        }
    }
    const int lError = errno;
    pBytes.resize(lSize);
    errno = lError;
    return lResult;
}

/// Iterates over the first words of the lines, in lower case; skips empty lines.
class KFirstWords
{
public:
    explicit KFirstWords(const std::string& pText) : mText(pText) {}

    bool Next(std::string& pWord)
    {
        while (mPosition < mText.size())
        {
            const size_t lEnd = std::min(mText.find_first_of("\r\n", mPosition), mText.size());
            size_t       lWordStart = mPosition;
            while (lWordStart < lEnd && (std::strchr(" \t,()", mText[lWordStart]) != nullptr))
            {
                ++lWordStart;
            }
            mPosition = lEnd + 1;
            if (lWordStart < lEnd)
            {
                const size_t lWordEnd = mText.find_first_of(std::string(" \t,()\r\n\0", 8), lWordStart);
                pWord = qexsdk::KToLower(mText.substr(lWordStart, std::min(lWordEnd, lEnd) - lWordStart));
                return true;
            }
        }
        return false;
    }

private:
    const std::string& mText;
    size_t             mPosition = 0;
};

const std::set<std::string>& SkeletonWords()
{
    static const std::set<std::string> sWords{":version", ":name", ":units", ":documentation", ":root", ":bonedata", ":hierarchy", ":skin"};
    return sWords;
}

const std::set<std::string>& MotionWords()
{
    static const std::set<std::string> sWords{"#!oml:asf",           ":fully-specified", ":degrees",  ":radians",
                                              ":samples-per-second", ":frame-range",     ":asf-file", ":asf-path"};
    return sWords;
}

bool IsFrameNumber(const std::string& pWord)
{
    return !pWord.empty() && std::all_of(pWord.begin(), pWord.end(), [](unsigned char pChar) { return std::isdigit(pChar) != 0; });
}

} // namespace

std::string LowerExtension(const std::string& pPath)
{
    const size_t lSlash = pPath.find_last_of('/');
    const size_t lDot = pPath.find_last_of('.');
    const bool   lHas = lDot != std::string::npos && (lSlash == std::string::npos || lDot > lSlash);
    return lHas ? qexsdk::KToLower(pPath.substr(lDot)) : std::string();
}

bool IsSameFile(const std::string& pOne, const std::string& pOther)
{
    struct stat lOne;
    struct stat lOther;
    return pOne != "-" && pOther != "-" && stat(pOne.c_str(), &lOne) == 0 && stat(pOther.c_str(), &lOther) == 0 &&
           lOne.st_dev == lOther.st_dev && lOne.st_ino == lOther.st_ino;
}

bool KInputFile::Open(const std::string& pPath, KConsole& pConsole)
{
    mPath = pPath;
    mBytes.clear();
    mInMemory = false;
    return Load(pConsole);
}

bool KInputFile::OpenAcclaim(const std::string& pPath, KConsole& pConsole)
{
    if (!Open(pPath, pConsole))
    {
        return false;
    }
    const bool lIsAcclaim = mKind != eKIND_BVH && mKind != eKIND_GLTF;
    if (!lIsAcclaim)
    {
        pConsole.Message(eERROR, GetDisplayPath(), 0,
                         std::string("is a ") + (mKind == eKIND_BVH ? "BVH" : "glTF") + " file, but an ASF or AMC file is expected");
        pConsole.Raise(eEXIT_INPUT);
    }
    return lIsAcclaim;
}

bool KInputFile::Load(KConsole& pConsole)
{
    const bool                lStandard = mPath == "-";
    const qexsdk::KFileCalls& lCalls = qexsdk::KFileCallsInUse();
    int                       lFile = STDIN_FILENO;
    while (!lStandard && (lFile = lCalls.mOpen(mPath.c_str(), O_RDONLY | O_CLOEXEC, 0)) < 0 && errno == EINTR)
    {
    }
    struct stat lStat;
    bool        lOk = lFile >= 0 && lCalls.mFileStat(lFile, &lStat) == 0;
    if (lOk && S_ISDIR(lStat.st_mode))
    {
        lOk = false;
        errno = EISDIR;
    }
    EReadResult lResult = eREAD_FAILED;
    if (lOk)
    {
        mInMemory = lStandard || !S_ISREG(lStat.st_mode);
        lResult = ReadUpTo(lFile, mInMemory ? kMemoryLimit : kHeadSize, mBytes);
    }
    const int lError = errno;
    if (lFile >= 0 && !lStandard)
    {
        lCalls.mClose(lFile);
    }
    if (lResult == eREAD_FAILED)
    {
        pConsole.Message(eERROR, GetDisplayPath(), 0, std::string("cannot be read: ") + std::strerror(lError));
        pConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    if (mInMemory && lResult == eREAD_MORE)
    {
        pConsole.Message(eERROR, GetDisplayPath(), 0, "is longer than 1 GiB and cannot be reread: save it to a file first");
        pConsole.Raise(eEXIT_INPUT);
        return false;
    }
    return Sniff(mBytes, lResult == eREAD_ALL, pConsole);
}

bool KInputFile::Sniff(const std::string& pHead, bool pIsWhole, KConsole& pConsole)
{
    const std::string lExtension = LowerExtension(mPath);
    mKind = lExtension == ".amc"                            ? eKIND_AMC
            : lExtension == ".bvh"                          ? eKIND_BVH
            : lExtension == ".glb" || lExtension == ".gltf" ? eKIND_GLTF
                                                            : eKIND_ASF;

    const bool        lUtf16 = pHead.size() > 1 && (pHead.compare(0, 2, "\xff\xfe") == 0 || pHead.compare(0, 2, "\xfe\xff") == 0);
    const bool        lUtf8 = pHead.compare(0, 3, "\xef\xbb\xbf") == 0;
    const std::string lText = lUtf8 ? pHead.substr(3) : pHead;
    KFirstWords       lWords(lText);
    std::string       lWord;
    bool              lHasText = false;
    bool              lKnown = lUtf16;
    while (!lKnown && lWords.Next(lWord))
    {
        const bool lSkeleton = SkeletonWords().count(lWord) != 0;
        const bool lMotion = MotionWords().count(lWord) != 0 || (!lHasText && IsFrameNumber(lWord));
        const bool lBvh = !lHasText && lWord == "hierarchy";
        const bool lGltf = !lHasText && (lWord[0] == '{' || lText.compare(0, 4, "glTF") == 0);
        lKnown = lSkeleton || lMotion || lBvh || lGltf;
        mKind = lBvh ? eKIND_BVH : lGltf ? eKIND_GLTF : lMotion ? eKIND_AMC : lSkeleton ? eKIND_ASF : mKind;
        lHasText = lHasText || lWord[0] != '#';
    }

    const bool lBinary = !lKnown && pHead.find('\0') != std::string::npos;
    const bool lEmpty = !lKnown && !lHasText && pIsWhole;
    if (lBinary || lEmpty)
    {
        pConsole.Message(eERROR, GetDisplayPath(), 0, lBinary ? "holds binary data, not a skeleton or a motion" : "is empty");
        pConsole.Raise(eEXIT_INPUT);
    }
    if (!mInMemory)
    {
        mBytes = std::string();
    }
    return !lBinary && !lEmpty;
}

bool KInputFile::OpenFor(qexsdk::KQexTextFile& pReader) const
{
    return mInMemory ? pReader.OpenReadBuffer(mBytes.data(), mBytes.size()) : pReader.OpenRead(mPath.c_str());
}

qexsdk::KQexAcclaimSource KInputFile::GetSource() const
{
    return mInMemory ? qexsdk::KQexAcclaimSource::Buffer(mBytes.data(), mBytes.size(), GetDisplayPath())
                     : qexsdk::KQexAcclaimSource::File(mPath);
}

bool KInputFile::FailsToRead() const
{
    if (mInMemory)
    {
        return false;
    }
    qexsdk::KLineReader lReader;
    if (lReader.OpenPath(mPath.c_str()))
    {
        while (lReader.NextLine())
        {
        }
    }
    return lReader.GetStatus() == qexsdk::KLineReader::eSYSTEM;
}

} // namespace asfapp
