#include <apps/asf/report/figuresurvey.h>

#include <apps/asf/figure/loading.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <unordered_map>

namespace asfapp
{

namespace
{

using qexsdk::KQexAnimCurve;
using qexsdk::KQexTextMessage;

/// Values of a curve that differ by less than this, plus a millionth of the value, are the same: curves have single precision.
constexpr float kStillTolerance = 1e-5F;

double DistanceOf(const KPoint& pOne, const KPoint& pOther)
{
    return std::hypot(pOne.mX - pOther.mX, pOne.mY - pOther.mY, pOne.mZ - pOther.mZ);
}

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

bool Varies(const qexsdk::KQexProperty& pProperty, const qexsdk::KQexAnimLayer* pLayer)
{
    const qexsdk::KQexAnimCurveNode* lCurves = pProperty.GetCurveNode(pLayer);
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

bool KFigureSurvey::Read(const qexsdk::KQexFigureFile& pFile, KConsole& pConsole)
{
    qexsdk::KQexFigureFiles  lFiles;
    qexsdk::KQexFigureReport lReport;
    lFiles.mFigure = pFile;
    mOk = LoadQuietly(mFigure, lFiles, {}, lReport, pConsole);
    mMessages.Add(lReport, pFile.GetDisplayPath());
    if (mOk)
    {
        CollectJoints();
        for (const qexsdk::KQexFigureTake& lTake : mFigure.GetTakes())
        {
            AddTake(lTake);
        }
    }
    return mOk;
}

void KFigureSurvey::CollectJoints()
{
    if (!mFigure.Evaluate(nullptr, qexsdk::KTime(0), mRest))
    {
        throw std::bad_alloc();
    }
    for (const qexsdk::KQexFigureJoint& lJoint : GetJoints())
    {
        mDepths.push_back(lJoint.mParent < 0 ? 0 : mDepths[static_cast<size_t>(lJoint.mParent)] + 1);
    }
    mMoves.resize(mRest.size());
}

void KFigureSurvey::AddTake(const qexsdk::KQexFigureTake& pTake)
{
    qexsdk::KQexFigureFrames lFrames;
    if (!mFigure.CollectFrames(pTake, lFrames))
    {
        throw std::bad_alloc();
    }
    KTakeSurvey lSurvey;
    lSurvey.mName = pTake.mName;
    lSurvey.mFrameCount = pTake.mFrames;
    lSurvey.mFirstFrame = lFrames.mNumbers.front();
    lSurvey.mLastFrame = lFrames.mNumbers.back();
    lSurvey.mRate = pTake.mRate;
    lSurvey.mSeconds = lFrames.mTimes.back().GetSeconds() - lFrames.mTimes.front().GetSeconds();
    const qexsdk::KQexAnimLayer* lLayer = pTake.mStack->GetMember<qexsdk::KQexAnimLayer>(0);
    for (size_t lIndex = 0; lIndex < GetJoints().size(); ++lIndex)
    {
        const qexsdk::KQexNode& lNode = *GetJoints()[lIndex].mNode;
        KJointMoves             lMoves;
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

void KFigureSurvey::MeasureRootPath(const qexsdk::KQexFigureTake& pTake, const qexsdk::KQexFigureFrames& pFrames, KTakeSurvey& pSurvey)
{
    qexsdk::KQexAnimEvaluator* lEvaluator = mFigure.GetScene()->GetEvaluator();
    lEvaluator->SetContext(pTake.mStack);
    KPoint lFirst;
    KPoint lLast;
    for (size_t lIndex = 0; lIndex < pFrames.mTimes.size(); ++lIndex)
    {
        const qexsdk::KQexVector4 lT = lEvaluator->GetNodeGlobalTransform(mFigure.GetRoots().front(), pFrames.mTimes[lIndex]).GetT();
        const KPoint              lPosition = {lT.mData[0], lT.mData[1], lT.mData[2]};
        lFirst = lIndex == 0 ? lPosition : lFirst;
        pSurvey.mRootPathLength += lIndex == 0 ? 0.0 : DistanceOf(lLast, lPosition);
        lLast = lPosition;
    }
    pSurvey.mRootTravel = DistanceOf(lFirst, lLast);
}

double KFigureSurvey::GetLength(size_t pJoint) const
{
    const int lParent = GetJoints()[pJoint].mParent;
    return lParent < 0 ? 0.0 : DistanceOf(mRest[pJoint], mRest[static_cast<size_t>(lParent)]);
}

bool KFigureSurvey::GetBounds(KPoint& pMin, KPoint& pMax) const
{
    if (mRest.empty())
    {
        return false;
    }
    pMin = pMax = mRest.front();
    for (const KPoint& lPoint : mRest)
    {
        pMin = {std::min(pMin.mX, lPoint.mX), std::min(pMin.mY, lPoint.mY), std::min(pMin.mZ, lPoint.mZ)};
        pMax = {std::max(pMax.mX, lPoint.mX), std::max(pMax.mY, lPoint.mY), std::max(pMax.mZ, lPoint.mZ)};
    }
    return true;
}

int KFigureSurvey::CountEnds() const
{
    return static_cast<int>(
        std::count_if(GetJoints().begin(), GetJoints().end(), [](const qexsdk::KQexFigureJoint& pJoint) { return pJoint.mIsEnd; }));
}

int KFigureSurvey::GetDepth() const
{
    return mDepths.empty() ? 0 : *std::max_element(mDepths.begin(), mDepths.end());
}

void KFigureSurvey::AddFindings()
{
    std::unordered_map<std::string, long long> lCounts;
    for (const qexsdk::KQexFigureJoint& lJoint : GetJoints())
    {
        // Reported once, at the second joint of the name.
        if (++lCounts[lJoint.mName] == 2)
        {
            mMessages.Add(KQexTextMessage::eWARNING, 0, "Joint name is used more than once (" + lJoint.mName + ")");
        }
    }
    KPoint lMin;
    KPoint lMax;
    if (mRest.size() > 1 && GetBounds(lMin, lMax) && !(DistanceOf(lMin, lMax) > 0))
    {
        mMessages.Add(KQexTextMessage::eWARNING, 0, "All joints are at the same position at rest");
    }
    for (const KTakeSurvey& lTake : mTakes)
    {
        if (lTake.mMoving == 0 && lTake.mFrameCount > 1)
        {
            mMessages.Add(KQexTextMessage::eWARNING, 0, "No joint moves in the take (" + lTake.mName + ")");
        }
    }
}

} // namespace asfapp
