#include <apps/asf/batch/manifest.h>

#include <kbaselib/kbase/kpath.h>
#include <kbaselib/kbase/ksystem.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

constexpr int                       kLockTries = 20;
constexpr std::chrono::milliseconds kLockPause(50);

/// FNV-1a (Fowler, Noll and Vo), 64 bits.
uint64_t HashOf(const std::string& pText)
{
    uint64_t lHash = 14695981039346656037ULL;
    for (const char lChar : pText)
    {
        lHash = (lHash ^ static_cast<unsigned char>(lChar)) * 1099511628211ULL;
    }
    return lHash;
}

bool IsText(const KJson& pLine, const char* pKey)
{
    const auto lFound = pLine.find(pKey);
    return lFound == pLine.end() || lFound->is_string();
}

/// Whether a list of files is one, if there is one.
bool IsFileList(const KJson& pLine, const char* pKey)
{
    const auto lIsFile = [](const KJson& pFile)
    {
        return pFile.is_object() && pFile.contains("file") && (!pFile.contains("crc32") || pFile["crc32"].is_number_unsigned());
    };
    const auto lFound = pLine.find(pKey);
    return lFound == pLine.end() || (lFound->is_array() && std::all_of(lFound->begin(), lFound->end(), lIsFile));
}

/// Reads a line, and the name of the motion that it is about. False if the line is not one of a manifest: later, its keys are taken to
/// have the types that they are written with.
bool ParseLine(const std::string& pText, KJson& pLine, std::string& pName)
{
    std::string lFile;
    pLine = KJson::parse(pText, nullptr, false);
    const bool lOk = pLine.is_object() && PathFromJson(pLine.value("file", KJson()), lFile) &&
                     PathFromJson(pLine.value("output", KJson()), pName) && pLine.value("generation", KJson()).is_number_unsigned() &&
                     IsText(pLine, "status") && IsText(pLine, "options") && IsText(pLine, "version") && IsText(pLine, "error") &&
                     IsFileList(pLine, "inputs") && IsFileList(pLine, "outputs") && IsFileList(pLine, "earlier");
    pName += lOk ? qexsdk::KPathExtension(lFile) : "";
    return lOk;
}

} // namespace

bool KShard::Has(const std::string& pName) const
{
    // The finalizer of MurmurHash3: the low bits of FNV-1a alone depend on those of the characters.
    uint64_t lHash = HashOf(pName);
    lHash = (lHash ^ (lHash >> 33)) * 0xFF51AFD7ED558CCDULL;
    lHash = (lHash ^ (lHash >> 33)) * 0xC4CEB9FE1A85EC53ULL;
    return (lHash ^ (lHash >> 33)) % mCount == mIndex - 1;
}

bool KManifestIndex::Read(const std::string& pFolder, KConsole& pConsole)
{
    std::error_code          lError;
    std::vector<std::string> lNames;
    fs::directory_iterator   lEntry(pFolder, lError);
    for (const fs::directory_iterator lEnd; !lError && lEntry != lEnd; lEntry.increment(lError))
    {
        if (lEntry->path().extension() == ".jsonl")
        {
            lNames.push_back(lEntry->path().string());
        }
    }
    if (lError && lError != std::errc::no_such_file_or_directory)
    {
        pConsole.Message(eERROR, pFolder, 0, "cannot be read: " + lError.message());
        pConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    std::sort(lNames.begin(), lNames.end());
    return std::all_of(lNames.begin(), lNames.end(), [&](const std::string& pPath) { return ReadFile(pPath, pConsole); });
}

bool KManifestIndex::ReadFile(const std::string& pPath, KConsole& pConsole)
{
    const auto    lFile = static_cast<uint32_t>(mPaths.size());
    std::ifstream lStream(pPath, std::ios::binary);
    std::string   lText;
    uint64_t      lAt = 0;
    mPaths.push_back(pPath);
    while (std::getline(lStream, lText))
    {
        const uint64_t lNext = lAt + lText.size() + 1;
        KJson          lLine;
        std::string    lName;
        if (!lStream.eof() && ParseLine(lText, lLine, lName))
        {
            KPlace&    lPlace = mPlaces[HashOf(lName)];
            const auto lGeneration = lLine["generation"].get<uint32_t>();
            lPlace = lGeneration >= lPlace.mGeneration ? KPlace{lFile, lGeneration, lAt} : lPlace;
        }
        lAt = lNext;
    }
    if (lStream.bad() || !lStream.eof())
    {
        pConsole.Message(eERROR, pPath, 0, "cannot be read");
        pConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    return true;
}

bool KManifestIndex::ReadLine(const KPlace& pPlace, KJson& pLine, std::string& pName) const
{
    std::ifstream lStream(mPaths[pPlace.mFile], std::ios::binary);
    std::string   lText;
    lStream.seekg(static_cast<std::streamoff>(pPlace.mAt));
    return std::getline(lStream, lText) && ParseLine(lText, pLine, pName);
}

bool KManifestIndex::Find(const std::string& pName, KJson& pLine) const
{
    const auto  lFound = mPlaces.find(HashOf(pName));
    std::string lName;
    return lFound != mPlaces.end() && ReadLine(lFound->second, pLine, lName) && lName == pName;
}

void KManifestIndex::ForEach(const std::function<void(const std::string& pName, const KJson& pLine)>& pSee) const
{
    for (const auto& [lHash, lPlace] : mPlaces)
    {
        KJson       lLine;
        std::string lName;
        if (ReadLine(lPlace, lLine, lName))
        {
            pSee(lName, lLine);
        }
    }
}

KManifestWriter::~KManifestWriter()
{
    if (mFile >= 0)
    {
        qexsdk::KSystemInUse().mClose(mFile); // Every line is written already.
    }
}

bool KManifestWriter::Open(const std::string& pPath, KConsole& pConsole)
{
    bool lIsLocked = mLock.Lock(pPath);
    // Another run may have it for a moment, to remove what this part has left.
    for (int i = 0; i < kLockTries && !lIsLocked && errno == EWOULDBLOCK; ++i)
    {
        std::this_thread::sleep_for(kLockPause);
        lIsLocked = mLock.Lock(pPath);
    }
    if (lIsLocked && OpenFile(pPath))
    {
        return true;
    }
    const int lError = errno;
    pConsole.Message(eERROR, pPath, 0,
                     !lIsLocked && lError == EWOULDBLOCK ? "is in use: another asf batch is writing this part of the collection"
                                                         : "cannot be written: " + qexsdk::KFileErrorText(lError));
    pConsole.Raise(eEXIT_SYSTEM);
    return false;
}

bool KManifestWriter::OpenFile(const std::string& pPath)
{
    do
    {
        mFile = qexsdk::KSystemInUse().mOpen(pPath.c_str(), qexsdk::eOPEN_APPEND);
    } while (mFile < 0 && errno == EINTR);
    // After a crash the last line may lack its end.
    std::ifstream lStream(pPath, std::ios::binary | std::ios::ate);
    mIsTorn = mFile >= 0 && lStream.tellg() > 0 && lStream.seekg(-1, std::ios::end).get() != '\n';
    return mFile >= 0;
}

bool KManifestWriter::Append(const KJson& pLine, std::string& pReason)
{
    // A line of which only a part fitted on the device must not spoil this one.
    const std::string lText = (mIsTorn ? "\n" : "") + JsonLine(pLine);
    size_t            lDone = 0;
    mIsTorn = true;
    while (lDone < lText.size())
    {
        const std::ptrdiff_t lWritten = qexsdk::KSystemInUse().mWrite(mFile, lText.data() + lDone, lText.size() - lDone);
        if (lWritten <= 0 && !(lWritten < 0 && errno == EINTR))
        {
            pReason = qexsdk::KFileErrorText(lWritten < 0 ? errno : EIO);
            return false;
        }
        lDone += static_cast<size_t>(std::max<std::ptrdiff_t>(lWritten, 0));
    }
    mIsTorn = false;
    return true;
}

} // namespace asfapp
