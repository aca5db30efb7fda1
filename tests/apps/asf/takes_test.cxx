#include <tests/apps/asf/converttest.h>

using namespace qextest;

// Figures with several takes, moving leaves and prefixed names as ASF and AMC, and back.

namespace
{

/// Armature, turned by 90 degrees, hips, leg and foot, a leaf. A turns the leg, B the foot; three frames at 30 a second.
const char* const kTwoTakes =
    R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[
{"name":"Armature","rotation":[0.70710678,0,0,0.70710678],"children":[1]},
{"name":"me:Hips","translation":[0,0.1,-0.9],"children":[2,4]},
{"name":"me:Leg","translation":[0.1,0,0.1],"children":[3]},
{"name":"me:Foot","translation":[0,0,0.4]},
{"name":"me:Head","translation":[0,0,-0.6]}],
"buffers":[{"byteLength":108,"uri":"data:application/octet-stream;base64,AAAAAImICD2JiIg9AAAAAAAAAAAAAAAAAACAP9TQMT4AAAAAAAAAAFwcfD9EHa8+AAAAAAAAAACyj3A/AAAAAAAAAAAAAAAAAACAPwAAAACoqAW+AAAAAFXPfT8AAAAA7oOEvgAAAADqRnc/"}],
"bufferViews":[{"buffer":0,"byteLength":108}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"SCALAR","min":[0],"max":[0.0666667]},
{"bufferView":0,"byteOffset":12,"componentType":5126,"count":3,"type":"VEC4"},
{"bufferView":0,"byteOffset":60,"componentType":5126,"count":3,"type":"VEC4"}],
"animations":[{"name":"A","channels":[{"sampler":0,"target":{"node":2,"path":"rotation"}}],"samplers":[{"input":0,"output":1}]},
{"name":"B","channels":[{"sampler":0,"target":{"node":3,"path":"rotation"}}],"samplers":[{"input":0,"output":2}]}]})";

class KTakesTest : public KConvertTest
{
protected:
    void SetUp() override
    {
        KConvertTest::SetUp();
        WriteFile(mFolder / "two.gltf", kTwoTakes);
    }

    /// Expects that a take of \p pLeft and of \p pRight has the same joints in the same places, as BVH.
    void ExpectSameTake(const std::string& pTake, const std::string& pLeft, const std::string& pRight)
    {
        ExpectConverts(pLeft + " --take " + pTake + " -o left.bvh");
        ExpectConverts(pRight + " --take " + pTake + " -o right.bvh");
        ExpectSame({"left.bvh", "right.bvh"}, "rest,frames"); // A skeleton file's root has no rest rotation.
    }
};

/// The root's rest rotation is in every take, and the skeleton suits all of them.
TEST_F(KTakesTest, EveryTakeStandsRight)
{
    const KRunResult lResult = Convert("two.gltf -o t.asf {name}.amc --tell-rate");
    EXPECT_EQ(lResult.mExit, 0);
    EXPECT_EQ(lResult.mErr, "");
    EXPECT_EQ(LineWith(Text("A.amc"), "root"), "root 0 0 0 90 0 0");
    EXPECT_EQ(LineWith(Text("B.amc"), "root"), "root 0 0 0 90 0 0");
    ExpectSameTake("A", "two.gltf", "t.asf A.amc");
    ExpectSameTake("B", "two.gltf", "t.asf B.amc");
    ExpectConverts("two.gltf -o t.asf {name}.amc --tell-rate --base-pose first-frame");
    ExpectConverts("t.asf A.amc -o a.bvh");
    ExpectConverts("t.asf B.amc -o b.bvh");
    ExpectConverts("two.gltf -o {name}.bvh");
    ExpectSame({"a.bvh", "A.bvh"}, "rest,frames");
    ExpectSame({"b.bvh", "B.bvh"}, "rest,frames");
}

/// The same onto a skeleton that was written before.
TEST_F(KTakesTest, MotionForASkeletonWrittenBefore)
{
    ExpectConverts("two.gltf -o t.asf");
    ExpectConverts("two.gltf --skeleton t.asf -o {name}.amc --tell-rate");
    ExpectSameTake("A", "two.gltf", "t.asf A.amc");
    ExpectSameTake("B", "two.gltf", "t.asf B.amc");
}

/// Prefixes and leaves come back, in BVH and in GLB.
TEST_F(KTakesTest, NamesAndLeavesComeBack)
{
    const KRunResult lResult = Run({"convert", "two.gltf", "-o", "t.asf", "-o", "{name}.amc", "--tell-rate"});
    EXPECT_EQ(lResult.mErr, "t.asf: note: Leaf joints without a length get one of 1.5 cm (me:Foot and 1 more)\n"
                            "asf: wrote t.asf: 5 joints\n"
                            "asf: wrote A.amc: 3 frames, 30 a second\n"
                            "asf: wrote B.amc: 3 frames, 30 a second\n");
    ExpectConverts("t.asf A.amc B.amc -o back.glb --mesh none");
    const std::string lBack = Text("back.glb");
    for (const char* lName : {"me:Hips", "me:Leg", "me:Foot", "me:Head"})
    {
        EXPECT_NE(lBack.find(std::string("\"name\":\"") + lName + "\""), std::string::npos) << lName;
    }
    EXPECT_EQ(lBack.find("_End"), std::string::npos);
    ExpectSameTake("B", "two.gltf", "back.glb --remove-dummies");
}

/// Skeleton, motions and other formats: nothing is replaced when one of them fails.
TEST_F(KTakesTest, AllOutputsOrNone)
{
    for (const char* lName : {"t.asf", "A.amc", "t.glb"})
    {
        WriteFile(mFolder / lName, "old");
    }
    std::filesystem::create_directory(mFolder / "B.amc");
    EXPECT_NE(Convert("two.gltf -o t.glb -o t.asf {name}.amc").mExit, 0);
    for (const char* lName : {"t.asf", "A.amc", "t.glb"})
    {
        EXPECT_EQ(Text(lName), "old");
    }
}

/// Every command that pairs a motion and a skeleton refuses a wrong one.
TEST_F(KTakesTest, AWrongSkeletonIsRefused)
{
    const std::string lError = "error: Not a motion of this skeleton: 0 of 2 moving joints match; only the motion has left_thigh, "
                               "left_shin, left_foot; only the skeleton "
                               "has thigh, shin\n";
    std::filesystem::create_directory(mFolder / "else");
    const std::vector<std::vector<std::string>> lCalls = {{"convert", "small.asf", "walk.amc", "-o", "else/x.bvh"},
                                                          {"positions", "small.asf", "walk.amc", "-o", "else/x.csv"},
                                                          {"draw", "small.asf", "walk.amc", "-o", "else/x.svg"},
                                                          {"info", "--asf", "small.asf", "walk.amc"},
                                                          {"check", "--asf", "small.asf", "walk.amc"},
                                                          {"diff", "small.asf", "walk.amc", "walk.amc"}};
    for (std::vector<std::string> lCall : lCalls)
    {
        const KRunResult lResult = Run(lCall);
        EXPECT_EQ(lResult.mExit, 1) << lCall.front();
        EXPECT_NE(lResult.mErr.find("walk.amc: " + lError), std::string::npos) << lCall.front() << '\n' << lResult.mErr;
        EXPECT_NE(lResult.mErr.find("asf: note: use --allow-unmatched to go on nevertheless\n"), std::string::npos) << lResult.mErr;
        EXPECT_EQ(lResult.mErr.find("warning"), std::string::npos) << lResult.mErr;
        lCall.emplace_back("--allow-unmatched");
        const KRunResult lAllowed = Run(lCall);
        EXPECT_EQ(lAllowed.mExit, 0) << lCall.front() << '\n' << lAllowed.mErr;
        EXPECT_NE(lAllowed.mErr.find("warning: The skeleton has no bone left_thigh, its values are ignored\n"), std::string::npos)
            << lAllowed.mErr;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mFolder / "else"), std::filesystem::directory_iterator()), 3);
}

} // namespace
