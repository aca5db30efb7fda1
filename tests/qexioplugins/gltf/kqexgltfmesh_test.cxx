#include <qexioplugins/gltf/kqexgltfmesh.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>

using namespace qexsdk;

namespace
{

struct KBoneCase
{
    const char* mWhat;
    double      mLength;
    double      mRadius;
};

std::ostream& operator<<(std::ostream& pOut, const KBoneCase& pCase)
{
    return pOut << pCase.mWhat;
}

class KQexGltfMeshTest : public testing::TestWithParam<KBoneCase>
{
};

// The figure is 2 m high.
TEST_P(KQexGltfMeshTest, BonesAreThickEnoughToSee)
{
    KQexGltfBoneMesh lMesh(2.0);
    const double     lStart[3] = {1.0, 0.0, 0.0};
    const double     lEnd[3] = {1.0, GetParam().mLength, 0.0};
    lMesh.AddBone(lStart, lEnd, 7);
    ASSERT_EQ(lMesh.GetVertexCount(), 24u) << "an octahedron";
    double lRadius = 0.0;
    for (size_t i = 0; i < lMesh.GetVertexCount(); ++i)
    {
        const float* lAt = lMesh.GetPositions().data() + 3 * i;
        lRadius = std::max(lRadius, std::hypot(lAt[0] - 1.0, lAt[2] - 0.0));
        EXPECT_GE(lAt[1], 0.0F);
        EXPECT_LE(lAt[1], static_cast<float>(GetParam().mLength));
        EXPECT_EQ(lMesh.GetJoints()[4 * i], 7);
    }
    EXPECT_NEAR(lRadius, GetParam().mRadius, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Bones, KQexGltfMeshTest,
                         testing::Values(KBoneCase{"a thigh: in proportion", 0.4, 0.048},
                                         KBoneCase{"a neck: at least that of its size", 0.1, 0.03},
                                         KBoneCase{"a spine of one bone: slim", 0.9, 0.07},
                                         KBoneCase{"a finger: not wider than long", 0.02, 0.007}));

TEST(KQexGltfMesh, ABoneWithoutLengthIsSkipped)
{
    KQexGltfBoneMesh lMesh(2.0);
    const double     lAt[3] = {1.0, 2.0, 3.0};
    const double     lFar[3] = {1.0, INFINITY, 3.0};
    lMesh.AddBone(lAt, lAt, 0);
    lMesh.AddBone(lAt, lFar, 0);
    EXPECT_TRUE(lMesh.IsEmpty());
}

} // namespace
