#ifndef QEXIOPLUGINS_ACCLAIM_KQEXEXPORTERACCLAIM_H
#define QEXIOPLUGINS_ACCLAIM_KQEXEXPORTERACCLAIM_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/acclaim/kqexskeletonmatch.h>
#include <qexioplugins/motion/kqextextmessage.h>

#include <memory>
#include <string>
#include <vector>

/// \file
/// Writes a host node tree as an Acclaim skeleton and its motion.

namespace qexsdk
{

/// Which bones get translation DOFs. The root always has them.
enum KQexTranslationDofs
{
    eTRANSLATION_DOFS_MOVING, ///< Those whose nodes' position relative to their parents changes in any of the takes.
    eTRANSLATION_DOFS_NONE,   ///< None.
    eTRANSLATION_DOFS_ALL     ///< All.
};

/// A take of an export, and the file for it.
struct QEX_API KQexExportMotion
{
    std::string         mPath;            ///< Motion file; empty: not written, but the skeleton gets the DOFs that the take needs.
    KQexAnimStack*      mStack = nullptr; ///< The take; null: the scene's current one, if any.
    KQexSamplingRequest mSampling;        ///< Part and rate of the take.
};

/// How a host tree is exported.
struct QEX_API KQexExportAcclaimOptions
{
    KQexAnimStack*      mStack = nullptr;                         ///< Take of the motion; null: the scene's current one, if any.
    KQexSamplingRequest mSampling;                                ///< Part and rate of the take.
    KQexTranslationDofs mTranslations = eTRANSLATION_DOFS_MOVING; ///< Bones with translation DOFs.
    double              mBaseScale = 1.0;                         ///< Factor of all lengths and positions.
    bool        mBasePoseFirstFrame = false;  ///< The skeleton's rest pose is the first take's at time zero; else the nodes' defaults.
    double      mLengthUnit = 1.0;            ///< Length unit of the files: one unit of length is 2.54 cm / this. Above 0.
    std::string mSkeletonName;                ///< Name of the skeleton; empty: "ASF".
    const KQexBoneDofs*  mBoneDofs = nullptr; ///< DOFs and limits by node name, instead of all rotations and the nodes' limits. Not owned.
    bool                 mWriteRate = false;  ///< Write :SAMPLES-PER-SECOND, not only a comment; some readers do not accept it.
    int                  mThreads = 0;        ///< See KQexAmcWriteOptions.
    KQexAmcSkeletonNotes mSkeletonNotes;      ///< ExportMotion(): the skeleton's notes, as ReadSkeleton() returned them.
    KQexProgress         mProgress;           ///< Called from time to time; false cancels. Empty: never.

    /// ExportMotion(): write the motion also when hardly any of the moving joints match the skeleton. See KQexSkeletonMatch.
    bool mAllowUnmatched = false;

    /// Not null: receives the outputs, complete but still under temporary names, instead of replacing the files. The caller commits them
    /// together with others (KOutputFile::CommitAll), or destroys them, which discards them. Nothing is added after a failure.
    std::vector<std::unique_ptr<KOutputFile>>* mPrepared = nullptr;

    /// Adapt the extracted skeleton for the file, which would lose something otherwise: limits move to the rows that are written, an offset
    /// of the root that its children share becomes a bone, dummies of earlier exports are recognised and get no DOFs, leaves
    /// get a length, which the importer takes for no end of theirs, names keep their prefixes, axes are decomposed exactly, and directions
    /// and axes are rounded such that reading and writing them again changes nothing. Names are made valid in any case. False writes
    /// the skeleton as extracted.
    bool mAdaptForFile = true;
};

/// What an export did.
struct QEX_API KQexExportAcclaimResult
{
    bool                           mOk = false;         ///< All files were written. Otherwise existing files are unchanged.
    bool                           mCancelled = false;  ///< The progress function cancelled.
    bool                           mBrokenPipe = false; ///< The reader of an output pipe had closed it; mMessages reports that, too.
    std::vector<KQexImportMessage> mMessages;           ///< Messages, with the path of the file they are about.
    std::vector<std::string>       mNotes;              ///< What was added to the skeleton so that nothing is lost; no reason to worry.
    std::vector<KQexSampling>      mSamplings;          ///< Frames of the motions; of those without a file, default values.
    int                            mBones = 0;          ///< Number of bones, the root included.
    std::vector<std::string>       mUnmatched;          ///< ExportMotion(): bones with DOFs but without a node, in the skeleton's order.
    KQexSkeletonMatch              mMatch;              ///< ExportMotion(): how well the nodes match the skeleton.
    bool                           mIsMismatch = false; ///< Failed, with an error, because they hardly do.
};

class KQexExportRun;

/// An export in parts, for a caller that evaluates the frames itself, once for all its outputs: one of the two Begin...(); for each motion
/// BeginMotion(), KQexRunFrames() and EndMotion(); End(). The scene must not change in between. Without End(), nothing is written.
///
/// Every step returns false or null after an error, which GetResult() has; nothing may follow then.
class QEX_API KQexAcclaimExport
{
public:
    KQexAcclaimExport() noexcept;
    ~KQexAcclaimExport();
    KQexAcclaimExport(const KQexAcclaimExport&) = delete;
    KQexAcclaimExport& operator=(const KQexAcclaimExport&) = delete;

    /// Makes the skeleton, as KQexExporterAcclaim::Export(). \p pOptions' mProgress and mThreads are not used.
    bool BeginSkeleton(KQexNode* pRoot, const char* pAsfPath, const std::vector<KQexExportMotion>& pMotions,
                       const KQexExportAcclaimOptions& pOptions) noexcept;

    /// Begins the export of one motion for an existing skeleton, as KQexExporterAcclaim::ExportMotion(). \p pSkeleton must outlive this.
    bool BeginForSkeleton(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath,
                          const KQexExportAcclaimOptions& pOptions) noexcept;

    /// Begins motion \p pMotion, an index of those that were given. The frames come from KQexRunFrames(), called with the sink that is
    /// returned, the root, the motion's take and GetResult().mSamplings[pMotion]; other outputs may share that run. Owned by this object,
    /// until EndMotion().
    KQexFrameSink* BeginMotion(size_t pMotion) noexcept;

    /// Ends it; \p pResult is that of the run.
    bool EndMotion(KQexRunResult pResult) noexcept;

    /// Replaces the files, or hands them to the options' mPrepared.
    bool End() noexcept;

    /// Complete after End().
    const KQexExportAcclaimResult& GetResult() const { return mResult; }

private:
    template <typename TStep>
    bool Begin(KQexNode* pRoot, const char* pPath, const KQexExportAcclaimOptions& pOptions, const TStep& pStep) noexcept;

    KQexExportAcclaimOptions       mOptions;
    KQexExportAcclaimResult        mResult;
    std::unique_ptr<KQexExportRun> mRun;
};

/// Exports host trees as Acclaim files. Stateless; different scenes may be exported concurrently.
class QEX_API KQexExporterAcclaim
{
public:
    /// Writes the tree at \p pRoot as skeleton to \p pAsfPath and, when \p pAmcPath is neither null nor empty, its take as motion.
    /// Both files are complete before either is renamed into place. "-" is standard output, for at most one of them.
    static bool Export(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                       KQexExportAcclaimResult& pResult);

    /// The same for any number of takes. The skeleton has the DOFs that all of them need. No file is replaced before all are complete, and
    /// all are replaced or none (KOutputFile::CommitAll).
    static bool Export(KQexNode* pRoot, const char* pAsfPath, const std::vector<KQexExportMotion>& pMotions,
                       const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult);

    /// One take into memory: \p pAsf, and \p pAmc, which names no skeleton file. Both are unspecified after a failure.
    static bool ExportBuffers(KQexNode* pRoot, std::string& pAsf, std::string& pAmc, const KQexExportAcclaimOptions& pOptions,
                              KQexExportAcclaimResult& pResult);

    /// The skeleton alone, into memory.
    static bool ExportSkeleton(KQexNode* pRoot, std::string& pAsf, const KQexExportAcclaimOptions& pOptions,
                               KQexExportAcclaimResult& pResult);

    /// Writes the take as a motion for the skeleton in \p pSkeleton, a scene read from a file with both frame flags false. A bone's
    /// node is searched by name below the node of its nearest ancestor that has one; \p pRoot is the root's, or the node below it
    /// to which it leads without moving. When no name matches, name-space prefixes are ignored. Bones without a node stay at rest;
    /// those with DOFs are listed in the result. The two rest poses may differ; see KQexAmcRestAlignment.
    static bool ExportMotion(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                             KQexExportAcclaimResult& pResult);

    /// The DOFs and limits of a skeleton's bones, which a host scene cannot hold. Translation limits are converted from the
    /// skeleton's length unit to centimetres. Empty, although a skeleton has at least a root, when memory runs out.
    static KQexBoneDofs GetBoneDofs(const KQexAsfScene* pSkeleton) noexcept;
};

} // namespace qexsdk

#endif
