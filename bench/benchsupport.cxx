#include <bench/benchsupport.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <malloc.h>
#include <random>
#include <unistd.h>

namespace qexbench
{

namespace
{

bool HasDofs(int pBone)
{
    return pBone % 3 != 0;
}

void AppendBone(std::string& pText, int pBone, std::mt19937& pRandom)
{
    // Not std::uniform_real_distribution: its results differ between standard libraries.
    const auto lNumber = [&pRandom](double pLow, double pHigh)
    {
        return pLow + (pHigh - pLow) * (static_cast<double>(pRandom()) / 4294967296.0);
    };

    const double lAzimuth = lNumber(0.0, 6.283185307179586);
    char         lBuffer[512];
    std::snprintf(lBuffer, sizeof lBuffer,
                  "  begin\n     id %d\n     name bone%d\n     direction %.6g %.6g %.6g\n     length %.6g\n     axis %.6g %.6g %.6g XYZ\n",
                  pBone, pBone, std::cos(lAzimuth) * 0.8, std::sin(lAzimuth) * 0.8, 0.6, lNumber(0.5, 8.0), lNumber(-90.0, 90.0),
                  lNumber(-60.0, 60.0), lNumber(-90.0, 90.0));
    pText += lBuffer;
    if (HasDofs(pBone))
    {
        pText += "    dof rx ry rz\n    limits (-160.0 20.0)\n           (-70.0 70.0)\n           (-60.0 70.0)\n";
    }
    pText += "  end\n";
}

void AppendFamily(std::string& pText, int pParent, const std::vector<int>& pChildren)
{
    if (pChildren.empty())
    {
        return;
    }
    pText += pParent == 0 ? std::string("    root") : "    bone" + std::to_string(pParent);
    for (const int lChild : pChildren)
    {
        pText += " bone" + std::to_string(lChild);
    }
    pText += '\n';
}

/// Splits a large family over several lines, because readers limit the length of a line.
void AppendFamilies(std::string& pText, int pParent, const std::vector<int>& pChildren)
{
    for (size_t lFirst = 0; lFirst < pChildren.size(); lFirst += 1000)
    {
        const size_t lLast = std::min(lFirst + 1000, pChildren.size());
        AppendFamily(pText, pParent,
                     std::vector<int>(pChildren.begin() + static_cast<std::ptrdiff_t>(lFirst),
                                      pChildren.begin() + static_cast<std::ptrdiff_t>(lLast)));
    }
}

} // namespace

void Require(bool pDone)
{
    if (!pDone)
    {
        std::abort();
    }
}

const char* ShapeName(EShape pShape)
{
    static const char* const kNames[] = {"chain", "fan", "random"};
    return kNames[pShape];
}

std::string SkeletonText(EShape pShape, int pBones)
{
    std::mt19937                  lRandom(20u);
    std::vector<std::vector<int>> lChildren(static_cast<size_t>(pBones) + 1);
    std::string lText = ":version 1.10\n:name bench\n:units\n  mass 1.0\n  length 0.45\n  angle deg\n:documentation\n   generated\n:root\n"
                        "   order TX TY TZ RX RY RZ\n   axis XYZ\n   position 0 0 0\n   orientation 0 0 0\n:bonedata\n";
    for (int lBone = 1; lBone <= pBones; ++lBone)
    {
        AppendBone(lText, lBone, lRandom);
        const int lParent = pShape == eCHAIN ? lBone - 1 : pShape == eFAN ? 0 : static_cast<int>(lRandom() % static_cast<unsigned>(lBone));
        lChildren[static_cast<size_t>(lParent)].push_back(lBone);
    }
    lText += ":hierarchy\n  begin\n";
    for (int lParent = 0; lParent <= pBones; ++lParent)
    {
        AppendFamilies(lText, lParent, lChildren[static_cast<size_t>(lParent)]);
    }
    return lText + "  end\n";
}

std::string MotionText(int pBones, int pFrames)
{
    std::string lText = "#!OML:ASF bench.asf\n:FULLY-SPECIFIED\n:DEGREES\n";
    char        lBuffer[256];
    for (int lFrame = 1; lFrame <= pFrames; ++lFrame)
    {
        const double lPhase = lFrame * 0.05;
        std::snprintf(lBuffer, sizeof lBuffer, "%d\nroot %.6g %.6g %.6g %.6g %.6g %.6g\n", lFrame, 9.3 + lPhase, 16.0 + std::sin(lPhase),
                      -30.0 + lPhase, std::sin(lPhase) * 4.0, std::cos(lPhase) * 3.0, std::sin(lPhase * 2.0));
        lText += lBuffer;
        for (int lBone = 1; lBone <= pBones; ++lBone)
        {
            if (HasDofs(lBone))
            {
                const double lShift = lPhase + lBone;
                std::snprintf(lBuffer, sizeof lBuffer, "bone%d %.6g %.6g %.6g\n", lBone, std::sin(lShift) * 40.0, std::cos(lShift) * 25.0,
                              std::sin(lShift * 1.7) * 12.0);
                lText += lBuffer;
            }
        }
    }
    return lText;
}

double ScanNumbers(const char* pText, size_t pSize)
{
    const char* const lEnd = pText + pSize;
    double            lSum = 0.0;
    unsigned          lOtherBytes = 0;
    bool              lInWord = false;
    while (pText != lEnd)
    {
        const char lByte = *pText;
        const bool lDigit = lByte >= '0' && lByte <= '9';
        if (!lInWord && (lDigit || lByte == '-' || lByte == '.'))
        {
            double lValue = 0.0;
            const auto [lNext, lError] = std::from_chars(pText, lEnd, lValue);
            if (lError != std::errc::invalid_argument)
            {
                lSum += lValue;
                pText = lNext;
                continue;
            }
        }
        lInWord = lByte > ' ' && lByte != '(' && lByte != ')' && lByte != ',';
        lOtherBytes += static_cast<unsigned char>(lByte);
        ++pText;
    }
    return lSum + lOtherBytes;
}

void ScanFile(const std::string& pPath)
{
    static std::vector<char> sBuffer(1 << 16);
    std::FILE*               lFile = std::fopen(pPath.c_str(), "rb");
    if (lFile == nullptr)
    {
        std::fprintf(stderr, "%s: cannot be read\n", pPath.c_str());
        std::exit(3);
    }
    std::setvbuf(lFile, nullptr, _IONBF, 0);
    for (size_t lRead = std::fread(sBuffer.data(), 1, sBuffer.size(), lFile); lRead > 0;
         lRead = std::fread(sBuffer.data(), 1, sBuffer.size(), lFile))
    {
        benchmark::DoNotOptimize(ScanNumbers(sBuffer.data(), lRead));
    }
    std::fclose(lFile);
}

std::string ScratchPath(const std::string& pExtension)
{
    static int        sCount = 0;
    const std::string lName = "qexbench-" + std::to_string(::getpid()) + "-" + std::to_string(++sCount) + pExtension;
    return (std::filesystem::temp_directory_path() / lName).string();
}

KTextFile::KTextFile(const std::string& pText) : mPath(ScratchPath(""))
{
    if (!(std::ofstream(mPath, std::ios::binary) << pText).flush())
    {
        std::fprintf(stderr, "%s: cannot be written\n", mPath.c_str());
        std::exit(3);
    }
}

KTextFile::~KTextFile()
{
    std::error_code lError;
    std::filesystem::remove(mPath, lError);
}

std::string ReadWholeFile(const std::string& pPath)
{
    std::ifstream lIn(pPath, std::ios::binary);
    if (!lIn)
    {
        std::fprintf(stderr, "%s: cannot be read\n", pPath.c_str());
        std::exit(3);
    }
    return std::string(std::istreambuf_iterator<char>(lIn), std::istreambuf_iterator<char>());
}

std::vector<std::string> CorpusFiles(const std::string& pExtension)
{
    std::vector<std::string> lResult;
    const char*              lFolder = std::getenv("ASF_CORPUS_DIR");
    std::error_code          lError;
    if (lFolder != nullptr && std::filesystem::is_directory(lFolder, lError))
    {
        for (const auto& lEntry : std::filesystem::recursive_directory_iterator(lFolder))
        {
            if (lEntry.path().extension() == pExtension)
            {
                lResult.push_back(lEntry.path().string());
            }
        }
    }
    std::sort(lResult.begin(), lResult.end());
    return lResult;
}

void KeepFreedMemory()
{
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_MAX, 0);
}

void TrimHeap()
{
    malloc_trim(0);
}

void ConsolidateHeap()
{
    // Requesting a large block makes the allocator merge its small free blocks.
    void* lBlock = std::malloc(1 << 20);
    benchmark::DoNotOptimize(lBlock);
    std::free(lBlock);
}

size_t HeapInUse()
{
    const struct mallinfo2 lInfo = mallinfo2();
    return lInfo.uordblks + lInfo.hblkhd;
}

size_t PeakMemory()
{
    std::ifstream lStatus("/proc/self/status");
    std::string   lWord;
    size_t        lKilobytes = 0;
    while (lStatus >> lWord)
    {
        if (lWord == "VmHWM:")
        {
            lStatus >> lKilobytes;
            break;
        }
    }
    return lKilobytes * 1024;
}

void ResetPeakMemory()
{
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
}

void KComparison::ReportBytes(benchmark::State& pState, size_t pBytes) const
{
    pState.counters["MB/s"] = static_cast<double>(pBytes) / mWork / 1e6;
    if (mBoundCount > 0)
    {
        pState.counters[mBoundName + "_MB/s"] = static_cast<double>(pBytes) / mBound / 1e6;
        pState.counters["of_" + mBoundName] = mBound / mWork;
    }
}

void KComparison::ReportItems(benchmark::State& pState, const char* pItem, double pItems) const
{
    pState.counters[std::string("ns/") + pItem] = mWork / pItems * 1e9;
    if (mBoundCount > 0)
    {
        pState.counters[mBoundName + "_ns/" + pItem] = mBound / pItems * 1e9;
        pState.counters["of_" + mBoundName] = mBound / mWork;
    }
}

} // namespace qexbench
