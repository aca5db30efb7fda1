#ifndef APPS_ASF_REPORT_MOTIONSURVEY_H
#define APPS_ASF_REPORT_MOTIONSURVEY_H

#include <apps/asf/figure/motioninput.h>
#include <apps/asf/figure/skeletonfile.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <vector>

namespace asfapp
{

/// What one degree of freedom does in a motion, in degrees or in the file's unit of length, and how it keeps to its limits.
struct KDofSurvey
{
    int       mCode = 0;
    double    mLeast = 0;
    double    mGreatest = 0;
    bool      mHasMin = false;
    bool      mHasMax = false;
    double    mMin = 0; ///< Limits, where the skeleton has them.
    double    mMax = 0;
    long long mOutside = 0;      ///< Number of frames outside the limits.
    long long mFirstOutside = 0; ///< Number of the first of them.
};

struct KBoneSurvey
{
    std::string             mName;
    long long               mFrames = 0; ///< Frames that give the bone values of its own.
    std::vector<KDofSurvey> mDofs;

    bool Moves() const;
};

/// What is in a motion, found out in one pass over its file.
class KMotionSurvey : private qexsdk::KQexAmcVisitor
{
public:
    /// Reads skeleton and motion. Of the skeleton only errors are among the messages. False when the motion cannot be read;
    /// the exit status is raised.
    bool Read(const KMotionInput& pInput, const KMotionOptions& pOptions, KConsole& pConsole);

    const KMessages&                GetMessages() const { return mMessages; }
    bool                            IsOk() const { return mOk; }
    const qexsdk::KQexAmcInfo&      GetInfo() const { return mInfo; }
    const std::vector<KBoneSurvey>& GetBones() const { return mBones; }

    /// Seconds from the lowest frame to the highest.
    double GetSeconds() const;

    /// Centimetres: the root's way, and from its first place to its last.
    double GetRootWay() const { return mRootWay; }
    double GetRootTravel() const;

    int  CountMoving() const;
    bool HasOutside() const;

private:
    bool Frame(const qexsdk::KQexAmcFrame& pFrame) override;
    void AddBones(const qexsdk::KQexAmcFrame& pFrame);
    void AddValues(const qexsdk::KQexAmcFrame& pFrame, size_t pBone);
    void FollowRoot(const qexsdk::KQexAmcFrame& pFrame);

    KMessages                mMessages;
    bool                     mOk = false;
    qexsdk::KQexAmcInfo      mInfo;
    std::vector<KBoneSurvey> mBones;
    double                   mRootWay = 0;
    KPoint                   mRootFirst;
    KPoint                   mRootLast;
};

/// "(-10 170)", "" without limits.
std::string LimitsText(const KDofSurvey& pDof);

/// Prints what a motion is, and the table of its degrees of freedom, for people.
void WriteMotionInfo(const KMotionInput& pInput, const KMotionSurvey& pSurvey, KConsole& pConsole);

/// The same as one JSON object on one line (docs/json.md), also for a read that failed.
void WriteMotionJson(const KMotionInput& pInput, const KMotionSurvey& pSurvey, KConsole& pConsole);

} // namespace asfapp

#endif
