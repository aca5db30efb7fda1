#include <tests/qexioplugins/gltf/assimpscene.h>
#include <tests/qexioplugins/gltf/gltfbuild.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>

// Files as other programs write them: interpolations, number types and transforms.

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A file read into a new scene.
struct KReadScene
{
    explicit KReadScene(const std::string& pText, double pFps = 0.0)
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
    std::vector<float> mValues; ///< x of the keys at 0, 1 and 3 seconds; for CUBICSPLINE with tangents.
    double             mSeconds;
    double             mX; ///< Centimetres.
};

class KQexGltfInterpolationTest : public testing::TestWithParam<KInterpolationCase>
{
};

TEST_P(KQexGltfInterpolationTest, ValueAtATime)
{
    KQexGltfBuilder    lBuilder;
    std::vector<float> lVectors;
    for (const float lX : GetParam().mValues)
    {
        lVectors.insert(lVectors.end(), {lX, 0.0F, 0.0F});
    }
    const int lNode = lBuilder.AddNode({{"name", "it"}});
    const int lInput = lBuilder.AddFloats("SCALAR", 1, {0.0F, 1.0F, 3.0F});
    lBuilder.AddChannel(lNode, "translation", lInput, lBuilder.AddFloats("VEC3", 3, lVectors), GetParam().mInterpolation);
    const KReadScene lRead(lBuilder.Text(), 100.0);
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
                    // Zero tangents: smoothstep, 3 t² - 2 t³.
                    KInterpolationCase{"CUBICSPLINE", {0, 0, 0, 0, 1, 0, 0, 5, 0}, 0.5, 50.0},
                    KInterpolationCase{"CUBICSPLINE", {0, 0, 0, 0, 1, 0, 0, 5, 0}, 0.25, 15.625},
                    // An outgoing tangent of 2 per second over 2 seconds adds 2 · 2 / 8 in the middle.
                    KInterpolationCase{"CUBICSPLINE", {0, 0, 0, 0, 1, 2, 0, 5, 0}, 2.0, 350.0},
                    KInterpolationCase{"CUBICSPLINE", {9, 0, 9, 9, 1, 9, 9, 5, 9}, 1.0, 100.0}));

TEST(GltfMotion, RotationsInterpolateAlongTheShorterArc)
{
    KQexGltfBuilder lBuilder;
    const float     lHalf = static_cast<float>(std::sqrt(0.5));
    const int       lNode = lBuilder.AddNode({{"name", "it"}});
    const int       lInput = lBuilder.AddFloats("SCALAR", 1, {0.0F, 1.0F});
    // A rotation by 90 degrees about z, as the negated quaternion.
    lBuilder.AddChannel(lNode, "rotation", lInput, lBuilder.AddFloats("VEC4", 4, {0, 0, 0, 1, 0, 0, -lHalf, -lHalf}), "LINEAR");
    const KReadScene lRead(lBuilder.Text(), 90.0);
    ASSERT_TRUE(lRead.mOk);
    EXPECT_NEAR(lRead.Find("it")->EvaluateLocalRotation(KTime(705600000 / 3))[2], 30.0, 1e-4);
    EXPECT_NEAR(lRead.Find("it")->EvaluateLocalRotation(KTime(705600000))[2], 90.0, 1e-4);
}

TEST(GltfMotion, AQuaternionKeyOfZeroLengthIsIdentity)
{
    KQexGltfBuilder lBuilder;
    const int       lNode = lBuilder.AddNode({{"name", "it"}});
    const int       lInput = lBuilder.AddFloats("SCALAR", 1, {0.0F, 1.0F, 2.0F});
    lBuilder.AddChannel(lNode, "rotation", lInput, lBuilder.AddFloats("VEC4", 4, {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}), "LINEAR");
    const KReadScene lRead(lBuilder.Text(), 30.0);
    ASSERT_TRUE(lRead.mOk);
    EXPECT_EQ(lRead.Find("it")->EvaluateLocalRotation(KTime(705600000 / 2))[0], 0.0);
    EXPECT_NEAR(std::fabs(lRead.Find("it")->EvaluateLocalRotation(KTime(2 * 705600000LL))[0]), 180.0, 1e-4);
}

TEST(GltfMotion, AnglesAreContinuousFromFrameToFrame)
{
    KQexGltfBuilder    lBuilder;
    std::vector<float> lTimes;
    std::vector<float> lRotations;
    for (int i = 0; i <= 120; ++i) // 1080 degrees in all.
    {
        lTimes.push_back(static_cast<float>(i) / 30.0F);
        const double lHalf = i * 9.0 * 0.5 * 3.141592653589793 / 180.0;
        lRotations.insert(lRotations.end(), {0.0F, static_cast<float>(std::sin(lHalf)), 0.0F, static_cast<float>(std::cos(lHalf))});
    }
    const int lNode = lBuilder.AddNode({{"name", "it"}, {"extras", {{"rotationOrder", "YXZ"}}}});
    lBuilder.AddChannel(lNode, "rotation", lBuilder.AddFloats("SCALAR", 1, lTimes), lBuilder.AddFloats("VEC4", 4, lRotations), nullptr);
    const KReadScene lRead(lBuilder.Text());
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
    double              mRequestedRate;
    double              mRate;
    long long           mCount;
};

class KQexGltfRateTest : public testing::TestWithParam<KRateCase>
{
};

TEST_P(KQexGltfRateTest, FramesMatchTheKeys)
{
    KQexGltfBuilder          lBuilder;
    const std::vector<float> lTimes(GetParam().mTimes.begin(), GetParam().mTimes.end());
    const int                lNode = lBuilder.AddNode({{"name", "it"}});
    lBuilder.AddChannel(lNode, "scale", lBuilder.AddFloats("SCALAR", 1, lTimes),
                        lBuilder.AddFloats("VEC3", 3, std::vector<float>(3 * lTimes.size(), 1.0F)), nullptr);
    const KReadScene lRead(lBuilder.Text(), GetParam().mRequestedRate);
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
                    KRateCase{"odd", Even(0, 59, 60), 0, 59, 60}, KRateCase{"ntsc", Even(0, 30000.0 / 1001, 99), 0, 29.97002997, 99},
                    KRateCase{"long", Even(0, 120, 30000), 0, 120, 30000}, KRateCase{"late", Even(1.25, 120, 50), 0, 120, 50},
                    KRateCase{"gaps", {0, 0.1, 0.5, 0.6}, 0, 30, 19}, KRateCase{"seconds", {0, 1, 2}, 0, 24, 49},
                    KRateCase{"nocommonrate", {0, 0.0101, 0.0333, 0.5}, 0, 120, 61}, KRateCase{"requested", Even(0, 24, 25), 60, 60, 61},
                    KRateCase{"offset", {0.005, 1.005}, 60, 60, 61}, KRateCase{"one", {0.5}, 0, 120, 1}),
    [](const auto& pInfo) { return std::string(pInfo.param.mWhat); });

TEST(GltfMotion, NormalizedIntegersBecomeFractions)
{
    KQexGltfBuilder lBuilder;
    const int       lNode = lBuilder.AddNode({{"name", "bytes"}});
    const int       lOther = lBuilder.AddNode({{"name", "shorts"}});
    const int       lInput = lBuilder.AddFloats("SCALAR", 1, {0.0F, 1.0F});
    const int       lBytes = lBuilder.AddAccessor(lBuilder.AddView<std::int8_t>({0, 0, 0, 127, 90, 0, 0, 90}), 5120, "VEC4", 2);
    // Two elements of eight bytes with a stride of twelve.
    const int lShorts =
        lBuilder.AddAccessor(lBuilder.AddView<std::uint16_t>({0, 0, 0, 65535, 7, 7, 0, 46340, 0, 46340}, 12), 5123, "VEC4", 2);
    lBuilder.mJson["accessors"][static_cast<size_t>(lBytes)]["normalized"] = true;
    lBuilder.mJson["accessors"][static_cast<size_t>(lShorts)]["normalized"] = true;
    lBuilder.AddChannel(lNode, "rotation", lInput, lBytes, nullptr);
    lBuilder.AddChannel(lOther, "rotation", lInput, lShorts, nullptr);
    const KReadScene lRead(lBuilder.Text());
    ASSERT_TRUE(lRead.mOk);
    EXPECT_NEAR(lRead.Find("bytes")->EvaluateLocalRotation(KTime(705600000))[0], 90.0, 1e-3);
    EXPECT_NEAR(lRead.Find("shorts")->EvaluateLocalRotation(KTime(705600000))[1], 90.0, 1e-3);
}

struct KNumbersCase
{
    const char*                          mWhat;
    int                                  mComponentType;
    std::function<int(KQexGltfBuilder&)> mAdd;   ///< Adds the quaternion (0, ±0.6, 0, 0.8); negative for signed types. \return its view
    double                               mAngle; ///< Degrees about y.
};

class KQexGltfNumbersTest : public testing::TestWithParam<KNumbersCase>
{
};

TEST_P(KQexGltfNumbersTest, AreDividedByTheMaximumOfTheirType)
{
    KQexGltfBuilder lBuilder;
    const int       lNode = lBuilder.AddNode({{"name", "it"}});
    const int       lOutput = lBuilder.AddAccessor(GetParam().mAdd(lBuilder), GetParam().mComponentType, "VEC4", 1);
    lBuilder.mJson["accessors"][static_cast<size_t>(lOutput)]["normalized"] = true;
    lBuilder.AddChannel(lNode, "rotation", lBuilder.AddFloats("SCALAR", 1, {0.0F}), lOutput, nullptr);
    const KReadScene lRead(lBuilder.Text());
    ASSERT_TRUE(lRead.mOk);
    // The precision of bytes.
    EXPECT_NEAR(lRead.Find("it")->EvaluateLocalRotation(KTime(0))[1], GetParam().mAngle, 1.0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, KQexGltfNumbersTest,
                         testing::Values(KNumbersCase{"int8", 5120,
                                                      [](KQexGltfBuilder& pBuilder) {
                                                          return pBuilder.AddView<std::int8_t>({0, -76, 0, 102});
                                                      },
                                                      -73.74},
                                         KNumbersCase{"uint8", 5121,
                                                      [](KQexGltfBuilder& pBuilder) {
                                                          return pBuilder.AddView<std::uint8_t>({0, 153, 0, 204});
                                                      },
                                                      73.74},
                                         KNumbersCase{"int16", 5122,
                                                      [](KQexGltfBuilder& pBuilder) {
                                                          return pBuilder.AddView<std::int16_t>({0, -19660, 0, 26214});
                                                      },
                                                      -73.74},
                                         KNumbersCase{"uint16", 5123,
                                                      [](KQexGltfBuilder& pBuilder) {
                                                          return pBuilder.AddView<std::uint16_t>({0, 39321, 0, 52428});
                                                      },
                                                      73.74},
                                         KNumbersCase{"uint32", 5125,
                                                      [](KQexGltfBuilder& pBuilder) {
                                                          return pBuilder.AddView<std::uint32_t>({0, 2576980377U, 0, 3435973836U});
                                                      },
                                                      73.74}),
                         [](const auto& pInfo) { return std::string(pInfo.param.mWhat); });

TEST(GltfMotion, TheFirstOfTwoChannelsForAPropertyWins)
{
    KQexGltfBuilder lBuilder;
    const int       lNode = lBuilder.AddNode({{"name", "it"}});
    const int       lInput = lBuilder.AddFloats("SCALAR", 1, {0.0F});
    lBuilder.AddChannel(lNode, "translation", lInput, lBuilder.AddFloats("VEC3", 3, {1, 2, 3}), nullptr);
    lBuilder.AddChannel(lNode, "translation", lInput, lBuilder.AddFloats("VEC3", 3, {7, 8, 9}), nullptr);
    lBuilder.AddChannel(lNode, "scale", lInput, lBuilder.AddFloats("VEC3", 3, {2, 2, 2}), nullptr);
    KReadScene lRead(lBuilder.Text());
    EXPECT_EQ(MessagesOf(lRead.mFile), "animations[0].channels[1] has the same target as an earlier channel, ignored\n");
    EXPECT_NEAR(lRead.Global("it", 0).mData[3][2], 300.0, 1e-3);
    EXPECT_NEAR(lRead.Global("it", 0).mData[0][0], 2.0, 1e-6);
}

TEST(GltfMotion, ARotationOfZeroLengthIsIdentity)
{
    KQexGltfBuilder lBuilder;
    lBuilder.AddNode({{"name", "it"}, {"rotation", {0, 0, 0, 0}}, {"translation", {1, 0, 0}}});
    KReadScene lRead(lBuilder.Text());
    EXPECT_EQ(MessagesOf(lRead.mFile), "nodes[0].rotation has zero length, using identity\n");
    EXPECT_EQ(lRead.Global("it", 0).mData[1][1], 1.0);
    EXPECT_NEAR(lRead.Global("it", 0).mData[3][0], 100.0, 1e-9);
}

TEST(GltfMotion, SparseElementsReplaceThoseOfTheBuffer)
{
    for (const bool lHasBase : {true, false})
    {
        KQexGltfBuilder lBuilder;
        const int       lNode = lBuilder.AddNode({{"name", "it"}});
        const int       lInput = lBuilder.AddFloats("SCALAR", 1, {0, 1, 2, 3});
        const int       lOutput =
            lHasBase ? lBuilder.AddFloats("VEC3", 3, {1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4}) : lBuilder.AddAccessor(-1, 5126, "VEC3", 4);
        nlohmann::json& lSparse = lBuilder.mJson["accessors"][static_cast<size_t>(lOutput)]["sparse"];
        lSparse["count"] = 2;
        lSparse["indices"] = {{"bufferView", lBuilder.AddView<std::uint8_t>({1, 3})}, {"componentType", 5121}};
        lSparse["values"] = {{"bufferView", lBuilder.AddView<float>({7, 8, 9, -7, -8, -9})}};
        lBuilder.AddChannel(lNode, "translation", lInput, lOutput, nullptr);
        const KReadScene lRead(lBuilder.Text());
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

TEST_P(KQexGltfMatrixTest, IsDecomposed)
{
    KQexGltfBuilder lBuilder;
    lBuilder.AddNode({{"name", "it"}, {"matrix", GetParam().mMatrix}});
    const KReadScene lRead(lBuilder.Text());
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
                    KMatrixCase{"sheared", {1, 0, 0, 0, 0.5, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, false, "nodes[0].matrix has shear"},
                    KMatrixCase{"perspective", {1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, false, "nodes[0].matrix has shear"},
                    KMatrixCase{"singular", {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}, false, "nodes[0].matrix is singular"}),
    [](const auto& pInfo) { return std::string(pInfo.param.mWhat); });

TEST(GltfMotion, JointsGetASkeletonAndSkinnedMeshNodesAreSkipped)
{
    KQexGltfBuilder lBuilder;
    lBuilder.AddNode({{"name", "figure"}, {"children", {1, 3}}});
    lBuilder.mJson["nodes"].push_back({{"name", "hip"}, {"children", {2}}});
    lBuilder.mJson["nodes"].push_back({{"name", "knee"}});
    lBuilder.mJson["nodes"].push_back({{"name", "body"}, {"mesh", 0}, {"skin", 0}});
    lBuilder.mJson["skins"] = {{{"joints", {1, 2}}, {"skeleton", 1}}};
    const KReadScene lRead(lBuilder.Text());
    ASSERT_TRUE(lRead.mOk);
    ASSERT_EQ(lRead.mResult.mRoots.size(), 1u);
    EXPECT_EQ(lRead.Find("figure")->GetSkeleton(), nullptr);
    EXPECT_NE(lRead.Find("hip")->GetSkeleton(), nullptr);
    EXPECT_NE(lRead.Find("knee")->GetSkeleton(), nullptr);
    EXPECT_EQ(lRead.Find("body"), nullptr);

    lBuilder.mJson.erase("skins");
    lBuilder.mJson["nodes"][3].erase("skin");
    const KReadScene lBare(lBuilder.Text());
    ASSERT_TRUE(lBare.mOk);
    EXPECT_NE(lBare.Find("figure")->GetSkeleton(), nullptr) << "without skins every node is a joint";
    EXPECT_NE(lBare.Find("body"), nullptr);
}

TEST(GltfMotion, OnlyTheDefaultSceneIsRead)
{
    KQexGltfBuilder lBuilder;
    lBuilder.AddNode({{"name", "first"}});
    lBuilder.mJson["nodes"].push_back({{"name", "second"}});
    lBuilder.mJson["nodes"].push_back({});
    lBuilder.mJson["scenes"].push_back({{"nodes", {2, 1}}});
    lBuilder.mJson["scene"] = 1;
    lBuilder.mJson["nodes"][2] = nlohmann::json::object();
    const KReadScene lSecond(lBuilder.Text());
    ASSERT_EQ(lSecond.mResult.mRoots.size(), 2u);
    EXPECT_STREQ(lSecond.mResult.mRoots[0]->GetName(), "node_2") << "a node without a name gets one";
    EXPECT_STREQ(lSecond.mResult.mRoots[1]->GetName(), "second");
    lBuilder.mJson.erase("scene");
    EXPECT_EQ(KReadScene(lBuilder.Text()).mResult.mRoots.size(), 1u);
    lBuilder.mJson.erase("scenes");
    EXPECT_EQ(KReadScene(lBuilder.Text()).mResult.mRoots.size(), 3u) << "without scenes all roots are read";
}

TEST(GltfMotion, TheScaleAndParentOptionsAreUsed)
{
    KQexGltfBuilder lBuilder;
    lBuilder.AddNode({{"name", "it"}, {"translation", {1, 2, 3}}});
    const std::string   lText = lBuilder.Text();
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

/// KAssimpScene interpolates linearly between the file's keys, so both must agree at every frame, not only at the keys.
class KQexGltfAssimpTest : public testing::TestWithParam<unsigned>
{
};

TEST_P(KQexGltfAssimpTest, GivesTheSamePositions)
{
    std::mt19937    lRandom(GetParam());
    KQexGltfBuilder lBuilder;
    const int       lKeys = 1 + static_cast<int>(GetParam() % 7) * 3;
    const double    lGap = GetParam() % 2 == 0 ? 1.0 / 30 : 0.2;
    const char*     lInterpolation = GetParam() % 3 == 0 ? "STEP" : "LINEAR";
    lBuilder.AddNode({{"name", "n0"}});
    std::vector<float> lTimes;
    for (int i = 0; i < lKeys; ++i)
    {
        lTimes.push_back(static_cast<float>(i * lGap));
    }
    const int lInput = lBuilder.AddFloats("SCALAR", 1, lTimes);
    for (int lNode = 0; lNode < 12; ++lNode)
    {
        const KQexVector4  lPosition = RandomVector(lRandom, 1.0);
        std::vector<float> lTranslations;
        std::vector<float> lQuaternions;
        for (int i = 0; i < lKeys; ++i)
        {
            const KQexVector4 lTranslation = RandomVector(lRandom, 1.0);
            const KQexVector4 lXyz = RandomVector(lRandom, 1.0);
            const double      lW = 1.5 + Between(lRandom, 0.0, 1.0);
            const double      lLength = std::sqrt(lXyz[0] * lXyz[0] + lXyz[1] * lXyz[1] + lXyz[2] * lXyz[2] + lW * lW);
            for (int j = 0; j < 3; ++j)
            {
                lTranslations.push_back(static_cast<float>(lTranslation[j]));
                lQuaternions.push_back(static_cast<float>(lXyz[j] / lLength));
            }
            lQuaternions.push_back(static_cast<float>(lW / lLength));
        }
        if (lNode > 0)
        {
            const size_t lParent = std::uniform_int_distribution<size_t>(0, static_cast<size_t>(lNode) - 1)(lRandom);
            lBuilder.mJson["nodes"].push_back({{"name", "n" + std::to_string(lNode)}});
            lBuilder.mJson["nodes"][lParent]["children"].push_back(lNode);
        }
        lBuilder.mJson["nodes"][static_cast<size_t>(lNode)]["translation"] = {lPosition[0], lPosition[1], lPosition[2]};
        if (lNode % 3 != 2)
        {
            lBuilder.AddChannel(lNode, "rotation", lInput, lBuilder.AddFloats("VEC4", 4, lQuaternions), lInterpolation);
        }
        if (lNode % 4 == 1)
        {
            lBuilder.AddChannel(lNode, "translation", lInput, lBuilder.AddFloats("VEC3", 3, lTranslations), lInterpolation);
        }
    }
    const KTempDir lFolder;
    WriteFile(lFolder / "it.gltf", lBuilder.Text());
    const KAssimpScene lOther(lFolder / "it.gltf");
    const KReadScene   lRead(lBuilder.Text(), 60.0);
    ASSERT_TRUE(lRead.mOk);
    ASSERT_EQ(lOther.GetAnimationCount(), 1);
    const KQexSampling& lSampling = lRead.mResult.mTakes[0].mSampling;
    const int           lFrameStep = std::string(lInterpolation) == "STEP" ? static_cast<int>(std::lround(lGap * 60))
                                                                           : 1; // KAssimpScene ignores STEP: compare at the keys only.
    for (long long lFrame = 0; lFrame < lSampling.mCount; lFrame += lFrameStep)
    {
        const double lSeconds = static_cast<double>(lFrame) / 60.0;
        for (const auto& [lName, lPosition] : lOther.PositionsAt(0, lSeconds))
        {
            if (lName[0] != 'n' || lName.find('_') != std::string::npos)
            {
                continue; // The root node that assimp adds.
            }
            const KQexMatrix lHere = lRead.Global(lName.c_str(), lSeconds);
            const KPoint     lPoint{lHere.mData[3][0] / 100.0, lHere.mData[3][1] / 100.0, lHere.mData[3][2] / 100.0};
            EXPECT_LT(Distance(lPoint, lPosition), 1e-4) << lName << " at frame " << lFrame;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, KQexGltfAssimpTest, testing::Range(1u, 15u));

} // namespace
