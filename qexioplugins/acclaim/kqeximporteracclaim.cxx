#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <qexioplugins/acclaim/exchange/kqeximportrun.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

namespace qexsdk
{

namespace
{

/// The skeleton reader's keyword tables and the filter settings are shared by the process: one import at a time.
std::mutex sMutex;

/// Runs one import under the lock. Catches std::bad_alloc; the scene is then unchanged.
template <typename TWork>
bool RunLocked(KQexImportAcclaimResult& pResult, TWork pWork)
{
    pResult = KQexImportAcclaimResult();
    try
    {
        const std::lock_guard<std::mutex> lLock(sMutex);
        pResult.mOk = pWork();
    }
    catch (const std::bad_alloc&)
    {
        try
        {
            pResult.mMessages.push_back({"", {KQexTextMessage::eERROR, 0, "Out of memory"}});
        }
        catch (const std::bad_alloc&)
        {
            // No memory for a message either: mOk stays false.
        }
    }
    if (!pResult.mOk)
    {
        pResult.mRootNode = nullptr;
        pResult.mTakes.clear();
        pResult.mAsfScene.reset();
    }
    return pResult.mOk;
}

} // namespace

KQexAcclaimSource KQexAcclaimSource::File(const std::string& pPath)
{
    KQexAcclaimSource lSource;
    lSource.mPath = pPath;
    return lSource;
}

KQexAcclaimSource KQexAcclaimSource::Buffer(const char* pData, size_t pSize, const std::string& pName)
{
    KQexAcclaimSource lSource;
    lSource.mPath = pName;
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
    return RunLocked(pResult,
                     [&]
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
                     });
}

bool KQexImporterAcclaim::Import(KQexScene* pScene, const char* pAsfPath, const char* pAmcPath, const KQexImportAcclaimOptions& pOptions,
                                 KQexImportAcclaimResult& pResult)
{
    std::vector<KQexAcclaimSource> lMotions;
    if (pAmcPath != nullptr && *pAmcPath != '\0')
    {
        lMotions.push_back(KQexAcclaimSource::File(pAmcPath));
    }
    return Import(pScene, KQexAcclaimSource::File(pAsfPath), lMotions, pOptions, pResult);
}

bool KQexImporterAcclaim::ImportMotion(KQexScene* pScene, KQexAsfScene* pAsfScene, const KQexAmcSkeletonNotes& pNotes,
                                       const std::vector<KQexAcclaimSource>& pMotions, const KQexImportAcclaimOptions& pOptions,
                                       KQexImportAcclaimResult& pResult)
{
    // The notes may be those of pResult, which RunLocked() clears.
    const bool           lIsOwn = &pNotes == &pResult.mSkeletonNotes;
    KQexAmcSkeletonNotes lOwn;
    if (lIsOwn)
    {
        std::swap(lOwn, pResult.mSkeletonNotes);
    }
    return RunLocked(pResult,
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
    RunLocked(pResult,
              [&]
              {
                  lAsfScene = KQexImportRun(nullptr, pOptions, pResult).ReadSkeleton(pSkeleton);
                  return lAsfScene != nullptr;
              });
    return lAsfScene;
}

} // namespace qexsdk
