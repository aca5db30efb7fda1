#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/exchange/kqexexportrun.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <exception>
#include <new>

namespace qexsdk
{

namespace
{

/// Runs a step of an export and turns exceptions into an error. A null \p pPath counts as empty.
template <typename TStep>
bool Guarded(KQexExportAcclaimResult& pResult, const char* pPath, const TStep& pStep) noexcept
{
    try
    {
        return pStep();
    }
    catch (const std::bad_alloc&)
    {
        return FailExport(pResult, pPath, "Out of memory");
    }
    catch (const std::exception& lError)
    {
        return FailExport(pResult, pPath, lError.what());
    }
}

/// Checks the arguments common to all exports.
bool CheckArguments(const KQexNode* pRoot, const char* pPath, const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    if (pRoot != nullptr && pOptions.mLengthUnit > 0.0)
    {
        return true;
    }
    return FailExport(pResult, pPath, pRoot == nullptr ? "Nothing to export" : "The length unit must be above zero");
}

/// A whole export: \p pSteps, called with its KQexExportRun.
template <typename TSteps>
bool RunExport(KQexNode* pRoot, const char* pPath, const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult,
               const TSteps& pSteps) noexcept
{
    pResult.mOk = Guarded(pResult, pPath,
                          [&]
                          {
                              pResult = KQexExportAcclaimResult();
                              if (!CheckArguments(pRoot, pPath, pOptions, pResult))
                              {
                                  return false;
                              }
                              KQexExportRun lRun(pRoot, pOptions, pResult);
                              return pSteps(lRun);
                          });
    return pResult.mOk;
}

/// Null without a skeleton.
KQexNode* RootFor(const KQexAsfScene* pSkeleton, KQexNode* pRoot)
{
    return pSkeleton != nullptr && pSkeleton->mRoot != nullptr ? pRoot : nullptr;
}

/// Appends the DOFs of \p pBone, lengths times \p pToCentimetres.
void AddDofs(const KQexAsfNode& pBone, double pToCentimetres, std::vector<KQexBoneDof>& pDofs)
{
    for (int i = 0; i < pBone.mOrderCount; ++i)
    {
        const int    lCode = pBone.mOrderBuf[i];
        const double lFactor = KIsTranslationDof(lCode) ? pToCentimetres : 1.0;
        KQexBoneDof  lDof;
        lDof.mWord = kDofWords[lCode];
        lDof.mHasMin = pBone.mLimitsActive[lCode][0];
        lDof.mHasMax = pBone.mLimitsActive[lCode][1];
        lDof.mMin = lDof.mHasMin ? pBone.mLimitsBuf[lCode][0] * lFactor : 0.0;
        lDof.mMax = lDof.mHasMax ? pBone.mLimitsBuf[lCode][1] * lFactor : 0.0;
        pDofs.push_back(lDof);
    }
}

/// The take of the options, to \p pPath (null or empty: not written).
std::vector<KQexExportMotion> OptionsMotion(const char* pPath, const KQexExportAcclaimOptions& pOptions)
{
    return {KQexExportMotion{pPath != nullptr ? pPath : "", pOptions.mStack, pOptions.mSampling}};
}

/// Exports to files. \p pGetMotions returns the motions; it may throw.
template <typename TGetMotions>
bool WriteFiles(KQexNode* pRoot, const char* pAsfPath, const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult,
                const TGetMotions& pGetMotions) noexcept
{
    return RunExport(pRoot, pAsfPath, pOptions, pResult,
                     [&](KQexExportRun& pRun) {
                         return pRun.MakeSkeleton(pAsfPath, pGetMotions()) && pRun.WriteSkeleton() && pRun.WriteMotions() && pRun.Commit();
                     });
}

} // namespace

bool KQexExporterAcclaim::Export(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                                 KQexExportAcclaimResult& pResult)
{
    return WriteFiles(pRoot, pAsfPath, pOptions, pResult, [&] { return OptionsMotion(pAmcPath, pOptions); });
}

bool KQexExporterAcclaim::Export(KQexNode* pRoot, const char* pAsfPath, const std::vector<KQexExportMotion>& pMotions,
                                 const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    return WriteFiles(pRoot, pAsfPath, pOptions, pResult, [&] { return pMotions; });
}

bool KQexExporterAcclaim::ExportBuffers(KQexNode* pRoot, std::string& pAsf, std::string& pAmc, const KQexExportAcclaimOptions& pOptions,
                                        KQexExportAcclaimResult& pResult)
{
    return RunExport(pRoot, "", pOptions, pResult,
                     [&](KQexExportRun& pRun)
                     {
                         const bool lOk = pRun.MakeSkeleton("", OptionsMotion("", pOptions)) && pRun.WriteMotion(0, &pAmc);
                         pAsf.swap(pRun.GetSkeletonText());
                         return lOk;
                     });
}

bool KQexExporterAcclaim::ExportSkeleton(KQexNode* pRoot, std::string& pAsf, const KQexExportAcclaimOptions& pOptions,
                                         KQexExportAcclaimResult& pResult)
{
    return RunExport(pRoot, "", pOptions, pResult,
                     [&](KQexExportRun& pRun)
                     {
                         const bool lOk = pRun.MakeSkeleton("", OptionsMotion("", pOptions));
                         pAsf.swap(pRun.GetSkeletonText());
                         return lOk;
                     });
}

bool KQexExporterAcclaim::ExportMotion(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath,
                                       const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    return RunExport(RootFor(pSkeleton, pRoot), pAmcPath, pOptions, pResult,
                     [&](KQexExportRun& pRun)
                     { return pRun.UseSkeleton(pSkeleton, pAmcPath) && pRun.WriteMotion(0, nullptr) && pRun.Commit(); });
}

KQexAcclaimExport::KQexAcclaimExport() noexcept = default;

KQexAcclaimExport::~KQexAcclaimExport() = default;

template <typename TStep>
bool KQexAcclaimExport::Begin(KQexNode* pRoot, const char* pPath, const KQexExportAcclaimOptions& pOptions, const TStep& pStep) noexcept
{
    return Guarded(mResult, pPath,
                   [&]
                   {
                       mRun.reset();
                       mOptions = pOptions;
                       mResult = KQexExportAcclaimResult();
                       if (!CheckArguments(pRoot, pPath, mOptions, mResult))
                       {
                           return false;
                       }
                       mRun = std::make_unique<KQexExportRun>(pRoot, mOptions, mResult);
                       return pStep();
                   });
}

bool KQexAcclaimExport::BeginSkeleton(KQexNode* pRoot, const char* pAsfPath, const std::vector<KQexExportMotion>& pMotions,
                                      const KQexExportAcclaimOptions& pOptions) noexcept
{
    return Begin(pRoot, pAsfPath, pOptions, [&] { return mRun->MakeSkeleton(pAsfPath, pMotions) && mRun->WriteSkeleton(); });
}

bool KQexAcclaimExport::BeginForSkeleton(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath,
                                         const KQexExportAcclaimOptions& pOptions) noexcept
{
    return Begin(RootFor(pSkeleton, pRoot), pAmcPath, pOptions, [&] { return mRun->UseSkeleton(pSkeleton, pAmcPath); });
}

KQexFrameSink* KQexAcclaimExport::BeginMotion(size_t pMotion) noexcept
{
    KQexFrameSink* lSink = nullptr;
    Guarded(mResult, "", [&] { return (lSink = mRun->BeginMotion(pMotion, nullptr)) != nullptr; });
    return lSink;
}

bool KQexAcclaimExport::EndMotion(KQexRunResult pResult) noexcept
{
    return Guarded(mResult, "", [&] { return mRun->EndMotion(pResult); });
}

bool KQexAcclaimExport::End() noexcept
{
    mResult.mOk = Guarded(mResult, "", [&] { return mRun->Commit(); });
    return mResult.mOk;
}

KQexBoneDofs KQexExporterAcclaim::GetBoneDofs(const KQexAsfScene* pSkeleton) noexcept
{
    try
    {
        KQexBoneDofs lAll;
        const double lToCentimetres = pSkeleton->mLengthUnit > 0.0 ? kCentimetresPerInch / pSkeleton->mLengthUnit : 1.0;
        KQexAsfWalk  lWalk(pSkeleton->mRoot);
        while (const HKQexAsfNode lBone = lWalk.Next())
        {
            if (lWalk.IsEntering())
            {
                AddDofs(*lBone, lToCentimetres, lAll[lBone->mName]);
            }
        }
        return lAll;
    }
    catch (const std::exception&)
    {
        return KQexBoneDofs();
    }
}

} // namespace qexsdk
