#include <qexfigure/check/kqexfiguresurvey.h>

#include <qexfigure/check/kqexbounds.h>
#include <qexfigure/kqexfigureguard.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <unordered_map>

namespace qexsdk
{

namespace
{

/// Values of a curve that differ by less than this, plus a millionth of the value, are the same: curves have single precision.
constexpr float kStillTolerance = 1e-5F;

bool CurveVaries(const KQexAnimCurve& pCurve)
{
    const int   lCount = pCurve.GetKeyCount();
    const float lFirst = lCount > 0 ? pCurve.GetValue(0) : 0;
    const float lBound = kStillTolerance + 1e-6F * std::fabs(lFirst);
    for (int lKey = 1; lKey < lCount; ++lKey)
    {
        if (std::fabs(pCurve.GetValue(lKey) - lFirst) > lBound)
        {
            return true;
        }
    }
    return false;
}

bool Varies(const KQexProperty& pProperty, const KQexAnimLayer* pLayer)
{
    const KQexAnimCurveNode* lCurves = pProperty.GetCurveNode(pLayer);
    for (unsigned int lChannel = 0; lCurves != nullptr && lChannel < 3; ++lChannel)
    {
        const KQexAnimCurve* lCurve = lCurves->GetCurve(lChannel);
        if (lCurve != nullptr && CurveVaries(*lCurve))
        {
            return true;
        }
    }
    return false;
}

} // namespace

bool KQexFigureSurvey::Read(const KQexFigureFile& pFile, const KQexProgress& pProgress, KQexFigureReport& pReport) noexcept
{
    mOk = false;
    return RunGuarded(pReport, [&] { return ReadFile(pFile, pProgress, pReport); });
}

bool KQexFigureSurvey::ReadFile(const KQexFigureFile& pFile, const KQexProgress& pProgress, KQexFigureReport& pReport)
{
    KQexFigureFiles   lFiles;
    KQexFigureOptions lOptions;
    KQexFigureReport  lReport;
    mMessages = KQexFileMessages();
    mRest.clear();
    mDepths.clear();
    mMoves.clear();
    mTakes.clear();
    lFiles.mFigure = pFile;
    lOptions.mProgress = pProgress;
    mOk = mFigure.Load(lFiles, lOptions, lReport);
    if (lReport.IsOutOfMemory())
    {
        throw std::bad_alloc();
    }
    pReport.Raise(lReport.GetStatus());
    mMessages.Add(lReport, pFile.GetDisplayPath());
    if (mOk)
    {
        CollectJoints();
        for (const KQexFigureTake& lTake : mFigure.GetTakes())
        {
            AddTake(lTake);
        }
    }
    return mOk;
}

void KQexFigureSurvey::CollectJoints()
{
    if (!mFigure.Evaluate(nullptr, KTime(0), mRest))
    {
        throw std::bad_alloc();
    }
    for (const KQexFigureJoint& lJoint : GetJoints())
    {
        mDepths.push_back(lJoint.mParent < 0 ? 0 : mDepths[static_cast<size_t>(lJoint.mParent)] + 1);
    }
    mMoves.resize(mRest.size());
}

void KQexFigureSurvey::AddTake(const KQexFigureTake& pTake)
{
    KQexFigureFrames lFrames;
    if (!mFigure.CollectFrames(pTake, lFrames))
    {
        throw std::bad_alloc();
    }
    KQexTakeSurvey lSurvey;
    lSurvey.mName = pTake.mName;
    lSurvey.mFrameCount = pTake.mFrames;
    lSurvey.mFirstFrame = lFrames.mNumbers.front();
    lSurvey.mLastFrame = lFrames.mNumbers.back();
    lSurvey.mRate = pTake.mRate;
    lSurvey.mSeconds = lFrames.mTimes.back().GetSeconds() - lFrames.mTimes.front().GetSeconds();
    const KQexAnimLayer* lLayer = KQexLayerOf(pTake.mStack);
    for (size_t lIndex = 0; lIndex < GetJoints().size(); ++lIndex)
    {
        const KQexNode& lNode = *GetJoints()[lIndex].mNode;
        KQexJointMoves  lMoves;
        lMoves.mRotates = Varies(lNode.mLocalRotation, lLayer);
        lMoves.mTranslates = Varies(lNode.mLocalTranslation, lLayer);
        lMoves.mScales = Varies(lNode.mLocalScaling, lLayer);
        lSurvey.mMoving += lMoves.Any() ? 1 : 0;
        mMoves[lIndex].mRotates = mMoves[lIndex].mRotates || lMoves.mRotates;
        mMoves[lIndex].mTranslates = mMoves[lIndex].mTranslates || lMoves.mTranslates;
        mMoves[lIndex].mScales = mMoves[lIndex].mScales || lMoves.mScales;
    }
    MeasureRootPath(pTake, lFrames, lSurvey);
    mTakes.push_back(lSurvey);
}

void KQexFigureSurvey::MeasureRootPath(const KQexFigureTake& pTake, const KQexFigureFrames& pFrames, KQexTakeSurvey& pSurvey)
{
    KQexAnimEvaluator* lEvaluator = mFigure.GetScene()->GetEvaluator();
    lEvaluator->SetContext(pTake.mStack);
    KQexFigurePoint lFirst;
    KQexFigurePoint lLast;
    for (size_t lIndex = 0; lIndex < pFrames.mTimes.size(); ++lIndex)
    {
        const KQexVector4     lT = lEvaluator->GetNodeGlobalTransform(mFigure.GetRoots().front(), pFrames.mTimes[lIndex]).GetT();
        const KQexFigurePoint lPosition = {lT.mData[0], lT.mData[1], lT.mData[2]};
        lFirst = lIndex == 0 ? lPosition : lFirst;
        pSurvey.mRootPathLength += lIndex == 0 ? 0.0 : DistanceOf(lLast, lPosition);
        lLast = lPosition;
    }
    pSurvey.mRootTravel = DistanceOf(lFirst, lLast);
}

double KQexFigureSurvey::GetLength(size_t pJoint) const
{
    const int lParent = GetJoints()[pJoint].mParent;
    return lParent < 0 ? 0.0 : DistanceOf(mRest[pJoint], mRest[static_cast<size_t>(lParent)]);
}

bool KQexFigureSurvey::GetBounds(KQexFigurePoint& pMin, KQexFigurePoint& pMax) const
{
    return FindBounds(mRest, pMin, pMax);
}

int KQexFigureSurvey::CountEnds() const
{
    return static_cast<int>(
        std::count_if(GetJoints().begin(), GetJoints().end(), [](const KQexFigureJoint& pJoint) { return pJoint.mIsEnd; }));
}

int KQexFigureSurvey::GetDepth() const
{
    return mDepths.empty() ? 0 : *std::max_element(mDepths.begin(), mDepths.end());
}

bool KQexFigureSurvey::AddFindings(KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport,
                      [&]
                      {
                          CollectFindings();
                          return true;
                      });
}

void KQexFigureSurvey::CollectFindings()
{
    std::unordered_map<std::string, long long> lCounts;
    for (const KQexFigureJoint& lJoint : GetJoints())
    {
        // Reported once, at the second joint of the name.
        if (++lCounts[lJoint.mName] == 2)
        {
            mMessages.Add(KQexTextMessage::eWARNING, 0, "Joint name is used more than once (" + lJoint.mName + ")");
        }
    }
    KQexFigurePoint lMin;
    KQexFigurePoint lMax;
    if (mRest.size() > 1 && GetBounds(lMin, lMax) && !(DistanceOf(lMin, lMax) > 0))
    {
        mMessages.Add(KQexTextMessage::eWARNING, 0, "All joints are at the same position at rest");
    }
    for (const KQexTakeSurvey& lTake : mTakes)
    {
        if (lTake.mMoving == 0 && lTake.mFrameCount > 1)
        {
            mMessages.Add(KQexTextMessage::eWARNING, 0, "No joint moves in the take (" + lTake.mName + ")");
        }
    }
}

} // namespace qexsdk
