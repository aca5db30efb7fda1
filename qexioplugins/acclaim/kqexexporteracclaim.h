#ifndef QEXIOPLUGINS_ACCLAIM_KQEXEXPORTERACCLAIM_H
#define QEXIOPLUGINS_ACCLAIM_KQEXEXPORTERACCLAIM_H

#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/motion/kqextextmessage.h>

#include <string>
#include <vector>

/// \file
/// Writes a host node tree as an Acclaim skeleton and its motion.

namespace qexsdk
{

/// Which bones get translation DOFs. The root always has them.
enum KQexTranslationDofs
{
    eTRANSLATION_DOFS_MOVING, ///< Those whose nodes' translation is animated in the take.
    eTRANSLATION_DOFS_NONE,   ///< None.
    eTRANSLATION_DOFS_ALL     ///< All.
};

/// How a host tree is exported.
struct QEX_API KQexExportAcclaimOptions
{
    KQexAnimStack*      mStack = nullptr;                         ///< Take of the motion; null: the scene's current one, if any.
    KQexSamplingRequest mSampling;                                ///< Part and rate of the take.
    KQexTranslationDofs mTranslations = eTRANSLATION_DOFS_MOVING; ///< Bones with translation DOFs.
    double              mBaseScale = 1.0;                         ///< Factor of all lengths and positions.
    bool        mBasePoseFirstFrame = false;  ///< The skeleton's rest pose is the take's pose at time zero; else the nodes' defaults.
    double      mLengthUnit = 1.0;            ///< Length unit of the files: one unit of length is 2.54 cm / this. Above 0.
    std::string mSkeletonName;                ///< Name of the skeleton; empty: "ASF".
    const KQexBoneDofs*  mBoneDofs = nullptr; ///< DOFs and limits by node name, instead of all rotations and the nodes' limits. Not owned.
    bool                 mWriteRate = false;  ///< Write :SAMPLES-PER-SECOND, not only a comment; some readers do not accept it.
    int                  mThreads = 0;        ///< See KQexAmcWriteOptions.
    KQexAmcSkeletonNotes mSkeletonNotes;      ///< ExportMotion(): the skeleton's notes, as ReadSkeleton() returned them.
    KQexProgress         mProgress;           ///< Called from time to time; false cancels. Empty: never.

    /// Adapt the extracted skeleton for the file, which would lose something otherwise: limits move to the rows that are written, an offset
    /// of the root that its children share becomes a bone, dummies of earlier exports are recognised and get no DOFs, axes are
    /// decomposed exactly, and directions and axes are rounded such that reading and writing them again changes nothing. Names are
    /// made valid in any case. False writes the skeleton as extracted.
    bool mAdaptForFile = true;
};

/// What an export did.
struct QEX_API KQexExportAcclaimResult
{
    bool                           mOk = false;         ///< All files were written. Otherwise existing files are unchanged.
    bool                           mCancelled = false;  ///< The progress function cancelled.
    bool                           mBrokenPipe = false; ///< The reader of an output pipe had closed it; mMessages reports that, too.
    std::vector<KQexImportMessage> mMessages;           ///< Messages, with the path of the file they are about.
    KQexSampling                   mSampling;           ///< Frames of the motion.
    int                            mBones = 0;          ///< Number of bones, the root included.
    std::vector<std::string>       mUnmatched;          ///< ExportMotion(): bones without a node, in the skeleton's order.
};

/// Exports host trees as Acclaim files. Stateless; different scenes may be exported concurrently.
class QEX_API KQexExporterAcclaim
{
public:
    /// Writes the tree at \p pRoot as skeleton to \p pAsfPath and, when \p pAmcPath is neither null nor empty, its take as motion.
    /// Both files are complete before either is renamed into place. "-" is standard output, for at most one of them.
    static bool Export(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                       KQexExportAcclaimResult& pResult);

    /// The same into memory: \p pAsf, and \p pAmc, which names no skeleton file. Both are unspecified after a failure.
    static bool ExportBuffers(KQexNode* pRoot, std::string& pAsf, std::string& pAmc, const KQexExportAcclaimOptions& pOptions,
                              KQexExportAcclaimResult& pResult);

    /// The skeleton alone, into memory.
    static bool ExportSkeleton(KQexNode* pRoot, std::string& pAsf, const KQexExportAcclaimOptions& pOptions,
                               KQexExportAcclaimResult& pResult);

    /// Writes the take as a motion for the skeleton in \p pSkeleton, a scene read from a file with both frame flags false. A bone's
    /// node is searched by name below the node of its nearest ancestor that has one; \p pRoot is the root's. When no name matches,
    /// the nodes' name-space prefixes are ignored. Bones without a node stay at rest and are listed in the result.
    static bool ExportMotion(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                             KQexExportAcclaimResult& pResult);

    /// The DOFs and limits of a skeleton's bones, which a host scene cannot hold. Translation limits are converted from the
    /// skeleton's length unit to centimetres. Empty, although a skeleton has at least a root, when memory runs out.
    static KQexBoneDofs GetBoneDofs(const KQexAsfScene* pSkeleton) noexcept;
};

} // namespace qexsdk

#endif
