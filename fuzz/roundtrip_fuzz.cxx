/// Round trip of a skeleton through a scene: what the exporter writes must be readable.

#include <fuzz/fuzzsupport.h>
#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

using namespace qexsdk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize)
{
    const qexfuzz::KScenePtr lScene = qexfuzz::MakeScene();
    KQexImportAcclaimOptions lOptions;
    KQexImportAcclaimResult  lResult;
    lOptions.mKeepAsfScene = true;
    if (!KQexImporterAcclaim::Import(lScene.get(), KQexAcclaimSource::Buffer(reinterpret_cast<const char*>(pData), pSize, "a.asf"), {},
                                     lOptions, lResult))
    {
        return 0;
    }
    const KQexBoneDofs lDofs = KQexExporterAcclaim::GetBoneDofs(lResult.mAsfScene.get());
    std::string        lText;
    for (const KQexBoneDofs* lKnown : {static_cast<const KQexBoneDofs*>(nullptr), &lDofs})
    {
        KQexExportAcclaimOptions lExport;
        KQexExportAcclaimResult  lExported;
        lExport.mBoneDofs = lKnown;
        qexfuzz::Require(KQexExporterAcclaim::ExportSkeleton(lResult.mRootNode, lText, lExport, lExported));
        const KQexAsfSceneOwner lBack(QexSdkNew<KQexAsfScene>());
        KQexFileAcclaimAsf      lFile(false);
        qexfuzz::Require(lFile.OpenReadBuffer(lText.data(), lText.size()));
        const bool lOk = lFile.Read(lBack.get(), false, false, false);
        // Only a value that became infinite or NaN may fail.
        qexfuzz::Require(lOk || lText.find("inf") != std::string::npos || lText.find("nan") != std::string::npos);
    }
    return 0;
}
