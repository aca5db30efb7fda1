// Checks the arrays that a clip is made of.

#include <qexclip/kqexclip.h>

#include <cmath>
#include <new>
#include <utility>

namespace qexsdk
{

namespace
{

constexpr double kUnitTolerance = 1e-3; ///< Lengths of quaternions within this of 1 are rounding, and normalised.
constexpr size_t kMaxErrors = 20;

/// Checks a clip's arrays one after the other and collects what is wrong.
class KQexClipChecker
{
public:
    KQexClipChecker(KQexClipData& pData, std::vector<std::string>& pErrors) : mData(pData), mErrors(pErrors) {}

    bool Run()
    {
        CheckJoints();
        CheckSampling();
        CheckIndices("moving joint", mData.mMovingJoints);
        CheckIndices("scaled joint", mData.mScaledJoints);
        CheckDofs();
        if (!mErrors.empty())
        {
            return false; // The sizes below would mean nothing.
        }
        const size_t lJoints = mData.mNames.size();
        if (CheckSize("rotations", mData.mRotations, lJoints, 4))
        {
            CheckRotations();
        }
        CheckNumbers("translations", mData.mTranslations, mData.mMovingJoints.size(), 3);
        CheckNumbers("scalings", mData.mScalings, mData.mScaledJoints.size(), 3);
        if (!mData.mDofValues.empty())
        {
            CheckNumbers("values of degrees of freedom", mData.mDofValues, mData.mDofs.size(), 1);
        }
        return mErrors.empty();
    }

private:
    void Add(const std::string& pText)
    {
        if (mErrors.size() < kMaxErrors)
        {
            mErrors.push_back(pText);
        }
    }

    void CheckJoints()
    {
        const size_t lJoints = mData.mNames.size();
        if (lJoints == 0 || lJoints > kMaxJoints)
        {
            Add("there are " + std::to_string(lJoints) + " joints");
        }
        if (mData.mParents.size() != lJoints || mData.mRest.size() != lJoints || (!mData.mIsEnd.empty() && mData.mIsEnd.size() != lJoints))
        {
            Add("there are " + std::to_string(lJoints) + " names, " + std::to_string(mData.mParents.size()) + " parents, " +
                std::to_string(mData.mRest.size()) + " rest transforms and " + std::to_string(mData.mIsEnd.size()) + " end marks");
            return;
        }
        for (size_t lJoint = 0; lJoint < lJoints; ++lJoint)
        {
            const int lParent = mData.mParents[lJoint];
            if (lParent < -1 || lParent >= static_cast<int>(lJoint))
            {
                Add(Joint(lJoint) + " has the parent " + std::to_string(lParent) + ", which does not come before it");
            }
            CheckRest(lJoint);
        }
    }

    void CheckRest(size_t pJoint)
    {
        KQexJointTransform& lRest = mData.mRest[pJoint];
        bool                lIsFinite = true;
        for (int i = 0; i < 3; ++i)
        {
            lIsFinite = lIsFinite && std::isfinite(lRest.mTranslation[i]) && std::isfinite(lRest.mScaling[i]);
        }
        if (!lIsFinite)
        {
            Add(Joint(pJoint) + " has a number at rest that is not finite");
        }
        if (!Normalize(lRest.mRotation))
        {
            Add(Joint(pJoint) + " has a rotation at rest that is no unit quaternion");
        }
    }

    void CheckSampling()
    {
        // Times of frames must fit 64 bits, sizes of arrays the memory's addresses.
        constexpr double kMaxTicks = 9.0e18;
        const double     lCount = static_cast<double>(mData.mSampling.mCount);
        const double     lStep = static_cast<double>(mData.mSampling.mStep.Get());
        if (lCount < 1.0 || lStep <= 0.0 || lCount * lStep + std::fabs(static_cast<double>(mData.mSampling.mStart.Get())) > kMaxTicks)
        {
            Add("there are " + std::to_string(mData.mSampling.mCount) + " frames, " + std::to_string(mData.mSampling.mStep.Get()) +
                " ticks apart");
        }
    }

    void CheckIndices(const std::string& pWhat, const std::vector<int>& pJoints)
    {
        int lLast = -1;
        for (const int lJoint : pJoints)
        {
            if (lJoint <= lLast || lJoint >= static_cast<int>(mData.mNames.size()))
            {
                Add(pWhat + " " + std::to_string(lJoint) + " is out of order or out of range");
                return;
            }
            lLast = lJoint;
        }
    }

    void CheckDofs()
    {
        int lLast = 0;
        for (const KQexClipDof& lDof : mData.mDofs)
        {
            if (lDof.mJoint < lLast || lDof.mJoint >= static_cast<int>(mData.mNames.size()))
            {
                Add("degree of freedom " + lDof.mDof.mWord + " of joint " + std::to_string(lDof.mJoint) +
                    " is out of order or out of range");
                return;
            }
            lLast = lDof.mJoint;
        }
    }

    bool CheckSize(const std::string& pWhat, const std::vector<float>& pValues, size_t pColumns, size_t pNumbers)
    {
        // Divided, not multiplied: a product could overflow.
        const size_t lRow = pColumns * pNumbers;
        const bool   lFits = lRow == 0 ? pValues.empty()
                                       : pValues.size() % lRow == 0 && pValues.size() / lRow == static_cast<size_t>(mData.mSampling.mCount);
        if (!lFits)
        {
            Add("there are " + std::to_string(pValues.size()) + " numbers of " + pWhat + ", not " + std::to_string(mData.mSampling.mCount) +
                " × " + std::to_string(pColumns) + " × " + std::to_string(pNumbers));
        }
        return lFits;
    }

    void CheckNumbers(const std::string& pWhat, const std::vector<float>& pValues, size_t pColumns, size_t pNumbers)
    {
        if (!CheckSize(pWhat, pValues, pColumns, pNumbers))
        {
            return;
        }
        for (size_t i = 0; i < pValues.size(); ++i)
        {
            if (!std::isfinite(pValues[i]))
            {
                Add(pWhat + ": a number in frame " + std::to_string(i / (pColumns * pNumbers)) + " is not finite");
                return;
            }
        }
    }

    void CheckRotations()
    {
        const size_t lJoints = mData.mNames.size();
        for (size_t i = 0; i < mData.mRotations.size() && mErrors.size() < kMaxErrors; i += 4)
        {
            if (!Normalize(&mData.mRotations[i]))
            {
                Add(Joint(i / 4 % lJoints) + " has a rotation in frame " + std::to_string(i / 4 / lJoints) + " that is no unit quaternion");
            }
        }
    }

    /// False when the length is not within the tolerance of 1.
    static bool Normalize(float* pRotation)
    {
        double lSquare = 0.0;
        for (int i = 0; i < 4; ++i)
        {
            lSquare += static_cast<double>(pRotation[i]) * static_cast<double>(pRotation[i]);
        }
        const double lLength = std::sqrt(lSquare);
        if (!(std::fabs(lLength - 1.0) <= kUnitTolerance))
        {
            return false;
        }
        // What is rounded to single precision already stays as it is, to the last bit.
        for (int i = 0; i < 4 && std::fabs(lLength - 1.0) > 1e-6; ++i)
        {
            pRotation[i] = static_cast<float>(static_cast<double>(pRotation[i]) / lLength);
        }
        return true;
    }

    std::string Joint(size_t pJoint) const { return "joint " + std::to_string(pJoint) + " (" + mData.mNames[pJoint] + ")"; }

    static constexpr size_t kMaxJoints = 1U << 30;

    KQexClipData&             mData;
    std::vector<std::string>& mErrors;
};

} // namespace

bool KQexClip::FromArrays(KQexClipData pData, KQexClip& pClip, std::vector<std::string>* pErrors)
{
    try
    {
        std::vector<std::string>  lOwn;
        std::vector<std::string>& lErrors = pErrors != nullptr ? *pErrors : lOwn;
        lErrors.clear();
        if (!KQexClipChecker(pData, lErrors).Run())
        {
            return false;
        }
        pClip.mData = std::move(pData);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

} // namespace qexsdk
