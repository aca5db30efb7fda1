#ifndef APPS_ASF_REPORT_MOTIONSURVEY_H
#define APPS_ASF_REPORT_MOTIONSURVEY_H

#include <apps/asf/figure/loading.h>
#include <apps/asf/report/skeletonfile.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <vector>

namespace asfapp
{

/// The range of a degree of freedom in a motion, and its limits. Degrees, or the file's unit of length.
struct KDofSurvey
{
    int       mCode = 0;
    double    mLowest = 0;
    double    mHighest = 0;
    bool      mHasMin = false;
    bool      mHasMax = false;
    double    mMin = 0; ///< Limits of the skeleton; valid if mHasMin, mHasMax.
    double    mMax = 0;
    long long mOutside = 0;      ///< Number of frames outside the limits.
    long long mFirstOutside = 0; ///< Frame number of the first of them.
};

struct KBoneSurvey
{
    std::string             mName;
    long long               mFrames = 0; ///< Number of frames with values for the bone.
    std::vector<KDofSurvey> mDofs;

    bool Moves() const;
};

/// Statistics of a motion, collected in one pass through its file.
class KMotionSurvey : private qexsdk::KQexAmcVisitor
{
public:
    /// Reads the skeleton and the first motion of \p pFiles; with \p pAllErrors, on after an error of the motion. The messages are the
    /// motion's; those of a skeleton that fails are printed. False, and the exit status raised, if either cannot be read.
    bool Read(const qexsdk::KQexFigureFiles& pFiles, const KMotionOptions& pOptions, bool pAllErrors, KConsole& pConsole);

    const KMessages&                GetMessages() const { return mMessages; }
    bool                            IsOk() const { return mOk; }
    const qexsdk::KQexAmcInfo&      GetInfo() const { return mInfo; }
    const std::vector<KBoneSurvey>& GetBones() const { return mBones; }

    /// Seconds from the lowest frame to the highest.
    double GetSeconds() const;

    /// Centimetres: the length of the root's path, and the distance from its first position to its last.
    double GetRootPathLength() const { return mRootPathLength; }
    double GetRootTravel() const;

    int CountMoving() const;

private:
    bool Frame(const qexsdk::KQexAmcFrame& pFrame) override;
    void AddBones(const qexsdk::KQexAmcFrame& pFrame);
    void AddValues(const qexsdk::KQexAmcFrame& pFrame, size_t pBone);
    void AddRootPosition(const qexsdk::KQexAmcFrame& pFrame);

    KMessages                mMessages;
    bool                     mOk = false;
    qexsdk::KQexAmcInfo      mInfo;
    std::vector<KBoneSurvey> mBones;
    double                   mRootPathLength = 0;
    KPoint                   mRootFirst;
    KPoint                   mRootLast;
};

/// Prints a summary of a motion and the table of its degrees of freedom, as text.
void WriteMotionInfo(const qexsdk::KQexFigureFiles& pFiles, const KMotionSurvey& pSurvey, KConsole& pConsole);

/// The same as one JSON object on one line (docs/json.md), also for a read that failed.
void WriteMotionJson(const qexsdk::KQexFigureFiles& pFiles, const KMotionSurvey& pSurvey, KConsole& pConsole);

} // namespace asfapp

#endif
