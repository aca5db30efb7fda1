#ifndef QEXFIGURE_CHECK_KQEXFIGURESURVEY_H
#define QEXFIGURE_CHECK_KQEXFIGURESURVEY_H

#include <qexfigure/check/kqexfilemessages.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurefile.h>
#include <qexfigure/kqexfigurereport.h>

#include <string>
#include <vector>

/// \file
/// A file with its own motion (BVH, glTF) in numbers.

namespace qexsdk
{

/// How a joint moves in one or more takes.
struct QEX_API KQexJointMoves
{
    bool mRotates = false;    ///< Its rotation changes.
    bool mTranslates = false; ///< Its translation changes.
    bool mScales = false;     ///< Its scaling changes.

    /// Whether anything changes.
    bool Any() const { return mRotates || mTranslates || mScales; }
};

/// Statistics of a take.
struct QEX_API KQexTakeSurvey
{
    std::string mName;               ///< Of the take.
    long long   mFrameCount = 0;     ///< Frames in the file.
    long long   mFirstFrame = 0;     ///< Lowest number.
    long long   mLastFrame = 0;      ///< Highest number.
    double      mRate = 0;           ///< Frames per second.
    double      mSeconds = 0;        ///< From the first frame to the last.
    int         mMoving = 0;         ///< Joints that move.
    double      mRootTravel = 0;     ///< Distance from the first root's first position to its last, in centimetres.
    double      mRootPathLength = 0; ///< Length of its path, in centimetres.
};

/// A figure with its own motion: its joints at rest, and its takes.
class QEX_API KQexFigureSurvey
{
public:
    /// Loads \p pFile. False, and the status of \p pReport raised, if that fails; what is wrong with the file is in GetMessages().
    bool Read(const KQexFigureFile& pFile, const KQexProgress& pProgress, KQexFigureReport& pReport) noexcept;

    /// Errors and warnings.
    const KQexFileMessages& GetMessages() const { return mMessages; }

    /// Whether the file was read.
    bool IsOk() const { return mOk; }

    /// All joints in pre-order.
    const std::vector<KQexFigureJoint>& GetJoints() const { return mFigure.GetJoints(); }

    /// By joint: world position at rest.
    const std::vector<KQexFigurePoint>& GetRest() const { return mRest; }

    /// By joint: 0 at a root.
    const std::vector<int>& GetDepths() const { return mDepths; }

    /// By joint: how it moves in any take.
    const std::vector<KQexJointMoves>& GetMoves() const { return mMoves; }

    /// The takes, in the order of the file.
    const std::vector<KQexTakeSurvey>& GetTakes() const { return mTakes; }

    /// Degrees of freedom and limits by bone; null if the file has none.
    const KQexBoneDofs* GetBoneDofs() const { return mFigure.GetBoneDofs(); }

    /// Distance from the parent at rest, in centimetres; 0 at a root.
    double GetLength(size_t pJoint) const;

    /// Bounding box of the joints at rest. False without joints.
    bool GetBounds(KQexFigurePoint& pMin, KQexFigurePoint& pMax) const;

    /// Number of ends of leaf bones.
    int CountEnds() const;

    /// The largest depth of a joint.
    int GetDepth() const;

    /// Adds warnings about what may surprise in other programs: names used twice, takes in which nothing moves. False, with the status of
    /// \p pReport raised, out of memory.
    bool AddFindings(KQexFigureReport& pReport) noexcept;

private:
    bool ReadFile(const KQexFigureFile& pFile, const KQexProgress& pProgress, KQexFigureReport& pReport);
    void CollectJoints();
    void CollectFindings();
    void AddTake(const KQexFigureTake& pTake);
    void MeasureRootPath(const KQexFigureTake& pTake, const KQexFigureFrames& pFrames, KQexTakeSurvey& pSurvey);

    KQexFigure                   mFigure;
    KQexFileMessages             mMessages;
    bool                         mOk = false;
    std::vector<KQexFigurePoint> mRest;
    std::vector<int>             mDepths;
    std::vector<KQexJointMoves>  mMoves;
    std::vector<KQexTakeSurvey>  mTakes;
};

} // namespace qexsdk

#endif
