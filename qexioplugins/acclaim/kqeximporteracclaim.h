#ifndef QEXIOPLUGINS_ACCLAIM_KQEXIMPORTERACCLAIM_H
#define QEXIOPLUGINS_ACCLAIM_KQEXIMPORTERACCLAIM_H

#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// \file
/// Imports an Acclaim skeleton and its motions into a host scene.

namespace qexsdk
{

/// A file to read: a path, or bytes in memory.
struct QEX_API KQexAcclaimSource
{
    /// A file of the file system; "-" is standard input. When memory runs out, a source without a path, which cannot be read.
    static KQexAcclaimSource File(std::string_view pPath) noexcept;

    /// \p pSize bytes at \p pData, which must stay valid until the import returns. \p pName replaces the path in messages, unless
    /// memory runs out for it.
    static KQexAcclaimSource Buffer(const char* pData, size_t pSize, std::string_view pName) noexcept;

    std::string mPath;           ///< Path, or the name that replaces it in messages.
    const char* mData = nullptr; ///< The bytes; null for a file.
    size_t      mSize = 0;       ///< Number of bytes at mData.

    /// Take of a motion. Empty: the options' take name for the first motion, else the file's name without folder and extension, made
    /// unique.
    std::string mTakeName;
};

/// Filter of rotation curves; the values that KFCURVE_SetRotationFilterToApply() takes.
enum KQexRotationFilter
{
    eROTATION_FILTER_NONE = 0,   ///< Curves stay as sampled.
    eROTATION_FILTER_GIMBAL = 1, ///< As unroll; near gimbal lock also the shortest path between keys.
    eROTATION_FILTER_UNROLL = 2  ///< Each key becomes the Euler triple nearest to the key before it.
};

/// Options of an import. The frame flags apply to reading, sampling and import alike, so that they cannot differ.
struct QEX_API KQexImportAcclaimOptions
{
    bool mRemoveDummies = false; ///< Remove bones without any DOF; their children keep their world positions.

    /// Store a bone's offset in its node's rotation offset, not in its local translation. Translation limits need this.
    bool mSetRotatePivotOffet = false;

    /// Store a bone's axis frame in its node's pre-rotation instead of folding it into its rotation. Rotation limits need this.
    /// Pre-rotations are XYZ angles, rounded close to y = +-90 degrees: positions then move by up to 4.5e-4 of the figure's size.
    bool mSetPreRotation = false;

    bool mSetLimits = true; ///< Write joint limits to the nodes, as far as the two flags above allow.

    std::string        mTakeName;                                 ///< Take of the first motion. Empty: see KQexAcclaimSource::mTakeName.
    double             mSamplesPerSecond = 0.0;                   ///< Frames per second; 0: the file's own, else 120.
    KQexRotationFilter mRotationFilter = eROTATION_FILTER_UNROLL; ///< Filter of the rotation curves, during the import only.
    bool               mUseConstantKeyReducer = false;            ///< Drop keys inside runs of equal values, during the import only.
    bool               mKeepGoodFrames = false; ///< After an error in a motion, keep the complete frames before it, when there are any.
    bool               mAllowUnmatched = false; ///< Import a motion also when hardly any of its bones match. See KQexSkeletonMatch.

    /// Node that gets the new skeleton's root as a child; null: the scene's root node. Not used with mMergeRoot.
    KQexNode* mParentNode = nullptr;

    /// Bind to the hierarchy at or below this node by bone names instead of building a new one; bones that it lacks are built. Not
    /// owned.
    KQexNode* mMergeRoot = nullptr;

    bool mKeepDofValues = false; ///< Keep each motion's own values of the degrees of freedom in the result: 4 bytes a value.

    bool         mKeepAsfScene = false; ///< Return the skeleton in the result, for export, checks or further motions.
    bool         mVerbose = false;      ///< Print every message to standard error as well.
    KQexProgress mProgress;             ///< Called from time to time with the fraction done, 0 to 1; false cancels. Empty: never.
};

/// One motion that was imported.
struct QEX_API KQexImportedTake
{
    std::string    mName;            ///< Name of the take.
    std::string    mPath;            ///< Path or name of the motion it comes from.
    KQexAmcInfo    mInfo;            ///< Frames, rate and times.
    KQexAnimStack* mStack = nullptr; ///< The take in the scene, which owns it. Never null in the result of an import.

    std::shared_ptr<const KQexDofValues> mDofValues; ///< The file's own values; null unless the options keep them.
};

/// What an import did.
struct QEX_API KQexImportAcclaimResult
{
    bool                           mOk = false;         ///< Everything was imported. Otherwise the scene is unchanged.
    bool                           mCancelled = false;  ///< The progress function cancelled.
    bool                           mIsMismatch = false; ///< Failed, with an error, because a motion hardly matches the skeleton.
    KQexNode*                      mRootNode = nullptr; ///< Node of the skeleton's root bone, owned by the scene; null on failure.
    std::vector<KQexImportedTake>  mTakes;              ///< One per motion, in the order of the sources; none on failure.
    std::vector<KQexImportMessage> mMessages;           ///< Messages of all files in the order of reading, also after a failure.
    KQexAmcSkeletonNotes           mSkeletonNotes;      ///< Notes of the skeleton's file, for ImportMotion().
    KQexAsfSceneOwner              mAsfScene; ///< The skeleton, when mKeepAsfScene asked for it. Destroy it before the host scene.

    /// Number of warnings, or of errors, among the messages.
    size_t CountMessages(bool pErrors) const;
};

/// Imports Acclaim files into a host scene. Stateless. May be called from several threads; a lock lets one skeleton be read at a time,
/// because the reader's keyword tables are shared.
class QEX_API KQexImporterAcclaim
{
public:
    /// Reads the skeleton \p pSkeleton and any number of motions onto it, each under a take of its own, and puts nodes, curves
    /// and limits into \p pScene, below the options' parent node. Without a motion the skeleton alone is imported.
    ///
    /// The scene is in centimetres (lengths and translations times 2.54 / length unit) and degrees. Ends that a writer added to leaf
    /// joints (KQexFileAcclaimAsf::GetAddedEnds) get no nodes. Everything is read before the
    /// first node is made: when anything fails, or the progress function cancels, the scene is unchanged.
    /// \return pResult.mOk
    static bool Import(KQexScene* pScene, const KQexAcclaimSource& pSkeleton, const std::vector<KQexAcclaimSource>& pMotions,
                       const KQexImportAcclaimOptions& pOptions, KQexImportAcclaimResult& pResult);

    /// The same for one skeleton and at most one motion by path; none when \p pAmcPath is null or empty.
    static bool Import(KQexScene* pScene, const char* pAsfPath, const char* pAmcPath, const KQexImportAcclaimOptions& pOptions,
                       KQexImportAcclaimResult& pResult);

    /// Reads further motions onto a skeleton that was imported before; \p pAsfScene and \p pNotes are from the result of that
    /// import. The nodes are found by bone names at or below the options' mMergeRoot (null: the scene's root node). The options'
    /// frame flags must be those of the first import; mRemoveDummies is ignored.
    static bool ImportMotion(KQexScene* pScene, KQexAsfScene* pAsfScene, const KQexAmcSkeletonNotes& pNotes,
                             const std::vector<KQexAcclaimSource>& pMotions, const KQexImportAcclaimOptions& pOptions,
                             KQexImportAcclaimResult& pResult);

    /// Reads a skeleton under the same lock, without a host scene: frames computed and dummies removed as the options say. Where the
    /// reader fails without an error (no root, a section cut short by the end of the file), \p pResult's messages explain why.
    /// \return the skeleton; null after an error
    static KQexAsfSceneOwner ReadSkeleton(const KQexAcclaimSource& pSkeleton, const KQexImportAcclaimOptions& pOptions,
                                          KQexImportAcclaimResult& pResult);
};

} // namespace qexsdk

#endif
