#ifndef APPS_ASF_REPORT_FIGURESURVEY_H
#define APPS_ASF_REPORT_FIGURESURVEY_H

#include <apps/asf/console.h>
#include <apps/asf/figure/point.h>
#include <apps/asf/report/skeletonfile.h>

#include <string>
#include <vector>

namespace asfapp
{

/// How a joint moves in one or more takes.
struct KJointMoves
{
    bool mRotates = false;
    bool mTranslates = false;
    bool mScales = false;

    bool Any() const { return mRotates || mTranslates || mScales; }
};

/// Statistics of a take.
struct KTakeSurvey
{
    std::string mName;
    long long   mFrameCount = 0;
    long long   mFirstFrame = 0;
    long long   mLastFrame = 0;
    double      mRate = 0;
    double      mSeconds = 0; ///< From the first frame to the last.
    int         mMoving = 0;  ///< Joints that move.
    double      mRootTravel = 0;
    double      mRootPathLength = 0; ///< Centimetres, both.
};

/// A figure with its own motion (BVH, glTF): its joints at rest, and its takes.
class KFigureSurvey
{
public:
    /// Loads \p pFile. Prints nothing: the messages are in GetMessages(). False, and the exit status raised, if that fails.
    bool Read(const qexsdk::KQexFigureFile& pFile, KConsole& pConsole);

    const KMessages& GetMessages() const { return mMessages; }
    bool             IsOk() const { return mOk; }

    const std::vector<qexsdk::KQexFigureJoint>& GetJoints() const { return mFigure.GetJoints(); }
    const std::vector<KPoint>&                  GetRest() const { return mRest; }     ///< By joint: world position at rest.
    const std::vector<int>&                     GetDepths() const { return mDepths; } ///< By joint: 0 at a root.
    const std::vector<KJointMoves>&             GetMoves() const { return mMoves; }   ///< By joint: how it moves in any take.
    const std::vector<KTakeSurvey>&             GetTakes() const { return mTakes; }
    const qexsdk::KQexBoneDofs*                 GetBoneDofs() const { return mFigure.GetBoneDofs(); }

    /// Distance from the parent at rest, in centimetres; 0 at a root.
    double GetLength(size_t pJoint) const;

    /// Bounding box of the joints at rest. False without joints.
    bool GetBounds(KPoint& pMin, KPoint& pMax) const;

    int CountEnds() const;
    int GetDepth() const;

    /// Adds warnings about what other commands may stumble over.
    void AddFindings();

private:
    void CollectJoints();
    void AddTake(const qexsdk::KQexFigureTake& pTake);
    void MeasureRootPath(const qexsdk::KQexFigureTake& pTake, const qexsdk::KQexFigureFrames& pFrames, KTakeSurvey& pSurvey);

    qexsdk::KQexFigure       mFigure;
    KMessages                mMessages;
    bool                     mOk = false;
    std::vector<KPoint>      mRest;
    std::vector<int>         mDepths;
    std::vector<KJointMoves> mMoves;
    std::vector<KTakeSurvey> mTakes;
};

/// Prints a summary of a figure, its takes and its joints, as text.
void WriteFigureInfo(const qexsdk::KQexFigureFile& pFile, const KFigureSurvey& pSurvey, KConsole& pConsole);

/// The same as one JSON object on one line (docs/json.md), also for a read that failed.
void WriteFigureJson(const qexsdk::KQexFigureFile& pFile, const KFigureSurvey& pSurvey, KConsole& pConsole);

} // namespace asfapp

#endif
