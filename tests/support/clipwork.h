#ifndef TESTS_SUPPORT_CLIPWORK_H
#define TESTS_SUPPORT_CLIPWORK_H

#include <qexclip/kqexclipquantities.h>
#include <qexclip/kqexclipsteps.h>

#include <algorithm>
#include <vector>

/// \file
/// Every operation on a clip, for tests that run all of them.

namespace qextest
{

/// A clip and what operations on it need, made beforehand: an operation allocates nothing of its own.
struct KClipWork
{
    explicit KClipWork(const qexsdk::KQexClip& pClip) : mClip(pClip), mPairs(qexsdk::KQexMirrorPairs(pClip.GetData()))
    {
        const size_t lJoints = static_cast<size_t>(pClip.GetJointCount());
        const size_t lFrames = static_cast<size_t>(pClip.GetFrameCount());
        for (size_t lJoint = 0; lJoint < lJoints; ++lJoint)
        {
            if (lJoint % 2 == 1 || lJoint + 1 == lJoints)
            {
                mJoints.push_back(static_cast<int>(lJoint));
            }
        }
        mNumbers.assign(lFrames * lJoints * 9, kUnset);
        mTransforms.resize(lFrames * lJoints);
        mPose.resize(lJoints);
    }

    static constexpr double kUnset = -12345.0; ///< Numbers that no operation wrote.

    const qexsdk::KQexClip&                 mClip;
    std::vector<int>                        mPairs;
    std::vector<int>                        mJoints; ///< Every second joint and the last one.
    std::vector<double>                     mNumbers;
    std::vector<qexsdk::KQexWorldTransform> mTransforms;
    qexsdk::KQexPose                        mPose;
    qexsdk::KQexClip                        mResult; ///< A step's.
    std::vector<int>                        mList;   ///< Pairs, or limits that are passed.
};

/// An operation; false when it fails.
struct KClipOperation
{
    const char* mName;
    bool (*mRun)(KClipWork& pWork);
};

/// The rotations of all joints and frames in \p pForm.
template <qexsdk::KQexSpace TSpace, qexsdk::KQexRotationForm TForm, int TOrder = 0>
bool GetClipRotations(KClipWork& pWork)
{
    return KQexGetRotations(pWork.mClip, TSpace, TForm, TOrder, 0, pWork.mClip.GetFrameCount(), pWork.mNumbers.data());
}

template <bool TKeepTurn>
bool MakeClipInPlace(KClipWork& pWork)
{
    return KQexClipInPlace(pWork.mClip, TKeepTurn, pWork.mResult);
}

inline bool MirrorClip(KClipWork& pWork)
{
    return KQexClipMirror(pWork.mClip, pWork.mPairs, pWork.mResult);
}

inline bool TransformClip(KClipWork& pWork)
{
    const double lOffset[3] = {1.0, -20.0, 300.0};
    return KQexClipTransform(pWork.mClip, qexsdk::KQexQuaternion::About(2, 30.0), lOffset, pWork.mResult);
}

inline bool FindClipPairs(KClipWork& pWork)
{
    std::vector<int> lPairs = qexsdk::KQexMirrorPairs(pWork.mClip.GetData());
    pWork.mList.swap(lPairs);
    return !pWork.mList.empty();
}

inline bool FindPassedLimits(KClipWork& pWork)
{
    return KQexPassedLimits(pWork.mClip.GetData(), pWork.mClip.GetFrameCount() - 1, pWork.mList);
}

inline bool GetManyTransforms(KClipWork& pWork)
{
    const size_t lJoints = pWork.mPose.size();
    return pWork.mClip.WorldTransforms(0, pWork.mClip.GetFrameCount(), pWork.mTransforms.data(), lJoints);
}

inline bool SampleClip(KClipWork& pWork)
{
    return pWork.mClip.Sample(0.3 * pWork.mClip.GetDuration(), pWork.mPose) &&
           pWork.mClip.Sample(2.3 * pWork.mClip.GetDuration(), pWork.mPose, qexsdk::KQexClipEnds::eLOOP) &&
           pWork.mClip.SampleFrame(pWork.mClip.GetFrameCount() - 1, pWork.mPose);
}

/// Every operation on a clip but those with scenes. Joining doubles the clip, resampling gives it at most 1,001 frames.
inline const std::vector<KClipOperation>& ClipOperations()
{
    using namespace qexsdk;
    static const std::vector<KClipOperation> sOperations = {
        {"Copy",
         [](KClipWork& pWork)
         {
             return pWork.mClip.Copy(pWork.mResult);
         }},
        {"Sample", SampleClip},
        {"WorldTransforms", GetManyTransforms},
        {"Resample",
         [](KClipWork& pWork)
         {
             // A step of years would need a rate below the lowest one.
             const double lRate = std::min({2.0 * pWork.mClip.GetRate(), 1000.0 / std::max(pWork.mClip.GetDuration(), 1e-9), 1e6});
             return KQexClipResample(pWork.mClip, lRate, pWork.mResult);
         }},
        {"Cut",
         [](KClipWork& pWork)
         {
             return KQexClipCut(pWork.mClip, 0, pWork.mClip.GetFrameCount() - 1, 2, pWork.mResult);
         }},
        {"Select",
         [](KClipWork& pWork)
         {
             return KQexClipSelect(pWork.mClip, pWork.mJoints, pWork.mResult);
         }},
        {"Scale",
         [](KClipWork& pWork)
         {
             return KQexClipScale(pWork.mClip, 0.5, pWork.mResult);
         }},
        {"Transform", TransformClip},
        {"MakeZUp",
         [](KClipWork& pWork)
         {
             return KQexClipMakeZUp(pWork.mClip, pWork.mResult);
         }},
        {"MakeYUp",
         [](KClipWork& pWork)
         {
             return KQexClipMakeYUp(pWork.mClip, pWork.mResult);
         }},
        {"Reverse",
         [](KClipWork& pWork)
         {
             return KQexClipReverse(pWork.mClip, pWork.mResult);
         }},
        {"MirrorPairs", FindClipPairs},
        {"Mirror", MirrorClip},
        {"InPlace", MakeClipInPlace<false>},
        {"InPlaceWithTurn", MakeClipInPlace<true>},
        {"ToOrigin",
         [](KClipWork& pWork)
         {
             return KQexClipToOrigin(pWork.mClip, pWork.mResult);
         }},
        {"Join",
         [](KClipWork& pWork)
         {
             return KQexClipJoin(pWork.mClip, pWork.mClip, 1, pWork.mResult);
         }},
        {"Quaternions", GetClipRotations<KQexSpace::eLOCAL, KQexRotationForm::eQUATERNION>},
        {"Matrices", GetClipRotations<KQexSpace::eWORLD, KQexRotationForm::eMATRIX>},
        {"Six", GetClipRotations<KQexSpace::eLOCAL, KQexRotationForm::eSIX>},
        {"AxisAngles", GetClipRotations<KQexSpace::eWORLD, KQexRotationForm::eAXIS_ANGLE>},
        {"EulerZYX", GetClipRotations<KQexSpace::eLOCAL, KQexRotationForm::eEULER, 10>},
        {"EulerYZY", GetClipRotations<KQexSpace::eWORLD, KQexRotationForm::eEULER, 5>},
        {"Positions",
         [](KClipWork& pWork)
         {
             return KQexGetPositions(pWork.mClip, 0, pWork.mClip.GetFrameCount(), pWork.mNumbers.data());
         }},
        {"Velocities",
         [](KClipWork& pWork)
         {
             return KQexGetVelocities(pWork.mClip, 0, pWork.mClip.GetFrameCount(), pWork.mNumbers.data());
         }},
        {"AngularVelocities",
         [](KClipWork& pWork)
         {
             return KQexGetAngularVelocities(pWork.mClip, 0, pWork.mClip.GetFrameCount(), pWork.mNumbers.data());
         }},
        {"PassedLimits", FindPassedLimits}};
    return sOperations;
}

} // namespace qextest

#endif
