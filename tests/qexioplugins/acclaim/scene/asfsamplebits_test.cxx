#include <kbaselib/kmath/keulerorder.h>

#include <tests/qexioplugins/acclaim/asfbuild.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// One frame of a bone, computed by general operations: a matrix for every rotation, a product for every step.
struct KReference
{
    KReference(const KQexAsfNode& pBone, const double* pDOF, double pLengthUnit, double pAngleUnit, bool pOffset, bool pPreRotation)
    {
        KgeRMatrix lRM;
        for (int lIter = 0; lIter < pBone.mOrderCount; ++lIter)
        {
            AddDof(pBone.mOrderBuf[lIter], pDOF[lIter], pLengthUnit, pAngleUnit, lRM);
        }
        KgeMult(mT, pBone.mAxisRM, KgeTVector(mT));
        if (!pOffset)
        {
            KgeAdd(mT, pBone.mParentPositionV, mT);
            KgeMult(mT, pBone.mParentAxisRMInv, KgeTVector(mT));
        }
        else if (pBone.mParent)
        {
            KgeMult(mT, pBone.mParent->mAxisRMInv, KgeTVector(mT));
        }
        if (!pPreRotation)
        {
            FoldAxis(pBone, lRM);
        }
    }

    void AddDof(int pCode, double pValue, double pLengthUnit, double pAngleUnit, KgeRMatrix& pRM)
    {
        KgeTVector lTDOF;
        KgeRVector lRDOF;
        if (pCode >= 0 && pCode <= 2)
        {
            lTDOF.mData[pCode] = pValue * pLengthUnit;
            KgeAdd(mT, mT, lTDOF);
        }
        else if (pCode >= 3 && pCode <= 5)
        {
            lRDOF.mData[5 - pCode] = pValue * pAngleUnit;
            for (int lIter = 0; lIter < 3; ++lIter)
            {
                mR.mData[lIter] += lRDOF.mData[lIter];
            }
            KgeRMatrix lRMDOF;
            KgeSet(lRMDOF, lRDOF);
            KgeMult(pRM, lRMDOF, KgeRMatrix(pRM));
        }
    }

    void FoldAxis(const KQexAsfNode& pBone, KgeRMatrix& pRM)
    {
        KgeMult(pRM, pBone.mAxisRM, KgeRMatrix(pRM));
        KgeMult(pRM, pBone.mParentAxisRMInv, KgeRMatrix(pRM));
        const int lOrder = EulerOrderFromOrderBuf(pBone.mOrderBuf, pBone.mOrderCount);
        KgeSet(mR, pRM, lOrder);
        const KgeRVector lTmp = mR;
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            mR.mData[KmEulerAxis[lOrder][lIter]] = lTmp.mData[lIter];
        }
    }

    KgeTVector mT;
    KgeRVector mR;
};

std::uint32_t Bits(double pValue)
{
    const float   lFloat = static_cast<float>(pValue);
    std::uint32_t lBits;
    std::memcpy(&lBits, &lFloat, sizeof(lBits));
    return lBits;
}

std::uint32_t KeyBits(const KQexAnimCurve* pCurve)
{
    return Bits(static_cast<double>(pCurve->GetValue(0)));
}

/// Round angles give matrices exact zeros and ones of either sign, which reveal a skipped product by 0 or 1.
double RandomValue(std::mt19937& pRandom)
{
    static const double kRound[] = {0.0, -0.0, 90.0, -90.0, 180.0, -180.0, 45.0, 270.0, 360.0, 1e-9, -1e-300, 89.99999};
    switch (pRandom() % 3)
    {
    case 0:
        return kRound[pRandom() % (sizeof(kRound) / sizeof(kRound[0]))];
    case 1:
        return static_cast<double>(static_cast<int>(pRandom() % 73) - 36) * 10.0;
    default:
        return std::uniform_real_distribution<double>(-400.0, 400.0)(pRandom);
    }
}

struct KBitsCase
{
    bool mOffset;
    bool mPreRotation;
};

class KSampleBitsTest : public testing::TestWithParam<KBitsCase>
{
protected:
    /// Creates a bone with random DOFs (any code, repeated ones too), under a parent or alone.
    void MakeRandomBone(std::mt19937& pRandom)
    {
        const auto lAxis = [&]
        {
            return KgeRVector(RandomValue(pRandom), RandomValue(pRandom), RandomValue(pRandom));
        };
        std::vector<int> lDofs;
        for (auto lCount = pRandom() % 7; lCount > 0; --lCount)
        {
            lDofs.push_back(static_cast<int>(pRandom() % 8) - 1);
        }
        const bool lPlain = pRandom() % 3 == 0;
        mRoot = pRandom() % 4 == 0 ? nullptr : Bone(nullptr, "root", {}, {1.0, -2.0, 3.0}, lPlain ? KgeRVector() : lAxis());
        mBone = Bone(mRoot, "bone", lDofs, {0.5, 0.25, -1.0}, lPlain ? KgeRVector() : lAxis());
        (mRoot != nullptr ? mRoot : mBone)->SetupPosition(false, false);
        (mRoot != nullptr ? mRoot : mBone)->CreateDataFromDOF(mScene);
    }

    KQexScene*   mScene = KQexScene::Create("");
    KQexAsfNode* mRoot = nullptr;
    KQexAsfNode* mBone = nullptr;

    void TearDown() override { mScene->Destroy(); }
};

TEST_P(KSampleBitsTest, KeysEqualTheReferenceToTheLastBit)
{
    std::mt19937 lRandom(2024);
    for (int lRound = 0; lRound < 20000; ++lRound)
    {
        MakeRandomBone(lRandom);
        double lValues[6];
        for (double& lValue : lValues)
        {
            lValue = RandomValue(lRandom);
        }
        const double     lUnit = lRound % 2 ? 1.0 : 57.29577951308232;
        const KReference lWanted(*mBone, lValues, 2.54, lUnit, GetParam().mOffset, GetParam().mPreRotation);
        mBone->AddSampleFromDOF(lValues, KTime(lRound), 2.54, lUnit, GetParam().mOffset, GetParam().mPreRotation);
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            if (mBone->mLTData[lIter] != nullptr)
            {
                ASSERT_EQ(KeyBits(mBone->mLTData[lIter]), Bits(lWanted.mT.mData[lIter])) << "round " << lRound << " t" << lIter;
            }
            if (mBone->mLRData[lIter] != nullptr)
            {
                ASSERT_EQ(KeyBits(mBone->mLRData[lIter]), Bits(lWanted.mR.mData[lIter])) << "round " << lRound << " r" << lIter;
            }
        }
        QexSdkDelete(mRoot != nullptr ? mRoot : mBone);
    }
}

INSTANTIATE_TEST_SUITE_P(Flags, KSampleBitsTest,
                         testing::Values(KBitsCase{false, false}, KBitsCase{true, false}, KBitsCase{false, true}, KBitsCase{true, true}));

} // namespace
