#ifndef FUZZ_FUZZSUPPORT_H
#define FUZZ_FUZZSUPPORT_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

/// What every fuzz target needs.
namespace qexfuzz
{

struct KSceneDestroyer
{
    void operator()(qexsdk::KQexScene* pScene) const { pScene->Destroy(); }
};
using KScenePtr = std::unique_ptr<qexsdk::KQexScene, KSceneDestroyer>;

inline KScenePtr MakeScene()
{
    return KScenePtr(qexsdk::KQexScene::Create("fuzz"));
}

/// Ends the program when something that must hold does not, so that the fuzzer keeps the input.
inline void Require(bool pHolds)
{
    if (!pHolds)
    {
        std::abort();
    }
}

/// The two parts of an input that holds two files, divided by its first NUL.
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

/// Frames of a take, few enough to write them again and again: a long gap between two keys is no reason to fill it.
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
