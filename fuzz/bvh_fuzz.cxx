/// Fuzzes the BVH reader, and the writer with its result.

#include <fuzz/fuzzsupport.h>

using namespace qexsdk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize)
{
    const qexfuzz::KScenePtr lScene = qexfuzz::MakeScene();
    const int                lObjects = lScene->GetObjectCount();
    KQexFileBvh              lFile;
    KQexBvhReadResult        lResult;
    const bool               lOk =
        lFile.OpenReadBuffer(reinterpret_cast<const char*>(pData), pSize) && lFile.Read(lScene.get(), KQexBvhReadOptions(), lResult);
    qexfuzz::Require(lOk != lResult.mRoots.empty());
    qexfuzz::Require(lOk || (lScene->GetObjectCount() == lObjects && lFile.GetErrorCount() > 0));
    KQexBvhWriteOptions lOptions;
    lOptions.mThreads = 1;
    lOptions.mStack = lScene->GetAnimStack(0);
    if (lOk && MakeSampling(lResult.mRoots, lOptions.mStack, qexfuzz::FewFrames(), lOptions.mSampling))
    {
        std::string lText;
        KQexFileBvh lOut;
        qexfuzz::Require(lOut.OpenWriteBuffer(&lText) && lOut.Write(lResult.mRoots, lOptions) && lOut.Close());
    }
    return 0;
}
