#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <qexioplugins/acclaim/amc/kqexamcdofs.h>
#include <qexioplugins/acclaim/amc/kqexamcheader.h>
#include <qexioplugins/acclaim/amc/kqexamcreader.h>
#include <qexioplugins/acclaim/amc/kqexamcsampler.h>
#include <qexioplugins/acclaim/amc/kqexamcwriter.h>
#include <qexioplugins/acclaim/model/kqexasfcurves.h>

#include <new>
#include <utility>

namespace qexsdk
{

const char KQexFileAcclaimAmc::smType[] = "AMC";
const char KQexFileAcclaimAmc::smDel[] = " \t\r\n";
const char KQexFileAcclaimAmc::smCom[] = "#";

KQexAmcVisitor::~KQexAmcVisitor() = default;

KQexFileAcclaimAmc::KQexFileAcclaimAmc(bool pVerb) : KQexTextFile(smType, smDel, smCom, true, pVerb) {}

KQexFileAcclaimAmc::~KQexFileAcclaimAmc()
{
    Close();
}

void KQexFileAcclaimAmc::HeaderLine(std::string_view pLine)
{
    if (ParseAmcRateComment(pLine, mHeader) == eAMC_COMMENT_INVALID)
    {
        const std::string_view lText = TrimAmcText(pLine).substr(0, kMaxLongText);
        Warning("Ignoring the comment (%.*s): a rate is expected after samples-per-second, and nothing else\n",
                static_cast<int>(lText.size()), lText.data());
    }
}

bool KQexFileAcclaimAmc::ReadFrames(KQexAsfScene* pAsfScene, const KQexAmcReadOptions& pOptions, KQexAmcVisitor& pVisitor)
{
    mInfo = KQexAmcInfo();
    mHeader = KQexAmcHeader();
    if (pAsfScene == nullptr || pAsfScene->mRoot == nullptr)
    {
        Error("The motion has no skeleton\n");
        return false;
    }
    try
    {
        return KQexAmcReader(*this, pAsfScene, pOptions, pVisitor, mHeader, mInfo).Run();
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
        return false;
    }
}

namespace
{

/// False when memory runs out.
bool FinishDofs(KQexAmcDofs& pDofs, KQexDofValues* pValues)
{
    try
    {
        if (pValues != nullptr)
        {
            pDofs.Finish(*pValues);
        }
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

} // namespace

bool KQexFileAcclaimAmc::Read(KQexAsfScene* pAsfScene, KQexScene* pScene, const KQexAmcReadOptions& pOptions)
{
    KQexAmcSampler     lSampler({pOptions.mSetRotatePivotOffet, pOptions.mSetPreRotation});
    const HKQexAsfNode lRoot = pAsfScene == nullptr ? nullptr : pAsfScene->mRoot;
    if (lRoot != nullptr)
    {
        if (!lRoot->CreateDataFromDOF(pScene))
        {
            Error("Out of memory\n");
            KQexAsfCurves::Destroy(lRoot);
            return false;
        }
        lRoot->StartSamplingData();
    }
    KQexAmcDofs     lDofs(lSampler);
    KQexAmcVisitor& lVisitor = pOptions.mDofValues != nullptr ? static_cast<KQexAmcVisitor&>(lDofs) : lSampler;
    bool            lOk = ReadFrames(pAsfScene, pOptions, lVisitor);
    if (lOk && (!lSampler.Finish(mInfo.mStart, mInfo.mStop) || !FinishDofs(lDofs, pOptions.mDofValues)))
    {
        Error("Out of memory\n");
        lOk = false;
    }
    if (lRoot == nullptr)
    {
        return false;
    }
    if (!lOk)
    {
        KQexAsfCurves::Destroy(lRoot);
    }
    else
    {
        lRoot->StopSamplingData();
    }
    return lOk;
}

bool KQexFileAcclaimAmc::Write(KQexAsfScene* pAsfScene, const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions)
{
    KQexFrameSink* const       lWriter = BeginWrite(pAsfScene, pPairs, pOptions);
    const KQexAnimLayer* const lLayer = KQexLayerOf(pOptions.mStack);
    return lWriter != nullptr &&
           EndWrite(KQexRunFrames({pPairs.front().mNode}, lLayer, pOptions.mSampling, &lWriter, 1, pOptions.mThreads, pOptions.mProgress));
}

KQexFrameSink* KQexFileAcclaimAmc::BeginWrite(KQexAsfScene* pAsfScene, const std::vector<KQexAmcPair>& pPairs,
                                              const KQexAmcWriteOptions& pOptions)
{
    if (pAsfScene == nullptr || pAsfScene->mRoot == nullptr || pPairs.empty() || pOptions.mSampling.mCount < 1)
    {
        Error("Nothing to write\n");
        return nullptr;
    }
    try
    {
        auto lWriter = std::make_unique<KQexAmcWriter>(*this, pAsfScene, pOptions);
        lWriter->Prepare(pAsfScene->mRoot, pPairs);
        lWriter->WriteHeader();
        mWriter = std::move(lWriter);
        return mWriter.get();
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
        return nullptr;
    }
}

bool KQexFileAcclaimAmc::EndWrite(KQexRunResult pResult)
{
    const std::unique_ptr<KQexAmcWriter> lWriter = std::move(mWriter);
    if (pResult == KQexRunResult::eOUT_OF_MEMORY)
    {
        Error("Out of memory\n");
    }
    if (pResult != KQexRunResult::eDONE)
    {
        return false;
    }
    try
    {
        lWriter->ReportLosses();
        return true;
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
        return false;
    }
}

} // namespace qexsdk
