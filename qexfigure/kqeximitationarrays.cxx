#include <qexfigure/kqexarraysink.h>

#include <algorithm>
#include <cmath>

/// \file
/// Arrays for training simulated characters.

namespace qexsdk
{

namespace
{

constexpr double kRadian = 3.14159265358979323846 / 180.0; ///< Radians in a degree.

/// The quaternion of the numbers w, x, y, z.
KQexQuaternion QuaternionOf(const double* pNumbers)
{
    KQexQuaternion lRotation;
    std::copy(pNumbers + 1, pNumbers + 4, lRotation.mData);
    lRotation.mData[3] = pNumbers[0];
    return lRotation;
}

/// Positions, rotations and velocities of the bodies: all joints but ends.
class KImitationSink : public KQexArraySink
{
public:
    KImitationSink(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions, KQexNpzFile& pFile)
        : KQexArraySink(pFigure, pOptions, pFile), mDofs(DofsOf(pFigure, pOptions))
    {
        std::vector<std::string> lNames;
        for (size_t i = 0; i < pFigure.GetJoints().size(); ++i)
        {
            if (!pFigure.GetJoints()[i].mIsEnd)
            {
                mBodies.push_back(i);
                lNames.push_back(pFigure.GetJoints()[i].mName);
            }
        }
        AddRate();
        pFile.AddTexts("body_names", lNames);
        mPositions = AddRows("body_positions", {mBodies.size(), 3});
        mRotations = AddRotations("body_rotations", mBodies.size());
        mDofPositions = AddDofs(mDofs, "dof_positions");
        mContinuousDofs = GetValueCount();
        const auto          lFrames = static_cast<uint64_t>(pOptions.mSampling.mCount);
        const KQexArrayHead lHead = {KQexArrayType::eFLOAT32, {lFrames, mBodies.size(), 3}};
        mDofVelocities = pFile.Add("dof_velocities", {KQexArrayType::eFLOAT32, {lFrames, mDofs.size()}});
        mLinear = pFile.Add("body_linear_velocities", lHead);
        mAngular = pFile.Add("body_angular_velocities", lHead);
    }

    void Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept override
    {
        const KQexFigurePose& lJoints = JointsIn(pThread, pFrame);
        KQexEvaluateDofs(mDofs, pFrame.GetTime(), pValues + mDofPositions);
        for (size_t i = 0; i < mBodies.size(); ++i)
        {
            lJoints.GetPosition(KQexSpace::eWORLD, mBodies[i], pValues + mPositions + 3 * i);
            mWriter.Convert(lJoints.GetRotation(KQexSpace::eWORLD, mBodies[i]), pValues + mRotations + 4 * i);
        }
    }

    bool Write(const KQexFrameBlock& pBlock) override
    {
        bool          lOk = KQexArraySink::Write(pBlock);
        const double* lValues = pBlock.mValues.data();
        for (long long i = pBlock.mFirst; i < pBlock.mEnd && lOk; ++i, lValues += GetValueCount())
        {
            lOk = AddFrame(i, std::vector<double>(lValues, lValues + GetValueCount()));
        }
        return lOk;
    }

private:
    /// Degrees of freedom in radians. Without the root's, which are the first body's transform.
    static std::vector<KQexDofColumn> DofsOf(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions)
    {
        std::vector<KQexDofColumn> lDofs = KQexDofColumnsOf(pFigure, pOptions.mTake, pOptions.mSpace.mPerCentimetre, kRadian);
        lDofs.erase(std::remove_if(lDofs.begin(), lDofs.end(), [](const KQexDofColumn& pDof) { return pDof.mJoint == 0; }), lDofs.end());
        return lDofs;
    }

    /// Writes the velocities of the frame before frame pFrame, which need it, and of the last frame.
    bool AddFrame(long long pFrame, std::vector<double> pValues)
    {
        AddContinuousDofs(pValues);
        const bool lIsLast = pFrame + 1 == mOptions.mSampling.mCount;
        const bool lOk = pFrame == 0 || WriteVelocities(pFrame == 1 ? mLast : mBefore, pValues, pFrame == 1 ? 1 : 2);
        mBefore = std::move(mLast);
        mLast = std::move(pValues);
        return lOk && (!lIsLast || WriteVelocities(pFrame == 0 ? mLast : mBefore, mLast, 1));
    }

    /// Appends the degrees of freedom without full turns from frame to frame: a file may jump by one where the joint does not.
    void AddContinuousDofs(std::vector<double>& pValues) const
    {
        constexpr double kTurn = 360.0 * kRadian;
        for (size_t i = 0; i < mDofs.size(); ++i)
        {
            double lValue = pValues[mDofPositions + i];
            if (!mLast.empty() && !mDofs[i].IsLength())
            {
                lValue -= kTurn * std::round((lValue - mLast[mContinuousDofs + i]) / kTurn);
            }
            pValues.push_back(lValue);
        }
    }

    /// Writes the velocities from the values \p pBefore to \p pAfter, which are \p pSteps frames apart.
    bool WriteVelocities(const std::vector<double>& pBefore, const std::vector<double>& pAfter, int pSteps)
    {
        return WriteBodyVelocities(pBefore, pAfter, pSteps) && WriteDofVelocities(pBefore, pAfter, pSteps);
    }

    double PerSecond(int pSteps) const
    {
        const double lSeconds = pSteps * mOptions.mSampling.mStep.GetSeconds();
        return lSeconds > 0.0 ? 1.0 / lSeconds : 0.0;
    }

    bool WriteDofVelocities(const std::vector<double>& pBefore, const std::vector<double>& pAfter, int pSteps)
    {
        std::vector<double> lVelocities(mDofs.size());
        for (size_t i = 0; i < mDofs.size(); ++i)
        {
            lVelocities[i] = (pAfter[mContinuousDofs + i] - pBefore[mContinuousDofs + i]) * PerSecond(pSteps);
        }
        return mFile.Append(mDofVelocities, lVelocities.data(), lVelocities.size());
    }

    bool WriteBodyVelocities(const std::vector<double>& pBefore, const std::vector<double>& pAfter, int pSteps)
    {
        const double        lPerSecond = PerSecond(pSteps);
        std::vector<double> lLinear(3 * mBodies.size());
        std::vector<double> lAngular(lLinear.size());
        for (size_t i = 0; i < lLinear.size(); ++i)
        {
            lLinear[i] = (pAfter[mPositions + i] - pBefore[mPositions + i]) * lPerSecond;
        }
        for (size_t i = 0; i < mBodies.size(); ++i)
        {
            const KQexQuaternion lAfter = QuaternionOf(&pAfter[mRotations + 4 * i]);
            KQexRotationVector(lAfter * QuaternionOf(&pBefore[mRotations + 4 * i]).Inverse(), &lAngular[3 * i]);
        }
        std::transform(lAngular.begin(), lAngular.end(), lAngular.begin(), [lPerSecond](double pAngle) { return pAngle * lPerSecond; });
        return mFile.Append(mLinear, lLinear.data(), lLinear.size()) && mFile.Append(mAngular, lAngular.data(), lAngular.size());
    }

    const KQexRotationWriter         mWriter{KQexRotationForm::eQUATERNION, 0, 0};
    const std::vector<KQexDofColumn> mDofs;
    std::vector<size_t>              mBodies;        ///< Indices of their joints.
    size_t                           mPositions = 0; ///< Starts among a frame's values.
    size_t                           mRotations = 0;
    size_t                           mDofPositions = 0;
    size_t                           mContinuousDofs = 0; ///< After all values of a frame.
    int                              mDofVelocities = -1; ///< Arrays of the file.
    int                              mLinear = -1;
    int                              mAngular = -1;
    std::vector<double>              mLast; ///< Values of the last frame, and of the one before it.
    std::vector<double>              mBefore;
};

} // namespace

std::unique_ptr<KQexFrameSink> KMakeImitationSink(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions, KQexNpzFile& pFile)
{
    return std::make_unique<KImitationSink>(pFigure, pOptions, pFile);
}

} // namespace qexsdk
