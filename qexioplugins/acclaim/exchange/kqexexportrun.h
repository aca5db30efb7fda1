#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTRUN_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTRUN_H

#include <qexioplugins/acclaim/exchange/kqexasfprepare.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// One export of a tree. May throw std::bad_alloc; nothing is written then.
class KQexExportRun
{
public:
    /// \p pAsfPath and \p pAmcPath as for KQexExporterAcclaim::Export(); the other arguments must outlive this.
    KQexExportRun(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                  KQexExportAcclaimResult& pResult);

    /// Exports to the two files.
    bool Run();

    /// Exports to memory; \p pAmc null: the skeleton alone.
    bool Run(std::string& pAsf, std::string* pAmc);

private:
    bool                 MakeSkeleton(bool pReadBack);
    bool                 ReadBack(const std::vector<KQexAsfOrigin>& pOrigins);
    bool                 WriteSkeleton();
    bool                 WriteMotion(const std::string& pPath, std::string* pBuffer);
    bool                 Finish();
    const KQexAnimLayer* GetLayer() const { return mStack != nullptr ? mStack->GetMember<KQexAnimLayer>(0) : nullptr; }
    bool                 NeedsTranslations() const;

    KQexNode*                       mRoot;
    std::string                     mAsfPath;
    std::string                     mAmcPath;
    const KQexExportAcclaimOptions& mOptions;
    KQexExportAcclaimResult&        mResult;
    KQexAnimStack*                  mStack;
    std::string                     mText;     ///< The skeleton file.
    KQexAsfSceneOwner               mReadBack; ///< The skeleton read back from mText.
    std::vector<KQexAmcPair>        mPairs;
    KOutputFile                     mAsf;
    KQexFileAcclaimAmc              mAmc;
};

} // namespace qexsdk

#endif
