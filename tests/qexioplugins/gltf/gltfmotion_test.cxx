#include <tests/qexioplugins/gltf/assimpscene.h>
#include <tests/qexioplugins/gltf/gltfbuild.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>

// Files as other programs write them: kinds of keys, of numbers and of transforms.

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A file read into a scene of its own.
struct KReading
{
    explicit KReading(const std::string& pText, double pFps = 0.0)
    {
        mOptions.mFramesPerSecond = pFps;
        mOk = mFile.ReadBuffer(pText.data(), pText.size(), mScene.get(), mOptions, mResult);
        EXPECT_TRUE(mOk) << MessagesOf(mFile);
        if (!mResult.mTakes.empty())
        {
            mScene->GetEvaluator()->SetContext(mResult.mTakes[0].mStack);
        }
    }

    KQexNode* Find(const char* pName) const { return mScene->GetRootNode()->FindChild(pName); }

    KQexMatrix Global(const char* pName, double pSeconds) const
    {
        return mScene->GetEvaluator()->GetNodeGlobalTransform(Find(pName), KTime(std::llround(pSeconds * 705600000.0)));
    }

    KScenePtr           mScene = MakeScene();
    KQexFileGltf        mFile;
    KQexGltfReadOptions mOptions;
    KQexGltfReadResult  mResult;
    bool                mOk;
};

struct KInterpolationCase
{
    const char*        mInterpolation;
    std::vector<float> mValues; ///< x of the keys at 0, 1 and 3 seconds (with tangents for splines).
    double             mSeconds;
    double             mX; ///< Centimetres.
};

class KQexGltfInterpolationTest : public testing::TestWithParam<KInterpolationCase>
{
};

TEST_P(KQexGltfInterpolationTest, ValueAtATime)
{
    KQexGltfBuild      lBuild;
    std::vector<float> lVectors;
    for (const float lX : GetParam().mValues)
    {
        lVectors.insert(lVectors.end(), {lX, 0.0F, 0.0F});
    }
    const int lNode = lBuild.AddNode({{"name", "it"}});
    const int lInput = lBuild.AddFloats("SCALAR", 1, {0.0F, 1.0F, 3.0F});
    lBuild.AddChannel(lNode, "translation", lInput, lBuild.AddFloats("VEC3", 3, lVectors), GetParam().mInterpolation);
    const KReading lRead(lBuild.Text(), 100.0);
    ASSERT_TRUE(lRead.mOk);
    EXPECT_EQ(lRead.mResult.mTakes[0].mSampling.mCount, 301);
    EXPECT_NEAR(lRead.Global("it", GetParam().mSeconds).mData[3][0], GetParam().mX, 1e-3);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, KQexGltfInterpolationTest,
    testing::Values(KInterpolationCase{"LINEAR", {0, 1, 5}, 0.25, 25.0}, KInterpolationCase{"LINEAR", {0, 1, 5}, 2.5, 400.0},
                    KInterpolationCase{nullptr, {0, 1, 5}, 0.5, 50.0}, KInterpolationCase{"STEP", {0, 1, 5}, 0.98, 0.0},
                    KInterpolationCase{"STEP", {0, 1, 5}, 1.0, 100.0}, KInterpolationCase{"STEP", {0, 1, 5}, 2.5, 100.0},
                    KInterpolationCase{"STEP", {0, 1, 5}, 3.0, 500.0},
                    // Tangents of zero: half-way in the middle, 3/4² · (…) before.
                    KInterpolationCase{"CUBICSPLINE", {0, 0, 0, 0, 1, 0, 0, 5, 0}, 0.5, 50.0},
                    KInterpolationCase{"CUBICSPLINE", {0, 0, 0, 0, 1, 0, 0, 5, 0}, 0.25, 15.625},
                    // An outgoing tangent of 2 a second over 2 seconds adds 2 · 2 / 8 in the middle.
                    KInterpolationCase{"CUBICSPLINE", {0, 0, 0, 0, 1, 2, 0, 5, 0}, 2.0, 350.0},
                    KInterpolationCase{"CUBICSPLINE", {9, 0, 9, 9, 1, 9, 9, 5, 9}, 1.0, 100.0}));

TEST(GltfMotion, RotationsTakeTheShorterArc)
{
    KQexGltfBuild lBuild;
    const float   lHalf = static_cast<float>(std::sqrt(0.5));
    const int     lNode = lBuild.AddNode({{"name", "it"}});
    const int     lInput = lBuild.AddFloats("SCALAR", 1, {0.0F, 1.0F});
    // A quarter turn about z, with the sign turned round.
    lBuild.AddChannel(lNode, "rotation", lInput, lBuild.AddFloats("VEC4", 4, {0, 0, 0, 1, 0, 0, -lHalf, -lHalf}), "LINEAR");
    const KReading lRead(lBuild.Text(), 90.0);
    ASSERT_TRUE(lRead.mOk);
    EXPECT_NEAR(lRead.Find("it")->EvaluateLocalRotation(KTime(705600000 / 3))[2], 30.0, 1e-4);
    EXPECT_NEAR(lRead.Find("it")->EvaluateLocalRotation(KTime(705600000))[2], 90.0, 1e-4);
}

TEST(GltfMotion, AKeyWithoutLengthIsNoRotation)
{
    KQexGltfBuild lBuild;
    const int     lNode = lBuild.AddNode({{"name", "it"}});
    const int     lInput = lBuild.AddFloats("SCALAR", 1, {0.0F, 1.0F, 2.0F});
    lBuild.AddChannel(lNode, "rotation", lInput, lBuild.AddFloats("VEC4", 4, {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}), "LINEAR");
    const KReading lRead(lBuild.Text(), 30.0);
    ASSERT_TRUE(lRead.mOk);
    EXPECT_EQ(lRead.Find("it")->EvaluateLocalRotation(KTime(705600000 / 2))[0], 0.0);
    EXPECT_NEAR(std::fabs(lRead.Find("it")->EvaluateLocalRotation(KTime(2 * 705600000LL))[0]), 180.0, 1e-4);
}

TEST(GltfMotion, AnglesGoOnFromFrameToFrame)
{
    KQexGltfBuild      lBuild;
    std::vector<float> lTimes;
    std::vector<float> lRotations;
    for (int i = 0; i <= 120; ++i) // Three turns.
    {
        lTimes.push_back(static_cast<float>(i) / 30.0F);
        const double lHalf = i * 9.0 * 0.5 * 3.141592653589793 / 180.0;
        lRotations.insert(lRotations.end(), {0.0F, static_cast<float>(std::sin(lHalf)), 0.0F, static_cast<float>(std::cos(lHalf))});
    }
    const int lNode = lBuild.AddNode({{"name", "it"}, {"extras", {{"rotationOrder", "YXZ"}}}});
    lBuild.AddChannel(lNode, "rotation", lBuild.AddFloats("SCALAR", 1, lTimes), lBuild.AddFloats("VEC4", 4, lRotations), nullptr);
    const KReading lRead(lBuild.Text());
    ASSERT_TRUE(lRead.mOk);
    EXPECT_EQ(lRead.mResult.mTakes[0].mSampling.mCount, 121);
    EXPECT_EQ(lRead.Find("it")->GetRotationOrder(), eEULER_YXZ);
    for (int i = 0; i <= 120; ++i)
    {
        EXPECT_NEAR(lRead.Find("it")->EvaluateLocalRotation(KTime(i * 23520000LL))[1], 9.0 * i, 1e-3) << i;
    }
}

struct KRateCase
{
    const char*         mWhat;
    std::vector<double> mTimes;
    double              mAsked;
    double              mRate;
    long long           mCount;
};

class KQexGltfRateTest : public testing::TestWithParam<KRateCase>
{
};

TEST_P(KQexGltfRateTest, FramesStandOnTheKeys)
{
    KQexGltfBuild            lBuild;
    const std::vector<float> lTimes(GetParam().mTimes.begin(), GetParam().mTimes.end());
    const int                lNode = lBuild.AddNode({{"name", "it"}});
    lBuild.AddChannel(lNode, "scale", lBuild.AddFloats("SCALAR", 1, lTimes),
                      lBuild.AddFloats("VEC3", 3, std::vector<float>(3 * lTimes.size(), 1.0F)), nullptr);
    const KReading lRead(lBuild.Text(), GetParam().mAsked);
    ASSERT_TRUE(lRead.mOk);
    const KQexSampling& lSampling = lRead.mResult.mTakes[0].mSampling;
    EXPECT_NEAR(705600000.0 / static_cast<double>(lSampling.mStep.Get()), GetParam().mRate, 1e-4);
    EXPECT_EQ(lSampling.mCount, GetParam().mCount);
    EXPECT_NEAR(static_cast<double>(lSampling.mStart.Get()) / 705600000.0, GetParam().mTimes.front(), 1e-6);
}

std::vector<double> Even(double pFirst, double pRate, int pCount)
{
    std::vector<double> lTimes;
    for (int i = 0; i < pCount; ++i)
    {
        lTimes.push_back(pFirst + i / pRate);
    }
    return lTimes;
}

INSTANTIATE_TEST_SUITE_P(
    Rates, KQexGltfRateTest,
    testing::Values(KRateCase{"even", Even(0, 24, 48), 0, 24, 48}, KRateCase{"slow", Even(0, 12, 9), 0, 12, 9},
                    KRateCase{"odd", Even(0, 59, 60), 0, 59, 60}, KRateCase{"film", Even(0, 30000.0 / 1001, 99), 0, 29.97002997, 99},
                    KRateCase{"long", Even(0, 120, 30000), 0, 120, 30000}, KRateCase{"late", Even(1.25, 120, 50), 0, 120, 50},
                    KRateCase{"gaps", {0, 0.1, 0.5, 0.6}, 0, 30, 19}, KRateCase{"seconds", {0, 1, 2}, 0, 24, 49},
                    KRateCase{"none", {0, 0.0101, 0.0333, 0.5}, 0, 120, 61}, KRateCase{"asked", Even(0, 24, 25), 60, 60, 61},
                    KRateCase{"beside", {0.005, 1.005}, 60, 60, 61}, KRateCase{"one", {0.5}, 0, 120, 1}),
    [](const auto& pInfo) { return std::string(pInfo.param.mWhat); });

TEST(GltfMotion, NormalizedWholeNumbersAreFractions)
{
    KQexGltfBuild lBuild;
    const int     lNode = lBuild.AddNode({{"name", "bytes"}});
    const int     lOther = lBuild.AddNode({{"name", "shorts"}});
    const int     lInput = lBuild.AddFloats("SCALAR", 1, {0.0F, 1.0F});
    const int     lBytes = lBuild.AddAccessor(lBuild.AddView<std::int8_t>({0, 0, 0, 127, 90, 0, 0, 90}), 5120, "VEC4", 2);
    // Two elements eight bytes long, twelve bytes apart.
    const int lShorts = lBuild.AddAccessor(lBuild.AddView<std::uint16_t>({0, 0, 0, 65535, 7, 7, 0, 46340, 0, 46340}, 12), 5123, "VEC4", 2);
    lBuild.mJson["accessors"][static_cast<size_t>(lBytes)]["normalized"] = true;
    lBuild.mJson["accessors"][static_cast<size_t>(lShorts)]["normalized"] = true;
    lBuild.AddChannel(lNode, "rotation", lInput, lBytes, nullptr);
    lBuild.AddChannel(lOther, "rotation", lInput, lShorts, nullptr);
    const KReading lRead(lBuild.Text());
    ASSERT_TRUE(lRead.mOk);
    EXPECT_NEAR(lRead.Find("bytes")->EvaluateLocalRotation(KTime(705600000))[0], 90.0, 1e-3);
    EXPECT_NEAR(lRead.Find("shorts")->EvaluateLocalRotation(KTime(705600000))[1], 90.0, 1e-3);
}

struct KNumbersCase
{
    const char*                        mWhat;
    int                                mKind;
    std::function<int(KQexGltfBuild&)> mAdd; ///< The view of (full scale, -full scale or 0, half) and its second element.
    double                             mSecond;
};

class KQexGltfNumbersTest : public testing::TestWithParam<KNumbersCase>
{
};

/// Four of them, so that every kind stands on four bytes: 1, the least, about a half, 0.
TEST_P(KQexGltfNumbersTest, AreFractionsOfTheirFullScale)
{
    KQexGltfBuild lBuild;
    const int     lNode = lBuild.AddNode({{"name", "it"}});
    const int     lOutput = lBuild.AddAccessor(GetParam().mAdd(lBuild), GetParam().mKind, "VEC4", 1);
    lBuild.mJson["accessors"][static_cast<size_t>(lOutput)]["normalized"] = true;
    lBuild.AddChannel(lNode, "rotation", lBuild.AddFloats("SCALAR", 1, {0.0F}), lOutput, nullptr);
    const KReading lRead(lBuild.Text());
    ASSERT_TRUE(lRead.mOk);
    // (0, 0.6 or -0.6, 0, 0.8) as nearly as the kind can tell.
    EXPECT_NEAR(lRead.Find("it")->EvaluateLocalRotation(KTime(0))[1], GetParam().mSecond, 1.0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, KQexGltfNumbersTest,
                         testing::Values(KNumbersCase{"int8", 5120,
                                                      [](KQexGltfBuild& pBuild) {
                                                          return pBuild.AddView<std::int8_t>({0, -76, 0, 102});
                                                      },
                                                      -73.74},
                                         KNumbersCase{"uint8", 5121,
                                                      [](KQexGltfBuild& pBuild) {
                                                          return pBuild.AddView<std::uint8_t>({0, 153, 0, 204});
                                                      },
                                                      73.74},
                                         KNumbersCase{"int16", 5122,
                                                      [](KQexGltfBuild& pBuild) {
                                                          return pBuild.AddView<std::int16_t>({0, -19660, 0, 26214});
                                                      },
                                                      -73.74},
                                         KNumbersCase{"uint16", 5123,
                                                      [](KQexGltfBuild& pBuild) {
                                                          return pBuild.AddView<std::uint16_t>({0, 39321, 0, 52428});
                                                      },
                                                      73.74},
                                         KNumbersCase{"uint32", 5125,
                                                      [](KQexGltfBuild& pBuild) {
                                                          return pBuild.AddView<std::uint32_t>({0, 2576980377U, 0, 3435973836U});
                                                      },
                                                      73.74}),
                         [](const auto& pInfo) { return std::string(pInfo.param.mWhat); });

TEST(GltfMotion, OfTwoChannelsForTheSamePropertyTheFirstCounts)
{
    KQexGltfBuild lBuild;
    const int     lNode = lBuild.AddNode({{"name", "it"}});
    const int     lInput = lBuild.AddFloats("SCALAR", 1, {0.0F});
    lBuild.AddChannel(lNode, "translation", lInput, lBuild.AddFloats("VEC3", 3, {1, 2, 3}), nullptr);
    lBuild.AddChannel(lNode, "translation", lInput, lBuild.AddFloats("VEC3", 3, {7, 8, 9}), nullptr);
    lBuild.AddChannel(lNode, "scale", lInput, lBuild.AddFloats("VEC3", 3, {2, 2, 2}), nullptr);
    KReading lRead(lBuild.Text());
    EXPECT_EQ(MessagesOf(lRead.mFile), "animations[0].channels[1] moves what another channel moves already, left out\n");
    EXPECT_NEAR(lRead.Global("it", 0).mData[3][2], 300.0, 1e-3);
    EXPECT_NEAR(lRead.Global("it", 0).mData[0][0], 2.0, 1e-6);
}

TEST(GltfMotion, ARotationWithoutLengthIsNone)
{
    KQexGltfBuild lBuild;
    lBuild.AddNode({{"name", "it"}, {"rotation", {0, 0, 0, 0}}, {"translation", {1, 0, 0}}});
    KReading lRead(lBuild.Text());
    EXPECT_EQ(MessagesOf(lRead.mFile), "nodes[0].rotation has no length, taken as none\n");
    EXPECT_EQ(lRead.Global("it", 0).mData[1][1], 1.0);
    EXPECT_NEAR(lRead.Global("it", 0).mData[3][0], 100.0, 1e-9);
}

TEST(GltfMotion, SparseElementsReplaceThoseOfTheBuffer)
{
    for (const bool lHasBase : {true, false})
    {
        KQexGltfBuild lBuild;
        const int     lNode = lBuild.AddNode({{"name", "it"}});
        const int     lInput = lBuild.AddFloats("SCALAR", 1, {0, 1, 2, 3});
        const int     lOutput =
            lHasBase ? lBuild.AddFloats("VEC3", 3, {1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4}) : lBuild.AddAccessor(-1, 5126, "VEC3", 4);
        nlohmann::json& lSparse = lBuild.mJson["accessors"][static_cast<size_t>(lOutput)]["sparse"];
        lSparse["count"] = 2;
        lSparse["indices"] = {{"bufferView", lBuild.AddView<std::uint8_t>({1, 3})}, {"componentType", 5121}};
        lSparse["values"] = {{"bufferView", lBuild.AddView<float>({7, 8, 9, -7, -8, -9})}};
        lBuild.AddChannel(lNode, "translation", lInput, lOutput, nullptr);
        const KReading lRead(lBuild.Text());
        ASSERT_TRUE(lRead.mOk);
        const double lExpected[4] = {lHasBase ? 100.0 : 0.0, 700.0, lHasBase ? 300.0 : 0.0, -700.0};
        for (int i = 0; i < 4; ++i)
        {
            EXPECT_NEAR(lRead.Global("it", i).mData[3][0], lExpected[i], 1e-3) << i;
        }
    }
}

struct KMatrixCase
{
    const char*         mWhat;
    std::vector<double> mMatrix;
    bool                mIsExact;
    const char*         mWarning;
};

class KQexGltfMatrixTest : public testing::TestWithParam<KMatrixCase>
{
};

TEST_P(KQexGltfMatrixTest, IsTakenApart)
{
    KQexGltfBuild lBuild;
    lBuild.AddNode({{"name", "it"}, {"matrix", GetParam().mMatrix}});
    const KReading lRead(lBuild.Text());
    ASSERT_TRUE(lRead.mOk);
    EXPECT_NE(MessagesOf(lRead.mFile).find(GetParam().mWarning), std::string::npos) << MessagesOf(lRead.mFile);
    EXPECT_EQ(MessagesOf(lRead.mFile).empty(), std::string(GetParam().mWarning).empty());
    const KQexMatrix lGlobal = lRead.Global("it", 0);
    for (size_t i = 0; i < 16 && GetParam().mIsExact; ++i)
    {
        if (i % 4 != 3)
        {
            const double lFactor = i >= 12 ? 100.0 : 1.0;
            EXPECT_NEAR(lGlobal.mData[i / 4][static_cast<int>(i % 4)], lFactor * GetParam().mMatrix[i], 1e-5) << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Matrices, KQexGltfMatrixTest,
    testing::Values(KMatrixCase{"identity", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, true, ""},
                    KMatrixCase{"turned", {0, 2, 0, 0, -3, 0, 0, 0, 0, 0, 4, 0, 5, 6, 7, 1}, true, ""},
                    KMatrixCase{"tilted", {0.6, 0, -0.8, 0, 0, 1, 0, 0, 0.8, 0, 0.6, 0, 1, 2, 3, 1}, true, ""},
                    KMatrixCase{"halfturn", {-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, true, ""},
                    KMatrixCase{"halfturnx", {1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}, true, ""},
                    KMatrixCase{"mirrored", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, 0, 1, 1, 1, 1}, true, ""},
                    KMatrixCase{"sheared", {1, 0, 0, 0, 0.5, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, false, "nodes[0].matrix is sheared"},
                    KMatrixCase{"projecting", {1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, false, "nodes[0].matrix is sheared"},
                    KMatrixCase{"flat", {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}, false, "nodes[0].matrix flattens space"}),
    [](const auto& pInfo) { return std::string(pInfo.param.mWhat); });

TEST(GltfMotion, JointsOfSkinsGetASkeletonAndMeshHoldersGo)
{
    KQexGltfBuild lBuild;
    lBuild.AddNode({{"name", "figure"}, {"children", {1, 3}}});
    lBuild.mJson["nodes"].push_back({{"name", "hip"}, {"children", {2}}});
    lBuild.mJson["nodes"].push_back({{"name", "knee"}});
    lBuild.mJson["nodes"].push_back({{"name", "body"}, {"mesh", 0}, {"skin", 0}});
    lBuild.mJson["skins"] = {{{"joints", {1, 2}}, {"skeleton", 1}}};
    const KReading lRead(lBuild.Text());
    ASSERT_TRUE(lRead.mOk);
    ASSERT_EQ(lRead.mResult.mRoots.size(), 1u);
    EXPECT_EQ(lRead.Find("figure")->GetSkeleton(), nullptr);
    EXPECT_NE(lRead.Find("hip")->GetSkeleton(), nullptr);
    EXPECT_NE(lRead.Find("knee")->GetSkeleton(), nullptr);
    EXPECT_EQ(lRead.Find("body"), nullptr);

    lBuild.mJson.erase("skins");
    lBuild.mJson["nodes"][3].erase("skin");
    const KReading lBare(lBuild.Text());
    ASSERT_TRUE(lBare.mOk);
    EXPECT_NE(lBare.Find("figure")->GetSkeleton(), nullptr) << "without skins every node is a joint";
    EXPECT_NE(lBare.Find("body"), nullptr);
}

TEST(GltfMotion, OnlyTheFilesSceneIsRead)
{
    KQexGltfBuild lBuild;
    lBuild.AddNode({{"name", "first"}});
    lBuild.mJson["nodes"].push_back({{"name", "second"}});
    lBuild.mJson["nodes"].push_back({});
    lBuild.mJson["scenes"].push_back({{"nodes", {2, 1}}});
    lBuild.mJson["scene"] = 1;
    lBuild.mJson["nodes"][2] = nlohmann::json::object();
    const KReading lSecond(lBuild.Text());
    ASSERT_EQ(lSecond.mResult.mRoots.size(), 2u);
    EXPECT_STREQ(lSecond.mResult.mRoots[0]->GetName(), "node_2") << "a node without a name gets one";
    EXPECT_STREQ(lSecond.mResult.mRoots[1]->GetName(), "second");
    lBuild.mJson.erase("scene");
    EXPECT_EQ(KReading(lBuild.Text()).mResult.mRoots.size(), 1u);
    lBuild.mJson.erase("scenes");
    EXPECT_EQ(KReading(lBuild.Text()).mResult.mRoots.size(), 3u) << "without scenes all tops are read";
}

TEST(GltfMotion, ScaleAndParentAreThoseAskedFor)
{
    KQexGltfBuild lBuild;
    lBuild.AddNode({{"name", "it"}, {"translation", {1, 2, 3}}});
    const std::string   lText = lBuild.Text();
    const KScenePtr     lScene = MakeScene();
    KQexGltfReadOptions lOptions;
    KQexGltfReadResult  lResult;
    KQexFileGltf        lFile;
    lOptions.mScale = 2.0;
    lOptions.mParentNode = KQexNode::Create(lScene.get(), "above");
    ASSERT_TRUE(lFile.ReadBuffer(lText.data(), lText.size(), lScene.get(), lOptions, lResult));
    EXPECT_EQ(lResult.mRoots[0]->GetParent(), lOptions.mParentNode);
    EXPECT_EQ(lResult.mRoots[0]->EvaluateLocalTranslation(KTime(0))[2], 6.0);
}

/// assimp keeps keys and interpolates between them, so both have to agree at every frame, not only at the keys.
class KQexGltfAssimpTest : public testing::TestWithParam<unsigned>
{
};

TEST_P(KQexGltfAssimpTest, ReadsTheSamePlaces)
{
    std::mt19937  lRandom(GetParam());
    KQexGltfBuild lBuild;
    const int     lKeys = 1 + static_cast<int>(GetParam() % 7) * 3;
    const double  lGap = GetParam() % 2 == 0 ? 1.0 / 30 : 0.2;
    const char*   lKind = GetParam() % 3 == 0 ? "STEP" : "LINEAR";
    lBuild.AddNode({{"name", "n0"}});
    std::vector<float> lTimes;
    for (int i = 0; i < lKeys; ++i)
    {
        lTimes.push_back(static_cast<float>(i * lGap));
    }
    const int lInput = lBuild.AddFloats("SCALAR", 1, lTimes);
    for (int lNode = 0; lNode < 12; ++lNode)
    {
        const KQexVector4  lPlace = RandomVector(lRandom, 1.0);
        std::vector<float> lMoves;
        std::vector<float> lTurns;
        for (int i = 0; i < lKeys; ++i)
        {
            const KQexVector4 lMove = RandomVector(lRandom, 1.0);
            const KQexVector4 lTurn = RandomVector(lRandom, 1.0);
            const double      lW = 1.5 + Between(lRandom, 0.0, 1.0);
            const double      lLength = std::sqrt(lTurn[0] * lTurn[0] + lTurn[1] * lTurn[1] + lTurn[2] * lTurn[2] + lW * lW);
            for (int j = 0; j < 3; ++j)
            {
                lMoves.push_back(static_cast<float>(lMove[j]));
                lTurns.push_back(static_cast<float>(lTurn[j] / lLength));
            }
            lTurns.push_back(static_cast<float>(lW / lLength));
        }
        if (lNode > 0)
        {
            const size_t lParent = std::uniform_int_distribution<size_t>(0, static_cast<size_t>(lNode) - 1)(lRandom);
            lBuild.mJson["nodes"].push_back({{"name", "n" + std::to_string(lNode)}});
            lBuild.mJson["nodes"][lParent]["children"].push_back(lNode);
        }
        lBuild.mJson["nodes"][static_cast<size_t>(lNode)]["translation"] = {lPlace[0], lPlace[1], lPlace[2]};
        if (lNode % 3 != 2)
        {
            lBuild.AddChannel(lNode, "rotation", lInput, lBuild.AddFloats("VEC4", 4, lTurns), lKind);
        }
        if (lNode % 4 == 1)
        {
            lBuild.AddChannel(lNode, "translation", lInput, lBuild.AddFloats("VEC3", 3, lMoves), lKind);
        }
    }
    const KTempDir lFolder;
    WriteFile(lFolder / "it.gltf", lBuild.Text());
    const KAssimpScene lOther(lFolder / "it.gltf");
    const KReading     lRead(lBuild.Text(), 60.0);
    ASSERT_TRUE(lRead.mOk);
    ASSERT_EQ(lOther.GetAnimationCount(), 1);
    const KQexSampling& lSampling = lRead.mResult.mTakes[0].mSampling;
    const int           lEvery = std::string(lKind) == "STEP" ? static_cast<int>(std::lround(lGap * 60)) : 1; // assimp knows no steps.
    for (long long lFrame = 0; lFrame < lSampling.mCount; lFrame += lEvery)
    {
        const double lSeconds = static_cast<double>(lFrame) / 60.0;
        for (const auto& [lName, lPlace] : lOther.PlacesAt(0, lSeconds))
        {
            if (lName[0] != 'n' || lName.find('_') != std::string::npos)
            {
                continue; // A root that assimp adds.
            }
            const KQexMatrix lHere = lRead.Global(lName.c_str(), lSeconds);
            const KPoint     lPoint{lHere.mData[3][0] / 100.0, lHere.mData[3][1] / 100.0, lHere.mData[3][2] / 100.0};
            EXPECT_LT(Distance(lPoint, lPlace), 1e-4) << lName << " at frame " << lFrame;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, KQexGltfAssimpTest, testing::Range(1u, 15u));

} // namespace
