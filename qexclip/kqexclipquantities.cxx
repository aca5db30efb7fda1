#include <qexclip/kqexclipquantities.h>

#include <kbaselib/kmath/keulertable.h>
#include <qexclip/kqexclipedit.h>
#include <qexclip/kqexclipworld.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace qexsdk
{

namespace
{

/// The joints of a clip in one frame after the other.
class KJointWalk
{
public:
    explicit KJointWalk(const KQexClip& pClip, KQexSpace pSpace = KQexSpace::eWORLD)
        : mClip(pClip), mSpace(pSpace), mPose(static_cast<size_t>(pClip.GetJointCount())), mJoints(mPose.size())
    {
    }

    /// Goes to a frame, which exists.
    void Go(long long pFrame)
    {
        mClip.SampleFrame(pFrame, mPose);
        for (size_t lJoint = 0; lJoint < mPose.size() && mSpace == KQexSpace::eWORLD; ++lJoint)
        {
            const int lParent = mClip.GetData().mParents[lJoint];
            mJoints[lJoint] = KGetWorldJoint(mPose[lJoint], lParent < 0 ? nullptr : &mJoints[static_cast<size_t>(lParent)]);
        }
    }

    /// The joints in the world, of a walk in eWORLD.
    const std::vector<KWorldJoint>& GetJoints() const { return mJoints; }

    /// The rotation of a joint in the walk's space.
    KQexQuaternion GetRotation(size_t pJoint) const
    {
        return mSpace == KQexSpace::eWORLD ? mJoints[pJoint].mRotation : KToQuaternion(mPose[pJoint].mRotation);
    }

private:
    const KQexClip&          mClip;
    KQexSpace                mSpace;
    KQexPose                 mPose;
    std::vector<KWorldJoint> mJoints;
};

bool AreFrames(const KQexClip& pClip, long long pFirst, long long pCount)
{
    return pFirst >= 0 && pCount >= 0 && pFirst <= pClip.GetFrameCount() && pCount <= pClip.GetFrameCount() - pFirst;
}

/// Runs \p pFill, false when memory runs out.
template <typename TFill>
bool WithMemory(const TFill& pFill)
{
    try
    {
        pFill();
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

/// Writes Euler angles, in order of application, as those about x, y and z; with a repeated axis, as they are.
void SortByAxis(int pOrder, const std::vector<double>& pAngles, double* pResult)
{
    constexpr int kInOrder[3] = {0, 1, 2};
    const int*    lAxes = (pOrder & 1) == 0 ? KmEulerAxisRow(pOrder) : kInOrder;
    for (size_t i = 0; i < pAngles.size(); ++i)
    {
        pResult[i / 3 * 3 + static_cast<size_t>(lAxes[i % 3])] = pAngles[i];
    }
}

/// The frames before and after \p pFrame that differences are taken between, and the seconds between them (above 0).
double DifferenceFrames(const KQexClip& pClip, long long pFrame, long long& pBefore, long long& pAfter)
{
    pBefore = std::max(0LL, pFrame - 1);
    pAfter = std::min(pClip.GetFrameCount() - 1, pFrame + 1);
    return static_cast<double>(std::max(1LL, pAfter - pBefore)) * pClip.GetData().mSampling.mStep.GetSeconds();
}

/// Calls pWrite(before, after, seconds, result) for each joint in each frame, which writes three numbers.
template <typename TWrite>
bool WriteDifferences(const KQexClip& pClip, long long pFirst, long long pCount, double* pResult, const TWrite& pWrite)
{
    const auto lFill = [&]
    {
        KJointWalk lBefore(pClip);
        KJointWalk lAfter(pClip);
        for (long long lFrame = pFirst; lFrame < pFirst + pCount; ++lFrame)
        {
            long long    lOne = 0;
            long long    lOther = 0;
            const double lSeconds = DifferenceFrames(pClip, lFrame, lOne, lOther);
            lBefore.Go(lOne);
            lAfter.Go(lOther);
            for (size_t i = 0; i < lBefore.GetJoints().size(); ++i, pResult += 3)
            {
                pWrite(lBefore.GetJoints()[i], lAfter.GetJoints()[i], lSeconds, pResult);
            }
        }
    };
    return AreFrames(pClip, pFirst, pCount) && WithMemory(lFill);
}

} // namespace

bool KQexGetRotations(const KQexClip& pClip, KQexSpace pSpace, KQexRotationForm pForm, int pOrder, long long pFirst, long long pCount,
                      double* pResult)
{
    const auto lFill = [&]
    {
        KJointWalk          lWalk(pClip, pSpace);
        const size_t        lSize = static_cast<size_t>(KQexRotationSize(pForm));
        const size_t        lJoints = lWalk.GetJoints().size();
        KQexRotationWriter  lWriter(pForm, pOrder, lJoints);
        std::vector<double> lNumbers(lJoints * lSize);
        for (long long lFrame = pFirst; lFrame < pFirst + pCount; ++lFrame)
        {
            lWalk.Go(lFrame);
            for (size_t i = 0; i < lJoints; ++i)
            {
                lWriter.Convert(lWalk.GetRotation(i), &lNumbers[i * lSize]);
            }
            lWriter.MakeContinuous(lNumbers.data());
            if (pForm == KQexRotationForm::eEULER)
            {
                SortByAxis(pOrder, lNumbers, pResult);
            }
            else
            {
                std::copy(lNumbers.begin(), lNumbers.end(), pResult);
            }
            pResult += lNumbers.size();
        }
    };
    const bool lIsOrder = pForm != KQexRotationForm::eEULER || (pOrder >= 0 && pOrder < KmEulerAxisCount);
    return lIsOrder && AreFrames(pClip, pFirst, pCount) && WithMemory(lFill);
}

bool KQexGetPositions(const KQexClip& pClip, long long pFirst, long long pCount, double* pResult)
{
    const auto lFill = [&]
    {
        KJointWalk lWalk(pClip);
        for (long long lFrame = pFirst; lFrame < pFirst + pCount; ++lFrame)
        {
            lWalk.Go(lFrame);
            for (const KWorldJoint& lJoint : lWalk.GetJoints())
            {
                pResult = std::copy(lJoint.mPosition, lJoint.mPosition + 3, pResult);
            }
        }
    };
    return AreFrames(pClip, pFirst, pCount) && WithMemory(lFill);
}

bool KQexGetVelocities(const KQexClip& pClip, long long pFirst, long long pCount, double* pResult)
{
    return WriteDifferences(pClip, pFirst, pCount, pResult,
                            [](const KWorldJoint& pBefore, const KWorldJoint& pAfter, double pSeconds, double* pVelocity)
                            {
                                for (int i = 0; i < 3; ++i)
                                {
                                    pVelocity[i] = (pAfter.mPosition[i] - pBefore.mPosition[i]) / pSeconds;
                                }
                            });
}

bool KQexGetAngularVelocities(const KQexClip& pClip, long long pFirst, long long pCount, double* pResult)
{
    return WriteDifferences(pClip, pFirst, pCount, pResult,
                            [](const KWorldJoint& pBefore, const KWorldJoint& pAfter, double pSeconds, double* pVelocity)
                            {
                                KQexQuaternion lTurn = pAfter.mRotation * pBefore.mRotation.Inverse();
                                lTurn.Normalize();
                                KQexRotationVector(lTurn, pVelocity);
                                for (int i = 0; i < 3; ++i)
                                {
                                    pVelocity[i] /= pSeconds;
                                }
                            });
}

bool KQexPassedLimits(const KQexClipData& pClip, long long pFrame, std::vector<int>& pPassed)
{
    const auto lFill = [&]
    {
        std::vector<int> lPassed;
        for (size_t i = 0; i < pClip.mDofs.size() && !pClip.mDofValues.empty(); ++i)
        {
            const double lValue = static_cast<double>(pClip.mDofValues[static_cast<size_t>(pFrame) * pClip.mDofs.size() + i]);
            if (pClip.mDofs[i].mDof.GetExcess(lValue) != 0.0)
            {
                lPassed.push_back(static_cast<int>(i));
            }
        }
        pPassed.swap(lPassed);
    };
    return pFrame >= 0 && pFrame < pClip.mSampling.mCount && WithMemory(lFill);
}

} // namespace qexsdk
