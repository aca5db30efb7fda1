#include <tests/qexioplugins/gltf/gltfbuild.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <sys/stat.h>

// Files that are wrong, by accident or on purpose: each is an error with a reason, and the scene stays what it was.

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A small scene with a take of its own, which a failed reading must not touch.
class KScenario
{
public:
    KScenario()
    {
        std::mt19937 lRandom(3);
        KRandomTree  lWhat;
        lWhat.mNodes = 3;
        MakeRandomTree(lRandom, mScene.get(), lWhat);
        mStack = mScene->GetEvaluator()->GetContext();
        mObjects = mScene->GetObjectCount();
    }

    bool Read(const std::string& pBytes)
    {
        const bool lOk = mFile.ReadBuffer(pBytes.data(), pBytes.size(), mScene.get(), {}, mResult);
        if (!lOk)
        {
            ExpectUntouched();
        }
        return lOk;
    }

    void ExpectUntouched()
    {
        EXPECT_EQ(mScene->GetObjectCount(), mObjects);
        EXPECT_EQ(mScene->GetAnimStackCount(), 1);
        EXPECT_EQ(mScene->GetEvaluator()->GetContext(), mStack);
        EXPECT_TRUE(mResult.mRoots.empty() && mResult.mTakes.empty() && mResult.mBoneDofs.empty());
        EXPECT_FALSE(mFile.GetMessages().empty());
    }

    KScenePtr          mScene = MakeScene();
    KQexFileGltf       mFile;
    KQexGltfReadResult mResult;
    KQexAnimStack*     mStack;
    int                mObjects;
};

/// Two nodes, a skin and an animation, all of it sound.
KQexGltfBuild SoundFile()
{
    KQexGltfBuild lBuild;
    lBuild.AddNode({{"name", "hip"}, {"children", {1}}});
    lBuild.mJson["nodes"].push_back({{"name", "knee"}});
    lBuild.mJson["skins"] = {{{"joints", {0, 1}}}};
    const int lInput = lBuild.AddFloats("SCALAR", 1, {0.0F, 0.5F, 1.0F});
    lBuild.AddChannel(0, "rotation", lInput, lBuild.AddFloats("VEC4", 4, {0, 0, 0, 1, 0, 1, 0, 0, 1, 0, 0, 0}), "LINEAR");
    lBuild.AddChannel(1, "translation", lInput, lBuild.AddFloats("VEC3", 3, {0, 0, 0, 1, 1, 1, 2, 2, 2}), nullptr);
    return lBuild;
}

/// The sound file as a binary one.
std::string SoundBinary()
{
    KQexGltfBuild lBuild = SoundFile();
    lBuild.mJson["buffers"] = {{{"byteLength", lBuild.mBytes.size()}}};
    std::string lJson = lBuild.mJson.dump();
    lJson.resize((lJson.size() + 3) / 4 * 4, ' ');
    const auto lNumber = [](size_t pValue)
    {
        std::string lBytes;
        for (int i = 0; i < 4; ++i)
        {
            lBytes += static_cast<char>(pValue >> (8 * i) & 0xFF);
        }
        return lBytes;
    };
    return "glTF" + lNumber(2) + lNumber(28 + lJson.size() + lBuild.mBytes.size()) + lNumber(lJson.size()) + "JSON" + lJson +
           lNumber(lBuild.mBytes.size()) + std::string("BIN\0", 4) + lBuild.mBytes;
}

TEST(GltfHostile, TheSoundFilesAreSound)
{
    KScenario lText;
    EXPECT_TRUE(lText.Read(SoundFile().Text())) << MessagesOf(lText.mFile);
    KScenario lBinary;
    EXPECT_TRUE(lBinary.Read(SoundBinary())) << MessagesOf(lBinary.mFile);
    EXPECT_EQ(lBinary.mResult.mTakes.size(), 1u);
}

struct KBadCase
{
    const char* mPatch; ///< JSON merge patch of a path and a value: "/nodes/0/children", "[7]".
    const char* mValue;
    const char* mMessage; ///< Part of the message.
};

class KQexGltfBadTest : public testing::TestWithParam<KBadCase>
{
};

TEST_P(KQexGltfBadTest, IsRefusedWithAReason)
{
    nlohmann::json lJson = nlohmann::json::parse(SoundFile().Text());
    lJson[nlohmann::json::json_pointer(GetParam().mPatch)] = nlohmann::json::parse(GetParam().mValue);
    KScenario lScenario;
    EXPECT_FALSE(lScenario.Read(lJson.dump()));
    EXPECT_NE(MessagesOf(lScenario.mFile).find(GetParam().mMessage), std::string::npos) << MessagesOf(lScenario.mFile);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, KQexGltfBadTest,
    testing::Values(
        KBadCase{"/asset/version", "\"1.0\"", "glTF version (1.0) is not supported"}, KBadCase{"/asset", "[]", "asset.version is missing"},
        KBadCase{"/nodes", "7", "nodes is not an array"},
        KBadCase{"/nodes/0/children", "[7]", "nodes[0].children is 7, but there are only 2"},
        KBadCase{"/nodes/0/children", "[-1]", "nodes[0].children is not a whole number"},
        KBadCase{"/nodes/0/children", "[1.5]", "nodes[0].children is not a whole number"},
        KBadCase{"/nodes/0/children", "[1e300]", "nodes[0].children is not a whole number"},
        KBadCase{"/nodes/0/children", "[4294967296]", "nodes[0].children is 4294967296, but"},
        KBadCase{"/nodes/0/children", "[1, 1]", "nodes[1] has a parent already"}, KBadCase{"/nodes/1/children", "[0]", "is below itself"},
        KBadCase{"/nodes/0/children", "[0]", "nodes[0] is below itself"}, KBadCase{"/nodes/0/skin", "1", "nodes[0].skin is 1"},
        KBadCase{"/nodes/0/matrix", "[1,2,3]", "nodes[0].matrix is not 16 numbers"},
        KBadCase{"/nodes/0/rotation", "[0,0,0,\"a\"]", "nodes[0].rotation is not 4 numbers"},
        KBadCase{"/nodes/0/translation", "[1e308,0,0]", "a value is too large"},
        KBadCase{"/scene", "1", "scene is 1, but there are only 1"}, KBadCase{"/scenes/0/nodes", "[9]", "scenes[0].nodes is 9"},
        KBadCase{"/scenes/0/nodes", "[1]", "nodes[1] is below another node"},
        KBadCase{"/scenes/0/nodes", "[0,0]", "nodes[0] stands there twice"}, KBadCase{"/scenes/0/nodes", "[]", "no nodes"},
        KBadCase{"/skins/0/joints", "[0,2]", "skins[0].joints is 2"}, KBadCase{"/skins/0/skeleton", "2", "skins[0].skeleton is 2"},
        KBadCase{"/animations/0/channels/0/sampler", "2", "channels[0].sampler is 2"},
        KBadCase{"/animations/0/channels/0", "{\"target\":{\"node\":0,\"path\":\"scale\"}}", "channels[0].sampler is missing"},
        KBadCase{"/animations/0/channels/0/target/node", "2", "channels is 2"},
        KBadCase{"/animations/0/samplers/0/input", "3", ".input is 3"},
        KBadCase{"/animations/0/samplers/0/output", "0", ".output does not have 3 values of 4 numbers"},
        KBadCase{"/animations/0/samplers/0/input", "1", ".input has no times"},
        KBadCase{"/animations/0/samplers/0", "{\"input\":0}", ".output is missing"},
        KBadCase{"/animations/0/samplers/0/interpolation", "\"BEZIER\"", "no interpolation (BEZIER)"},
        KBadCase{"/animations/0/samplers/0/interpolation", "\"CUBICSPLINE\"", ".output does not have 9 values"},
        KBadCase{"/accessors/0/count", "4", "accessors[0] does not fit into bufferViews[0]"},
        KBadCase{"/accessors/0/count", "9007199254740992", "accessors[0] does not fit"},
        KBadCase{"/accessors/0/count", "1e19", "accessors[0].count is not a whole number"},
        KBadCase{"/accessors/0/count", "0", "has no times"}, KBadCase{"/accessors/0/bufferView", "3", "accessors[0].bufferView is 3"},
        KBadCase{"/accessors/0/byteOffset", "4", "does not fit"}, KBadCase{"/accessors/0/byteOffset", "9007199254740991", "does not fit"},
        KBadCase{"/accessors/0/type", "\"VEC5\"", "no such kind"}, KBadCase{"/accessors/0/componentType", "5127", "no such kind"},
        KBadCase{"/accessors/0/componentType", "5121.5", "not a whole number"},
        KBadCase{"/bufferViews/0/buffer", "1", "bufferViews[0].buffer is 1"},
        KBadCase{"/bufferViews/0/byteLength", "99999", "does not fit into buffers[0]"},
        KBadCase{"/bufferViews/0/byteOffset", "9007199254740990", "does not fit into buffers[0]"},
        KBadCase{"/bufferViews/0/byteStride", "3", "byteStride is less than an element"},
        KBadCase{"/bufferViews/0/byteStride", "9007199254740991", "does not fit"},
        KBadCase{"/bufferViews/0", "{}", "bufferViews[0].buffer is missing"},
        KBadCase{"/buffers/0/byteLength", "1000000000000", "buffers[0] should have 1000000000000 bytes"},
        KBadCase{"/buffers/0/uri", "\"data:application/octet-stream;base64,A*\"", "not base64"},
        KBadCase{"/buffers/0/uri", "\"data:text/plain,abc\"", "not base64"},
        KBadCase{"/buffers/0", "{\"byteLength\":4}", "buffers[0] has no data"},
        KBadCase{"/buffers/0/uri", "\"a.bin\"", "the model is not in a folder"},
        KBadCase{"/buffers/0/uri", "\"data:base64\"", "not base64"}, KBadCase{"/buffers/0/uri", "\"data:,\"", "not base64"},
        KBadCase{"/accessors/0/sparse", "{\"count\":1}", "sparse.indices: no such kind"},
        KBadCase{"/accessors/0/sparse", R"({"count":1,"indices":{"componentType":5123},"values":{"bufferView":0}})",
                 "sparse.indices.bufferView is missing"},
        KBadCase{"/accessors/0/sparse", R"({"count":9,"indices":{"bufferView":0,"componentType":5121},"values":{"bufferView":0}})",
                 "does not fit"},
        KBadCase{"/accessors/0/sparse", R"({"count":2,"indices":{"bufferView":0,"componentType":5121},"values":{"bufferView":0}})",
                 "do not rise"}));

TEST(GltfHostile, ATruncatedBinaryFileIsRefusedWhereverItEnds)
{
    const std::string lBytes = SoundBinary();
    KScenario         lScenario;
    for (size_t i = 0; i < lBytes.size(); ++i)
    {
        EXPECT_FALSE(lScenario.Read(lBytes.substr(0, i))) << i;
    }
    EXPECT_TRUE(lScenario.Read(lBytes));
}

TEST(GltfHostile, ATruncatedTextIsRefusedWhereverItEnds)
{
    const std::string lText = SoundFile().Text();
    KScenario         lScenario;
    for (size_t i = 0; i < lText.size(); ++i)
    {
        EXPECT_FALSE(lScenario.Read(lText.substr(0, i))) << i;
    }
}

TEST(GltfHostile, ChangedBytesNeverDoHarm)
{
    const std::string lBytes = SoundBinary();
    std::mt19937      lRandom(11);
    int               lRefused = 0;
    for (int i = 0; i < 4000; ++i)
    {
        std::string lChanged = lBytes;
        for (int j = 0; j <= i % 3; ++j)
        {
            lChanged[std::uniform_int_distribution<size_t>(0, lBytes.size() - 1)(lRandom)] =
                static_cast<char>(std::uniform_int_distribution<int>(0, 255)(lRandom));
        }
        KScenario lScenario;
        lRefused += lScenario.Read(lChanged) ? 0 : 1;
    }
    EXPECT_GT(lRefused, 1000);
}

TEST(GltfHostile, KeysThatAreNoNumbersAreRefused)
{
    for (const float lBad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 3e38F})
    {
        KQexGltfBuild lValues;
        lValues.AddNode({{"name", "it"}});
        lValues.AddChannel(0, "translation", lValues.AddFloats("SCALAR", 1, {0, 1}), lValues.AddFloats("VEC3", 3, {0, 0, 0, 0, lBad, 0}),
                           nullptr);
        KScenario lFirst;
        EXPECT_FALSE(lFirst.Read(lValues.Text()));
        KQexGltfBuild lTimes;
        lTimes.AddNode({{"name", "it"}});
        lTimes.AddChannel(0, "translation", lTimes.AddFloats("SCALAR", 1, {0, lBad}), lTimes.AddFloats("VEC3", 3, {0, 0, 0, 0, 0, 0}),
                          nullptr);
        KScenario lSecond;
        EXPECT_FALSE(lSecond.Read(lTimes.Text()));
    }
}

TEST(GltfHostile, DeepNestingCostsNoStack)
{
    const std::string lDeep = std::string(1000000, '[') + std::string(1000000, ']');
    KScenario         lWhole;
    EXPECT_FALSE(lWhole.Read(lDeep));
    EXPECT_FALSE(lWhole.Read(std::string(1000000, '[')));
    EXPECT_FALSE(lWhole.Read(std::string(1000000, '{')));
    KScenario lExtras;
    EXPECT_TRUE(lExtras.Read(R"({"asset":{"version":"2.0"},"nodes":[{"name":"it","extras":)" + lDeep + "}]}")) << MessagesOf(lExtras.mFile);
}

/// A few bytes must not ask for days of frames, or for many tracks over the same long run of keys.
TEST(GltfHostile, WorkIsInProportionToTheFile)
{
    KQexGltfBuild lLong;
    lLong.AddNode({{"name", "it"}});
    lLong.AddChannel(0, "translation", lLong.AddFloats("SCALAR", 1, {0, 0.00833F, 1e8F}),
                     lLong.AddFloats("VEC3", 3, {0, 0, 0, 1, 1, 1, 2, 2, 2}), nullptr);
    KScenario lScenario;
    EXPECT_FALSE(lScenario.Read(lLong.Text()));
    EXPECT_NE(MessagesOf(lScenario.mFile).find("too long for its size"), std::string::npos);

    KQexGltfBuild      lMany;
    std::vector<float> lTimes(20000);
    for (size_t i = 0; i < lTimes.size(); ++i)
    {
        lTimes[i] = static_cast<float>(i) / 120.0F;
    }
    const int lInput = lMany.AddFloats("SCALAR", 1, lTimes);
    const int lOutput = lMany.AddFloats("VEC3", 3, std::vector<float>(3 * lTimes.size(), 1.0F));
    for (int i = 0; i < 2000; ++i)
    {
        lMany.AddNode({{"name", "n"}});
        lMany.AddChannel(i, "translation", lInput, lOutput, nullptr);
    }
    EXPECT_FALSE(lScenario.Read(lMany.Text()));
    EXPECT_NE(MessagesOf(lScenario.mFile).find("too long for its size"), std::string::npos);
}

TEST(GltfHostile, NoFileOutsideTheModelsFolderIsOpened)
{
    const KTempDir lFolder;
    std::filesystem::create_directories(lFolder / "model/below");
    std::filesystem::create_directories(lFolder / "other");
    KQexGltfBuild  lBuild = SoundFile();
    nlohmann::json lJson = nlohmann::json::parse(lBuild.Text());
    WriteFile(lFolder / "secret.bin", lBuild.mBytes);
    WriteFile(lFolder / "model/own.bin", lBuild.mBytes);
    WriteFile(lFolder / "model/below/it: 1%.bin", lBuild.mBytes);
    std::filesystem::create_symlink(lFolder / "secret.bin", lFolder / "model/link.bin");
    std::filesystem::create_symlink(lFolder / "other", lFolder / "model/otherlink");
    std::filesystem::create_symlink(lFolder / "model/own.bin", lFolder / "model/inside.bin");
    WriteFile(lFolder / "other/a.bin", lBuild.mBytes);
    ASSERT_EQ(::mkfifo((lFolder / "model/fifo.bin").c_str(), 0600), 0);

    struct KUri
    {
        std::string mUri;
        bool        mIsRead;
    };
    const std::vector<KUri> lUris = {{"own.bin", true},
                                     {"inside.bin", true},
                                     {"./own.bin", true},
                                     {"below/it%3A%201%25.bin", true},
                                     {"below/it%3a%201%25.bin", true},
                                     {"below/it%3A%201%.bin", true},
                                     {"below/it%3A%201%2", false},
                                     {"own%GGbin", false},
                                     {"../secret.bin", false},
                                     {"%2e%2e/secret.bin", false},
                                     {"..%2fsecret.bin", false},
                                     {"below/../../secret.bin", false},
                                     {(lFolder / "secret.bin").string(), false},
                                     {"file://" + (lFolder / "secret.bin").string(), false},
                                     {"http://localhost/own.bin", false},
                                     {"link.bin", false},
                                     {"otherlink/a.bin", false},
                                     {"fifo.bin", false},
                                     {"below", false},
                                     {"", false},
                                     {"own.bin%00", false},
                                     {"missing.bin", false}};
    for (const KUri& lUri : lUris)
    {
        lJson["buffers"][0]["uri"] = lUri.mUri;
        WriteFile(lFolder / "model/it.gltf", lJson.dump());
        KScenario lScenario;
        EXPECT_EQ(lScenario.mFile.Read((lFolder / "model/it.gltf").string(), lScenario.mScene.get(), {}, lScenario.mResult), lUri.mIsRead)
            << lUri.mUri << MessagesOf(lScenario.mFile);
        if (!lUri.mIsRead)
        {
            lScenario.ExpectUntouched();
        }
    }
}

TEST(GltfHostile, OneFileMayBeSeveralBuffersInEitherAlphabet)
{
    const KTempDir lFolder;
    KQexGltfBuild  lBuild = SoundFile();
    nlohmann::json lJson = nlohmann::json::parse(lBuild.Text());
    WriteFile(lFolder / "own.bin", lBuild.mBytes);
    const size_t lSize = lBuild.mBytes.size();
    lJson["buffers"] = {{{"byteLength", lSize}, {"uri", "own.bin"}}, {{"byteLength", lSize}, {"uri", "./own.bin"}}};
    lJson["bufferViews"][1]["buffer"] = 1;
    WriteFile(lFolder / "it.gltf", lJson.dump());
    KScenario lScenario;
    EXPECT_TRUE(lScenario.mFile.Read((lFolder / "it.gltf").string(), lScenario.mScene.get(), {}, lScenario.mResult))
        << MessagesOf(lScenario.mFile);

    std::string lText = SoundFile().Text();
    // The numbers of the sound file have neither digit, so the last, unused bytes get them.
    lJson = nlohmann::json::parse(lText);
    lBuild.mBytes += "\xFB\xEF\xBE\xFF\xFF\xFF";
    std::string lDigits = Encode64(lBuild.mBytes);
    ASSERT_NE(lDigits.find("++++////"), std::string::npos) << lDigits;
    std::replace(lDigits.begin(), lDigits.end(), '+', '-');
    std::replace(lDigits.begin(), lDigits.end(), '/', '_');
    lJson["buffers"][0] = {{"byteLength", lBuild.mBytes.size()}, {"uri", "data:application/octet-stream;base64," + lDigits + "=="}};
    KScenario lOther;
    EXPECT_TRUE(lOther.Read(lJson.dump())) << MessagesOf(lOther.mFile);
}

TEST(GltfHostile, WhatCannotBeReadIsNamed)
{
    const KTempDir lFolder;
    KScenario      lScenario;
    for (const std::string& lPath : {(lFolder / "missing.glb").string(), lFolder.Path().string()})
    {
        EXPECT_FALSE(lScenario.mFile.Read(lPath, lScenario.mScene.get(), {}, lScenario.mResult));
        EXPECT_NE(MessagesOf(lScenario.mFile).find("Can't read " + lPath + ": "), std::string::npos) << MessagesOf(lScenario.mFile);
    }
    EXPECT_FALSE(lScenario.Read(""));
    EXPECT_FALSE(lScenario.Read(std::string(100, '\0')));
    EXPECT_FALSE(lScenario.Read("ROOT hip"));
    EXPECT_NE(MessagesOf(lScenario.mFile).find("Not JSON: parse error at line 1, column 1"), std::string::npos)
        << MessagesOf(lScenario.mFile);
}

TEST(GltfHostile, ARateThatTimeCanNotCountIsRefused)
{
    const std::string   lText = SoundFile().Text();
    KScenario           lScenario;
    KQexGltfReadOptions lOptions;
    lOptions.mFramesPerSecond = 1e12;
    EXPECT_FALSE(lScenario.mFile.ReadBuffer(lText.data(), lText.size(), lScenario.mScene.get(), lOptions, lScenario.mResult));
    EXPECT_NE(MessagesOf(lScenario.mFile).find("Frames a second out of range"), std::string::npos) << MessagesOf(lScenario.mFile);
    lScenario.ExpectUntouched();
}

TEST(GltfHostile, ACancelledReadingLeavesNothing)
{
    const std::string   lText = SoundFile().Text();
    KScenario           lScenario;
    KQexGltfReadOptions lOptions;
    lOptions.mProgress = [](double pFraction)
    {
        return pFraction < 0.4;
    };
    EXPECT_FALSE(lScenario.mFile.ReadBuffer(lText.data(), lText.size(), lScenario.mScene.get(), lOptions, lScenario.mResult));
    EXPECT_TRUE(lScenario.mResult.mCancelled);
    lScenario.ExpectUntouched();
}

TEST(GltfHostile, WhatIsNoMotionIsLeftAlone)
{
    nlohmann::json lJson = nlohmann::json::parse(SoundFile().Text());
    lJson["images"] = {{{"uri", "../../etc/passwd"}}};
    lJson["meshes"] = {{{"primitives", {{{"attributes", {{"POSITION", 99}}}}}}}};
    lJson["extensionsRequired"] = {"KHR_draco_mesh_compression", "XX_unheard_of"};
    lJson["extras"] = {{"nothing", nullptr}, {"yes", true}, {"no", false}, {"deep", {{"er", {1, "two", nullptr}}}}};
    lJson["nodes"][0]["extras"] = nullptr;
    lJson["animations"][0]["channels"].push_back({{"sampler", 0}, {"target", {{"node", 0}, {"path", "weights"}}}});
    lJson["animations"].push_back({{"name", "nothing"}, {"channels", nlohmann::json::array()}, {"samplers", nlohmann::json::array()}});
    KScenario lScenario;
    EXPECT_TRUE(lScenario.Read(lJson.dump())) << MessagesOf(lScenario.mFile);
    EXPECT_EQ(MessagesOf(lScenario.mFile), "Extension (XX_unheard_of) is required but not known, reading without it\n"
                                           "Animation (nothing) moves no node, left out\n");
}

} // namespace
