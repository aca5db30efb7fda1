#ifndef QEXFIGURE_KQEXFIGURE_H
#define QEXFIGURE_KQEXFIGURE_H

#include <qexclip/kqexclip.h>
#include <qexfigure/kqexfigurefiles.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/motion/kqexmotionio.h>
#include <qexscene/kqexscene.h>

#include <memory>
#include <string>
#include <vector>

/// \file
/// Any file, or set of files, as a scene: ASF with AMC, AMC alone, BVH, GLB and glTF.

namespace qexsdk
{

/// A point in centimetres, world space: x to the figure's left, y up, z forward.
struct QEX_API KQexFigurePoint
{
    double mX = 0; ///< To the figure's left.
    double mY = 0; ///< Up.
    double mZ = 0; ///< Forward.
};

/// A joint: the start of a bone, or the end of a leaf bone.
struct QEX_API KQexFigureJoint
{
    std::string mName;           ///< The node\'s name.
    int         mParent = -1;    ///< Index of the parent joint, less than the joint's own; -1 for a root.
    bool        mIsEnd = false;  ///< The end of a leaf bone, named after it with the suffix _End; it does not move by itself.
    KQexNode*   mNode = nullptr; ///< Owned by the scene.
};

/// A motion of a figure.
struct QEX_API KQexFigureTake
{
    std::string    mName;                  ///< The take's name, or its file's without folder and extension.
    std::string    mGivenName;             ///< The same before it was made unique: several takes may have one.
    KQexAnimStack* mStack = nullptr;       ///< Owned by the scene.
    double         mRate = 0;              ///< Frames per second: the file's, the options', or 120.
    bool           mIsDefaultRate = false; ///< Neither file nor options have a rate: it is 120.
    bool           mIsSingle = false;      ///< One frame, even if the stack has a second key.
    bool           mHasNumbers = false;    ///< The file has frame numbers, which may have gaps (AMC).
    long long      mFrames = 0;            ///< Frames in the file.
    KTime          mStart = KTime(0);      ///< Time of the frame with the lowest number.
    KTime          mEnd = KTime(0);        ///< Time of the frame with the highest number.
    KTime          mStep = KTime(0);       ///< Time between frames; not used if mHasNumbers.
    KTime          mOrigin = KTime(0);     ///< Time of the first frame in the file.
    long long      mOriginNumber = 1;      ///< Number of that frame.

    std::shared_ptr<const KQexDofValues> mDofValues; ///< For KQexFigure::GetDofTracks().

    /// Frames from the first frame in the file to \p pTime, with a fraction between two frames.
    double GetFraction(KTime pTime) const;

    /// The number of the frame nearest to \p pTime: the file's own; from 1 in files without numbers.
    long long GetNumber(KTime pTime) const;
};

/// What MakeSampling() needs for all frames of \p pTake at \p pRate a second (0: its own rate); null: of the rest pose.
QEX_API KQexSamplingRequest KQexWholeTake(const KQexFigureTake* pTake, double pRate = 0.0);

/// The frames of a take, both lists of the same size, ascending.
struct QEX_API KQexFigureFrames
{
    std::vector<long long> mNumbers; ///< The file's own numbers; from 1 in files without.
    std::vector<KTime>     mTimes;   ///< Times in the scene.
};

/// Options for loading a figure.
struct QEX_API KQexFigureOptions
{
    double             mMotionRate = 0;         ///< Frames per second of AMC motions; 0: the file's rate, else 120.
    double             mSampleRate = 0;         ///< Frames per second at which glTF curves are sampled; 0: that of their keys.
    std::string        mTake;                   ///< Name for the take of one AMC or BVH file; else the only take to keep. Empty: all.
    std::string        mTakeOption;             ///< How a user of the program names mTake ("--take"), for messages; may be empty.
    bool               mRemoveDummies = false;  ///< Leave out dummy bones, see RemoveDummyNodes() and KQexImportAcclaimOptions.
    bool               mKeepGoodFrames = false; ///< After an error in a motion, keep the complete frames before it, if any.
    bool               mAllowUnmatched = false; ///< Accept an AMC motion of another skeleton, see KQexSkeletonMatch.
    bool               mKeepDofValues = false;  ///< Keep the values of AMC and BVH files for GetDofTracks(): 4 bytes each.
    bool               mReduce = false;         ///< Drop keys inside runs of equal values from AMC motions.
    KQexRotationFilter mFilter = eROTATION_FILTER_UNROLL; ///< Filter of AMC and BVH rotation curves.
    KQexProgress       mProgress;                         ///< Called with the fraction read, 0 to 1; false cancels. May be empty.
};

/// A figure of any format in a host scene of its own: centimetres, degrees, y up. Used by one thread at a time; different figures may be
/// loaded and used concurrently. Nothing throws.
class QEX_API KQexFigure
{
public:
    KQexFigure() = default;

    /// Destroys the skeleton and the scene, unless it was released.
    ~KQexFigure();
    KQexFigure(const KQexFigure&) = delete;
    KQexFigure& operator=(const KQexFigure&) = delete;

    /// Reads \p pFiles. What was loaded before is destroyed. False, with an error and a status in \p pReport, or cancelled: the figure is
    /// then empty. glTF needs a library built with it, else it is a usage error. Afterwards the first take, if any, is the evaluator's
    /// context.
    bool Load(const KQexFigureFiles& pFiles, const KQexFigureOptions& pOptions, KQexFigureReport& pReport) noexcept;

    /// Opens and reads \p pPaths: one file, or a skeleton and its motions. False as above.
    bool Load(const std::vector<std::string>& pPaths, const KQexFigureOptions& pOptions, KQexFigureReport& pReport) noexcept;

    /// Makes a figure of \p pClip, see KQexClip::ToScene(), with one take of its frames. What was loaded before is destroyed. GetBoneDofs() are
    /// the clip's degrees of freedom (of joints of one name, the first one's), with none for its other joints; GetDofTracks() their values
    /// if the clip has them. False, with an error in \p pReport, for an empty clip or name and when memory runs out: the figure is then
    /// empty.
    bool Assign(const KQexClip& pClip, const std::string& pTakeName, KQexFigureReport& pReport) noexcept;

    /// The scene, owned by the figure; null before a successful Load().
    KQexScene* GetScene() const { return mScene; }

    /// Hands the scene over to the caller, who destroys it. The figure is empty afterwards.
    KQexScene* ReleaseScene();

    /// The nodes at the top of the file's trees; empty before a successful Load().
    const std::vector<KQexNode*>& GetRoots() const { return mRoots; }

    /// The top node of the skeleton: the only root, or the scene's root node if there are several. Null before a successful Load().
    KQexNode* GetTop() const { return mRoots.size() == 1 ? mRoots.front() : mScene != nullptr ? mScene->GetRootNode() : nullptr; }

    /// The takes, in the order of the files; empty for a figure without motion.
    const std::vector<KQexFigureTake>& GetTakes() const { return mTakes; }

    /// Degrees of freedom and limits by bone; null if the file has none.
    const KQexBoneDofs* GetBoneDofs() const { return mHasDofs ? &mDofs : nullptr; }

    /// The degrees of freedom of \p pTake, one of GetTakes(), with the values that its file has for them, if the options' mKeepDofValues was
    /// set: of an AMC file those of every bone, of a BVH file the channels of every joint, without limits. Joint by joint, in pre-order,
    /// each joint's in the order of application. Empty for glTF, whose rotations are quaternions. Valid as long as the take and its
    /// scene are. False out of memory.
    bool GetDofTracks(const KQexFigureTake& pTake, std::vector<KQexDofTrack>& pTracks) const noexcept;

    /// Makes a clip of \p pTake (null: the rest pose) at the times of \p pSampling, see KQexClip::FromScene(). Its degrees of freedom are
    /// those of GetBoneDofs(); if \p pOptions has none and mKeepDofValues was set, those of GetDofTracks() with their values.
    /// False, with \p pClip unchanged, when there is no frame, the options' progress callback cancels, memory runs out, and before a
    /// successful Load().
    bool MakeClip(const KQexFigureTake* pTake, const KQexSampling& pSampling, const KQexClipOptions& pOptions,
                  KQexClip& pClip) const noexcept;

    /// A clip of the whole of \p pTake, one of GetTakes(), at \p pRate frames a second (0: its own); null: of the rest pose, one frame.
    /// With the degrees of freedom as above. False, with \p pClip unchanged and an error in \p pReport, when the rate leaves no frame or
    /// far more than the file has, and when memory runs out; also when cancelled.
    bool MakeClip(const KQexFigureTake* pTake, double pRate, const KQexClipOptions& pOptions, KQexClip& pClip,
                  KQexFigureReport& pReport) const noexcept;

    /// Removes the limits, not the degrees of freedom, from GetBoneDofs().
    void DropLimits();

    /// The ASF skeleton that was read; null for other formats. Owned by the figure.
    KQexAsfScene* GetSkeleton() const { return mSkeleton.get(); }

    /// Details of the ASF file that the skeleton does not keep; empty for other formats.
    const KQexAmcSkeletonNotes& GetSkeletonNotes() const { return mSkeletonNotes; }

    /// All joints in pre-order, the trees one after the other. Valid as long as the tree is not changed.
    const std::vector<KQexFigureJoint>& GetJoints() const { return mJoints; }

    /// The frames of \p pTake, one of GetTakes(): those that the file has. 16 bytes a frame. False out of memory.
    bool CollectFrames(const KQexFigureTake& pTake, KQexFigureFrames& pFrames) const noexcept;

    /// World positions of all joints at \p pTime of \p pTake; null: at rest. \p pPositions gets the size of GetJoints(). One pass over
    /// the tree. The evaluator's context stays. False out of memory, and before a successful Load().
    bool Evaluate(const KQexFigureTake* pTake, KTime pTime, std::vector<KQexFigurePoint>& pPositions) noexcept;

    /// False, with an error, if \p pSampling has far more frames than the file of \p pTake: a file of two frames whose numbers are a
    /// billion apart would otherwise fill a disk.
    static bool CheckSpan(const KQexFigureTake& pTake, const KQexSampling& pSampling, KQexFigureReport& pReport) noexcept;

private:
    bool LoadFiles(const KQexFigureFiles& pFiles, const KQexFigureOptions& pOptions, KQexFigureReport& pReport);
    bool LoadAcclaim(const KQexFigureFiles& pFiles, const KQexFigureOptions& pOptions, KQexFigureReport& pReport);
    void AddAcclaimTake(const KQexImportedTake& pTake, const KQexFigureFile& pMotion, KQexFigureReport& pReport);
    bool LoadBvh(const KQexFigureFile& pFile, const KQexFigureOptions& pOptions, KQexFigureReport& pReport);
    bool LoadGltf(const KQexFigureFile& pFile, const KQexFigureOptions& pOptions, KQexFigureReport& pReport);
    bool PickTake(const KQexFigureOptions& pOptions, KQexFigureReport& pReport);
    void MakeScene();
    void FinishScene();
    bool AssignClip(const KQexClip& pClip, const std::string& pTakeName, KQexFigureReport& pReport);
    void SetDofs(const KQexClipData& pData, const std::vector<const KQexNode*>& pNodes);
    void CollectJoints();
    bool IsEnd(const KQexNode& pNode) const;
    void Clear();

    KQexScene*                   mScene = nullptr;
    std::vector<KQexNode*>       mRoots;
    std::vector<KQexFigureTake>  mTakes;
    std::vector<KQexFigureJoint> mJoints;
    KQexBoneDofs                 mDofs;
    bool                         mHasDofs = false;
    KQexAsfSceneOwner            mSkeleton;
    KQexAmcSkeletonNotes         mSkeletonNotes;
    KQexGlobalTransforms         mTransforms;
};

/// Whether a node has the name of a dummy that an export inserted: that of one of its children, with the suffix "Dummy".
QEX_API bool IsFigureDummy(const KQexNode& pNode);

} // namespace qexsdk

#endif
