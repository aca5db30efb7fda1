#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTRUN_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXEXPORTRUN_H

#include <qexioplugins/acclaim/exchange/kqexasfprepare.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace qexsdk
{

/// One export: MakeSkeleton() or UseSkeleton(), the motions, then Commit(). Every step is false after an error; nothing may follow then.
/// May throw std::bad_alloc; no file is replaced then. The host scene is unchanged afterwards.
class KQexExportRun
{
public:
    /// The arguments must outlive this.
    KQexExportRun(KQexNode* pRoot, const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult);

    /// Discards a motion that has not been ended.
    ~KQexExportRun();

    KQexExportRun(const KQexExportRun&) = delete;
    KQexExportRun& operator=(const KQexExportRun&) = delete;

    /// Makes the skeleton for \p pMotions, which are to be written for it, in memory. \p pAsfPath names it in messages and motions.
    bool MakeSkeleton(const char* pAsfPath, std::vector<KQexExportMotion> pMotions);

    /// For one motion of an existing skeleton, which must outlive this.
    bool UseSkeleton(KQexAsfScene* pSkeleton, const char* pAmcPath);

    /// Writes the skeleton that was made.
    bool WriteSkeleton();

    /// The skeleton that was made, as text.
    std::string& GetSkeletonText() { return mText; }

    /// Opens a motion, in \p pBuffer if not null, and returns what takes its frames; null after an error.
    KQexFrameSink* BeginMotion(size_t pMotion, std::string* pBuffer);

    /// Completes it after a run with the result \p pResult. The file keeps its temporary name until Commit().
    bool EndMotion(KQexRunResult pResult);

    /// Begins a motion, evaluates its frames and ends it.
    bool WriteMotion(size_t pMotion, std::string* pBuffer);

    /// The same for each that has a path.
    bool WriteMotions();

    /// Commits the outputs, or hands them to the options' mPrepared.
    bool Commit();

private:
    KQexAnimStack*      TakeOrCurrent(KQexAnimStack* pStack) const;
    bool                MakeSkeletonOf(const std::vector<KQexAnimStack*>& pTakes);
    bool                HasTranslations(const KQexMovingJoints& pMoving) const;
    bool                Extract(KQexAsfScene& pScene, bool pHasTranslations);
    void                Report(const KQexAsfPreparation& pPreparation);
    bool                Format(KQexAsfScene& pScene, const KQexAsfPreparation& pPreparation);
    bool                ReadBack();
    KQexAmcWriteOptions WriteOptions(size_t pMotion) const;
    KQexProgress        ProgressOf(size_t pMotion) const;
    bool                KeepMotion(bool pIsComplete);
    bool                Fail(const KOutputFile& pOutput);

    KQexNode*                                  mRoot;
    std::string                                mAsfPath; ///< Empty if there is none.
    std::vector<KQexExportMotion>              mMotions; ///< At least one, as soon as there is a skeleton.
    const KQexExportAcclaimOptions&            mOptions;
    KQexExportAcclaimResult&                   mResult;
    std::string                                mText;               ///< The skeleton file.
    std::unordered_map<std::string, KQexNode*> mNodeOf;             ///< By the name of the bone that was made from it; null for a dummy.
    KQexAsfSceneOwner                          mReadBack;           ///< The skeleton read back from mText, for the first motion.
    KQexAsfScene*                              mSkeleton = nullptr; ///< The one that motions are written for.
    std::vector<KQexAmcPair>                   mPairs;
    std::unique_ptr<KQexFileAcclaimAmc>        mAmc;              ///< Between BeginMotion() and EndMotion().
    size_t                                     mMotion = 0;       ///< Its index.
    std::string*                               mBuffer = nullptr; ///< Its buffer; null for a file.
    std::vector<std::unique_ptr<KOutputFile>>  mOutputs;          ///< Complete, not yet committed.
};

/// Adds an error to the result, if there is memory for it. A null \p pPath counts as empty.
/// \return false, always
bool FailExport(KQexExportAcclaimResult& pResult, const char* pPath, const char* pText) noexcept;

} // namespace qexsdk

#endif
