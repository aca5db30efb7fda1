#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfbinary.h>
#include <qexioplugins/gltf/kqexgltfwriter.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace qexsdk
{

void KQexGltfWriter::Build(const std::vector<KQexNode*>& pRoots)
{
    const KQexFrameNodes lNodes(pRoots, nullptr);
    KQexFrame            lRest(lNodes, eFRAME_WORLD);
    lRest.Evaluate(0, KTime(0));
    for (KQexNode* lRoot : pRoots)
    {
        AddTree(lRoot, lRest);
    }
    AddNodes();
    for (size_t i = 0; i < mTreeStarts.size(); ++i)
    {
        AddSkin(static_cast<int>(i));
    }
}

namespace
{

constexpr size_t           kReservedMessages = 4;
constexpr std::string_view kOutOfMemory = "Out of memory"; ///< Short enough for std::string not to allocate.

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

/// Calls pDo and turns exceptions into messages.
template <typename TDo>
bool KQexFileGltf::Guarded(const TDo& pDo) noexcept
{
    try
    {
        return pDo();
    }
    catch (const std::exception&)
    {
        ReportException();
        return false;
    }
}

bool KQexFileGltf::BeginWrite(const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions)
{
    mMessages.clear();
    mWriter.reset();
    if (pRoots.empty())
    {
        Report(KQexTextMessage::eERROR, "Nothing to write");
        return false;
    }
    return Guarded(
        [&]
        {
            mWriter = std::make_unique<KQexGltfWriter>(*this, pOptions);
            mWriter->Build(pRoots);
            return true;
        });
}

KQexFrameSink* KQexFileGltf::BeginTake(size_t pTake)
{
    KQexFrameSink* lSink = nullptr;
    Guarded(
        [&]
        {
            lSink = mWriter->BeginTake(pTake);
            return true;
        });
    return lSink;
}

bool KQexFileGltf::EndTake(size_t pTake, KQexRunResult pResult)
{
    if (pResult == KQexRunResult::eOUT_OF_MEMORY)
    {
        Report(KQexTextMessage::eERROR, kOutOfMemory);
    }
    return pResult == KQexRunResult::eDONE && Guarded(
                                                  [&]
                                                  {
                                                      mWriter->EndTake(pTake);
                                                      return true;
                                                  });
}

bool KQexFileGltf::EndWrite(std::string_view pPath)
{
    const bool lOk = Guarded(
        [&]
        {
            KOutputs          lOutputs;
            const std::string lPath(pPath);
            return PrepareOutputs(*this, lPath, *mWriter, lOutputs) && FinishOutputs(*this, lOutputs, mWriter->GetOptions().mPrepared);
        });
    mWriter.reset();
    return lOk;
}

bool KQexFileGltf::EndWrite(KOutputFile& pOutput)
{
    const bool lOk = Guarded(
        [&]
        {
            const std::string      lStart = BinaryStartOf(*this, *mWriter);
            const std::string_view lBytes = BufferOf(*mWriter);
            if (!lStart.empty() && pOutput.Write(lStart.data(), lStart.size()))
            {
                pOutput.Write(lBytes.data(), lBytes.size());
            }
            return !lStart.empty();
        });
    mWriter.reset();
    return lOk;
}

/// Everything before the file is complete. The takes share the progress evenly.
bool KQexFileGltf::WriteTakes(const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions)
{
    const double lShare = 1.0 / static_cast<double>(std::max<size_t>(pOptions.mTakes.size(), 1));
    if (!BeginWrite(pRoots, pOptions))
    {
        return false;
    }
    for (size_t i = 0; i < pOptions.mTakes.size(); ++i)
    {
        const KQexGltfTake&  lTake = pOptions.mTakes[i];
        KQexFrameSink* const lSink = BeginTake(i);
        const auto           lShow = [&](double pFraction)
        {
            return !pOptions.mProgress || pOptions.mProgress((static_cast<double>(i) + pFraction) * lShare);
        };
        if (lSink == nullptr ||
            !EndTake(i, KQexRunFrames(pRoots, KQexLayerOf(lTake.mStack), lTake.mSampling, &lSink, 1, pOptions.mThreads, std::cref(lShow))))
        {
            return false;
        }
    }
    return true;
}

bool KQexFileGltf::Write(std::string_view pPath, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions)
{
    return WriteTakes(pRoots, pOptions) && EndWrite(pPath);
}

bool KQexFileGltf::WriteBuffer(std::string& pOut, const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions)
{
    return Guarded(
        [&]
        {
            std::string lFile;
            KOutputFile lOutput;
            if (!lOutput.OpenBuffer(&lFile) || !WriteTakes(pRoots, pOptions) || !EndWrite(lOutput))
            {
                return false;
            }
            if (!lOutput.Close())
            {
                Report(KQexTextMessage::eERROR, kOutOfMemory);
                return false;
            }
            pOut = std::move(lFile);
            return true;
        });
}

KQexFileGltf::~KQexFileGltf() = default;

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
        Report(KQexTextMessage::eERROR, kOutOfMemory);
    }
    catch (const std::exception& lError)
    {
        Report(KQexTextMessage::eERROR, lError.what());
    }
}

} // namespace qexsdk
