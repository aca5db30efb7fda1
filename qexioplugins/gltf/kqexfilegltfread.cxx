#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfreader.h>
#include <qexscene/kqexsceneundo.h>

#include <exception>
#include <string_view>

namespace qexsdk
{

namespace
{

/// Opens a file with \p pOpen and reads it. Reports exceptions as messages and undoes all changes of the scene on failure.
template <typename TOpen>
bool OpenAndRead(KQexFileGltf& pFile, KQexScene* pScene, const KQexGltfReadOptions& pOptions, KQexGltfReadResult& pResult,
                 const TOpen& pOpen)
{
    pResult = KQexGltfReadResult();
    pFile.ClearMessages();
    KQexSceneUndo lUndo(pScene);
    try
    {
        KQexGltfSource lSource;
        pOpen(lSource);
        KQexGltfReader lReader(pFile, lSource, pScene, pOptions);
        lReader.ReadNodes();
        pResult.mCancelled = !lReader.ReadTakes();
        if (!pResult.mCancelled)
        {
            lReader.Finish(pResult);
            lUndo.Keep();
            return true;
        }
        pFile.Report(KQexTextMessage::eERROR, "Cancelled");
    }
    catch (const std::exception&)
    {
        pFile.ReportException();
    }
    return false;
}

} // namespace

bool KQexFileGltf::Read(std::string_view pPath, KQexScene* pScene, const KQexGltfReadOptions& pOptions, KQexGltfReadResult& pResult)
{
    return OpenAndRead(*this, pScene, pOptions, pResult, [pPath](KQexGltfSource& pSource) { pSource.OpenPath(std::string(pPath)); });
}

bool KQexFileGltf::ReadBuffer(const char* pData, size_t pSize, KQexScene* pScene, const KQexGltfReadOptions& pOptions,
                              KQexGltfReadResult& pResult)
{
    return OpenAndRead(*this, pScene, pOptions, pResult,
                       [&](KQexGltfSource& pSource)
                       { pSource.OpenBytes(std::string_view(pSize > 0 ? pData : "", pSize), pOptions.mBytesPath); });
}

} // namespace qexsdk
