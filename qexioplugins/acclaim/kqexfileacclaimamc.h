#ifndef QEXIOPLUGINS_ACCLAIM_KQEXFILEACCLAIMAMC_H
#define QEXIOPLUGINS_ACCLAIM_KQEXFILEACCLAIMAMC_H

#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/motion/kqexmotionio.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <functional>
#include <string>
#include <vector>

/// \file
/// Acclaim motion files (AMC): for every frame its number on a line, then a line a bone with the values of its degrees of
/// freedom. What the values mean (which DOFs, in which order, in which units) is told by the skeleton file alone.

namespace qexsdk
{

/// The unit of a motion's angles.
enum KQexAmcAngle
{
    eAMC_ANGLE_SKELETON, ///< Not told: the skeleton's own angle unit.
    eAMC_ANGLE_DEGREES,  ///< :DEGREES
    eAMC_ANGLE_RADIANS   ///< :RADIANS
};

/// What stands above the first frame of a motion file.
struct QEX_API KQexAmcHeader
{
    std::string  mAsfFile; ///< Skeleton file as :ASF-FILE, else #!OML:ASF names it; often a path of another machine. Empty when not told.
    std::string  mAsfPath; ///< Folder of the skeleton as :ASF-PATH tells it. Empty when not told.
    double       mSamplesPerSecond = 0.0;      ///< :SAMPLES-PER-SECOND; 0 when not told or not usable.
    KQexAmcAngle mAngle = eAMC_ANGLE_SKELETON; ///< Unit of the angles.
    bool         mHasFrameRange = false;       ///< Whether :FRAME-RANGE was told.
    long long    mFrameRange[2] = {0, 0};      ///< First and last frame number of :FRAME-RANGE. Told by the file, not checked against it.
};

/// What a reader of motion must know of a skeleton's file beyond the model: the model keeps neither.
struct QEX_API KQexAmcSkeletonNotes
{
    std::vector<KQexAsfLengthDof> mLengthDofs; ///< All `l` words, for each bone in the order of its dof line.
    std::vector<std::string>
        mRemovedBones; ///< Bones of the file that the clean-up took away: their lines are passed over without a warning.
};

/// How a motion is read.
struct QEX_API KQexAmcReadOptions
{
    double               mSamplesPerSecond = 0.0;      ///< Frames a second; 0: the file's :SAMPLES-PER-SECOND, else 120.
    bool                 mSetRotatePivotOffet = false; ///< Frame flag: the same as in reading the skeleton and in the import.
    bool                 mSetPreRotation = false;      ///< Frame flag: the same as in reading the skeleton and in the import.
    bool                 mKeepGoodFrames = false;      ///< After an error, keep the complete frames before it, when there are any.
    KQexAmcSkeletonNotes mSkeletonNotes;               ///< What the skeleton's file said beyond the model.
    KQexProgress         mProgress;                    ///< Called now and then while reading. Empty: never.
};

/// Where a motion's rate comes from.
enum KQexAmcRateSource
{
    eAMC_RATE_CALLER, ///< The caller's options.
    eAMC_RATE_FILE,   ///< The file.
    eAMC_RATE_DEFAULT ///< Neither said: 120.
};

/// What was read.
struct QEX_API KQexAmcInfo
{
    long long         mFrameCount = 0;                 ///< Complete frames read; one that repeats a number counts again.
    long long         mFirstFrame = 0;                 ///< Number of the first frame in the file: the one at time 0.
    long long         mLowestFrame = 0;                ///< Lowest frame number.
    long long         mHighestFrame = 0;               ///< Highest frame number.
    double            mSamplesPerSecond = 0.0;         ///< Rate that the times were computed with.
    KQexAmcRateSource mRateSource = eAMC_RATE_DEFAULT; ///< Where that rate comes from.
    KTime             mStart;                          ///< Time of the lowest frame.
    KTime             mStop;                           ///< Time of the highest frame; of a single frame's end.
    bool              mCancelled = false;              ///< The progress call asked to stop.
};

/// One bone as the motion sees it.
struct QEX_API KQexAmcBone
{
    HKQexAsfNode mNode = nullptr; ///< The bone, not owned.
    double       mValues[6] = {}; ///< Values read last, by the bone's mOrderBuf, in the file's units; 0 before the first.
    long long    mFrame = -1;     ///< KQexAmcFrame::mIndex of the frame that gave them; -1 for none.
};

/// One complete frame.
struct QEX_API KQexAmcFrame
{
    long long                       mIndex = 0;          ///< Counted from 0 in the order of the file.
    long long                       mNumber = 0;         ///< Frame number.
    KTime                           mTime;               ///< Time of that number; the first frame of the file is at 0.
    bool                            mLate = false;       ///< Its number is not above all numbers before it in the file.
    double                          mLengthFactor = 1.0; ///< Times a translation value of the file: centimetres.
    double                          mAngleFactor = 1.0;  ///< Times an angle of the file: degrees.
    const std::vector<KQexAmcBone>* mBones = nullptr;    ///< All bones that have a DOF, in pre-order.
    const std::vector<int>*         mPresent = nullptr;  ///< Indices into mBones of the frame's own, in file order.
};

/// Takes a motion frame by frame.
class QEX_API KQexAmcVisitor
{
public:
    virtual ~KQexAmcVisitor();

    /// A complete frame was read. The frame and what it points to are valid during the call. False stops the read, which fails.
    virtual bool Frame(const KQexAmcFrame& pFrame) = 0;
};

/// A bone and the node that moves it.
struct QEX_API KQexAmcPair
{
    HKQexAsfNode mBone = nullptr; ///< Not owned.
    KQexNode*    mNode = nullptr; ///< Not owned.
};

/// How a motion is written.
struct QEX_API KQexAmcWriteOptions
{
    KQexAnimStack* mStack = nullptr;     ///< Take; null: the rest pose, whatever the frames.
    KQexSampling   mSampling;            ///< Frames to write; the first gets number 1.
    KQexAnimStack* mRestStack = nullptr; ///< The nodes' rest pose is the one at time zero in this take; null: their defaults.
    bool           mIsRootAligned =
        false; ///< The skeleton's rest pose is the nodes' as seen from their root, as extraction makes it; else both are the same in the world.
    double               mScale = 1.0;      ///< Factor of the nodes' places.
    bool                 mTellRate = false; ///< Write :SAMPLES-PER-SECOND, at which some readers stop.
    std::string          mAsfName;          ///< Skeleton file named in the first line's comment; empty: none.
    KQexAmcSkeletonNotes mSkeletonNotes;    ///< What the skeleton's file said beyond the model: where it has an `l`, a zero is written.
    int mThreads = 0;       ///< Threads that evaluate and format; 0: as many as the machine has, at most 4. The bytes do not depend on it.
    KQexProgress mProgress; ///< Called now and then; false cancels. Empty: never.
};

/// Reads AMC files onto the bones of a skeleton. Used by one thread at a time; a read touches neither the bones' frames nor any
/// keyword table, so that several files may be read at the same time onto different skeletons.
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
    /// \param pOptions rates, flags and what to tell while reading
    /// \return true when the motion was read; false after an error (see GetMessages()), when the progress call cancelled, or
    ///   when there is no frame to keep. The bones then own no curves, and \p pScene is as it was.
    bool Read(KQexAsfScene* pAsfScene, KQexScene* pScene, const KQexAmcReadOptions& pOptions);

    /// Reads the open file frame by frame without a host scene; nothing of the skeleton changes. Otherwise as Read().
    bool ReadFrames(KQexAsfScene* pAsfScene, const KQexAmcReadOptions& pOptions, KQexAmcVisitor& pVisitor);

    /// Writes a take as DOF values of \p pAsfScene's bones (frames computed with both flags false): those that, sampled by
    /// AddSampleFromDOF(), turn and move each bone relative to its rest pose as its node turns and moves relative to the node's.
    /// Angles are in degrees and continue from frame to frame, lengths are in the skeleton's unit. A value has as many digits as
    /// the nodes' single-precision curves can tell, six behind the point at most, so that writing what was read changes nothing.
    ///
    /// The first of \p pPairs is the root; every other pair's node is below the root's. Bones without a node stay at rest, which is
    /// zeros. What a bone's DOFs cannot express is left out, with one warning a bone that tells the largest error; the bones
    /// below make up for it as far as theirs can.
    /// \return false when something could not be written, memory runs out or the progress call cancels: Discard() then gives
    ///   the output up
    bool Write(KQexAsfScene* pAsfScene, const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions);

    /// Count, numbers and rate of the last read.
    const KQexAmcInfo& GetInfo() const { return mInfo; }

    /// What stood above the first frame of the last read.
    const KQexAmcHeader& GetHeader() const { return mHeader; }

    /// Reads what stands above the first frame of a file, and no further than needed.
    /// \return false, with \p pReason saying why, when the file cannot be opened or read
    static bool PeekHeader(const char* pPath, KQexAmcHeader& pHeader, std::string& pReason);

    /// The same for a file in memory.
    static void PeekHeaderBuffer(const char* pData, size_t pSize, KQexAmcHeader& pHeader);

    static const char smType[]; ///< "AMC"
    static const char smDel[];  ///< Delimiters of tokens.
    static const char smCom[];  ///< Comment character.

private:
    KQexAmcInfo   mInfo;
    KQexAmcHeader mHeader;
};

} // namespace qexsdk

#endif
