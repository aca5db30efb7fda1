#include <qexioplugins/gltf/kqexfilegltf.h>

#include <tests/qexioplugins/gltf/gltfbuild.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>

// Writing of unusual scenes: several trees, transformed ancestors, odd names, takes without motion.

using namespace qexsdk;
using namespace qextest;

namespace
{

KQexNode* AddNode(KQexNode* pParent, const char* pName, double pX = 0.0, double pY = 0.0, double pZ = 0.0)
{
    KQexNode* lNode = KQexNode::Create(pParent->GetScene(), pName);
    EXPECT_TRUE(pParent->AddChild(lNode));
    lNode->mLocalTranslation.Set(qexVectorTemplate3<double>(pX, pY, pZ));
    return lNode;
}

/// A scene written and read back.
class KWritten
{
public:
    KWritten(const std::vector<KQexNode*>& pRoots, const KQexGltfWriteOptions& pOptions = KQexGltfWriteOptions())
    {
        KTempDir lFolder;
        EXPECT_TRUE(mFile.Write((lFolder / "it.gltf").string(), pRoots, pOptions)) << MessagesOf(mFile);
        mMessages = MessagesOf(mFile);
        mJson = nlohmann::json::parse(ReadFile(lFolder / "it.gltf"));
        EXPECT_TRUE(mFile.Read((lFolder / "it.gltf").string(), mScene.get(), {}, mResult)) << MessagesOf(mFile);
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> lNames;
        for (const nlohmann::json& lNode : mJson["nodes"])
        {
            if (!lNode.contains("mesh"))
            {
                lNames.push_back(lNode.value("name", ""));
            }
        }
        return lNames;
    }

    KQexFileGltf       mFile;
    KQexGltfReadResult mResult;
    KScenePtr          mScene = MakeScene();
    std::string        mMessages;
    nlohmann::json     mJson;
};

KQexVector4 Position(KQexNode* pNode)
{
    return pNode->GetScene()->GetEvaluator()->GetNodeGlobalTransform(pNode, KTime(0)).GetT();
}

TEST(GltfWrite, TreesKeepTheirGlobalTransformsUnderTransformedAncestors)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lGroup = AddNode(lScene->GetRootNode(), "group", 100, 0, 0);
    KQexNode*       lInner = AddNode(lGroup, "inner", 0, 50, 0);
    lGroup->mLocalRotation.Set(qexVectorTemplate3<double>(0, 0, 90));
    lInner->mLocalScaling.Set(qexVectorTemplate3<double>(2, 2, 2));
    KQexNode*       lFirst = AddNode(lInner, "first", 1, 2, 3);
    KQexNode*       lBelow = AddNode(lFirst, "below", 10, 0, 0);
    KQexNode* const lSecond = AddNode(lScene->GetRootNode(), "second", 7, 8, 9);
    const KWritten  lWritten({lFirst, lSecond});
    EXPECT_EQ(lWritten.mMessages, "");
    EXPECT_EQ(lWritten.Names(), (std::vector<std::string>{"group", "inner", "first", "below", "second"}));
    EXPECT_EQ(lWritten.mJson["skins"].size(), 2u) << "one per tree";
    for (KQexNode* lNode : {lGroup, lInner, lFirst, lBelow, lSecond})
    {
        KQexNode* lOther = lWritten.mScene->GetRootNode()->FindChild(lNode->GetName());
        ASSERT_NE(lOther, nullptr) << lNode->GetName();
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_NEAR(Position(lOther)[i], Position(lNode)[i], 1e-3) << lNode->GetName() << i;
        }
    }
}

/// The node of the mesh is named after the skeleton's first joint.
TEST(GltfWrite, TheNameOfTheMeshDiffersFromThoseOfAllNodes)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lFirst = AddNode(lScene->GetRootNode(), "hips");
    AddNode(lFirst, "hips_bones", 0, 10, 0);
    const KWritten lWritten({lFirst});
    EXPECT_EQ(lWritten.mMessages, "");
    ASSERT_EQ(lWritten.mJson["nodes"].size(), 3u);
    EXPECT_EQ(lWritten.mJson["nodes"][1]["name"], "hips_bones");
    EXPECT_EQ(lWritten.mJson["nodes"][2]["name"], "hips_bones_2");
    EXPECT_EQ(lWritten.mJson["meshes"][0]["name"], "hips_bones_2");
}

TEST(GltfWrite, ATransformedSceneRootIsWritten)
{
    for (const int lProperty : {0, 1, 2, 3, 4, 5, 6})
    {
        const KScenePtr lScene = MakeScene();
        KQexNode*       lTop = lScene->GetRootNode();
        KQexNode*       lNode = AddNode(lTop, "node", 1, 2, 3);
        double          lValues[3] = {0, 0, 0};
        lValues[lProperty % 3] = 2.0;
        if (lProperty < 3)
        {
            lTop->mLocalTranslation.Set(qexVectorTemplate3<double>(lValues[0], lValues[1], lValues[2]));
        }
        else if (lProperty < 6)
        {
            lTop->mLocalScaling.Set(qexVectorTemplate3<double>(1 + lValues[0], 1 + lValues[1], 1 + lValues[2]));
        }
        else
        {
            lTop->mLocalRotation.Set(qexVectorTemplate3<double>(10, 20, 30));
        }
        const KWritten lWritten({lNode});
        EXPECT_EQ(lWritten.mJson["nodes"][0]["name"], "RootNode");
        KQexNode* lOther = lWritten.mScene->GetRootNode()->FindChild("node");
        ASSERT_NE(lOther, nullptr);
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_NEAR(Position(lOther)[i], Position(lNode)[i], 1e-3) << lProperty;
        }
    }
}

TEST(GltfWrite, NamesAreUniqueAndValidUtf8)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lTop = AddNode(lScene->GetRootNode(), "top");
    for (const char* lName : {"a", "a", "",
                              "Gr\xC3\xB6\xC3\x9F"
                              "e",
                              "latin \xF6 one"})
    {
        AddNode(lTop, lName);
    }
    const KWritten lWritten({lTop});
    EXPECT_EQ(lWritten.Names(), (std::vector<std::string>{"top", "a", "a_2", "node",
                                                          "Gr\xC3\xB6\xC3\x9F"
                                                          "e",
                                                          "latin _ one"}));
    EXPECT_EQ(lWritten.mMessages,
              "Name changed (a_2), from (a)\nName changed (node), from ()\nName changed (latin _ one), from (latin \xF6 one)\n");
}

struct KUtf8Case
{
    const char* mText;
    bool        mIsValid;
};

class KQexGltfUtf8Test : public testing::TestWithParam<KUtf8Case>
{
};

/// A valid name is kept; in any other, bytes that are not ASCII are replaced.
TEST_P(KQexGltfUtf8Test, IsKeptOrReplaced)
{
    const KScenePtr lScene = MakeScene();
    const KWritten  lWritten({AddNode(lScene->GetRootNode(), GetParam().mText)});
    EXPECT_EQ(lWritten.Names()[0] == GetParam().mText, GetParam().mIsValid) << lWritten.Names()[0];
}

INSTANTIATE_TEST_SUITE_P(Names, KQexGltfUtf8Test,
                         testing::Values(KUtf8Case{"plain", true}, KUtf8Case{"\x7F", true}, KUtf8Case{"\xC2\x80", true},
                                         KUtf8Case{"\xDF\xBF", true}, KUtf8Case{"\xE0\xA0\x80", true}, KUtf8Case{"\xED\x9F\xBF", true},
                                         KUtf8Case{"\xEE\x80\x80", true}, KUtf8Case{"\xEF\xBF\xBF", true},
                                         KUtf8Case{"\xF0\x90\x80\x80", true}, KUtf8Case{"\xF4\x8F\xBF\xBF", true},
                                         // Lone continuation bytes, truncated, overlong, surrogates, above U+10FFFF.
                                         KUtf8Case{"\x80", false}, KUtf8Case{"\xC2", false}, KUtf8Case{"\xC2x", false},
                                         KUtf8Case{"\xC0\x80", false}, KUtf8Case{"\xC1\xBF", false}, KUtf8Case{"\xE0\x9F\xBF", false},
                                         KUtf8Case{"\xE2\x82", false}, KUtf8Case{"\xE2\x82x", false}, KUtf8Case{"\xED\xA0\x80", false},
                                         KUtf8Case{"\xED\xBF\xBF", false}, KUtf8Case{"\xF0\x8F\xBF\xBF", false},
                                         KUtf8Case{"\xF4\x90\x80\x80", false}, KUtf8Case{"\xF5\x80\x80\x80", false},
                                         KUtf8Case{"\xF0\x90\x80", false}, KUtf8Case{"\xFF", false}));

TEST(GltfWrite, ATakeThatShowsTheRestPoseKeepsItsNameAndLength)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lNode = AddNode(lScene->GetRootNode(), "node", 1, 2, 3);
    KQexAnimCurve*  lCurve = KQexAnimCurve::Create(lScene.get(), "x");
    lNode->mLocalTranslation.GetCurveNode(true, "still")->ConnectToChannel(lCurve, 0, true);
    lCurve->AppendSample(FrameTime(0), 1.0F);
    lCurve->AppendSample(FrameTime(1), 1.0F);
    lNode->mLocalTranslation.GetCurveNode(true, "elsewhere")->SetChannelValue<double>(0, 5.0);
    KQexGltfWriteOptions lOptions;
    for (const char* lName : {"still", "elsewhere"})
    {
        KQexGltfTake lTake;
        lTake.mStack = lScene->FindAnimStack(lName);
        ASSERT_TRUE(MakeSampling({lNode}, lTake.mStack, {}, lTake.mSampling));
        lOptions.mTakes.push_back(lTake);
    }
    const KWritten lWritten({lNode}, lOptions);
    EXPECT_EQ(lWritten.mMessages, "");
    ASSERT_EQ(lWritten.mResult.mTakes.size(), 2u);
    EXPECT_STREQ(lWritten.mResult.mTakes[0].mStack->GetName(), "still");
    EXPECT_EQ(lWritten.mResult.mTakes[0].mSampling.mCount, 2);
    EXPECT_EQ(lWritten.mResult.mTakes[0].mSampling.mStep, FrameTime(1));
    lWritten.mScene->GetEvaluator()->SetContext(lWritten.mResult.mTakes[0].mStack);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_NEAR(Position(lWritten.mScene->GetRootNode()->FindChild("node"))[i], i + 1.0, 1e-4) << i;
    }
    EXPECT_STREQ(lWritten.mResult.mTakes[1].mStack->GetName(), "elsewhere");
    lWritten.mScene->GetEvaluator()->SetContext(lWritten.mResult.mTakes[1].mStack);
    EXPECT_NEAR(Position(lWritten.mScene->GetRootNode()->FindChild("node"))[0], 5.0, 1e-4)
        << "a constant that differs from the rest pose is motion";
}

TEST(GltfWrite, CancelsAtAnyStepAndKeepsTheOldFile)
{
    std::mt19937       lRandom(5);
    const KScenePtr    lScene = MakeScene();
    KRandomTreeOptions lTree;
    lTree.mNodes = 40;
    KQexNode*            lRoot = MakeRandomTree(lRandom, lScene.get(), lTree);
    KQexGltfWriteOptions lOptions;
    lOptions.mThreads = 1;
    lOptions.mTakes.resize(1);
    lOptions.mTakes[0].mStack = lScene->FindAnimStack("take");
    KQexSamplingRequest lRequest;
    lRequest.mFramesPerSecond = 6000.0; // Progress is reported after every few hundred frames.
    ASSERT_TRUE(MakeSampling({lRoot}, lOptions.mTakes[0].mStack, lRequest, lOptions.mTakes[0].mSampling));
    const KTempDir lFolder;
    WriteFile(lFolder / "it.glb", "old");
    double lFraction = 0.0;
    for (int lAllowedCalls = 0;; ++lAllowedCalls)
    {
        int lCalls = 0;
        lFraction = 0.0;
        lOptions.mProgress = [&](double pFraction)
        {
            EXPECT_GT(pFraction, lFraction);
            lFraction = pFraction;
            return lCalls++ < lAllowedCalls;
        };
        KQexFileGltf lFile;
        const bool   lOk = lFile.Write((lFolder / "it.glb").string(), {lRoot}, lOptions);
        EXPECT_EQ(lOk, lCalls <= lAllowedCalls);
        EXPECT_EQ(ReadFile(lFolder / "it.glb") == "old", !lOk);
        if (lOk)
        {
            EXPECT_GT(lAllowedCalls, 1);
            break;
        }
    }
    EXPECT_DOUBLE_EQ(lFraction, 1.0);
}

TEST(GltfWrite, TheBufferIsFoundWhateverTheNameOfTheFile)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lNode = AddNode(lScene->GetRootNode(), "node", 1, 2, 3);
    AddNode(lNode, "tip", 4, 5, 6);
    const KTempDir lFolder;
    for (const char* lName : {"plain.gltf", "A-b_c.d~.GLTF", "two words.gltf", "100%25 #1?.gltf",
                              "Gr\xC3\xB6\xC3\x9F"
                              "e.gltf",
                              "\xF6.gltf", "a:b.gltf"})
    {
        const std::string  lPath = (lFolder / lName).string();
        KQexFileGltf       lFile;
        KQexGltfReadResult lResult;
        const KScenePtr    lBack = MakeScene();
        ASSERT_TRUE(lFile.Write(lPath, {lNode}, {})) << MessagesOf(lFile);
        EXPECT_TRUE(std::filesystem::exists(lPath.substr(0, lPath.size() - 5) + ".bin"));
        EXPECT_TRUE(lFile.Read(lPath, lBack.get(), {}, lResult)) << MessagesOf(lFile);
        EXPECT_NE(lBack->GetRootNode()->FindChild("tip"), nullptr);
    }
}

TEST(GltfWrite, WithoutNodesWritingFails)
{
    const KTempDir lFolder;
    std::string    lOut = "before";
    KQexFileGltf   lFile(true);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(lFile.WriteBuffer(lOut, {}, {}));
    EXPECT_FALSE(lFile.Write((lFolder / "it.glb").string(), {}, {}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: Nothing to write\nerror: Nothing to write\n");
    EXPECT_EQ(MessagesOf(lFile), "Nothing to write\n");
    EXPECT_EQ(lOut, "before");
    EXPECT_FALSE(std::filesystem::exists(lFolder / "it.glb"));
}

TEST(GltfWrite, ASkinWithTooManyJointsIsNotWritten)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lTop = AddNode(lScene->GetRootNode(), "top");
    for (int i = 0; i < 65535; ++i)
    {
        AddNode(lTop, std::to_string(i).c_str());
    }
    std::string  lOut;
    KQexFileGltf lFile;
    EXPECT_TRUE(lFile.WriteBuffer(lOut, {lTop}, {}));
    EXPECT_EQ(MessagesOf(lFile), "Skin not written: more than 65535 joints\n");
    lTop->GetChild(0)->Destroy();
    EXPECT_TRUE(lFile.WriteBuffer(lOut, {lTop}, {}));
    EXPECT_EQ(MessagesOf(lFile), "");
}

/// The joints, by name, that move the vertices of a primitive of the first mesh, and the primitive's material.
struct KPrimitive
{
    std::set<std::string> mJoints;
    nlohmann::json        mMaterial;
};

/// The first mesh of a written binary file.
std::vector<KPrimitive> PrimitivesOf(const std::string& pFile)
{
    std::uint32_t lJsonSize = 0;
    std::memcpy(&lJsonSize, pFile.data() + 12, sizeof lJsonSize);
    const nlohmann::json    lJson = nlohmann::json::parse(pFile.substr(20, lJsonSize));
    const char*             lBytes = pFile.data() + 20 + lJsonSize + 8;
    std::vector<KPrimitive> lPrimitives;
    for (const nlohmann::json& lPrimitive : lJson["meshes"][0]["primitives"])
    {
        KPrimitive            lAdded;
        const nlohmann::json& lAccessor = lJson["accessors"][lPrimitive["attributes"]["JOINTS_0"].get<size_t>()];
        const nlohmann::json& lView = lJson["bufferViews"][lAccessor["bufferView"].get<size_t>()];
        for (size_t i = 0; i < lAccessor["count"].get<size_t>(); ++i)
        {
            std::uint16_t lJoint = 0;
            std::memcpy(&lJoint, lBytes + lView["byteOffset"].get<size_t>() + 8 * i, sizeof lJoint);
            lAdded.mJoints.insert(lJson["nodes"][lJson["skins"][0]["joints"][lJoint].get<size_t>()]["name"]);
        }
        lAdded.mMaterial = lJson["materials"][lPrimitive["material"].get<size_t>()];
        lPrimitives.push_back(lAdded);
    }
    return lPrimitives;
}

TEST(GltfWrite, BonesHaveTheColoursOfTheirSides)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lHips = AddNode(lScene->GetRootNode(), "hips", 0, 100, 0);
    AddNode(AddNode(AddNode(lHips, "left_leg", 10, 0, 0), "left_foot", 0, -80, 0), "left_toes", 0, 0, 10);
    AddNode(AddNode(lHips, "right_leg", -10, 0, 0), "right_foot", 0, -80, 0);
    AddNode(AddNode(lHips, "spine", 0, 40, 0), "head", 0, 30, 0);
    std::string  lOut;
    KQexFileGltf lFile;
    ASSERT_TRUE(lFile.WriteBuffer(lOut, {lHips}, {}));
    const std::vector<KPrimitive> lPrimitives = PrimitivesOf(lOut);
    ASSERT_EQ(lPrimitives.size(), 3u);
    // The picture's colours #5b6070, #e2725b and #2f87b7, linear.
    const struct
    {
        const char*           mMaterial;
        std::set<std::string> mJoints;
        std::vector<double>   mColor;
    } lExpected[] = {{"bone", {"hips", "spine"}, {0.1046, 0.1170, 0.1620, 1.0}},
                     {"bone_left", {"left_leg", "left_foot"}, {0.7605, 0.1683, 0.1046, 1.0}},
                     {"bone_right", {"right_leg"}, {0.0284, 0.2423, 0.4735, 1.0}}};
    for (size_t i = 0; i < 3; ++i)
    {
        const nlohmann::json& lMaterial = lPrimitives[i].mMaterial;
        EXPECT_EQ(lMaterial["name"], lExpected[i].mMaterial);
        EXPECT_EQ(lPrimitives[i].mJoints, lExpected[i].mJoints);
        EXPECT_EQ(lMaterial["pbrMetallicRoughness"]["metallicFactor"], 0.0);
        for (size_t j = 0; j < 4; ++j)
        {
            EXPECT_NEAR(lMaterial["pbrMetallicRoughness"]["baseColorFactor"][j].get<double>(), lExpected[i].mColor[j], 1e-4);
        }
    }
}

TEST(GltfWrite, AFigureWithoutSidesHasOneMaterial)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lBase = AddNode(lScene->GetRootNode(), "base");
    AddNode(AddNode(lBase, "arm", 0, 10, 0), "tip", 0, 10, 0);
    const KWritten lWritten({lBase});
    ASSERT_EQ(lWritten.mJson["materials"].size(), 1u);
    EXPECT_EQ(lWritten.mJson["materials"][0]["name"], "bone");
    EXPECT_EQ(lWritten.mJson["meshes"][0]["primitives"].size(), 1u);
}

// Programs write the end of a bone as a node that is no joint of the skin.
TEST(GltfWrite, ABoneEndsAtAChildThatIsNoJoint)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lHand = AddNode(lScene->GetRootNode(), "hand");
    AddNode(lHand, "hand_end", 0, 10, 0);
    lHand->SetNodeAttribute(KQexSkeleton::Create(lScene.get(), ""));
    const KWritten lWritten({lHand});
    EXPECT_EQ(lWritten.mJson["skins"][0]["joints"].size(), 1u);
    EXPECT_EQ(lWritten.mJson["meshes"].size(), 1u);
}

} // namespace
