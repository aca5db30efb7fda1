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
    double              mBaseScale = 1.0;                         ///< Factor of all lengths and places.
    bool        mBasePoseFirstFrame = false;  ///< The skeleton's rest pose is the take's pose at time zero; else the nodes' defaults.
    double      mLengthUnit = 1.0;            ///< Length unit of the files: a length in them is 2.54 cm over this. Above 0.
    std::string mSkeletonName;                ///< Name of the skeleton; empty: "ASF".
    const KQexBoneDofs*  mBoneDofs = nullptr; ///< DOFs and limits by node name, instead of all rotations and the nodes' limits. Not owned.
    bool                 mTellRate = false;   ///< Write :SAMPLES-PER-SECOND into the motion, at which some readers stop.
    int                  mThreads = 0;        ///< See KQexAmcWriteOptions.
    KQexAmcSkeletonNotes mSkeletonNotes; ///< ExportMotion(): what the skeleton's file said beyond the model, as ReadSkeleton() tells it.
    KQexProgress         mProgress;      ///< Called now and then; false cancels. Empty: never.

    /// Change the extracted skeleton, before it is written, where it would lose something: limits move to the rows that are
    /// written, a root's offset that its children share becomes a bone, bones that extraction put in front of others are
    /// recognised and get no DOFs, axes are decomposed exactly, directions and axes are rounded such that reading them back and
    /// writing them again changes nothing. Names are made valid in any case. False writes what extraction gives.
    bool mServe = true;
};

/// What an export did.
struct QEX_API KQexExportAcclaimResult
{
    bool                           mOk = false;        ///< All files are there. Otherwise what was there before is.
    bool                           mCancelled = false; ///< The progress call asked to stop.
    std::vector<KQexImportMessage> mMessages;          ///< Messages, with the path of the file they are about.
    KQexSampling                   mSampling;          ///< Frames of the motion.
    int                            mBones = 0;         ///< Bones of the skeleton, the root among them.
    std::vector<std::string>       mUnmatched;         ///< ExportMotion(): bones without a node, in the skeleton's order.
};

/// Exports host trees as Acclaim files. Holds no state. Exports of different scenes may run at the same time.
class QEX_API KQexExporterAcclaim
{
public:
    /// Writes the tree at \p pRoot as skeleton to \p pAsfPath and, when \p pAmcPath is neither null nor empty, its take as motion.
    /// Both files are complete before either takes its name. "-" is standard output for at most one of them.
    static bool Export(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                       KQexExportAcclaimResult& pResult);

    /// The same into memory: \p pAsf, and \p pAmc, which names no skeleton file. Unspecified after a failure.
    static bool ExportBuffers(KQexNode* pRoot, std::string& pAsf, std::string& pAmc, const KQexExportAcclaimOptions& pOptions,
                              KQexExportAcclaimResult& pResult);

    /// The skeleton alone, into memory.
    static bool ExportSkeleton(KQexNode* pRoot, std::string& pAsf, const KQexExportAcclaimOptions& pOptions,
                               KQexExportAcclaimResult& pResult);

    /// Writes the take as a motion for the skeleton in \p pSkeleton, a scene read from a file with both frame flags false. Bones
    /// find their nodes by name below their parent's, \p pRoot being the root's; when no name is found, a name-space prefix in
    /// the nodes' names is passed over. Bones without a node stay at rest and are listed in the result.
    static bool ExportMotion(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                             KQexExportAcclaimResult& pResult);

    /// The DOFs and limits of a skeleton's bones, to be kept where a scene has no place for them. Limits of translations are
    /// brought from the skeleton's length unit to centimetres.
    static KQexBoneDofs GetBoneDofs(const KQexAsfScene* pSkeleton);
};

} // namespace qexsdk

#endif
