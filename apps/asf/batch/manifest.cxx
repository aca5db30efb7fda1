#include <apps/asf/batch/manifest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

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

/// The motion that a line is about. False if the line is not one of a manifest.
bool ParseLine(const std::string& pText, KJson& pLine, std::string& pName)
{
    pLine = KJson::parse(pText, nullptr, false);
    const auto lFile = pLine.is_object() ? pLine.find("file") : pLine.end();
    return pLine.is_object() && lFile != pLine.end() && PathFromJson(*lFile, pName);
}

} // namespace

bool KShard::Has(const std::string& pName) const
{
    return HashOf(pName) % mCount == mIndex - 1;
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
            mPlaces[HashOf(lName)] = {lFile, lAt};
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
    if (mFile != nullptr)
    {
        std::fclose(mFile);
    }
}

bool KManifestWriter::Open(const std::string& pPath, KConsole& pConsole)
{
    const bool lIsLocked = mLock.Lock(pPath);
    if (lIsLocked && OpenFile(pPath))
    {
        return true;
    }
    const int lError = errno;
    pConsole.Message(eERROR, pPath, 0,
                     !lIsLocked && lError == EWOULDBLOCK ? "is in use: another asf batch is writing this part of the collection"
                                                         : "cannot be written: " + std::generic_category().message(lError));
    pConsole.Raise(eEXIT_SYSTEM);
    return false;
}

bool KManifestWriter::OpenFile(const std::string& pPath)
{
    mFile = std::fopen(pPath.c_str(), "ab+");
    if (mFile == nullptr)
    {
        return false;
    }
    // After a crash the last line may lack its end.
    const bool lIsWhole = std::fseek(mFile, -1, SEEK_END) != 0 || std::fgetc(mFile) == '\n';
    return lIsWhole || (std::fseek(mFile, 0, SEEK_END) == 0 && std::fputc('\n', mFile) == '\n' && std::fflush(mFile) == 0);
}

bool KManifestWriter::Append(const KJson& pLine, std::string& pReason)
{
    const std::string lText = JsonLine(pLine);
    std::fseek(mFile, 0, SEEK_END); // Between reading and writing.
    if (std::fwrite(lText.data(), 1, lText.size(), mFile) == lText.size() && std::fflush(mFile) == 0)
    {
        return true;
    }
    pReason = std::generic_category().message(errno);
    return false;
}

} // namespace asfapp
