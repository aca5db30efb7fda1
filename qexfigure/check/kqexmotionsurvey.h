#ifndef QEXFIGURE_CHECK_KQEXMOTIONSURVEY_H
#define QEXFIGURE_CHECK_KQEXMOTIONSURVEY_H

#include <qexfigure/check/kqexfilemessages.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurefiles.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <string>
#include <vector>

/// \file
/// An AMC motion's file in numbers, read without a scene.

namespace qexsdk
{

/// The range of a degree of freedom in a motion, and its limits. Degrees, or the file's unit of length.
struct QEX_API KQexDofSurvey
{
    int       mCode = 0;         ///< See kDofWords.
    double    mLowest = 0;       ///< Lowest value in the motion.
    double    mHighest = 0;      ///< Highest value in the motion.
    bool      mHasMin = false;   ///< The skeleton has a lower limit.
    bool      mHasMax = false;   ///< The skeleton has an upper limit.
    double    mMin = 0;          ///< Lower limit; valid if mHasMin.
    double    mMax = 0;          ///< Upper limit; valid if mHasMax.
    long long mOutside = 0;      ///< Number of frames outside the limits.
    long long mFirstOutside = 0; ///< Frame number of the first of them.
};

/// The degrees of freedom of a bone in a motion.
struct QEX_API KQexBoneSurvey
{
    std::string                mName;       ///< Of the bone.
    long long                  mFrames = 0; ///< Number of frames with values for the bone.
    std::vector<KQexDofSurvey> mDofs;       ///< In the order of the bone's values.

    /// Whether a value changes.
    bool Moves() const;
};

/// How to read a motion.
struct QEX_API KQexMotionSurveyOptions
{
    double       mMotionRate = 0;         ///< Frames per second; 0: the file's rate, else 120.
    bool         mAllowUnmatched = false; ///< Accept a motion of another skeleton, see KQexSkeletonMatch.
    bool         mFindMoreErrors = false; ///< After an error in the motion, go on with the next frame.
    KQexProgress mProgress;               ///< Called with the fraction read, 0 to 1; false cancels. May be empty.
};

/// Statistics of a motion, collected in one pass through its file.
class QEX_API KQexMotionSurvey : private KQexAmcVisitor
{
public:
    /// Reads the skeleton and the first motion of \p pFiles. False, and the status of \p pReport raised, if either cannot be read. What is
    /// wrong with the motion is in GetMessages(), what is wrong with its skeleton in \p pReport.
    bool Read(const KQexFigureFiles& pFiles, const KQexMotionSurveyOptions& pOptions, KQexFigureReport& pReport) noexcept;

    /// Errors and warnings about the motion, by line.
    const KQexFileMessages& GetMessages() const { return mMessages; }

    /// Whether the motion was read.
    bool IsOk() const { return mOk; }

    /// Count, numbers and rate of the frames.
    const KQexAmcInfo& GetInfo() const { return mInfo; }

    /// The bones with degrees of freedom, in pre-order.
    const std::vector<KQexBoneSurvey>& GetBones() const { return mBones; }

    /// Seconds from the lowest frame to the highest.
    double GetSeconds() const;

    /// Length of the root's path, in centimetres.
    double GetRootPathLength() const { return mRootPathLength; }

    /// Distance from the root's first position to its last, in centimetres.
    double GetRootTravel() const;

    /// Number of bones that move.
    int CountMoving() const;

private:
    bool ReadMotion(const KQexFigureFiles& pFiles, const KQexMotionSurveyOptions& pOptions, KQexFigureReport& pReport);
    bool Frame(const KQexAmcFrame& pFrame) override;
    void AddBones(const KQexAmcFrame& pFrame);
    void AddValues(const KQexAmcFrame& pFrame, size_t pBone);
    void AddRootPosition(const KQexAmcFrame& pFrame);

    KQexFileMessages            mMessages;
    bool                        mOk = false;
    bool                        mIsOutOfMemory = false;
    KQexAmcInfo                 mInfo;
    std::vector<KQexBoneSurvey> mBones;
    double                      mRootPathLength = 0;
    KQexFigurePoint             mRootFirst;
    KQexFigurePoint             mRootLast;
};

} // namespace qexsdk

#endif
