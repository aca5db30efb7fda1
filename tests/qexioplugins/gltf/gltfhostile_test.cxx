#include <tests/qexioplugins/gltf/gltfbuild.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <sys/stat.h>

// Broken and malicious files: each is an error with a message, and leaves the scene unchanged.

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A small scene with a take, which a failed read must not change.
class KTargetScene
{
public:
    KTargetScene()
    {
        std::mt19937       lRandom(3);
        KRandomTreeOptions lTree;
        lTree.mNodes = 3;
        MakeRandomTree(lRandom, mScene.get(), lTree);
        mStack = mScene->GetEvaluator()->GetContext();
        mObjects = mScene->GetObjectCount();
    }

    bool Read(const std::string& pBytes)
    {
        const bool lOk = mFile.ReadBuffer(pBytes.data(), pBytes.size(), mScene.get(), {}, mResult);
        if (!lOk)
        {
            ExpectUnchanged();
        }
        return lOk;
    }

    void ExpectUnchanged()
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

/// A valid file with two nodes, a skin and an animation.
KQexGltfBuilder ValidFile()
{
    KQexGltfBuilder lBuilder;
    lBuilder.AddNode({{"name", "hip"}, {"children", {1}}});
    lBuilder.mJson["nodes"].push_back({{"name", "knee"}});
    lBuilder.mJson["skins"] = {{{"joints", {0, 1}}}};
    const int lInput = lBuilder.AddFloats("SCALAR", 1, {0.0F, 0.5F, 1.0F});
    lBuilder.AddChannel(0, "rotation", lInput, lBuilder.AddFloats("VEC4", 4, {0, 0, 0, 1, 0, 1, 0, 0, 1, 0, 0, 0}), "LINEAR");
    lBuilder.AddChannel(1, "translation", lInput, lBuilder.AddFloats("VEC3", 3, {0, 0, 0, 1, 1, 1, 2, 2, 2}), nullptr);
    return lBuilder;
}

/// The same as a binary file.
std::string ValidBinary()
{
    KQexGltfBuilder lBuilder = ValidFile();
    lBuilder.mJson["buffers"] = {{{"byteLength", lBuilder.mBytes.size()}}};
    std::string lJson = lBuilder.mJson.dump();
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
    return "glTF" + lNumber(2) + lNumber(28 + lJson.size() + lBuilder.mBytes.size()) + lNumber(lJson.size()) + "JSON" + lJson +
           lNumber(lBuilder.mBytes.size()) + std::string("BIN\0", 4) + lBuilder.mBytes;
}

TEST(GltfHostile, TheValidFilesAreRead)
{
    KTargetScene lText;
    EXPECT_TRUE(lText.Read(ValidFile().Text())) << MessagesOf(lText.mFile);
    KTargetScene lBinary;
    EXPECT_TRUE(lBinary.Read(ValidBinary())) << MessagesOf(lBinary.mFile);
    EXPECT_EQ(lBinary.mResult.mTakes.size(), 1u);
}

struct KBadCase
{
    const char* mPath;    ///< JSON pointer of the value to replace: "/nodes/0/children".
    const char* mValue;   ///< The new value, as JSON: "[7]".
    const char* mMessage; ///< Part of the message.
};

class KQexGltfBadTest : public testing::TestWithParam<KBadCase>
{
};

TEST_P(KQexGltfBadTest, IsAnErrorWithAMessage)
{
    nlohmann::json lJson = nlohmann::json::parse(ValidFile().Text());
    lJson[nlohmann::json::json_pointer(GetParam().mPath)] = nlohmann::json::parse(GetParam().mValue);
    KTargetScene lTarget;
    EXPECT_FALSE(lTarget.Read(lJson.dump()));
    EXPECT_NE(MessagesOf(lTarget.mFile).find(GetParam().mMessage), std::string::npos) << MessagesOf(lTarget.mFile);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, KQexGltfBadTest,
    testing::Values(
        KBadCase{"/asset/version", "\"1.0\"", "glTF version (1.0) is not supported"}, KBadCase{"/asset", "[]", "asset.version is missing"},
        KBadCase{"/nodes", "7", "nodes is not an array"},
        KBadCase{"/nodes/0/children", "[7]", "nodes[0].children is 7, but there are only 2"},
        KBadCase{"/nodes/0/children", "[-1]", "nodes[0].children is not a non-negative integer"},
        KBadCase{"/nodes/0/children", "[1.5]", "nodes[0].children is not a non-negative integer"},
        KBadCase{"/nodes/0/children", "[1e300]", "nodes[0].children is not a non-negative integer"},
        KBadCase{"/nodes/0/children", "[4294967296]", "nodes[0].children is 4294967296, but"},
        KBadCase{"/nodes/0/children", "[1, 1]", "nodes[1] already has a parent"},
        KBadCase{"/nodes/1/children", "[0]", "is its own ancestor"}, KBadCase{"/nodes/0/children", "[0]", "nodes[0] is its own ancestor"},
        KBadCase{"/nodes/0/skin", "1", "nodes[0].skin is 1"}, KBadCase{"/nodes/0/matrix", "[1,2,3]", "nodes[0].matrix is not 16 numbers"},
        KBadCase{"/nodes/0/rotation", "[0,0,0,\"a\"]", "nodes[0].rotation is not 4 numbers"},
        KBadCase{"/nodes/0/translation", "[1e308,0,0]", "a value is too large"}, KBadCase{"/scene", "1", "scene is 1, but there is only 1"},
        KBadCase{"/animations/0/samplers", "[]", "channels[0].sampler is 0, but there are none"},
        KBadCase{"/scenes/0/nodes", "[9]", "scenes[0].nodes is 9"}, KBadCase{"/scenes/0/nodes", "[1]", "nodes[1] has a parent"},
        KBadCase{"/scenes/0/nodes", "[0,0]", "nodes[0] appears twice"}, KBadCase{"/scenes/0/nodes", "[]", "no nodes"},
        KBadCase{"/skins/0/joints", "[0,2]", "skins[0].joints is 2"}, KBadCase{"/skins/0/skeleton", "2", "skins[0].skeleton is 2"},
        KBadCase{"/animations/0/channels/0/sampler", "2", "channels[0].sampler is 2"},
        KBadCase{"/animations/0/channels/0", "{\"target\":{\"node\":0,\"path\":\"scale\"}}", "channels[0].sampler is missing"},
        KBadCase{"/animations/0/channels/0/target/node", "2", "channels is 2"},
        KBadCase{"/animations/0/samplers/0/input", "3", ".input is 3"},
        KBadCase{"/animations/0/samplers/0/output", "0", ".output does not have 3 values of 4 numbers"},
        KBadCase{"/animations/0/samplers/0/input", "1", ".input has no times"},
        KBadCase{"/animations/0/samplers/0", "{\"input\":0}", ".output is missing"},
        KBadCase{"/animations/0/samplers/0/interpolation", "\"BEZIER\"", "interpolation: unknown value (BEZIER)"},
        KBadCase{"/animations/0/samplers/0/interpolation", "\"CUBICSPLINE\"", ".output does not have 9 values"},
        KBadCase{"/accessors/0/count", "4", "accessors[0] does not fit into bufferViews[0]"},
        KBadCase{"/accessors/0/count", "9007199254740992", "accessors[0] does not fit"},
        KBadCase{"/accessors/0/count", "1e19", "accessors[0].count is not a non-negative integer"},
        KBadCase{"/accessors/0/count", "0", "has no times"}, KBadCase{"/accessors/0/bufferView", "3", "accessors[0].bufferView is 3"},
        KBadCase{"/accessors/0/byteOffset", "4", "does not fit"}, KBadCase{"/accessors/0/byteOffset", "9007199254740991", "does not fit"},
        KBadCase{"/accessors/0/type", "\"VEC5\"", "unknown type or componentType"},
        KBadCase{"/accessors/0/componentType", "5127", "unknown type or componentType"},
        KBadCase{"/accessors/0/componentType", "5121.5", "not a non-negative integer"},
        KBadCase{"/bufferViews/0/buffer", "1", "bufferViews[0].buffer is 1"},
        KBadCase{"/bufferViews/0/byteLength", "99999", "does not fit into buffers[0]"},
        KBadCase{"/bufferViews/0/byteOffset", "9007199254740990", "does not fit into buffers[0]"},
        KBadCase{"/bufferViews/0/byteStride", "3", "byteStride is smaller than an element"},
        KBadCase{"/bufferViews/0/byteStride", "9007199254740991", "does not fit"},
        KBadCase{"/bufferViews/0", "{}", "bufferViews[0].buffer is missing"},
        KBadCase{"/buffers/0/byteLength", "1000000000000", "buffers[0] should have 1000000000000 bytes"},
        KBadCase{"/buffers/0/uri", "\"data:application/octet-stream;base64,A*\"", "invalid base64"},
        KBadCase{"/buffers/0/uri", "\"data:text/plain,abc\"", "not base64"},
        KBadCase{"/buffers/0", "{\"byteLength\":4}", "buffers[0] has no data"},
        KBadCase{"/buffers/0/uri", "\"a.bin\"", "the model was not read from a file"},
        KBadCase{"/buffers/0/uri", "\"data:base64\"", "not base64"}, KBadCase{"/buffers/0/uri", "\"data:,\"", "not base64"},
        KBadCase{"/accessors/0/sparse", "{\"count\":1}", "sparse.indices: invalid componentType"},
        KBadCase{"/accessors/0/sparse", R"({"count":1,"indices":{"componentType":5123},"values":{"bufferView":0}})",
                 "sparse.indices.bufferView is missing"},
        KBadCase{"/accessors/0/sparse", R"({"count":9,"indices":{"bufferView":0,"componentType":5121},"values":{"bufferView":0}})",
                 "does not fit"},
        KBadCase{"/accessors/0/sparse", R"({"count":2,"indices":{"bufferView":0,"componentType":5121},"values":{"bufferView":0}})",
                 "out of range or not increasing"}));

TEST(GltfHostile, ABinaryFileTruncatedAnywhereIsAnError)
{
    const std::string lBytes = ValidBinary();
    KTargetScene      lTarget;
    for (size_t i = 0; i < lBytes.size(); ++i)
    {
        EXPECT_FALSE(lTarget.Read(lBytes.substr(0, i))) << i;
    }
    EXPECT_TRUE(lTarget.Read(lBytes));
}

TEST(GltfHostile, ATextTruncatedAnywhereIsAnError)
{
    const std::string lText = ValidFile().Text();
    KTargetScene      lTarget;
    for (size_t i = 0; i < lText.size(); ++i)
    {
        EXPECT_FALSE(lTarget.Read(lText.substr(0, i))) << i;
    }
}

TEST(GltfHostile, RandomBytesAreHandled)
{
    const std::string lBytes = ValidBinary();
    std::mt19937      lRandom(11);
    int               lErrors = 0;
    for (int i = 0; i < 4000; ++i)
    {
        std::string lChanged = lBytes;
        for (int j = 0; j <= i % 3; ++j)
        {
            lChanged[std::uniform_int_distribution<size_t>(0, lBytes.size() - 1)(lRandom)] =
                static_cast<char>(std::uniform_int_distribution<int>(0, 255)(lRandom));
        }
        KTargetScene lTarget;
        lErrors += lTarget.Read(lChanged) ? 0 : 1;
    }
    EXPECT_GT(lErrors, 1000);
}

TEST(GltfHostile, KeysThatAreNotFiniteOrTooLargeAreErrors)
{
    for (const float lBadNumber : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 3e38F})
    {
        KQexGltfBuilder lValues;
        lValues.AddNode({{"name", "it"}});
        lValues.AddChannel(0, "translation", lValues.AddFloats("SCALAR", 1, {0, 1}),
                           lValues.AddFloats("VEC3", 3, {0, 0, 0, 0, lBadNumber, 0}), nullptr);
        KTargetScene lFirst;
        EXPECT_FALSE(lFirst.Read(lValues.Text()));
        KQexGltfBuilder lTimes;
        lTimes.AddNode({{"name", "it"}});
        lTimes.AddChannel(0, "translation", lTimes.AddFloats("SCALAR", 1, {0, lBadNumber}), lTimes.AddFloats("VEC3", 3, {0, 0, 0, 0, 0, 0}),
                          nullptr);
        KTargetScene lSecond;
        EXPECT_FALSE(lSecond.Read(lTimes.Text()));
    }
}

TEST(GltfHostile, DeepNestingDoesNotRecurse)
{
    const std::string lDeep = std::string(1000000, '[') + std::string(1000000, ']');
    KTargetScene      lWhole;
    EXPECT_FALSE(lWhole.Read(lDeep));
    EXPECT_FALSE(lWhole.Read(std::string(1000000, '[')));
    EXPECT_FALSE(lWhole.Read(std::string(1000000, '{')));
    KTargetScene lExtras;
    EXPECT_TRUE(lExtras.Read(R"({"asset":{"version":"2.0"},"nodes":[{"name":"it","extras":)" + lDeep + "}]}")) << MessagesOf(lExtras.mFile);
}

/// A small file must not produce a huge number of keys: by a take of many days, or by many channels that share one long accessor.
TEST(GltfHostile, WorkIsLimitedByTheSizeOfTheFile)
{
    KQexGltfBuilder lLong;
    lLong.AddNode({{"name", "it"}});
    lLong.AddChannel(0, "translation", lLong.AddFloats("SCALAR", 1, {0, 0.00833F, 1e8F}),
                     lLong.AddFloats("VEC3", 3, {0, 0, 0, 1, 1, 1, 2, 2, 2}), nullptr);
    KTargetScene lTarget;
    EXPECT_FALSE(lTarget.Read(lLong.Text()));
    EXPECT_NE(MessagesOf(lTarget.mFile).find("too many keys for the size of the file"), std::string::npos);

    KQexGltfBuilder    lMany;
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
    EXPECT_FALSE(lTarget.Read(lMany.Text()));
    EXPECT_NE(MessagesOf(lTarget.mFile).find("too many keys for the size of the file"), std::string::npos);
}

TEST(GltfHostile, NoFileOutsideTheModelsFolderIsOpened)
{
    const KTempDir lFolder;
    std::filesystem::create_directories(lFolder / "model/below");
    std::filesystem::create_directories(lFolder / "other");
    KQexGltfBuilder lBuilder = ValidFile();
    nlohmann::json  lJson = nlohmann::json::parse(lBuilder.Text());
    WriteFile(lFolder / "secret.bin", lBuilder.mBytes);
    WriteFile(lFolder / "model/own.bin", lBuilder.mBytes);
    WriteFile(lFolder / "model/below/it: 1%.bin", lBuilder.mBytes);
    std::filesystem::create_symlink(lFolder / "secret.bin", lFolder / "model/link.bin");
    std::filesystem::create_symlink(lFolder / "other", lFolder / "model/otherlink");
    std::filesystem::create_symlink(lFolder / "model/own.bin", lFolder / "model/inside.bin");
    WriteFile(lFolder / "other/a.bin", lBuilder.mBytes);
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
        KTargetScene lTarget;
        EXPECT_EQ(lTarget.mFile.Read((lFolder / "model/it.gltf").string(), lTarget.mScene.get(), {}, lTarget.mResult), lUri.mIsRead)
            << lUri.mUri << MessagesOf(lTarget.mFile);
        if (!lUri.mIsRead)
        {
            lTarget.ExpectUnchanged();
        }
        KTargetScene        lFromMemory;
        const std::string   lText = lJson.dump();
        KQexGltfReadOptions lOptions;
        lOptions.mBytesPath = (lFolder / "model/not there").string();
        EXPECT_EQ(lFromMemory.mFile.ReadBuffer(lText.data(), lText.size(), lFromMemory.mScene.get(), lOptions, lFromMemory.mResult),
                  lUri.mIsRead)
            << lUri.mUri << MessagesOf(lFromMemory.mFile);
    }
}

TEST(GltfHostile, BuffersMayShareAFileAndUseEitherBase64Alphabet)
{
    const KTempDir  lFolder;
    KQexGltfBuilder lBuilder = ValidFile();
    nlohmann::json  lJson = nlohmann::json::parse(lBuilder.Text());
    WriteFile(lFolder / "own.bin", lBuilder.mBytes);
    const size_t lSize = lBuilder.mBytes.size();
    lJson["buffers"] = {{{"byteLength", lSize}, {"uri", "own.bin"}}, {{"byteLength", lSize}, {"uri", "./own.bin"}}};
    lJson["bufferViews"][1]["buffer"] = 1;
    WriteFile(lFolder / "it.gltf", lJson.dump());
    KTargetScene lTarget;
    EXPECT_TRUE(lTarget.mFile.Read((lFolder / "it.gltf").string(), lTarget.mScene.get(), {}, lTarget.mResult)) << MessagesOf(lTarget.mFile);

    std::string lText = ValidFile().Text();
    // The valid file's base64 has neither '+' nor '/', so unused bytes at the end add them.
    lJson = nlohmann::json::parse(lText);
    lBuilder.mBytes += "\xFB\xEF\xBE\xFF\xFF\xFF";
    std::string lDigits = Encode64(lBuilder.mBytes);
    ASSERT_NE(lDigits.find("++++////"), std::string::npos) << lDigits;
    std::replace(lDigits.begin(), lDigits.end(), '+', '-');
    std::replace(lDigits.begin(), lDigits.end(), '/', '_');
    lJson["buffers"][0] = {{"byteLength", lBuilder.mBytes.size()}, {"uri", "data:application/octet-stream;base64," + lDigits + "=="}};
    KTargetScene lOther;
    EXPECT_TRUE(lOther.Read(lJson.dump())) << MessagesOf(lOther.mFile);
}

TEST(GltfHostile, AFileThatCannotBeReadIsNamed)
{
    const KTempDir lFolder;
    KTargetScene   lTarget;
    for (const std::string& lPath : {(lFolder / "missing.glb").string(), lFolder.Path().string()})
    {
        EXPECT_FALSE(lTarget.mFile.Read(lPath, lTarget.mScene.get(), {}, lTarget.mResult));
        EXPECT_NE(MessagesOf(lTarget.mFile).find("Can't read " + lPath + ": "), std::string::npos) << MessagesOf(lTarget.mFile);
    }
    EXPECT_FALSE(lTarget.Read(""));
    EXPECT_FALSE(lTarget.Read(std::string(100, '\0')));
    EXPECT_FALSE(lTarget.Read("ROOT hip"));
    EXPECT_NE(MessagesOf(lTarget.mFile).find("Not JSON: parse error at line 1, column 1"), std::string::npos) << MessagesOf(lTarget.mFile);
}

TEST(GltfHostile, AFrameRateOutOfRangeIsAnError)
{
    const std::string   lText = ValidFile().Text();
    KTargetScene        lTarget;
    KQexGltfReadOptions lOptions;
    lOptions.mFramesPerSecond = 1e12;
    EXPECT_FALSE(lTarget.mFile.ReadBuffer(lText.data(), lText.size(), lTarget.mScene.get(), lOptions, lTarget.mResult));
    EXPECT_NE(MessagesOf(lTarget.mFile).find("Frame rate out of range"), std::string::npos) << MessagesOf(lTarget.mFile);
    lTarget.ExpectUnchanged();
}

TEST(GltfHostile, ACancelledReadLeavesTheSceneUnchanged)
{
    const std::string   lText = ValidFile().Text();
    KTargetScene        lTarget;
    KQexGltfReadOptions lOptions;
    lOptions.mProgress = [](double pFraction)
    {
        return pFraction < 0.4;
    };
    EXPECT_FALSE(lTarget.mFile.ReadBuffer(lText.data(), lText.size(), lTarget.mScene.get(), lOptions, lTarget.mResult));
    EXPECT_TRUE(lTarget.mResult.mCancelled);
    lTarget.ExpectUnchanged();
}

TEST(GltfHostile, WhatIsNotMotionIsIgnored)
{
    nlohmann::json lJson = nlohmann::json::parse(ValidFile().Text());
    lJson["images"] = {{{"uri", "../../etc/passwd"}}};
    lJson["meshes"] = {{{"primitives", {{{"attributes", {{"POSITION", 99}}}}}}}};
    lJson["extensionsRequired"] = {"KHR_draco_mesh_compression", "XX_unheard_of"};
    lJson["extras"] = {{"nothing", nullptr}, {"yes", true}, {"no", false}, {"deep", {{"er", {1, "two", nullptr}}}}};
    lJson["nodes"][0]["extras"] = nullptr;
    lJson["animations"][0]["channels"].push_back({{"sampler", 0}, {"target", {{"node", 0}, {"path", "weights"}}}});
    lJson["animations"].push_back({{"name", "nothing"}, {"channels", nlohmann::json::array()}, {"samplers", nlohmann::json::array()}});
    KTargetScene lTarget;
    EXPECT_TRUE(lTarget.Read(lJson.dump())) << MessagesOf(lTarget.mFile);
    EXPECT_EQ(MessagesOf(lTarget.mFile), "Extension (XX_unheard_of) is required but not supported, ignored\n"
                                         "Animation (nothing) moves no node, ignored\n");
}

} // namespace
