#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <qexioplugins/acclaim/exchange/kqeximportrun.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace qexsdk
{

namespace
{

/// Adds an error without a path, unless memory runs out for it: mOk is false in any case.
void AddError(KQexImportAcclaimResult& pResult, const char* pText) noexcept
{
    try
    {
        pResult.mMessages.push_back({"", {KQexTextMessage::eERROR, 0, pText}});
    }
    catch (const std::exception&)
    {
        return;
    }
}

/// Runs an import and turns exceptions into errors; the scene is then unchanged.
template <typename TWork>
bool RunGuardedImport(KQexImportAcclaimResult& pResult, TWork pWork) noexcept
{
    pResult = KQexImportAcclaimResult();
    try
    {
        pResult.mOk = pWork();
    }
    catch (const std::bad_alloc&)
    {
        AddError(pResult, "Out of memory");
    }
    catch (const std::exception& lError)
    {
        AddError(pResult, lError.what());
    }
    if (!pResult.mOk)
    {
        pResult.mRootNode = nullptr;
        pResult.mTakes.clear();
        pResult.mAsfScene.reset();
    }
    return pResult.mOk;
}

/// Reads the skeleton and its motions into \p pScene.
bool RunImport(KQexScene* pScene, const KQexAcclaimSource& pSkeleton, const std::vector<KQexAcclaimSource>& pMotions,
               const KQexImportAcclaimOptions& pOptions, KQexImportAcclaimResult& pResult)
{
    KQexImportRun     lImport(pScene, pOptions, pResult);
    KQexAsfSceneOwner lAsfScene = lImport.ReadSkeleton(pSkeleton);
    if (lAsfScene == nullptr || !lImport.ReadMotions(*lAsfScene, pMotions) || !lImport.Attach(*lAsfScene))
    {
        return false;
    }
    if (pOptions.mKeepAsfScene)
    {
        pResult.mAsfScene = std::move(lAsfScene);
    }
    return true;
}

} // namespace

KQexAcclaimSource KQexAcclaimSource::File(std::string_view pPath) noexcept
{
    KQexAcclaimSource lSource;
    try
    {
        lSource.mPath = pPath;
    }
    catch (const std::exception&)
    {
        // Without a path the source cannot be opened, which the import reports.
    }
    return lSource;
}

KQexAcclaimSource KQexAcclaimSource::Buffer(const char* pData, size_t pSize, std::string_view pName) noexcept
{
    KQexAcclaimSource lSource = File(pName);
    lSource.mData = pData == nullptr ? "" : pData;
    lSource.mSize = pSize;
    return lSource;
}

size_t KQexImportAcclaimResult::CountMessages(bool pErrors) const
{
    const KQexTextMessage::ESeverity lWanted = pErrors ? KQexTextMessage::eERROR : KQexTextMessage::eWARNING;
    return static_cast<size_t>(std::count_if(mMessages.begin(), mMessages.end(),
                                             [=](const KQexImportMessage& pMessage) { return pMessage.mMessage.mSeverity == lWanted; }));
}

bool KQexImporterAcclaim::Import(KQexScene* pScene, const KQexAcclaimSource& pSkeleton, const std::vector<KQexAcclaimSource>& pMotions,
                                 const KQexImportAcclaimOptions& pOptions, KQexImportAcclaimResult& pResult)
{
    return RunGuardedImport(pResult, [&] { return RunImport(pScene, pSkeleton, pMotions, pOptions, pResult); });
}

bool KQexImporterAcclaim::Import(KQexScene* pScene, const char* pAsfPath, const char* pAmcPath, const KQexImportAcclaimOptions& pOptions,
                                 KQexImportAcclaimResult& pResult)
{
    return RunGuardedImport(pResult,
                            [&]
                            {
                                std::vector<KQexAcclaimSource> lMotions;
                                if (pAmcPath != nullptr && *pAmcPath != '\0')
                                {
                                    lMotions.emplace_back().mPath = pAmcPath;
                                }
                                KQexAcclaimSource lSkeleton;
                                lSkeleton.mPath = pAsfPath != nullptr ? pAsfPath : "";
                                return RunImport(pScene, lSkeleton, lMotions, pOptions, pResult);
                            });
}

bool KQexImporterAcclaim::ImportMotion(KQexScene* pScene, KQexAsfScene* pAsfScene, const KQexAmcSkeletonNotes& pNotes,
                                       const std::vector<KQexAcclaimSource>& pMotions, const KQexImportAcclaimOptions& pOptions,
                                       KQexImportAcclaimResult& pResult)
{
    // The notes may be those of pResult, which RunGuardedImport() clears.
    const bool           lIsOwn = &pNotes == &pResult.mSkeletonNotes;
    KQexAmcSkeletonNotes lOwn;
    if (lIsOwn)
    {
        std::swap(lOwn, pResult.mSkeletonNotes);
    }
    return RunGuardedImport(pResult,
                            [&]
                            {
                                if (lIsOwn)
                                {
                                    std::swap(lOwn, pResult.mSkeletonNotes);
                                }
                                else
                                {
                                    pResult.mSkeletonNotes = pNotes;
                                }
                                KQexImportRun lImport(pScene, pOptions, pResult);
                                if (pAsfScene == nullptr || pAsfScene->mRoot == nullptr)
                                {
                                    return lImport.Fail("The motion has no skeleton");
                                }
                                return lImport.ReadMotions(*pAsfScene, pMotions) && lImport.AttachToExisting(*pAsfScene);
                            });
}

KQexAsfSceneOwner KQexImporterAcclaim::ReadSkeleton(const KQexAcclaimSource& pSkeleton, const KQexImportAcclaimOptions& pOptions,
                                                    KQexImportAcclaimResult& pResult)
{
    KQexAsfSceneOwner lAsfScene;
    RunGuardedImport(pResult,
                     [&]
                     {
                         lAsfScene = KQexImportRun(nullptr, pOptions, pResult).ReadSkeleton(pSkeleton);
                         return lAsfScene != nullptr;
                     });
    return lAsfScene;
}

} // namespace qexsdk
