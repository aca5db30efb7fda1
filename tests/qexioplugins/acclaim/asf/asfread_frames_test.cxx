#include <tests/qexioplugins/acclaim/asf/asftestsupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

/// The reader computes frames in file order; the result must equal that of a walk down the tree.

namespace qextest
{

using namespace qexsdk;

namespace
{

constexpr int kBones = 200;

/// A random tree whose bones are shuffled in the file, so that parents may follow their children.
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

TEST(AsfReadFrames, EqualThoseOfAWalkDownTheTree)
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
            // Overwritten, so that stale values cannot pass.
            lBone->mParentPositionV = KgeTVector(7, 7, 7);
            if (lBone->mParent != nullptr)
            {
                lBone->mPositionV = KgeTVector(7, 7, 7);
            }
        }
        lReading.mScene->mRoot->SetupPosition(lOffset, lPreRotation);
        for (size_t lIndex = 0; lIndex < lBones.size(); ++lIndex)
        {
            // Only both flags together set every field of a root.
            if (lIndex == 0 && !(lOffset && lPreRotation))
            {
                continue;
            }
            EXPECT_EQ(FrameOf(*lBones[lIndex]), lRead[lIndex]) << i << " " << lBones[lIndex]->mName;
        }
    }
}

} // namespace qextest
