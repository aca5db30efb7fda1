#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXIMPORTRUN_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXIMPORTRUN_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/acclaim/model/kqexasfcurves.h>
#include <qexscene/kqexsceneundo.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// The steps of one import, done under the importer's lock. Until Attach() everything happens apart from the host scene's tree and
/// takes: a step that fails leaves no trace there. What memory ran out on while attaching is taken back at the end of this object.
class KQexImportRun
{
public:
    /// The filter settings of the process are the options' until this object goes.
    KQexImportRun(KQexScene* pScene, const KQexImportAcclaimOptions& pOptions, KQexImportAcclaimResult& pResult);
    ~KQexImportRun();
    KQexImportRun(const KQexImportRun&) = delete;
    KQexImportRun& operator=(const KQexImportRun&) = delete;

    /// Reads the skeleton, and notes in the result what the model does not keep. Null after an error.
    KQexAsfSceneOwner ReadSkeleton(const KQexAcclaimSource& pSource);

    /// Samples all motions; their curves wait apart from the bones. On failure all of them are gone again.
    bool ReadMotions(KQexAsfScene& pAsfScene, const std::vector<KQexAcclaimSource>& pSources);

    /// Makes the skeleton's nodes, or binds them to the options' merge root, and hands the curves over take by take.
    bool Attach(KQexAsfScene& pAsfScene);

    /// Hands the curves over to nodes that exist already.
    bool AttachToExisting(KQexAsfScene& pAsfScene);

    /// Adds an error that no file is to blame for. \return false
    bool Fail(const char* pText);

private:
    bool        ReadMotion(KQexAsfScene& pAsfScene, const KQexAcclaimSource& pSource, size_t pIndex, size_t pCount);
    void        RemoveDummies(KQexAsfScene& pAsfScene);
    std::string ChooseTakeName(const KQexAcclaimSource& pSource) const;
    bool        IsTaken(const std::string& pTakeName) const;
    void        TakeMessages(const KQexTextFile& pFile, const std::string& pPath);
    bool        SayProgress(double pFraction);

    bool      Complete(KQexAsfScene& pAsfScene, KQexNode* pRootNode);
    KQexNode* Build(KQexAsfScene& pAsfScene);
    KQexNode* Bind(KQexAsfScene& pAsfScene, KQexNode* pBelow);
    bool      BindTake(KQexAsfScene& pAsfScene, KQexNode* pBelow, const char* pTakeName);

    KQexScene*                      mScene;
    KQexSceneUndo                   mUndo; ///< Armed until the import is complete.
    const KQexImportAcclaimOptions& mOptions;
    KQexImportAcclaimResult&        mResult;
    int                             mRotationFilterBefore;
    bool                            mReducerBefore;
    std::vector<KQexAsfCurves>      mCurves;                 ///< One for each of the result's takes.
    HKQexAsfNode                    mBorrowedRoot = nullptr; ///< Root of a skeleton that outlives the import.
};

} // namespace qexsdk

#endif
