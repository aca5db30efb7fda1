#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTRUN_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTRUN_H

#include <qexioplugins/acclaim/exchange/kqexasfprepare.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace qexsdk
{

/// One export of a tree. May throw std::bad_alloc; no file is replaced then. The host scene is unchanged afterwards.
class KQexExportRun
{
public:
    /// \p pAsfPath and \p pMotions as for KQexExporterAcclaim::Export(); the other arguments must outlive this.
    KQexExportRun(KQexNode* pRoot, const char* pAsfPath, std::vector<KQexExportMotion> pMotions, const KQexExportAcclaimOptions& pOptions,
                  KQexExportAcclaimResult& pResult);

    /// Exports to the files.
    bool Run();

    /// Exports to memory; \p pAmc null: the skeleton alone, else the first motion.
    bool Run(std::string& pAsf, std::string* pAmc);

private:
    bool SampleMotion(size_t pMotion);
    bool HasTranslations(const KQexMovingJoints& pMoving) const;
    bool MakeSkeleton(bool pReadBack);
    bool Extract(KQexAsfScene& pScene, bool pHasTranslations);
    void Report(const KQexAsfPreparation& pPreparation);
    bool Format(KQexAsfScene& pScene, const KQexAsfPreparation& pPreparation);
    bool ReadBack(const std::vector<KQexAsfOrigin>& pOrigins);
    bool WriteSkeleton();
    bool WriteMotion(size_t pMotion, std::string* pBuffer);
    bool WriteMotions();

    KQexNode*                                 mRoot;
    std::string                               mAsfPath;
    std::vector<KQexExportMotion>             mMotions; ///< At least one.
    const KQexExportAcclaimOptions&           mOptions;
    KQexExportAcclaimResult&                  mResult;
    std::string                               mText;     ///< The skeleton file.
    KQexAsfSceneOwner                         mReadBack; ///< The skeleton read back from mText.
    std::vector<KQexAmcPair>                  mPairs;
    std::vector<std::unique_ptr<KOutputFile>> mOutputs; ///< Complete, not yet committed.
};

} // namespace qexsdk

#endif
