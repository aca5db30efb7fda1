#include <tests/qexioplugins/acclaim/asf/asftestsupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

/// Reading computes frames in the order of the file; what comes out is what going down the tree gives.

namespace qextest
{

using namespace qexsdk;

namespace
{

constexpr int kBones = 200;

/// A tree of bones that stand in the file in any order, parents behind their children too.
std::string ShuffledTree(std::mt19937& pRandom)
{
    std::vector<int> lOrder;
    for (int i = 1; i <= kBones; ++i)
    {
        lOrder.push_back(i);
    }
    std::shuffle(lOrder.begin(), lOrder.end(), pRandom);
    const auto lAngle = [&pRandom]
    {
        return " " + std::to_string(static_cast<int>(pRandom() % 3600) / 10.0 - 180.0);
    };
    std::string lText = ":root\nposition 1 2 3\norientation 10 20 30\n:bonedata\n";
    for (const int lBone : lOrder)
    {
        lText += "begin\nname b" + std::to_string(lBone) + "\ndirection" + lAngle() + lAngle() + " 1\nlength 2.5\naxis" + lAngle() +
                 lAngle() + lAngle() + " zyx\n" + (lBone % 3 == 0 ? "" : "dof ry rx rz\nlimits (-1 1) (-2 2) (-3 3)\n") + "end\n";
    }
    lText += ":hierarchy\nbegin\n";
    for (int i = 2; i <= kBones; ++i)
    {
        lText += "b" + std::to_string(1 + pRandom() % static_cast<unsigned>(i - 1)) + " b" + std::to_string(i) + "\n";
    }
    return lText + "end\n";
}

/// What SetupPosition() writes.
std::vector<double> FrameOf(const KQexAsfNode& pBone)
{
    std::vector<double> lFrame;
    for (const KgeTVector* lVector : {&pBone.mPositionV, &pBone.mParentPositionV, &pBone.mLT})
    {
        lFrame.insert(lFrame.end(), lVector->mData, lVector->mData + 4);
    }
    lFrame.insert(lFrame.end(), pBone.mLR.mData, pBone.mLR.mData + 3);
    for (const KgeRMatrix* lMatrix : {&pBone.mParentAxisRM, &pBone.mParentAxisRMInv})
    {
        for (const auto& lRow : lMatrix->mData)
        {
            lFrame.insert(lFrame.end(), lRow, lRow + 4);
        }
    }
    return lFrame;
}

} // namespace

TEST(AsfReadFrames, AreThoseOfTheTree)
{
    std::mt19937 lRandom(11);
    for (int i = 0; i < 40; ++i)
    {
        const bool  lOffset = (i & 1) != 0;
        const bool  lPreRotation = (i & 2) != 0;
        KAsfReading lReading;
        ASSERT_TRUE(lReading.ReadText(ShuffledTree(lRandom), false, lOffset, lPreRotation));
        const std::vector<HKQexAsfNode> lBones = PreOrder(lReading.mScene->mRoot);
        ASSERT_EQ(lBones.size(), static_cast<size_t>(kBones) + 1);

        std::vector<std::vector<double>> lRead;
        for (HKQexAsfNode lBone : lBones)
        {
            lRead.push_back(FrameOf(*lBone));
            // So that nothing is right only because it was before.
            lBone->mParentPositionV = KgeTVector(7, 7, 7);
            if (lBone->mParent != nullptr)
            {
                lBone->mPositionV = KgeTVector(7, 7, 7);
            }
        }
        lReading.mScene->mRoot->SetupPosition(lOffset, lPreRotation);
        for (size_t lPlace = 0; lPlace < lBones.size(); ++lPlace)
        {
            // Of a root only both flags together set all of it.
            if (lPlace == 0 && !(lOffset && lPreRotation))
            {
                continue;
            }
            EXPECT_EQ(FrameOf(*lBones[lPlace]), lRead[lPlace]) << i << " " << lBones[lPlace]->mName;
        }
    }
}

} // namespace qextest
