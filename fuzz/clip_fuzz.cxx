/// Fuzzes the arrays that a clip is made of, and every operation on a clip that was accepted. Input: flags, sizes, then for each joint its
/// name, parent and rest pose, then the frames, then the arguments of operations. What the input lacks is 0.

#include <fuzz/fuzzsupport.h>
#include <tests/support/clipwork.h>

#include <cmath>
#include <cstring>
#include <utility>

using namespace qexsdk;

namespace
{

/// Which parts of the input are taken as they are, not made to fit.
enum KRaw
{
    eRAW_COUNT = 1,
    eRAW_PARENTS = 2,
    eRAW_ROTATIONS = 4,
    eRAW_NUMBERS = 8,
    eRAW_SIZES = 16,
    eRAW_LISTS = 32,
    eRAW_TIMES = 64
};

/// Takes values from the input.
class KBytes
{
public:
    KBytes(const std::uint8_t* pData, std::size_t pSize) : mData(pData), mEnd(pData + pSize) {}

    template <typename T>
    T Take()
    {
        T                 lValue{};
        const std::size_t lSize = std::min(sizeof lValue, static_cast<std::size_t>(mEnd - mData));
        if (lSize > 0)
        {
            std::memcpy(&lValue, mData, lSize);
        }
        mData += lSize;
        return lValue;
    }

    int Below(int pLimit) { return Take<std::uint8_t>() % pLimit; }

    float Number(bool pIsRaw) { return pIsRaw ? Take<float>() : static_cast<float>(Take<std::int8_t>()) / 8.0F; }

private:
    const std::uint8_t* mData;
    const std::uint8_t* mEnd;
};

class KArraysReader
{
public:
    KArraysReader(KBytes& pBytes, KQexClipData& pData) : mBytes(pBytes), mData(pData) {}

    void Read()
    {
        mRaw = mBytes.Take<std::uint8_t>();
        const int lJoints = mBytes.Below(24);
        const int lFrames = mBytes.Below(16);
        mData.mSampling.mCount = Is(eRAW_COUNT) ? mBytes.Take<long long>() : lFrames;
        mData.mSampling.mStep = KTime(Is(eRAW_TIMES) ? mBytes.Take<long long>() : KTime::kTicksPerSecond / (1 + mBytes.Below(240)));
        mData.mSampling.mStart = KTime(Is(eRAW_TIMES) ? mBytes.Take<long long>() : 0);
        for (int lJoint = 0; lJoint < lJoints; ++lJoint)
        {
            ReadJoint(lJoint);
        }
        ReadDofs(lJoints);
        for (int i = 0; i < lFrames * lJoints; ++i)
        {
            float lRotation[4];
            ReadRotation(lRotation);
            mData.mRotations.insert(mData.mRotations.end(), lRotation, lRotation + 4);
        }
        ReadNumbers(static_cast<int>(mData.mMovingJoints.size()) * lFrames * 3, mData.mTranslations);
        ReadNumbers(static_cast<int>(mData.mScaledJoints.size()) * lFrames * 3, mData.mScalings);
        ReadNumbers(static_cast<int>(mData.mDofs.size()) * lFrames * mBytes.Below(2), mData.mDofValues);
        if (Is(eRAW_SIZES))
        {
            ChangeSizes();
        }
    }

private:
    bool Is(KRaw pRaw) const { return (mRaw & pRaw) != 0; }

    void ReadJoint(int pJoint)
    {
        static const char* const sNames[] = {"", "l", "LeftArm", "RightArm", "lfoot", "rfoot", "hand.L", "hand.R"};
        const int                lName = mBytes.Below(16);
        KQexJointTransform       lRest;
        mData.mNames.push_back(lName < 8 ? sNames[lName]
                                         : std::string(static_cast<std::size_t>(lName), static_cast<char>(mBytes.Below(256))));
        mData.mParents.push_back(Is(eRAW_PARENTS) ? mBytes.Take<std::int8_t>() : mBytes.Below(pJoint + 1) - 1);
        ReadRotation(lRest.mRotation);
        for (int i = 0; i < 3; ++i)
        {
            lRest.mTranslation[i] = mBytes.Number(Is(eRAW_NUMBERS));
            lRest.mScaling[i] = mBytes.Number(Is(eRAW_NUMBERS));
        }
        mData.mRest.push_back(lRest);
        const int lFlags = mBytes.Below(8);
        mData.mIsEnd.push_back(static_cast<char>(lFlags & 1));
        if ((lFlags & 2) != 0)
        {
            mData.mMovingJoints.push_back(Is(eRAW_LISTS) ? mBytes.Take<int>() : pJoint);
        }
        if ((lFlags & 4) != 0)
        {
            mData.mScaledJoints.push_back(Is(eRAW_LISTS) ? mBytes.Take<std::int8_t>() : pJoint);
        }
    }

    void ReadDofs(int pJoints)
    {
        for (int i = mBytes.Below(4); i > 0; --i)
        {
            KQexClipDof lDof;
            lDof.mJoint = Is(eRAW_LISTS) ? mBytes.Take<int>() : std::max(0, pJoints - 1);
            lDof.mDof = {mBytes.Below(2) == 0 ? "tx" : "", mBytes.Below(2) == 0, true, mBytes.Take<double>(), 10.0};
            mData.mDofs.push_back(lDof);
        }
    }

    void ReadRotation(float* pRotation)
    {
        float lSquare = 0.0F;
        for (int i = 0; i < 4; ++i)
        {
            pRotation[i] = mBytes.Number(Is(eRAW_ROTATIONS));
            lSquare += pRotation[i] * pRotation[i];
        }
        if (!Is(eRAW_ROTATIONS) && lSquare > 0.0F)
        {
            std::for_each(pRotation, pRotation + 4, [lSquare](float& pNumber) { pNumber /= std::sqrt(lSquare); });
        }
        else if (!Is(eRAW_ROTATIONS))
        {
            pRotation[3] = 1.0F;
        }
    }

    void ReadNumbers(int pCount, std::vector<float>& pNumbers)
    {
        for (int i = 0; i < pCount; ++i)
        {
            pNumbers.push_back(mBytes.Number(Is(eRAW_NUMBERS)));
        }
    }

    void ChangeSizes()
    {
        const auto lChange = [this](auto& pList)
        {
            pList.resize(std::max<std::size_t>(pList.size() + static_cast<std::size_t>(mBytes.Below(9)), 4) - 4);
        };
        lChange(mData.mNames);
        lChange(mData.mParents);
        lChange(mData.mIsEnd);
        lChange(mData.mRest);
        lChange(mData.mRotations);
        lChange(mData.mTranslations);
        lChange(mData.mScalings);
        lChange(mData.mDofValues);
    }

    KBytes&       mBytes;
    KQexClipData& mData;
    int           mRaw = 0;
};

/// A result of a step is a clip that is accepted as arrays.
void RequireValid(const KQexClip& pClip)
{
    KQexClip lAgain;
    qexfuzz::Require(pClip.GetJointCount() == 0 || KQexClip::FromArrays(pClip.GetData(), lAgain));
}

void RunEveryOperation(const KQexClip& pClip)
{
    for (const qextest::KClipOperation& lOperation : qextest::ClipOperations())
    {
        qextest::KClipWork lWork(pClip);
        lOperation.mRun(lWork);
        RequireValid(lWork.mResult);
    }
}

void RunWithArguments(const KQexClip& pClip, KBytes& pBytes)
{
    KQexClip lResult;
    KQexPose lPose(static_cast<std::size_t>(pClip.GetJointCount()));
    for (const KQexClipEnds lEnds : {KQexClipEnds::eHOLD, KQexClipEnds::eLOOP})
    {
        const double lTime = pBytes.Take<double>();
        qexfuzz::Require(pClip.Sample(lTime, lPose, lEnds) == !std::isnan(lTime));
    }
    pClip.SampleFrame(pBytes.Take<long long>(), lPose);
    const long long lFirst = pBytes.Take<std::int8_t>();
    KQexClipCut(pClip, lFirst, lFirst + pBytes.Take<std::int8_t>(), pBytes.Take<int>(), lResult);
    RequireValid(lResult);
    KQexClipJoin(pClip, lResult, pBytes.Take<std::int8_t>(), lResult);
    RequireValid(lResult);
    KQexClipScale(pClip, pBytes.Take<double>(), lResult);
    RequireValid(lResult);
    KQexQuaternion lTurn;
    double         lOffset[3];
    std::generate(lTurn.mData, lTurn.mData + 4, [&pBytes] { return pBytes.Take<double>(); });
    std::generate(lOffset, lOffset + 3, [&pBytes] { return pBytes.Take<double>(); });
    KQexClipTransform(pClip, lTurn, lOffset, lResult);
    RequireValid(lResult);
    std::vector<int> lList(static_cast<std::size_t>(pBytes.Below(24)));
    std::generate(lList.begin(), lList.end(), [&pBytes] { return pBytes.Take<std::int8_t>(); });
    KQexClipMirror(pClip, lList, lResult);
    RequireValid(lResult);
    std::sort(lList.begin(), lList.end());
    KQexClipSelect(pClip, lList, lResult);
    RequireValid(lResult);
    KQexPassedLimits(pClip.GetData(), pBytes.Take<long long>(), lList);
}

void MakeScene(const KQexClip& pClip)
{
    const qexfuzz::KScenePtr lScene = qexfuzz::MakeScene();
    std::vector<KQexNode*>   lRoots;
    KQexClip                 lBack;
    KQexClipOptions          lOptions;
    lOptions.mThreads = 1;
    qexfuzz::Require(pClip.ToScene(lScene.get(), "take", lRoots));
    if (KQexClip::FromScene(lRoots, lScene->FindAnimStack("take"), pClip.GetData().mSampling, lOptions, lBack))
    {
        qexfuzz::Require(lBack.GetJointCount() == pClip.GetJointCount() && lBack.GetFrameCount() == pClip.GetFrameCount());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize)
{
    KBytes                   lBytes(pData, pSize);
    KQexClipData             lData;
    KQexClip                 lClip;
    std::vector<std::string> lErrors;
    KArraysReader(lBytes, lData).Read();
    const bool lOk = KQexClip::FromArrays(std::move(lData), lClip, &lErrors);
    qexfuzz::Require(lOk == lErrors.empty() && lErrors.size() <= 20 && lOk == (lClip.GetJointCount() > 0));
    if (lOk)
    {
        RunEveryOperation(lClip);
        RunWithArguments(lClip, lBytes);
        MakeScene(lClip);
    }
    return 0;
}
