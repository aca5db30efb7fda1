#include <qexioplugins/gltf/kqexgltfsource.h>

#include <kbaselib/kbase/kinputfile.h>
#include <kbaselib/kbase/kletters.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

namespace qexsdk
{

namespace
{

namespace fs = std::filesystem;

constexpr size_t kChunkHeaderSize = 8;
constexpr size_t kFileHeaderSize = 12;

size_t ReadLittleEndian(std::string_view pBytes, size_t pAt)
{
    size_t lValue = 0;
    for (size_t i = 4; i > 0; --i)
    {
        lValue = lValue << 8 | static_cast<unsigned char>(pBytes[pAt + i - 1]);
    }
    return lValue;
}

/// The value of a base64 digit, of the standard or the URL alphabet; -1 for any other character.
int Base64Digit(char pC)
{
    static const std::string_view sDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const char                    lC = pC == '-' ? '+' : pC == '_' ? '/' : pC;
    const size_t                  lAt = sDigits.find(lC);
    return lAt == std::string_view::npos ? -1 : static_cast<int>(lAt);
}

std::string DecodeBase64(std::string_view pText, const std::string& pName)
{
    while (!pText.empty() && pText.back() == '=')
    {
        pText.remove_suffix(1);
    }
    std::string lBytes;
    lBytes.reserve(pText.size() / 4 * 3 + 3);
    unsigned lBits = 0;
    int      lCount = 0;
    for (const char lC : pText)
    {
        const int lDigit = Base64Digit(lC);
        if (lDigit < 0)
        {
            throw KQexGltfError(pName + ".uri: invalid base64");
        }
        lBits = (lBits << 6 | static_cast<unsigned>(lDigit)) & 0xFFFFFFu;
        lCount += 6;
        if (lCount >= 8)
        {
            lCount -= 8;
            lBytes += static_cast<char>(lBits >> lCount & 0xFFu);
        }
    }
    return lBytes;
}

int HexDigit(char pC)
{
    static const char* const sDigits = "0123456789abcdef";
    for (int i = 0; i < 16; ++i)
    {
        if (sDigits[i] == KToLower(pC))
        {
            return i;
        }
    }
    return -1;
}

/// Decodes the percent escapes of a URI; invalid ones are kept.
std::string DecodeUri(const std::string& pUri)
{
    std::string lName;
    for (size_t i = 0; i < pUri.size(); ++i)
    {
        const int lHigh = pUri[i] == '%' && i + 2 < pUri.size() ? HexDigit(pUri[i + 1]) : -1;
        const int lLow = lHigh >= 0 ? HexDigit(pUri[i + 2]) : -1;
        lName += lLow >= 0 ? static_cast<char>(16 * lHigh + lLow) : pUri[i];
        i += lLow >= 0 ? 2 : 0;
    }
    return lName;
}

/// Whether \p pName, decoded from \p pUri, is a relative path without "..", and the URI has no scheme or backslash.
bool IsRelativePath(const std::string& pName, const std::string& pUri)
{
    const fs::path lPath(pName);
    if (pName.empty() || pUri.find_first_of(":\\") != std::string::npos || pName.find('\0') != std::string::npos || !lPath.is_relative())
    {
        return false;
    }
    for (const fs::path& lPart : lPath)
    {
        if (lPart == "..")
        {
            return false;
        }
    }
    return true;
}

/// The path of \p pName in the folder of \p pModel, symbolic links resolved; "" when it is outside the folder.
std::string ResolveInFolder(const std::string& pModel, const std::string& pName)
{
    std::error_code lError;
    const fs::path  lFolder = fs::weakly_canonical(fs::absolute(fs::path(pModel), lError), lError).parent_path();
    const fs::path  lFile = lError ? fs::path() : fs::weakly_canonical(lFolder / pName, lError);
    const fs::path  lRelative = lError ? fs::path() : lFile.lexically_relative(lFolder);
    return lRelative.empty() || *lRelative.begin() == ".." ? std::string() : lFile.string();
}

} // namespace

std::vector<KQexGltfJson::KValue> GltfMembers(const KQexGltfJson::KValue& pArray, const std::string& pName)
{
    if (pArray.IsValid() && !pArray.Is(KQexGltfJson::eARRAY))
    {
        throw KQexGltfError(pName + " is not an array");
    }
    std::vector<KQexGltfJson::KValue> lMembers;
    lMembers.reserve(pArray.GetCount());
    for (KQexGltfJson::KValue lMember = pArray.GetFirst(); lMember.IsValid(); lMember = lMember.GetNext())
    {
        lMembers.push_back(lMember);
    }
    return lMembers;
}

size_t GltfSize(const KQexGltfJson::KValue& pValue, size_t pDefault, const std::string& pName)
{
    if (!pValue.IsValid())
    {
        return pDefault;
    }
    const double lNumber = pValue.GetNumber(-1.0);
    if (!(lNumber >= 0.0) || lNumber > 9007199254740992.0 || lNumber != std::floor(lNumber))
    {
        throw KQexGltfError(pName + " is not a non-negative integer");
    }
    return static_cast<size_t>(lNumber);
}

int GltfIndex(const KQexGltfJson::KValue& pValue, size_t pCount, const std::string& pName)
{
    if (!pValue.IsValid())
    {
        return -1;
    }
    const size_t lIndex = GltfSize(pValue, 0, pName);
    if (lIndex >= pCount || lIndex > static_cast<size_t>(std::numeric_limits<int>::max()))
    {
        throw KQexGltfError(pName + " is " + std::to_string(lIndex) + ", but there " +
                            (pCount == 0 ? "are none" : (pCount == 1 ? "is only " : "are only ") + std::to_string(pCount)));
    }
    return static_cast<int>(lIndex);
}

void KQexGltfSource::OpenPath(const std::string& pPath)
{
    std::string lReason;
    if (!KReadWholeFile(pPath.c_str(), std::numeric_limits<size_t>::max(), false, mFileBytes, lReason))
    {
        throw KQexGltfError("Can't read " + pPath + ": " + lReason);
    }
    mPath = pPath == "-" ? "" : pPath;
    mBytes = mFileBytes;
    Open();
}

void KQexGltfSource::OpenBytes(std::string_view pBytes, const std::string& pPath)
{
    mBytes = pBytes;
    mPath = pPath;
    Open();
}

size_t KQexGltfSource::GetSize() const
{
    size_t lSize = mBytes.size();
    for (const auto& lFile : mFiles)
    {
        lSize += lFile.second.size();
    }
    return lSize;
}

void KQexGltfSource::Open()
{
    if (mBytes.substr(0, 4) == "glTF")
    {
        OpenBinary();
    }
    else
    {
        mJson.Parse(mBytes.data(), mBytes.size());
    }
    const KQexGltfJson::KValue lRoot = mJson.GetRoot();
    const std::string          lVersion = lRoot["asset"]["version"].GetText();
    if (!lRoot.Is(KQexGltfJson::eOBJECT) || lVersion.empty())
    {
        throw KQexGltfError("Not a glTF file: asset.version is missing");
    }
    if (lVersion.substr(0, 2) != "2.")
    {
        throw KQexGltfError("glTF version (" + lVersion + ") is not supported, only 2");
    }
    mBuffers = GltfMembers(lRoot["buffers"], "buffers");
    mFetched.resize(mBuffers.size());
}

void KQexGltfSource::OpenBinary()
{
    if (mBytes.size() < kFileHeaderSize + kChunkHeaderSize)
    {
        throw KQexGltfError("The file is truncated in its header");
    }
    if (ReadLittleEndian(mBytes, 4) != 2)
    {
        throw KQexGltfError("glTF version (" + std::to_string(ReadLittleEndian(mBytes, 4)) + ") is not supported, only 2");
    }
    const size_t lSize = ReadLittleEndian(mBytes, 8);
    if (lSize > mBytes.size())
    {
        throw KQexGltfError("The file is truncated: its header says " + std::to_string(lSize) + " bytes, found " +
                            std::to_string(mBytes.size()));
    }
    const std::string_view lFile = mBytes.substr(0, lSize);
    std::string_view       lJson;
    for (size_t lAt = kFileHeaderSize; lAt + kChunkHeaderSize <= lFile.size();)
    {
        const size_t           lLength = ReadLittleEndian(lFile, lAt);
        const std::string_view lType = lFile.substr(lAt + 4, 4);
        lAt += kChunkHeaderSize;
        if (lLength > lFile.size() - lAt)
        {
            throw KQexGltfError("A chunk of " + std::to_string(lLength) + " bytes does not fit into the file");
        }
        if (lType == "JSON" && lJson.empty())
        {
            lJson = lFile.substr(lAt, lLength);
        }
        else if (lType == std::string_view("BIN\0", 4) && !mHasChunk)
        {
            mChunk = lFile.substr(lAt, lLength);
            mHasChunk = true;
        }
        lAt += lLength;
    }
    // Some programs pad the JSON chunk with NULs instead of blanks.
    lJson = lJson.substr(0, lJson.find_last_not_of('\0') + 1);
    mJson.Parse(lJson.data(), lJson.size());
}

std::string_view KQexGltfSource::GetBuffer(size_t pIndex)
{
    std::string_view& lBuffer = mFetched[pIndex];
    if (lBuffer.data() == nullptr)
    {
        lBuffer = Fetch(mBuffers[pIndex], pIndex);
    }
    return lBuffer;
}

std::string_view KQexGltfSource::Fetch(const KQexGltfJson::KValue& pBuffer, size_t pIndex)
{
    const std::string          lName = "buffers[" + std::to_string(pIndex) + "]";
    const KQexGltfJson::KValue lUri = pBuffer["uri"];
    const std::string          lText = lUri.GetText();
    const size_t               lComma = lText.find(',');
    std::string_view           lBytes;
    if (!lUri.IsValid())
    {
        if (pIndex != 0 || !mHasChunk)
        {
            throw KQexGltfError(lName + " has no data");
        }
        lBytes = mChunk;
    }
    else if (lText.compare(0, 5, "data:") == 0)
    {
        if (lComma == std::string::npos || lComma < 7 || lText.compare(lComma - 7, 7, ";base64") != 0)
        {
            throw KQexGltfError(lName + ".uri: data URI is not base64");
        }
        lBytes = mDecoded[pIndex] = DecodeBase64(std::string_view(lText).substr(lComma + 1), lName);
    }
    else
    {
        lBytes = FetchFile(lText);
    }
    const size_t lSize = GltfSize(pBuffer["byteLength"], 0, lName + ".byteLength");
    if (lSize > lBytes.size())
    {
        throw KQexGltfError(lName + " should have " + std::to_string(lSize) + " bytes, found " + std::to_string(lBytes.size()));
    }
    return lSize == 0 ? std::string_view("", 0) : lBytes.substr(0, lSize);
}

std::string_view KQexGltfSource::FetchFile(const std::string& pUri)
{
    const std::string lName = DecodeUri(pUri);
    if (mPath.empty())
    {
        throw KQexGltfError("Can't read the buffer (" + pUri + "): the model was not read from a file");
    }
    const std::string lPath = IsRelativePath(lName, pUri) ? ResolveInFolder(mPath, lName) : std::string();
    if (lPath.empty())
    {
        throw KQexGltfError("Can't read the buffer (" + pUri + "): it is not in the model's folder");
    }
    const auto lFound = mFiles.find(lPath);
    if (lFound != mFiles.end())
    {
        return lFound->second;
    }
    std::string lBytes;
    std::string lReason;
    if (!KReadWholeFile(lPath.c_str(), std::numeric_limits<size_t>::max(), true, lBytes, lReason))
    {
        throw KQexGltfError("Can't read " + lPath + ": " + lReason);
    }
    return mFiles.emplace(lPath, std::move(lBytes)).first->second;
}

} // namespace qexsdk
