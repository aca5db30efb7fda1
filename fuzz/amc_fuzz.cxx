/// Fuzzes the motion reader and the importer. Input: a skeleton, a NUL, a motion.

#include <fuzz/fuzzsupport.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

using namespace qexsdk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize)
{
    const qexfuzz::KTwoFiles lFiles(pData, pSize);
    const qexfuzz::KScenePtr lScene = qexfuzz::MakeScene();
    const int                lObjects = lScene->GetObjectCount();
    for (const bool lKeepFrames : {false, true})
    {
        KQexImportAcclaimOptions lOptions;
        KQexImportAcclaimResult  lResult;
        lOptions.mKeepGoodFrames = lKeepFrames;
        lOptions.mSetPreRotation = lKeepFrames;
        const bool lOk = KQexImporterAcclaim::Import(
            lScene.get(), KQexAcclaimSource::Buffer(lFiles.mFirst.data(), lFiles.mFirst.size(), "a.asf"),
            {KQexAcclaimSource::Buffer(lFiles.mSecond.data(), lFiles.mSecond.size(), "a.amc")}, lOptions, lResult);
        qexfuzz::Require(lOk == (lResult.mRootNode != nullptr));
        qexfuzz::Require(lOk || lKeepFrames || lScene->GetObjectCount() == lObjects);
        qexfuzz::Require(lOk || lResult.CountMessages(true) > 0);
    }
    return 0;
}
