#include <bench/motionsupport.h>

#include <qexioplugins/bvh/kqexfilebvh.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>

using namespace qexsdk;

namespace qexbench
{

namespace fs = std::filesystem;

namespace
{

constexpr int kGeneratedBones = 30;
constexpr int kGeneratedFrames = 2751;

bool IsFrameNumber(const std::string& pLine)
{
    const size_t lEnd = pLine.find_last_not_of("\r\n\t ");
    return lEnd != std::string::npos && pLine.find_first_not_of("0123456789") > lEnd;
}

} // namespace

KMotionPaths FindMotion()
{
    for (const std::string& lAmc : CorpusFiles(".amc"))
    {
        for (const std::string& lAsf : CorpusFiles(".asf"))
        {
            const bool lSameFolder = fs::path(lAsf).parent_path() == fs::path(lAmc).parent_path();
            if (lSameFolder && fs::path(lAmc).stem().string().rfind(fs::path(lAsf).stem().string(), 0) == 0)
            {
                return {lAsf, lAmc};
            }
        }
    }
    return {};
}

KMotion ChooseMotion()
{
    const KMotionPaths lPaths = FindMotion();
    if (!lPaths.mAmc.empty())
    {
        return {fs::path(lPaths.mAmc).filename().string(), ReadWholeFile(lPaths.mAsf), ReadWholeFile(lPaths.mAmc)};
    }
    return {"generated", SkeletonText(eRANDOM, kGeneratedBones), MotionText(kGeneratedBones, kGeneratedFrames)};
}

KRepeatedMotion::KRepeatedMotion(const KMotion& pMotion, int pRepeats) : mPath(ScratchPath(".amc"))
{
    std::ofstream lFile(mPath, std::ios::binary);
    for (int i = 0; i < pRepeats; ++i)
    {
        std::istringstream lText(pMotion.mAmc);
        bool               lIsHeader = true;
        for (std::string lLine; std::getline(lText, lLine);)
        {
            const bool lNumber = IsFrameNumber(lLine);
            lIsHeader = lIsHeader && !lNumber;
            if (i > 0 && lIsHeader)
            {
                continue;
            }
            lFile << (lNumber ? std::to_string(++mFrames) : lLine) << '\n';
        }
    }
    Require(lFile.flush().good());
    mSize = static_cast<size_t>(fs::file_size(mPath));
}

KRepeatedMotion::~KRepeatedMotion()
{
    fs::remove(mPath);
}

KScratchFile::KScratchFile(const char* pExtension) : mPath(ScratchPath(pExtension)) {}

KScratchFile::~KScratchFile()
{
    std::error_code lIgnored;
    fs::remove(mPath, lIgnored);
}

void ReportMotion(benchmark::State& pState, const KComparison& pComparison, size_t pBytes, double pFrames, size_t pPeak)
{
    pComparison.ReportBytes(pState, pBytes);
    pComparison.ReportItems(pState, "frame", pFrames);
    pState.counters["peak_MB"] = static_cast<double>(pPeak) / 1e6;
}

size_t FileSize(const std::string& pPath)
{
    return static_cast<size_t>(fs::file_size(pPath));
}

KImported::KImported(const KQexAcclaimSource& pAsf, const std::string& pAmcPath) : mScene(KQexScene::Create("bench"))
{
    KQexImportAcclaimOptions lOptions;
    lOptions.mSetLimits = false;
    lOptions.mKeepAsfScene = true;
    Require(mScene != nullptr && KQexImporterAcclaim::Import(mScene, pAsf, {KQexAcclaimSource::File(pAmcPath)}, lOptions, mResult));
    mStack = mScene->FindAnimStack(mResult.mTakes.front().mName.c_str());
    mScene->GetEvaluator()->SetContext(mStack);
    Require(MakeSampling({mResult.mRootNode}, mStack, {}, mSampling));
}

KImported::~KImported()
{
    mResult.mAsfScene.reset();
    mScene->Destroy();
}

void WriteBvh(const KImported& pFigure, const std::string& pPath)
{
    KQexFileBvh         lFile;
    KQexBvhWriteOptions lOptions;
    lOptions.mStack = pFigure.mStack;
    lOptions.mSampling = pFigure.mSampling;
    Require(lFile.OpenWrite(pPath.c_str()) && lFile.Write({pFigure.mResult.mRootNode}, lOptions) && lFile.Close());
}

std::vector<double> NumbersOf(const std::string& pPath)
{
    const std::string   lText = ReadWholeFile(pPath);
    std::vector<double> lNumbers;
    const char*         lEnd = lText.data() + lText.size();
    for (const char* lAt = lText.data(); lAt < lEnd;)
    {
        double     lValue = 0;
        const auto lResult = std::from_chars(lAt, lEnd, lValue);
        if (lResult.ec == std::errc() && lResult.ptr != lAt)
        {
            lNumbers.push_back(lValue);
        }
        lAt = lResult.ptr == lAt ? lAt + 1 : lResult.ptr;
    }
    return lNumbers;
}

void PrintNumbers(const std::vector<double>& pNumbers)
{
    char lText[400];
    for (const double lNumber : pNumbers)
    {
        const auto lResult = std::to_chars(lText, lText + sizeof lText, lNumber, std::chars_format::fixed, 6);
        benchmark::DoNotOptimize(*lResult.ptr = 0);
    }
}

KQexAsfSceneOwner ReadSkeleton(const KMotion& pMotion, KQexImportAcclaimResult& pResult)
{
    KQexAsfSceneOwner lScene = KQexImporterAcclaim::ReadSkeleton(
        KQexAcclaimSource::Buffer(pMotion.mAsf.data(), pMotion.mAsf.size(), "skeleton"), KQexImportAcclaimOptions(), pResult);
    Require(lScene != nullptr);
    return lScene;
}

void CountRotations(HKQexAsfNode pBone, int& pDofs, int& pBones)
{
    std::vector<HKQexAsfNode> lPending{pBone};
    while (!lPending.empty())
    {
        const HKQexAsfNode lBone = lPending.back();
        lPending.pop_back();
        int lDofs = 0;
        for (int i = 0; i < lBone->mOrderCount; ++i)
        {
            lDofs += lBone->mOrderBuf[i] >= 3 ? 1 : 0;
        }
        pDofs += lDofs;
        pBones += lDofs > 0 ? 1 : 0;
        for (int i = 0; i < lBone->mChildBuf.GetCount(); ++i)
        {
            lPending.push_back(lBone->mChildBuf[i]);
        }
    }
}

double RunTrigonometry(int pFrames, int pDofs, int pBones)
{
    double lSum = 0.0;
    double lAngle = 0.1;
    for (int i = 0; i < pFrames; ++i)
    {
        for (int k = 0; k < pDofs; ++k)
        {
            lAngle += 1e-3;
            lSum += std::sin(lAngle) * std::cos(lAngle);
        }
        for (int k = 0; k < 3 * pBones; ++k)
        {
            lSum += std::atan2(lSum, lAngle);
        }
    }
    return lSum;
}

} // namespace qexbench
