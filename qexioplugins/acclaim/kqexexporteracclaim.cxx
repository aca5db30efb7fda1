#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/exchange/kqexexportmotion.h>
#include <qexioplugins/acclaim/exchange/kqexexportrun.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <exception>
#include <new>

namespace qexsdk
{

namespace
{

/// Checks the arguments common to all exports, runs one and turns exceptions into an error. A null \p pPath counts as empty.
template <typename TRun>
bool Guarded(KQexNode* pRoot, const char* pPath, const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult,
             const TRun& pRun) noexcept
{
    std::string lPath;
    try
    {
        pResult = KQexExportAcclaimResult();
        lPath = pPath != nullptr ? pPath : "";
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
    catch (const std::exception& lError)
    {
        pResult.mOk = FailExport(pResult, lPath, lError.what());
    }
    return pResult.mOk;
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

} // namespace

bool KQexExporterAcclaim::Export(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                                 KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, pAsfPath, pOptions, pResult,
                   [&] { return KQexExportRun(pRoot, pAsfPath, OptionsMotion(pAmcPath, pOptions), pOptions, pResult).Run(); });
}

bool KQexExporterAcclaim::Export(KQexNode* pRoot, const char* pAsfPath, const std::vector<KQexExportMotion>& pMotions,
                                 const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, pAsfPath, pOptions, pResult, [&] { return KQexExportRun(pRoot, pAsfPath, pMotions, pOptions, pResult).Run(); });
}

bool KQexExporterAcclaim::ExportBuffers(KQexNode* pRoot, std::string& pAsf, std::string& pAmc, const KQexExportAcclaimOptions& pOptions,
                                        KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, "", pOptions, pResult,
                   [&] { return KQexExportRun(pRoot, "", OptionsMotion("", pOptions), pOptions, pResult).Run(pAsf, &pAmc); });
}

bool KQexExporterAcclaim::ExportSkeleton(KQexNode* pRoot, std::string& pAsf, const KQexExportAcclaimOptions& pOptions,
                                         KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, "", pOptions, pResult,
                   [&] { return KQexExportRun(pRoot, "", OptionsMotion("", pOptions), pOptions, pResult).Run(pAsf, nullptr); });
}

bool KQexExporterAcclaim::ExportMotion(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath,
                                       const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    KQexNode* lRoot = pSkeleton != nullptr && pSkeleton->mRoot != nullptr ? pRoot : nullptr;
    return Guarded(lRoot, pAmcPath, pOptions, pResult, [&] { return RunMotionExport(lRoot, pSkeleton, pAmcPath, pOptions, pResult); });
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
