#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfbinary.h>
#include <qexioplugins/gltf/kqexgltfwriter.h>
#include <qexscene/kqexsceneundo.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <new>
#include <string_view>
#include <utility>

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
    for (size_t i = 0; i < mTreeStarts.size(); ++i)
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
        mModel.mAnimations.back().mName = SafeName(lNames, lTake.mStack->GetName(), "take");
    }
    return true;
}

namespace
{

constexpr size_t kReservedMessages = 4;

bool EndsWith(std::string_view pText, std::string_view pEnd)
{
    return pText.size() >= pEnd.size() && KEqualsIgnoreCase(pText.substr(pText.size() - pEnd.size()), pEnd);
}

/// A file name as a URI: every byte that is not unreserved is percent-encoded.
std::string EncodeUri(const std::string& pName)
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

/// Writes the parts to a temporary file for \p pPath, ready to commit.
bool WriteParts(KQexFileGltf& pFile, KOutputFile& pOutput, const std::string& pPath, std::initializer_list<std::string_view> pParts)
{
    bool lOk = pOutput.Open(pPath.c_str());
    for (const std::string_view& lPart : pParts)
    {
        lOk = lOk && pOutput.Write(lPart.data(), lPart.size());
    }
    return (lOk && pOutput.Prepare()) || ReportOutput(pFile, pOutput);
}

/// Builds the file, with no take as the evaluator's context (rest pose), and passes it to \p pWrite. Reports exceptions as messages.
template <typename TWrite>
bool BuildAndWrite(KQexFileGltf& pFile, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions, const TWrite& pWrite)
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

std::string_view BufferOf(KQexGltfWriter& pWriter)
{
    return std::string_view(reinterpret_cast<const char*>(pWriter.GetBytes().data()), pWriter.GetBytes().size());
}

/// All of a binary file but the bytes of its buffer; empty, and reported, when the file would be too large.
std::string BinaryStartOf(KQexFileGltf& pFile, KQexGltfWriter& pWriter)
{
    std::string lStart = MakeGltfBinaryStart(pWriter.GetJson(""), pWriter.GetBytes().size());
    if (lStart.empty())
    {
        pFile.Report(KQexTextMessage::eERROR, "A binary glTF file can't exceed 4 GB; write .gltf instead");
    }
    return lStart;
}

using KOutputs = std::vector<std::unique_ptr<KOutputFile>>;

/// Writes to one output, or two for ".gltf": the buffer first. Ready to commit.
bool PrepareOutputs(KQexFileGltf& pFile, const std::string& pPath, KQexGltfWriter& pWriter, KOutputs& pOutputs)
{
    const std::string_view lBytes = BufferOf(pWriter);
    pOutputs.push_back(std::make_unique<KOutputFile>());
    if (!EndsWith(pPath, ".gltf"))
    {
        const std::string lStart = BinaryStartOf(pFile, pWriter);
        return !lStart.empty() && WriteParts(pFile, *pOutputs[0], pPath, {lStart, lBytes});
    }
    pOutputs.push_back(std::make_unique<KOutputFile>());
    const std::string lBinaryPath = pPath.substr(0, pPath.size() - 5) + ".bin";
    const std::string lJson = pWriter.GetJson(EncodeUri(std::filesystem::path(lBinaryPath).filename().string()));
    return WriteParts(pFile, *pOutputs[0], lBinaryPath, {lBytes}) && WriteParts(pFile, *pOutputs[1], pPath, {lJson, "\n"});
}

/// Hands the outputs over to \p pPrepared, or commits them if that is null.
bool FinishOutputs(KQexFileGltf& pFile, KOutputs& pOutputs, KOutputs* pPrepared)
{
    if (pPrepared != nullptr)
    {
        pPrepared->reserve(pPrepared->size() + pOutputs.size());
        std::move(pOutputs.begin(), pOutputs.end(), std::back_inserter(*pPrepared));
        return true;
    }
    KOutputFile*       lFiles[2] = {pOutputs.front().get(), pOutputs.back().get()};
    const KOutputFile* lFailed = KOutputFile::CommitAll(lFiles, pOutputs.size());
    return lFailed == nullptr || ReportOutput(pFile, *lFailed);
}

} // namespace

bool KQexFileGltf::Write(std::string_view pPath, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions)
{
    mMessages.clear();
    return BuildAndWrite(*this, pRoots, pOptions,
                         [&](KQexGltfWriter& pWriter)
                         {
                             KOutputs          lOutputs;
                             const std::string lPath(pPath);
                             return PrepareOutputs(*this, lPath, pWriter, lOutputs) && FinishOutputs(*this, lOutputs, pOptions.mPrepared);
                         });
}

bool KQexFileGltf::WriteBuffer(std::string& pOut, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions)
{
    mMessages.clear();
    return BuildAndWrite(*this, pRoots, pOptions,
                         [&](KQexGltfWriter& pWriter)
                         {
                             std::string lFile = BinaryStartOf(*this, pWriter);
                             if (lFile.empty())
                             {
                                 return false;
                             }
                             lFile += BufferOf(pWriter);
                             pOut = std::move(lFile);
                             return true;
                         });
}

KQexFileGltf::KQexFileGltf(bool pVerb) : mVerb(pVerb)
{
    try
    {
        // So that running out of memory can be reported without allocating.
        mMessages.reserve(kReservedMessages);
    }
    catch (const std::bad_alloc&)
    {
        mMessages.clear();
    }
}

void KQexFileGltf::Report(KQexTextMessage::ESeverity pSeverity, std::string_view pText) noexcept
{
    try
    {
        mMessages.push_back(KQexTextMessage{pSeverity, 0, std::string(pText)});
    }
    catch (const std::exception&)
    {
        // The caller still sees the failure in the return value.
    }
    if (mVerb)
    {
        std::fprintf(stderr, "%s: %.*s\n", pSeverity == KQexTextMessage::eERROR ? "error" : "warning", static_cast<int>(pText.size()),
                     pText.data());
    }
}

void KQexFileGltf::ReportException() noexcept
{
    try
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        // Short enough for std::string not to allocate.
        Report(KQexTextMessage::eERROR, "Out of memory");
    }
    catch (const std::exception& lError)
    {
        Report(KQexTextMessage::eERROR, lError.what());
    }
}

} // namespace qexsdk
