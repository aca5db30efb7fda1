#include <qexfigure/kqexfigureworld.h>

#include <tests/qexfigure/figuresupport.h>

#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

using KPose = std::vector<KQexFigurePoint>;

KQexFigurePoint ZUp(const KQexFigurePoint& pPoint)
{
    return {pPoint.mX, -pPoint.mZ, pPoint.mY};
}

double Distance(const KQexFigurePoint& pA, const KQexFigurePoint& pB)
{
    return std::hypot(pA.mX - pB.mX, pA.mY - pB.mY, pA.mZ - pB.mZ);
}

/// A root that turns and walks, with a leg that turns too.
std::string WalkBvh()
{
    return Replaced(Replaced(LegBvh(), "0 90 0 0 0 0 0 0 0\n", "5 90 -3 10 20 30 0 0 0\n"), "0 91 0 0 0 0 90 0 0",
                    "25 91 47 -40 15 80 90 5 -20");
}

/// The same, with a second root that walks elsewhere.
std::string TwoWalkersBvh()
{
    const std::string lOther = "ROOT Ball\n{\n OFFSET 0 0 0\n CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\n"
                               " End Site\n {\n  OFFSET 3 2 1\n }\n}\nMOTION";
    std::string       lText = Replaced(Replaced(WalkBvh(), "MOTION", lOther), "0 0 0\n25", "0 0 0 100 5 7 0 0 0\n25");
    lText.pop_back();
    return lText + " 300 6 -9 30 20 10\n";
}

/// What is above the hips, as 3D programs write it: turned and scaled, without motion.
std::string ArmatureGltf()
{
    // Two keys, at 0 and 1 s: 1 2 3 and 4 -5 9 in the armature's units, which are centimetres; its z is the world's y.
    return "{\"asset\":{\"version\":\"2.0\"},\"scene\":0,\"scenes\":[{\"nodes\":[0]}],"
           "\"nodes\":[{\"name\":\"Armature\",\"rotation\":[-0.7071067811865476,0,0,0.7071067811865476],\"scale\":[0.01,0.01,0.01],"
           "\"translation\":[0.5,0,0.25],\"children\":[1]},"
           "{\"name\":\"Hips\",\"translation\":[1,2,3],\"children\":[2]},{\"name\":\"Leg\",\"translation\":[0,0,-40]}],"
           "\"animations\":[{\"name\":\"walk\",\"channels\":[{\"sampler\":0,\"target\":{\"node\":1,\"path\":\"translation\"}}],"
           "\"samplers\":[{\"input\":0,\"output\":1}]}],"
           "\"accessors\":[{\"bufferView\":0,\"componentType\":5126,\"count\":2,\"type\":\"SCALAR\",\"min\":[0],\"max\":[1]},"
           "{\"bufferView\":1,\"componentType\":5126,\"count\":2,\"type\":\"VEC3\"}],"
           "\"bufferViews\":[{\"buffer\":0,\"byteLength\":8},{\"buffer\":0,\"byteOffset\":8,\"byteLength\":24}],"
           "\"buffers\":[{\"byteLength\":32,"
           "\"uri\":\"data:application/octet-stream;base64,AAAAAAAAgD8AAIA/AAAAQAAAQEAAAIBAAACgwAAAEEE=\"}]}";
}

class KFigureWorldTest : public testing::Test
{
protected:
    void Load(const std::string& pText, const std::string& pName)
    {
        KQexFigureReport lReport;
        KQexFigureFile   lFile;
        KQexFigureFiles  lFiles;
        ASSERT_TRUE(lFile.OpenBuffer(pText, pName, lReport)) << TextOf(lReport);
        ASSERT_TRUE(lFiles.Assign({lFile}, {}, lReport)) << TextOf(lReport);
        ASSERT_TRUE(mFigure.Load(lFiles, {}, lReport)) << TextOf(lReport);
    }

    KPose AtRest()
    {
        KPose lPose;
        EXPECT_TRUE(mFigure.Evaluate(nullptr, KTime(0), lPose));
        return lPose;
    }

    /// The poses of all frames of the first take.
    std::vector<KPose> Motion()
    {
        const KQexFigureTake& lTake = mFigure.GetTakes().front();
        KQexFigureFrames      lFrames;
        std::vector<KPose>    lPoses;
        EXPECT_TRUE(mFigure.CollectFrames(lTake, lFrames));
        for (const KTime& lTime : lFrames.mTimes)
        {
            EXPECT_TRUE(mFigure.Evaluate(&lTake, lTime, lPoses.emplace_back()));
        }
        return lPoses;
    }

    static void ExpectTurned(const KPose& pFrom, const KPose& pTo)
    {
        ASSERT_EQ(pFrom.size(), pTo.size());
        for (size_t i = 0; i < pFrom.size(); ++i)
        {
            EXPECT_LT(Distance(ZUp(pFrom[i]), pTo[i]), 1e-4) << i;
        }
    }

    KQexFigure mFigure;
};

TEST_F(KFigureWorldTest, TurnsRestPoseAndMotion)
{
    for (const std::string& lText : {WalkBvh(), TwoWalkersBvh()})
    {
        Load(lText, "walk.bvh");
        const KPose              lRest = AtRest();
        const std::vector<KPose> lMotion = Motion();
        ASSERT_EQ(lMotion.size(), 2u);
        ASSERT_TRUE(TurnFigureZUp(mFigure, eFIGURE_TURN_ALL));
        ExpectTurned(lRest, AtRest());
        ExpectTurned(lMotion[0], Motion()[0]);
        ExpectTurned(lMotion[1], Motion()[1]);
    }
}

/// A skeleton is extracted in its root's space: the root must not have the turn at rest.
TEST_F(KFigureWorldTest, TurnsBonesAndNotTheRootAtRest)
{
    Load(WalkBvh(), "walk.bvh");
    ASSERT_TRUE(TurnFigureZUp(mFigure, eFIGURE_TURN_ALL));
    const KQexMatrix lRoot = mFigure.GetScene()->GetEvaluator()->GetNodeGlobalTransform(mFigure.GetTop(), KTime(99));
    mFigure.GetScene()->GetEvaluator()->SetContext(nullptr);
    const KQexMatrix lAtRest = mFigure.GetScene()->GetEvaluator()->GetNodeGlobalTransform(mFigure.GetTop(), KTime(0));
    EXPECT_NEAR(lAtRest.mData[1].mData[1], 1, 1e-12);
    EXPECT_LT(lRoot.mData[1].mData[1], 0.99);
}

TEST_F(KFigureWorldTest, TurnsTakesOnly)
{
    for (const std::string& lText : {WalkBvh(), TwoWalkersBvh()})
    {
        Load(lText, "walk.bvh");
        const KPose              lRest = AtRest();
        const std::vector<KPose> lMotion = Motion();
        ASSERT_TRUE(TurnFigureZUp(mFigure, eFIGURE_TURN_MOTION));
        const KPose lRestAfter = AtRest();
        for (size_t i = 0; i < lRest.size(); ++i)
        {
            EXPECT_LT(Distance(lRest[i], lRestAfter[i]), 1e-9) << i;
        }
        ExpectTurned(lMotion[0], Motion()[0]);
        ExpectTurned(lMotion[1], Motion()[1]);
    }
}

/// Each root stays above its first place; height and turns stay.
TEST_F(KFigureWorldTest, HoldsEachRootInPlace)
{
    Load(TwoWalkersBvh(), "walk.bvh");
    const std::vector<KPose> lMotion = Motion();
    ASSERT_TRUE(HoldFigureInPlace(mFigure));
    const std::vector<KPose>            lHeld = Motion();
    const std::vector<KQexFigureJoint>& lJoints = mFigure.GetJoints();
    ASSERT_EQ(lJoints.size(), 5u);
    for (size_t lFrame = 0; lFrame < 2; ++lFrame)
    {
        for (size_t i = 0; i < lJoints.size(); ++i)
        {
            size_t lRoot = i;
            for (; lJoints[lRoot].mParent >= 0; lRoot = static_cast<size_t>(lJoints[lRoot].mParent))
            {
            }
            KQexFigurePoint lWanted = lMotion[lFrame][i];
            lWanted.mX += lMotion[0][lRoot].mX - lMotion[lFrame][lRoot].mX;
            lWanted.mZ += lMotion[0][lRoot].mZ - lMotion[lFrame][lRoot].mZ;
            EXPECT_LT(Distance(lWanted, lHeld[lFrame][i]), 1e-4) << lJoints[i].mName << " " << lFrame;
        }
    }
    EXPECT_EQ(lHeld[1][0].mX, lHeld[0][0].mX);
    EXPECT_EQ(lHeld[1][0].mZ, lHeld[0][0].mZ);
}

#ifdef QEX_WITH_GLTF
TEST_F(KFigureWorldTest, HoldsTheJointBelowAnArmatureInPlace)
{
    Load(ArmatureGltf(), "walk.gltf");
    const std::vector<KPose> lMotion = Motion();
    ASSERT_GT(lMotion.size(), 1u);
    // The armature turns -90 degrees about x and is 50 cm aside, 25 cm in front.
    EXPECT_LT(Distance(lMotion.front()[1], KQexFigurePoint{51, 3, 23}), 1e-4);
    EXPECT_LT(Distance(lMotion.back()[1], KQexFigurePoint{54, 9, 30}), 1e-4);
    ASSERT_TRUE(HoldFigureInPlace(mFigure));
    EXPECT_LT(Distance(Motion().front()[1], KQexFigurePoint{51, 3, 23}), 1e-4);
    EXPECT_LT(Distance(Motion().back()[1], KQexFigurePoint{51, 9, 23}), 1e-4);
    EXPECT_LT(Distance(Motion().back()[2], KQexFigurePoint{51, -31, 23}), 1e-4);
}
#endif

} // namespace
