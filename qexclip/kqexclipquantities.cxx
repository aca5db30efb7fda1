#include <qexclip/kqexclipquantities.h>

#include <kbaselib/kmath/keulernearest.h>
#include <kbaselib/kmath/keulertable.h>
#include <kbaselib/kmath/maths.h>
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
class KWorldWalk
{
public:
    explicit KWorldWalk(const KQexClip& pClip) : mClip(pClip), mPose(static_cast<size_t>(pClip.GetJointCount())), mJoints(mPose.size()) {}

    /// False for a frame that does not exist.
    bool Go(long long pFrame)
    {
        if (!mClip.SampleFrame(pFrame, mPose))
        {
            return false;
        }
        for (size_t lJoint = 0; lJoint < mPose.size(); ++lJoint)
        {
            const int lParent = mClip.GetData().mParents[lJoint];
            mJoints[lJoint] = KPlaceJoint(mPose[lJoint], lParent < 0 ? nullptr : &mJoints[static_cast<size_t>(lParent)]);
        }
        return true;
    }

    const KQexPose&                 GetPose() const { return mPose; }
    const std::vector<KWorldJoint>& GetJoints() const { return mJoints; }

private:
    const KQexClip&          mClip;
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

/// The axis of \p pRotation, which has unit length, times its angle, 0 to π.
void ToAxisAngle(const KQexQuaternion& pRotation, double* pResult)
{
    const double lSign = pRotation.mData[3] < 0.0 ? -1.0 : 1.0;
    double       lSine = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        lSine += pRotation.mData[i] * pRotation.mData[i];
    }
    lSine = std::sqrt(lSine);
    // angle / sin(angle / 2), which tends to 2.
    const double lFactor = lSine > 1e-12 ? 2.0 * std::atan2(lSine, lSign * pRotation.mData[3]) / lSine : 2.0;
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = lSign * lFactor * pRotation.mData[i];
    }
}

/// Writes rotations in one form, each joint's continuous from call to call.
class KRotationWriter
{
public:
    KRotationWriter(KQexRotationForm pForm, int pOrder, size_t pJoints)
        : mForm(pForm), mOrder(pOrder), mLast(pJoints), mAngles(pJoints * 3, 0.0)
    {
    }

    double* Write(size_t pJoint, KQexQuaternion pRotation, double* pResult)
    {
        pRotation.Normalize();
        const double* lLast = mLast[pJoint].mData;
        const double* lNow = pRotation.mData;
        // At first the last one is the identity, to which the quaternion with w ≥ 0 is nearer.
        if (lLast[0] * lNow[0] + lLast[1] * lNow[1] + lLast[2] * lNow[2] + lLast[3] * lNow[3] < 0.0)
        {
            std::transform(lNow, lNow + 4, pRotation.mData, [](double pNumber) { return -pNumber; });
        }
        mLast[pJoint] = pRotation;
        switch (mForm)
        {
        case KQexRotationForm::eQUATERNION:
            *pResult = pRotation.mData[3];
            std::copy(pRotation.mData, pRotation.mData + 3, pResult + 1);
            break;
        case KQexRotationForm::eMATRIX:
        case KQexRotationForm::eSIX:
            WriteMatrix(pRotation, pResult);
            break;
        case KQexRotationForm::eAXIS_ANGLE:
            ToAxisAngle(pRotation, pResult);
            break;
        case KQexRotationForm::eEULER:
            WriteEuler(pRotation, &mAngles[pJoint * 3], pResult);
            break;
        }
        return pResult + KQexRotationSize(mForm);
    }

private:
    void WriteMatrix(const KQexQuaternion& pRotation, double* pResult) const
    {
        double lImages[3][4];
        pRotation.ToAxes(lImages);
        if (mForm == KQexRotationForm::eSIX)
        {
            std::copy(lImages[0], lImages[0] + 3, pResult);
            std::copy(lImages[1], lImages[1] + 3, pResult + 3);
            return;
        }
        for (int lRow = 0; lRow < 3; ++lRow)
        {
            for (int lColumn = 0; lColumn < 3; ++lColumn)
            {
                pResult[lRow * 3 + lColumn] = lImages[lColumn][lRow];
            }
        }
    }

    void WriteEuler(const KQexQuaternion& pRotation, double* pLast, double* pResult) const
    {
        if ((mOrder & 1) == 0)
        {
            pRotation.ToEuler(mOrder, pLast, pLast);
        }
        else // The axes repeat, so an axis does not identify an angle.
        {
            double lImages[3][4];
            double lAngles[3];
            pRotation.ToAxes(lImages);
            KmRtoVord(lAngles, lImages, mOrder);
            KmNearestEuler(lAngles, pLast, mOrder);
            std::copy(lAngles, lAngles + 3, pLast);
        }
        std::copy(pLast, pLast + 3, pResult);
    }

    KQexRotationForm            mForm;
    int                         mOrder;
    std::vector<KQexQuaternion> mLast;
    std::vector<double>         mAngles; ///< Last Euler angles.
};

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
        KWorldWalk lBefore(pClip);
        KWorldWalk lAfter(pClip);
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

int KQexRotationSize(KQexRotationForm pForm)
{
    constexpr int kSizes[] = {4, 9, 6, 3, 3};
    return kSizes[static_cast<int>(pForm)];
}

bool KQexGetRotations(const KQexClip& pClip, KQexSpace pSpace, KQexRotationForm pForm, int pOrder, long long pFirst, long long pCount,
                      double* pResult)
{
    const auto lFill = [&]
    {
        KWorldWalk      lWalk(pClip);
        KRotationWriter lWriter(pForm, pOrder, static_cast<size_t>(pClip.GetJointCount()));
        for (long long lFrame = pFirst; lFrame < pFirst + pCount; ++lFrame)
        {
            lWalk.Go(lFrame);
            for (size_t i = 0; i < lWalk.GetJoints().size(); ++i)
            {
                const bool lIsLocal = pSpace == KQexSpace::eLOCAL;
                pResult =
                    lWriter.Write(i, lIsLocal ? KToQuaternion(lWalk.GetPose()[i].mRotation) : lWalk.GetJoints()[i].mRotation, pResult);
            }
        }
    };
    const bool lIsOrder = pForm != KQexRotationForm::eEULER || (pOrder >= 0 && pOrder < KmEulerAxisCount);
    return lIsOrder && AreFrames(pClip, pFirst, pCount) && WithMemory(lFill);
}

bool KQexGetPositions(const KQexClip& pClip, long long pFirst, long long pCount, double* pResult)
{
    const auto lFill = [&]
    {
        KWorldWalk lWalk(pClip);
        for (long long lFrame = pFirst; lFrame < pFirst + pCount; ++lFrame)
        {
            lWalk.Go(lFrame);
            for (const KWorldJoint& lJoint : lWalk.GetJoints())
            {
                pResult = std::copy(lJoint.mPlace, lJoint.mPlace + 3, pResult);
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
                                    pVelocity[i] = (pAfter.mPlace[i] - pBefore.mPlace[i]) / pSeconds;
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
                                ToAxisAngle(lTurn, pVelocity);
                                for (int i = 0; i < 3; ++i)
                                {
                                    pVelocity[i] /= pSeconds;
                                }
                            });
}

bool KQexPassedLimits(const KQexClipData& pClip, long long pFrame, std::vector<int>& pPassed, double pTolerance)
{
    const auto lFill = [&]
    {
        std::vector<int> lPassed;
        for (size_t i = 0; i < pClip.mDofs.size() && !pClip.mDofValues.empty(); ++i)
        {
            const KQexBoneDof& lDof = pClip.mDofs[i].mDof;
            const double       lValue = static_cast<double>(pClip.mDofValues[static_cast<size_t>(pFrame) * pClip.mDofs.size() + i]);
            if ((lDof.mHasMin && lValue < lDof.mMin - pTolerance) || (lDof.mHasMax && lValue > lDof.mMax + pTolerance))
            {
                lPassed.push_back(static_cast<int>(i));
            }
        }
        pPassed.swap(lPassed);
    };
    return pFrame >= 0 && pFrame < pClip.mSampling.mCount && WithMemory(lFill);
}

} // namespace qexsdk
