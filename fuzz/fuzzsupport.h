#ifndef FUZZ_FUZZSUPPORT_H
#define FUZZ_FUZZSUPPORT_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

/// Shared by all fuzz targets.
namespace qexfuzz
{

struct KSceneDeleter
{
    void operator()(qexsdk::KQexScene* pScene) const { pScene->Destroy(); }
};
using KScenePtr = std::unique_ptr<qexsdk::KQexScene, KSceneDeleter>;

inline KScenePtr MakeScene()
{
    return KScenePtr(qexsdk::KQexScene::Create("fuzz"));
}

/// Aborts unless \p pHolds, so that the fuzzer saves the input.
inline void Require(bool pHolds)
{
    if (!pHolds)
    {
        std::abort();
    }
}

/// Splits an input into two files at its first NUL.
struct KTwoFiles
{
    KTwoFiles(const std::uint8_t* pData, std::size_t pSize)
    {
        const std::string lAll(reinterpret_cast<const char*>(pData), pSize);
        const size_t      lMiddle = lAll.find('\0');
        mFirst = lAll.substr(0, lMiddle);
        mSecond = lMiddle == std::string::npos ? "" : lAll.substr(lMiddle + 1);
    }
    std::string mFirst;
    std::string mSecond;
};

/// Samples the first second at 8 fps: fast to write, however far apart the keys are.
inline qexsdk::KQexSamplingRequest FewFrames()
{
    qexsdk::KQexSamplingRequest lRequest;
    lRequest.mHasStart = true;
    lRequest.mHasEnd = true;
    lRequest.mEnd = qexsdk::KTime(705600000);
    lRequest.mFramesPerSecond = 8.0;
    return lRequest;
}

} // namespace qexfuzz

#endif
