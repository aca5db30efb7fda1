#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXIMPORTRUN_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXIMPORTRUN_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/acclaim/model/kqexasfcurves.h>
#include <qexscene/kfcurveglobals.h>
#include <qexscene/kqexsceneundo.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// The steps of one import, run under the importer's lock. Until Attach() nothing changes in the host scene's tree and takes. Changes of
/// an Attach() that ran out of memory are undone by the destructor.
class KQexImportRun
{
public:
    /// Sets the process's filter settings to those of the options; the destructor restores them.
    KQexImportRun(KQexScene* pScene, const KQexImportAcclaimOptions& pOptions, KQexImportAcclaimResult& pResult);
    ~KQexImportRun();
    KQexImportRun(const KQexImportRun&) = delete;
    KQexImportRun& operator=(const KQexImportRun&) = delete;

    /// Reads the skeleton, and records in the result what the model does not keep. Null after an error.
    KQexAsfSceneOwner ReadSkeleton(const KQexAcclaimSource& pSource);

    /// Samples all motions and keeps their curves apart from the bones until Attach(). On failure they are destroyed with this object.
    bool ReadMotions(KQexAsfScene& pAsfScene, const std::vector<KQexAcclaimSource>& pSources);

    /// Builds the skeleton's nodes, or binds it to the options' merge root, and connects the curves take by take.
    bool Attach(KQexAsfScene& pAsfScene);

    /// Connects the curves to existing nodes.
    bool AttachToExisting(KQexAsfScene& pAsfScene);

    /// Adds an error without a path. \return false
    bool Fail(const char* pText);

private:
    bool               ReadMotion(KQexAsfScene& pAsfScene, const KQexAcclaimSource& pSource, size_t pIndex, size_t pCount);
    KQexAmcReadOptions ReadOptions(size_t pIndex, size_t pCount) const;
    bool               IsAccepted(const KQexImportedTake& pTake);
    void               RemoveDummies(KQexAsfScene& pAsfScene);
    std::string        ChooseTakeName(const KQexAcclaimSource& pSource) const;
    bool               IsInUse(const std::string& pTakeName) const;
    void               AddMessages(const KQexTextFile& pFile, const std::string& pPath);
    bool               ReportProgress(double pFraction);

    bool      Complete(KQexAsfScene& pAsfScene, KQexNode* pRootNode);
    KQexNode* Build(KQexAsfScene& pAsfScene);
    KQexNode* Bind(KQexAsfScene& pAsfScene, KQexNode* pBelow);
    bool      BindTake(KQexAsfScene& pAsfScene, KQexNode* pBelow, const char* pTakeName);

    KQexScene*                      mScene;
    KQexSceneUndo                   mUndo; ///< Armed until the import is complete.
    const KQexImportAcclaimOptions& mOptions;
    KQexImportAcclaimResult&        mResult;
    KQexCurveSettings               mSettings;
    std::vector<KQexAsfCurves>      mCurves;                 ///< One per take of the result.
    HKQexAsfNode                    mBorrowedRoot = nullptr; ///< Root of a skeleton that outlives the import.
};

} // namespace qexsdk

#endif
