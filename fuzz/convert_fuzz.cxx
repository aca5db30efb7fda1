/// Fuzzes whole conversions to BVH and to Acclaim files. Input: a byte for the format, then a BVH file, or a skeleton, a NUL and a
/// motion.

#include <fuzz/fuzzsupport.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

using namespace qexsdk;

namespace
{

std::vector<KQexNode*> ReadInput(KQexScene* pScene, const std::uint8_t* pData, std::size_t pSize)
{
    if (pData[0] == 'b')
    {
        KQexFileBvh        lFile;
        KQexBvhReadResult  lResult;
        KQexBvhReadOptions lOptions;
        lOptions.mKeepGoodFrames = true;
        if (lFile.OpenReadBuffer(reinterpret_cast<const char*>(pData) + 1, pSize - 1))
        {
            lFile.Read(pScene, lOptions, lResult);
        }
        return lResult.mRoots;
    }
    const qexfuzz::KTwoFiles lFiles(pData + 1, pSize - 1);
    KQexImportAcclaimOptions lOptions;
    KQexImportAcclaimResult  lResult;
    lOptions.mKeepGoodFrames = true;
    lOptions.mRemoveDummies = pData[0] == 'd';
    KQexImporterAcclaim::Import(pScene, KQexAcclaimSource::Buffer(lFiles.mFirst.data(), lFiles.mFirst.size(), "a.asf"),
                                {KQexAcclaimSource::Buffer(lFiles.mSecond.data(), lFiles.mSecond.size(), "a.amc")}, lOptions, lResult);
    return lResult.mRootNode != nullptr ? std::vector<KQexNode*>{lResult.mRootNode} : std::vector<KQexNode*>();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize)
{
    if (pSize == 0)
    {
        return 0;
    }
    const qexfuzz::KScenePtr     lScene = qexfuzz::MakeScene();
    const std::vector<KQexNode*> lRoots = ReadInput(lScene.get(), pData, pSize);
    if (lRoots.empty())
    {
        return 0;
    }
    KQexBvhWriteOptions lOptions;
    lOptions.mThreads = 1;
    lOptions.mStack = lScene->GetAnimStack(0);
    if (MakeSampling(lRoots, lOptions.mStack, qexfuzz::FewFrames(), lOptions.mSampling))
    {
        std::string lText;
        KQexFileBvh lOut;
        qexfuzz::Require(lOut.OpenWriteBuffer(&lText) && lOut.Write(lRoots, lOptions) && lOut.Close());
    }
    KQexExportAcclaimOptions lExport;
    KQexExportAcclaimResult  lExported;
    std::string              lSkeleton;
    std::string              lMotion;
    lExport.mThreads = 1;
    lExport.mSampling = qexfuzz::FewFrames();
    KQexExporterAcclaim::ExportBuffers(lRoots.front(), lSkeleton, lMotion, lExport, lExported);
    return 0;
}
