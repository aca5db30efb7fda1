/// Fuzzes the glTF reader, and the writer with its result.

#include <fuzz/fuzzsupport.h>
#include <qexioplugins/gltf/kqexfilegltf.h>

using namespace qexsdk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize)
{
    const qexfuzz::KScenePtr lScene = qexfuzz::MakeScene();
    const int                lObjects = lScene->GetObjectCount();
    KQexFileGltf             lFile;
    KQexGltfReadResult       lResult;
    const bool lOk = lFile.ReadBuffer(reinterpret_cast<const char*>(pData), pSize, lScene.get(), KQexGltfReadOptions(), lResult);
    qexfuzz::Require(lOk != lResult.mRoots.empty());
    qexfuzz::Require(lOk || (lScene->GetObjectCount() == lObjects && lScene->GetAnimStackCount() == 0 && !lFile.GetMessages().empty()));
    KQexGltfWriteOptions lOptions;
    lOptions.mThreads = 1;
    lOptions.mBoneDofs = &lResult.mBoneDofs;
    for (KQexGltfTake lTake : lResult.mTakes)
    {
        if (MakeSampling(lResult.mRoots, lTake.mStack, qexfuzz::FewFrames(), lTake.mSampling))
        {
            lOptions.mTakes.push_back(lTake);
        }
    }
    std::string lBytes;
    if (lOk)
    {
        KQexFileGltf().WriteBuffer(lBytes, lResult.mRoots, lOptions);
    }
    return 0;
}
