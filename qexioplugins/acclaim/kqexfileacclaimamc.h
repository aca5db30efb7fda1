#ifndef QEXIOPLUGINS_ACCLAIM_KQEXFILEACCLAIMAMC_H
#define QEXIOPLUGINS_ACCLAIM_KQEXFILEACCLAIMAMC_H

#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqexskeletonmatch.h>
#include <qexioplugins/motion/kqexmotionio.h>
#include <qexioplugins/motion/kqextextfile.h>
#include <qexscene/kqexdoftrack.h>
#include <qexscene/kqexframesink.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// \file
/// Acclaim motion files (AMC): for every frame a line with its number, then one line per bone with the values of its degrees of
/// freedom. Which DOFs these are, in which order and units, is defined by the skeleton file; :DEGREES or :RADIANS overrides the
/// unit of angles.

namespace qexsdk
{

class KQexAmcWriter;

/// The unit of a motion's angles.
enum KQexAmcAngle
{
    eAMC_ANGLE_SKELETON, ///< Not stated: the skeleton's own angle unit.
    eAMC_ANGLE_DEGREES,  ///< :DEGREES
    eAMC_ANGLE_RADIANS   ///< :RADIANS
};

/// Header of a motion file: what precedes its first frame.
struct QEX_API KQexAmcHeader
{
    std::string
        mAsfFile; ///< Skeleton of :ASF-FILE, else (PeekHeader() only) of #!OML:ASF; often another machine's path. Empty when absent.
    std::string  mAsfPath;                ///< Skeleton's folder in :ASF-PATH. Empty when absent.
    double       mSamplesPerSecond = 0.0; ///< :SAMPLES-PER-SECOND; 0 when absent or invalid.
    double       mCommentRate = 0.0;      ///< Rate in a comment "# samples-per-second 30" of the first lines; 0 when absent or invalid.
    KQexAmcAngle mAngle = eAMC_ANGLE_SKELETON; ///< Unit of the angles.
    bool         mHasFrameRange = false;       ///< Whether there is a valid :FRAME-RANGE.
    long long    mFrameRange[2] = {0, 0};      ///< First and last frame number of :FRAME-RANGE; not checked against the frames.
};

/// Details of a skeleton file that the model does not keep but a motion reader needs.
struct QEX_API KQexAmcSkeletonNotes
{
    std::vector<KQexAsfLengthDof> mLengthDofs; ///< All `l` words, for each bone in the order of its dof line.
    std::vector<std::string> mRemovedBones;    ///< Bones of the file that the clean-up removed: their lines are ignored without a warning.
    std::vector<std::string> mAddedEnds;       ///< Leaf bones whose ends a writer added: the import makes no node for these.
};

/// How a motion is read.
struct QEX_API KQexAmcReadOptions
{
    double mSamplesPerSecond = 0.0;      ///< Frames per second; 0: the file's :SAMPLES-PER-SECOND, else its comment's, else 120.
    bool   mSetRotatePivotOffet = false; ///< Frame flag: the same as in reading the skeleton and in the import.
    bool   mSetPreRotation = false;      ///< Frame flag: the same as in reading the skeleton and in the import.
    bool   mKeepGoodFrames = false;      ///< After an error, keep the complete frames before it, when there are any.
    bool   mFindMoreErrors = false; ///< After an error, go on with the next frame, to report more of them; no other effect on the result.
    KQexAmcSkeletonNotes mSkeletonNotes;       ///< Notes of the skeleton's file.
    KQexDofValues*       mDofValues = nullptr; ///< Read(): receives the file's own values of the degrees of freedom, if it is not null.
    KQexProgress         mProgress;            ///< Called from time to time while reading. Empty: never.
};

/// Where a motion's rate comes from.
enum KQexAmcRateSource
{
    eAMC_RATE_CALLER, ///< The caller's options.
    eAMC_RATE_FILE,   ///< The file: :SAMPLES-PER-SECOND, else a comment.
    eAMC_RATE_DEFAULT ///< Neither: 120.
};

/// What was read.
struct QEX_API KQexAmcInfo
{
    long long         mFrameCount = 0;                 ///< Number of complete frames; repeated numbers count again.
    long long         mFirstFrame = 0;                 ///< Number of the first frame in the file: the one at time 0.
    long long         mLowestFrame = 0;                ///< Lowest frame number.
    long long         mHighestFrame = 0;               ///< Highest frame number.
    double            mSamplesPerSecond = 0.0;         ///< Rate that the times were computed with.
    KQexAmcRateSource mRateSource = eAMC_RATE_DEFAULT; ///< Where that rate comes from.
    KTime             mStart;                          ///< Time of the lowest frame.
    KTime             mStop;                           ///< Time of the highest frame; for a single frame, of its end.
    bool              mCancelled = false;              ///< The progress function cancelled.
    KQexSkeletonMatch mMatch;                          ///< How well the bones with lines match the skeleton; set when the read succeeds.
};

/// A bone and its current values.
struct QEX_API KQexAmcBone
{
    HKQexAsfNode mNode = nullptr; ///< The bone, not owned.
    double       mValues[6] = {}; ///< Last values read, in the order of mOrderBuf, in the file's units; 0 before the first.
    long long    mFrame = -1;     ///< KQexAmcFrame::mIndex of the frame that gave them; -1 for none.
};

/// One complete frame.
struct QEX_API KQexAmcFrame
{
    long long                       mIndex = 0;          ///< Index in file order, from 0.
    long long                       mNumber = 0;         ///< Frame number.
    KTime                           mTime;               ///< Time of that number; the first frame of the file is at 0.
    bool                            mLate = false;       ///< Its number is not above all earlier ones in the file.
    double                          mLengthFactor = 1.0; ///< Factor of the file's translation values, to centimetres.
    double                          mAngleFactor = 1.0;  ///< Factor of the file's angles, to degrees.
    const std::vector<KQexAmcBone>* mBones = nullptr;    ///< All bones that have a DOF, in pre-order.
    const std::vector<int>*         mPresent = nullptr;  ///< Indices into mBones of the bones that the frame has lines for, in file order.
};

/// Receives a motion frame by frame.
class QEX_API KQexAmcVisitor
{
public:
    virtual ~KQexAmcVisitor();

    /// Called for each complete frame. The frame and what it points to are valid during the call. False stops the read, which fails;
    /// so does std::bad_alloc, which it may throw.
    virtual bool Frame(const KQexAmcFrame& pFrame) = 0;
};

/// A bone and the node that moves it.
struct QEX_API KQexAmcPair
{
    HKQexAsfNode mBone = nullptr; ///< Not owned.
    KQexNode*    mNode = nullptr; ///< Not owned.
};

/// How the rest poses of a skeleton and of the nodes that move it are compared.
enum KQexAmcRestAlignment
{
    eAMC_REST_FIND,  ///< Found from the directions of the bones: one of the following, another rotation, or two poses of one figure.
    eAMC_REST_WORLD, ///< In world space.
    eAMC_REST_ROOT   ///< Relative to the root's node, as after extraction from the nodes.
};

/// How a motion is written.
struct QEX_API KQexAmcWriteOptions
{
    KQexAnimStack*       mStack = nullptr;                ///< Take; null: the rest pose in all frames.
    KQexSampling         mSampling;                       ///< Frames to write; the first gets number 1.
    KQexAnimStack*       mRestStack = nullptr;            ///< Take whose pose at time zero is the nodes' rest pose; null: their defaults.
    KQexAmcRestAlignment mRestAlignment = eAMC_REST_FIND; ///< How the skeleton's rest pose relates to the nodes'.
    double               mScale = 1.0;                    ///< Factor of the nodes' positions.
    bool                 mWriteRate = false; ///< Write :SAMPLES-PER-SECOND, not only the comment; some readers do not accept it.
    std::string          mAsfName;           ///< Skeleton file named in the first line's comment; empty: none.
    KQexAmcSkeletonNotes mSkeletonNotes;     ///< Notes of the skeleton's file: each `l` gets a zero.
    int mThreads = 0;       ///< Threads that evaluate and format; 0: as many as the machine has, at most 4. The bytes do not depend on it.
    KQexProgress mProgress; ///< Called from time to time; false cancels. Empty: never.
};

/// Reads and writes AMC files for the bones of a skeleton. Used by one thread at a time; a read changes neither the bones' frames
/// nor any shared table, so that several files may be read concurrently onto different skeletons.
///
/// A file is opened with the operations of the base class, then read once. Messages are kept by the base class.
class QEX_API KQexFileAcclaimAmc : public KQexTextFile
{
public:
    /// \param pVerb print every message to standard error as well
    explicit KQexFileAcclaimAmc(bool pVerb);

    /// Closes the file.
    virtual ~KQexFileAcclaimAmc();

    /// Samples the open file into curves of the skeleton's bones: from CreateDataFromDOF() to StopSamplingData() on its root.
    /// Key times are those of the frame numbers, the first frame of the file at time 0. A bone holds its last value through
    /// frames that lack it. A motion of a single frame is sampled twice, one frame apart, so that its pose is kept.
    ///
    /// \param pAsfScene skeleton with computed frames; its bones own the curves afterwards
    /// \param pScene host scene in which the curves are made
    /// \param pOptions rate, flags, notes and progress
    /// \return true when the motion was read; false after an error (see GetMessages()), when the progress function cancelled, or
    ///   when there is no frame to keep. The bones then own no curves, and \p pScene is unchanged.
    bool Read(KQexAsfScene* pAsfScene, KQexScene* pScene, const KQexAmcReadOptions& pOptions);

    /// Reads the open file frame by frame without a host scene; nothing of the skeleton changes. Otherwise as Read().
    bool ReadFrames(KQexAsfScene* pAsfScene, const KQexAmcReadOptions& pOptions, KQexAmcVisitor& pVisitor);

    /// Writes a take as DOF values of \p pAsfScene's bones (frames computed with both flags false). Sampled by AddSampleFromDOF(),
    /// they move each bone relative to its rest pose as its node moves relative to its own. Angles are in degrees and continuous
    /// from frame to frame, lengths are in the skeleton's unit. Values have the digits that the nodes' single-precision curves can
    /// hold, with at most six decimals, so that writing what was read changes nothing.
    ///
    /// The first of \p pPairs is the root; every other pair's node is below the root's. Bones without a node stay at rest: zeros.
    /// Motion that a bone's DOFs cannot express is lost, with one warning per bone that gives the largest error; the descendants
    /// compensate as far as their DOFs can.
    /// \return false when something could not be written, memory runs out or the progress function cancels; then call Discard()
    bool Write(KQexAsfScene* pAsfScene, const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions);

    /// The first part of Write(): everything before the frames. They come from KQexRunFrames(), called with the sink that is returned, the
    /// root's node alone, and the options' take and sampling; other outputs may share that run. Null when Write() would be false. Owned by
    /// the file, until EndWrite(); \p pAsfScene must live as long.
    KQexFrameSink* BeginWrite(KQexAsfScene* pAsfScene, const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions);

    /// The last part: \p pResult is that of the run. False as Write().
    bool EndWrite(KQexRunResult pResult);

    /// Count, numbers and rate of the last read.
    const KQexAmcInfo& GetInfo() const { return mInfo; }

    /// Header of the last read.
    const KQexAmcHeader& GetHeader() const { return mHeader; }

    /// Reads only the header of a file.
    /// \return false, with the cause in \p pReason, when the file cannot be opened or read
    static bool PeekHeader(const char* pPath, KQexAmcHeader& pHeader, std::string& pReason);

    /// The same for a file in memory. False when it cannot be read, or memory runs out.
    static bool PeekHeaderBuffer(const char* pData, size_t pSize, KQexAmcHeader& pHeader);

    static constexpr int kMaxErrors = 100; ///< Errors after which KQexAmcReadOptions::mFindMoreErrors finds no more.

    static const char smType[]; ///< "AMC"
    static const char smDel[];  ///< Delimiters of tokens.
    static const char smCom[];  ///< Comment character.

protected:
    /// Reads the rate from a comment line.
    void HeaderLine(std::string_view pLine) override;

private:
    KQexAmcInfo                    mInfo;
    KQexAmcHeader                  mHeader;
    std::unique_ptr<KQexAmcWriter> mWriter; ///< Between BeginWrite() and EndWrite().
};

} // namespace qexsdk

#endif
