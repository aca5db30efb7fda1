#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfwriter.h>
#include <qexscene/kqexsceneundo.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <string_view>

namespace qexsdk
{

bool KQexGltfWriter::Build(const std::vector<KQexNode*>& pRoots)
{
    for (KQexNode* lRoot : pRoots)
    {
        if (!AddTree(lRoot))
        {
            throw std::bad_alloc();
        }
    }
    AddNodes();
    for (size_t i = 0; i < mTops.size(); ++i)
    {
        AddSkin(static_cast<int>(i));
    }
    KQexUniqueNames lNames;
    for (const KQexGltfTake& lTake : mOptions.mTakes)
    {
        if (!AddAnimation(lTake))
        {
            return false;
        }
        if (mModel.mAnimations.back().mChannels.empty())
        {
            mModel.mAnimations.pop_back();
            mFile.Report(KQexTextMessage::eWARNING,
                         std::string("Nothing moves in take (") + lTake.mStack->GetName() + "), no animation written");
            continue;
        }
        mModel.mAnimations.back().mName = SafeName(lNames, lTake.mStack->GetName(), "take");
    }
    return true;
}

namespace
{

/// The four bytes of a number in a binary file's headers.
std::string LittleEndian(size_t pValue)
{
    std::string lBytes;
    for (int i = 0; i < 4; ++i)
    {
        lBytes += static_cast<char>(pValue >> (8 * i) & 0xFF);
    }
    return lBytes;
}

/// Headers and JSON of a binary file; the buffer's bytes follow.
std::string BinaryHead(std::string pJson, size_t pBytes)
{
    pJson.resize((pJson.size() + 3) / 4 * 4, ' ');
    const size_t lSize = 12 + 8 + pJson.size() + 8 + pBytes;
    return "glTF" + LittleEndian(2) + LittleEndian(lSize) + LittleEndian(pJson.size()) + "JSON" + pJson + LittleEndian(pBytes) +
           std::string("BIN\0", 4);
}

constexpr size_t kFirstMessages = 4;
constexpr size_t kMaxFileSize = 0xFFFFFFFFu; ///< A binary file's header tells its size in 32 bits.

bool EndsIn(const std::string& pText, const std::string& pEnd)
{
    return pText.size() >= pEnd.size() && KEqualsFolded(std::string_view(pText).substr(pText.size() - pEnd.size()), pEnd);
}

/// A file name as it stands in a URI: what is not a plain character is escaped.
std::string UriOf(const std::string& pName)
{
    static const char* const sDigits = "0123456789ABCDEF";
    std::string              lUri;
    for (const char lC : pName)
    {
        if (std::isalnum(static_cast<unsigned char>(lC)) != 0 || lC == '-' || lC == '_' || lC == '.' || lC == '~')
        {
            lUri += lC;
            continue;
        }
        lUri += '%';
        lUri += sDigits[static_cast<unsigned char>(lC) >> 4];
        lUri += sDigits[static_cast<unsigned char>(lC) & 15];
    }
    return lUri;
}

bool ReportOutput(KQexFileGltf& pFile, const KOutputFile& pOutput)
{
    pFile.Report(KQexTextMessage::eERROR, "Can't write " + pOutput.GetPath() + ": " + pOutput.GetReason());
    return false;
}

/// Opens \p pPath and writes the parts; the file then only waits for its name.
bool WriteParts(KQexFileGltf& pFile, KOutputFile& pOutput, const std::string& pPath, std::initializer_list<std::string_view> pParts)
{
    bool lOk = pOutput.Open(pPath.c_str());
    for (const std::string_view& lPart : pParts)
    {
        lOk = lOk && pOutput.Write(lPart.data(), lPart.size());
    }
    return (lOk && pOutput.Prepare()) || ReportOutput(pFile, pOutput);
}

/// Builds a file and hands it to \p pWrite with the rest pose current first; turns exceptions of the libraries used into a message.
template <typename TWrite>
bool Guarded(KQexFileGltf& pFile, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions, const TWrite& pWrite)
{
    if (pRoots.empty())
    {
        pFile.Report(KQexTextMessage::eERROR, "Nothing to write");
        return false;
    }
    KQexAnimEvaluator*     lEvaluator = pRoots.front()->GetScene()->GetEvaluator();
    const KQexContextGuard lContext(lEvaluator);
    lEvaluator->SetContext(nullptr);
    try
    {
        KQexGltfWriter lWriter(pFile, pOptions);
        return lWriter.Build(pRoots) && pWrite(lWriter);
    }
    catch (const std::exception&)
    {
        pFile.ReportException();
    }
    return false;
}

bool CheckSize(KQexFileGltf& pFile, size_t pBytes)
{
    if (pBytes <= kMaxFileSize)
    {
        return true;
    }
    pFile.Report(KQexTextMessage::eERROR, "A binary file can't hold more than 4 GB; write .gltf instead");
    return false;
}

} // namespace

bool KQexFileGltf::Write(const std::string& pPath, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions)
{
    mMessages.clear();
    return Guarded(*this, pRoots, pOptions,
                   [&](KQexGltfWriter& pWriter)
                   {
                       const std::string_view lBytes(reinterpret_cast<const char*>(pWriter.GetBytes().data()), pWriter.GetBytes().size());
                       KOutputFile            lMain;
                       if (!EndsIn(pPath, ".gltf"))
                       {
                           return CheckSize(*this, lBytes.size()) &&
                                  WriteParts(*this, lMain, pPath, {BinaryHead(pWriter.GetJson(""), lBytes.size()), lBytes}) &&
                                  (lMain.Commit() || ReportOutput(*this, lMain));
                       }
                       const std::string  lBinaryPath = pPath.substr(0, pPath.size() - 5) + ".bin";
                       const std::string  lJson = pWriter.GetJson(UriOf(std::filesystem::path(lBinaryPath).filename().string()));
                       KOutputFile        lBinary;
                       KOutputFile* const lOutputs[] = {&lBinary, &lMain};
                       if (!WriteParts(*this, lBinary, lBinaryPath, {lBytes}) || !WriteParts(*this, lMain, pPath, {lJson, "\n"}))
                       {
                           return false;
                       }
                       const KOutputFile* lFailed = KOutputFile::CommitAll(lOutputs, 2);
                       return lFailed == nullptr || ReportOutput(*this, *lFailed);
                   });
}

bool KQexFileGltf::WriteBuffer(std::string& pOut, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions)
{
    mMessages.clear();
    return Guarded(*this, pRoots, pOptions,
                   [&](KQexGltfWriter& pWriter)
                   {
                       const std::vector<unsigned char>& lBytes = pWriter.GetBytes();
                       if (!CheckSize(*this, lBytes.size()))
                       {
                           return false;
                       }
                       pOut = BinaryHead(pWriter.GetJson(""), lBytes.size());
                       pOut.append(reinterpret_cast<const char*>(lBytes.data()), lBytes.size());
                       return true;
                   });
}

KQexFileGltf::KQexFileGltf(bool pVerb) : mVerb(pVerb)
{
    try
    {
        // Room for the first messages, so that running out of memory can be told even then.
        mMessages.reserve(kFirstMessages);
    }
    catch (const std::bad_alloc&)
    {
        mMessages.clear();
    }
}

void KQexFileGltf::Report(KQexTextMessage::ESeverity pSeverity, const std::string& pText)
{
    try
    {
        mMessages.push_back(KQexTextMessage{pSeverity, 0, pText});
    }
    catch (const std::bad_alloc&)
    {
        // Nothing is left to tell it with but what the call returns.
    }
    if (mVerb)
    {
        std::fprintf(stderr, "%s: %s\n", pSeverity == KQexTextMessage::eERROR ? "error" : "warning", pText.c_str());
    }
}

void KQexFileGltf::ReportException() noexcept
{
    // A text this short needs no memory of its own.
    const char* const lNoMemory = "Out of memory";
    try
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        Report(KQexTextMessage::eERROR, lNoMemory);
    }
    catch (const std::exception& lError)
    {
        try
        {
            Report(KQexTextMessage::eERROR, lError.what());
        }
        catch (const std::bad_alloc&)
        {
            Report(KQexTextMessage::eERROR, lNoMemory);
        }
    }
}

} // namespace qexsdk
