#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/exchange/kqexexportmotion.h>
#include <qexioplugins/acclaim/exchange/kqexexportrun.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <new>

namespace qexsdk
{

namespace
{

/// Checks the arguments common to all exports, runs one and turns std::bad_alloc into an error.
template <typename TRun>
bool Guarded(KQexNode* pRoot, const char* pPath, const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult,
             const TRun& pRun) noexcept
{
    std::string lPath;
    try
    {
        pResult = KQexExportAcclaimResult();
        lPath = pPath;
        if (pRoot == nullptr || !(pOptions.mLengthUnit > 0.0))
        {
            return FailExport(pResult, lPath, pRoot == nullptr ? "Nothing to export" : "The length unit must be above zero");
        }
        pResult.mOk = pRun();
    }
    catch (const std::bad_alloc&)
    {
        pResult.mOk = FailExport(pResult, lPath, "Out of memory");
    }
    return pResult.mOk;
}

} // namespace

bool KQexExporterAcclaim::Export(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                                 KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, pAsfPath, pOptions, pResult, [&] { return KQexExportRun(pRoot, pAsfPath, pAmcPath, pOptions, pResult).Run(); });
}

bool KQexExporterAcclaim::ExportBuffers(KQexNode* pRoot, std::string& pAsf, std::string& pAmc, const KQexExportAcclaimOptions& pOptions,
                                        KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, "", pOptions, pResult, [&] { return KQexExportRun(pRoot, "", nullptr, pOptions, pResult).Run(pAsf, &pAmc); });
}

bool KQexExporterAcclaim::ExportSkeleton(KQexNode* pRoot, std::string& pAsf, const KQexExportAcclaimOptions& pOptions,
                                         KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, "", pOptions, pResult, [&] { return KQexExportRun(pRoot, "", nullptr, pOptions, pResult).Run(pAsf, nullptr); });
}

bool KQexExporterAcclaim::ExportMotion(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath,
                                       const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    KQexNode* lRoot = pSkeleton != nullptr && pSkeleton->mRoot != nullptr ? pRoot : nullptr;
    return Guarded(lRoot, pAmcPath, pOptions, pResult, [&] { return RunMotionExport(lRoot, pSkeleton, pAmcPath, pOptions, pResult); });
}

KQexBoneDofs KQexExporterAcclaim::GetBoneDofs(const KQexAsfScene* pSkeleton)
{
    KQexBoneDofs lAll;
    const double lToCentimetres = pSkeleton->mLengthUnit > 0.0 ? kCentimetresPerInch / pSkeleton->mLengthUnit : 1.0;
    KQexAsfWalk  lWalk(pSkeleton->mRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            continue;
        }
        std::vector<KQexBoneDof>& lDofs = lAll[lBone->mName];
        for (int i = 0; i < lBone->mOrderCount; ++i)
        {
            const int    lCode = lBone->mOrderBuf[i];
            const double lFactor = KIsTranslationDof(lCode) ? lToCentimetres : 1.0;
            KQexBoneDof  lDof;
            lDof.mWord = kDofWords[lCode];
            lDof.mHasMin = lBone->mLimitsActive[lCode][0];
            lDof.mHasMax = lBone->mLimitsActive[lCode][1];
            lDof.mMin = lDof.mHasMin ? lBone->mLimitsBuf[lCode][0] * lFactor : 0.0;
            lDof.mMax = lDof.mHasMax ? lBone->mLimitsBuf[lCode][1] * lFactor : 0.0;
            lDofs.push_back(lDof);
        }
    }
    return lAll;
}

} // namespace qexsdk
