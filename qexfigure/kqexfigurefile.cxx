#include <qexfigure/kqexfigurefile.h>

#include <kbaselib/kbase/klinereader.h>
#include <kbaselib/kbase/ksystem.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexfiguresniff.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace qexsdk
{

namespace
{

constexpr size_t kHeadSize = 1 << 16;
constexpr size_t kMaxGrowth = 1 << 24;

enum EReadResult
{
    eREAD_ALL,
    eREAD_MORE,
    eREAD_FAILED
};

/// Reads at most \p pLimit bytes. Stops after a line that is too long for the text readers, so that they report it.
EReadResult ReadUpTo(int pFile, size_t pLimit, std::string& pBytes)
{
    const KSystemCalls& lCalls = KSystemInUse();
    size_t              lSize = 0;
    size_t              lLineStart = 0;
    EReadResult         lResult = eREAD_MORE;
    while (lSize < pLimit && lResult == eREAD_MORE)
    {
        // Grow in large steps: a pipe delivers little at a time.
        if (lSize == pBytes.size())
        {
            pBytes.resize(std::min(pLimit, lSize + std::clamp(lSize / 2, kHeadSize, kMaxGrowth)));
        }
        const std::ptrdiff_t lGot = lCalls.mRead(pFile, pBytes.data() + lSize, pBytes.size() - lSize);
        if (lGot == 0 || (lGot < 0 && errno != EINTR))
        {
            lResult = lGot == 0 ? eREAD_ALL : eREAD_FAILED;
        }
        const std::string_view lNew(pBytes.data() + lSize, static_cast<size_t>(std::max<std::ptrdiff_t>(lGot, 0)));
        const size_t           lEnd = lNew.find_last_of("\r\n");
        lLineStart = lEnd == std::string_view::npos ? lLineStart : lSize + lEnd + 1;
        lSize += lNew.size();
        if (lSize - lLineStart > KLineReader::kMaxLine && !MayHaveLongLines(std::string_view(pBytes.data(), lSize)))
        {
            lResult = eREAD_ALL;
        }
    }
    const int lError = errno;
    pBytes.resize(lSize);
    errno = lError;
    return lResult;
}

/// Opens \p pPath and reads it into \p pBytes: all of it if it cannot be reread (\p pInMemory), else its start. errno has the reason of
/// a failure.
EReadResult OpenAndRead(const std::string& pPath, std::string& pBytes, bool& pInMemory)
{
    const bool          lStandard = pPath == "-";
    const KSystemCalls& lCalls = KSystemInUse();
    int                 lFile = kStandardInput;
    while (!lStandard && (lFile = lCalls.mOpen(pPath.c_str(), eOPEN_READ)) < 0 && errno == EINTR)
    {
    }
    KFileInfo lInfo;
    bool      lOk = lFile >= 0 && lCalls.mFileInfo(lFile, &lInfo) == 0;
    if (lOk && lInfo.mKind == KFileInfo::eFOLDER)
    {
        lOk = false;
        errno = EISDIR;
    }
    EReadResult lResult = eREAD_FAILED;
    int         lError = errno;
    if (lOk)
    {
        pInMemory = lStandard || lInfo.mKind != KFileInfo::eREGULAR;
        try
        {
            lResult = ReadUpTo(lFile, pInMemory ? KQexFigureFile::kMemoryLimit : kHeadSize, pBytes);
            lError = errno;
        }
        catch (const std::exception&)
        {
            lError = ENOMEM;
        }
    }
    if (lFile >= 0 && !lStandard)
    {
        lCalls.mClose(lFile);
    }
    errno = lError;
    return lResult;
}

} // namespace

bool KQexFigureFile::Open(const std::string& pPath, KQexFigureReport& pReport) noexcept
{
    mBytes.reset();
    return RunGuarded(pReport,
                      [&]
                      {
                          mPath = pPath;
                          mDisplayPath = pPath == "-" ? "<stdin>" : pPath;
                          return Load(pReport);
                      });
}

bool KQexFigureFile::OpenBuffer(std::string pBytes, const std::string& pName, KQexFigureReport& pReport) noexcept
{
    mBytes.reset();
    return RunGuarded(pReport,
                      [&]
                      {
                          mPath = pName;
                          mDisplayPath = pName;
                          mBytes = std::make_shared<const std::string>(std::move(pBytes));
                          return Detect(*mBytes, true, pReport);
                      });
}

bool KQexFigureFile::Load(KQexFigureReport& pReport)
{
    std::string       lBytes;
    bool              lInMemory = false;
    const EReadResult lResult = OpenAndRead(mPath, lBytes, lInMemory);
    if (lResult == eREAD_FAILED)
    {
        return pReport.Fail(eFIGURE_SYSTEM, mDisplayPath, "cannot be read: " + KFileErrorText(errno));
    }
    if (lInMemory && lResult == eREAD_MORE)
    {
        return pReport.Fail(eFIGURE_INPUT, mDisplayPath, "is longer than 1 GiB and cannot be reread: save it to a file first");
    }
    const bool lOk = Detect(lBytes, lResult == eREAD_ALL, pReport);
    if (lInMemory)
    {
        mBytes = std::make_shared<const std::string>(std::move(lBytes));
    }
    return lOk;
}

bool KQexFigureFile::Detect(std::string_view pHead, bool pIsWhole, KQexFigureReport& pReport)
{
    const KQexFigureSniff lSniff = SniffFigureFile(mPath, pHead, pIsWhole);
    mFormat = lSniff.mFormat;
    if (lSniff.mIsBinary || lSniff.mIsEmpty)
    {
        return pReport.Fail(eFIGURE_INPUT, mDisplayPath, lSniff.mIsBinary ? "holds binary data, not a skeleton or a motion" : "is empty");
    }
    return true;
}

bool KQexFigureFile::OpenFor(KQexTextFile& pReader) const
{
    return mBytes != nullptr ? pReader.OpenReadBuffer(mBytes->data(), mBytes->size()) : pReader.OpenRead(mPath.c_str());
}

bool KQexFigureFile::SetFormat(std::string_view pWord)
{
    static constexpr std::pair<std::string_view, KQexFigureFormat> kWords[] = {
        {"asf", eFIGURE_ASF}, {"amc", eFIGURE_AMC}, {"bvh", eFIGURE_BVH}, {"glb", eFIGURE_GLTF}, {"gltf", eFIGURE_GLTF}};
    for (const auto& [lWord, lFormat] : kWords)
    {
        if (lWord == pWord)
        {
            mFormat = lFormat;
            return true;
        }
    }
    return false;
}

KQexAcclaimSource KQexFigureFile::GetSource() const noexcept
{
    try
    {
        return mBytes != nullptr ? KQexAcclaimSource::Buffer(mBytes->data(), mBytes->size(), mDisplayPath) : KQexAcclaimSource::File(mPath);
    }
    catch (const std::exception&)
    {
        return KQexAcclaimSource();
    }
}

bool KQexFigureFile::FailsToRead() const
{
    if (mBytes != nullptr)
    {
        return false;
    }
    KLineReader lReader;
    if (lReader.OpenPath(mPath.c_str()))
    {
        while (lReader.NextLine())
        {
        }
    }
    return lReader.GetStatus() == KLineReader::eSYSTEM;
}

} // namespace qexsdk
