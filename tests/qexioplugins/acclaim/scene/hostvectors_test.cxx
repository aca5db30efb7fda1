#include <tests/qexioplugins/acclaim/scene/hostcases.h>
#include <tests/support/assertwatch.h>
#include <tests/support/testfolders.h>
#include <tests/support/vectors.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

using nlohmann::json;
using namespace qexsdk;
using namespace qextest;

namespace
{

struct KFlags
{
    explicit KFlags(const json& pCase)
        : mSetLimits(pCase["setLimits"].get<bool>()),
          mOffset(pCase["pivotOffset"].get<bool>()),
          mPreRotation(pCase["preRotation"].get<bool>()),
          mRemoveDummy(pCase["removeDummy"].get<bool>()),
          mHasTake(!pCase["take"].is_null()),
          mTake(mHasTake ? pCase["take"].get<std::string>() : "")
    {
    }

    const char* Take() const { return mHasTake ? mTake.c_str() : nullptr; }

    bool        mSetLimits;
    bool        mOffset;
    bool        mPreRotation;
    bool        mRemoveDummy;
    bool        mHasTake;
    std::string mTake;
};

void SetUpFrames(KHostCase& pScene, const json& pCase, const json& pDefault)
{
    for (const json& lPair : pCase.contains("setup") ? pCase["setup"] : pDefault)
    {
        pScene.mAsf->mRoot->SetupPosition(lPair[0].get<bool>(), lPair[1].get<bool>());
    }
}

void AddFrame(KHostCase& pScene, const json& pFrame, const json& pMotion, const KFlags& pFlags, const std::vector<KQexAsfNode*>& pAlive)
{
    const KTime lTime(pFrame["ticks"].get<long long>());
    for (const auto& lItem : pFrame["values"].items())
    {
        KQexAsfNode* lBone = pScene.mBones[std::stoul(lItem.key())];
        if (std::find(pAlive.begin(), pAlive.end(), lBone) == pAlive.end())
        {
            continue;
        }
        const std::vector<double> lValues = lItem.value().get<std::vector<double>>();
        lBone->AddSampleFromDOF(lValues.data(), lTime, pMotion["lengthFactor"].get<double>(), pMotion["angleFactor"].get<double>(),
                                pFlags.mOffset, pFlags.mPreRotation);
    }
}

/// Sets the process-wide key reducer and rotation filter; the destructor restores the defaults.
struct KCurveSettings
{
    explicit KCurveSettings(const json& pMotion)
    {
        KFCURVE_SetUseConstantKeyReducer(pMotion["keyReducer"].get<bool>());
        KFCURVE_SetRotationFilterToApply(pMotion["rotationFilter"].get<int>());
    }
    ~KCurveSettings()
    {
        KFCURVE_SetUseConstantKeyReducer(false);
        KFCURVE_SetRotationFilterToApply(0);
    }
};

json Sample(KHostCase& pScene, const json& pMotion, const KFlags& pFlags)
{
    const KCurveSettings            lSettings(pMotion);
    KQexAsfNode*                    lRoot = pScene.mAsf->mRoot;
    const std::vector<KQexAsfNode*> lAlive = BonesOf(lRoot);
    lRoot->CreateDataFromDOF(pScene.mScene);
    lRoot->StartSamplingData();
    for (const json& lFrame : pMotion["frames"])
    {
        AddFrame(pScene, lFrame, pMotion, pFlags, lAlive);
    }
    lRoot->StopSamplingData();
    json lSampled = json::array();
    for (const KQexAsfNode* lBone : lAlive)
    {
        lSampled.push_back(DescribeCurveSizes(*lBone));
    }
    return lSampled;
}

/// Frames, clean-up and sampling, the same for an import and a merge.
json Prepare(KHostCase& pScene, const json& pCase, const KFlags& pFlags)
{
    json lResult;
    SetUpFrames(pScene, pCase, json::array({json::array({pFlags.mOffset, pFlags.mPreRotation})}));
    if (pFlags.mRemoveDummy)
    {
        pScene.mAsf->mRoot->RemoveDummy(pFlags.mOffset, pFlags.mPreRotation);
    }
    lResult["asf"] = DescribeBones(pScene.mAsf->mRoot);
    if (pCase.contains("motion"))
    {
        lResult["sampled"] = Sample(pScene, pCase["motion"], pFlags);
    }
    return lResult;
}

/// Adds the host trees and their transforms, evaluated in the case's take, or in none if that does not exist.
void AddHostResult(json& pResult, const std::vector<KQexNode*>& pRoots, const json& pCase, KHostCase& pScene)
{
    pScene.mScene->GetEvaluator()->SetContext(pScene.mScene->FindAnimStack(KFlags(pCase).Take()));
    pResult["host"] = json::array();
    pResult["eval"] = json::array();
    for (KQexNode* lRoot : pRoots)
    {
        pResult["host"].push_back(DescribeTree(lRoot));
        if (pCase.contains("eval"))
        {
            pResult["eval"].push_back(DescribeTransforms(lRoot, pCase["eval"]));
        }
    }
    pResult["after"] = DescribeBonesBriefly(pScene.mAsf->mRoot);
}

json RunImport(const json& pCase)
{
    KHostCase              lScene(pCase);
    const KFlags           lFlags(pCase);
    json                   lResult = Prepare(lScene, pCase, lFlags);
    std::vector<KQexNode*> lTops;
    for (int lRepeat = 0; lRepeat < pCase.value("times", 1); ++lRepeat)
    {
        lTops.push_back(lScene.mAsf->ASFToQEX(lScene.mScene, lFlags.Take(), lFlags.mSetLimits, lFlags.mOffset, lFlags.mPreRotation));
    }
    AddHostResult(lResult, lTops, pCase, lScene);
    return lResult;
}

json RunMerge(const json& pCase)
{
    KHostCase    lScene(pCase);
    const KFlags lFlags(pCase);
    json         lResult = Prepare(lScene, pCase, lFlags);
    KQexNode*    lRoot = lScene.mNodes[pCase["mergeRoot"].get<size_t>()];
    if (pCase["mergeLevel"] == "scene")
    {
        lScene.mAsf->MergeASFToQEX(lScene.mScene, lRoot, lFlags.Take(), lFlags.mSetLimits, lFlags.mOffset, lFlags.mPreRotation);
    }
    else
    {
        lScene.mAsf->mRoot->MergeASFToQEX(lScene.mScene, lRoot, lFlags.Take(), lFlags.mSetLimits, lFlags.mOffset, lFlags.mPreRotation);
    }
    AddHostResult(lResult, {lScene.mNodes[0]}, pCase, lScene);
    return lResult;
}

json RunExport(const json& pCase)
{
    KHostCase  lScene(pCase);
    const bool lTAnimated = pCase["tAnimated"].get<bool>();
    const auto lScale = pCase["baseScale"].get<std::vector<double>>();
    KQexNode*  lRoot = lScene.mNodes[pCase["exportRoot"].get<size_t>()];
    json       lResult;
    lResult["ok"] =
        lScene.mAsf->QEXToASF(lRoot, lTAnimated, KQexVector4(lScale[0], lScale[1], lScale[2]), pCase["defaultsAsBaseTR"].get<bool>());
    lResult["asf"] = DescribeBones(lScene.mAsf->mRoot, lTAnimated ? 6 : 3);
    lResult["scene"] = {{"name", lScene.mAsf->mName},
                        {"massUnit", lScene.mAsf->mMassUnit},
                        {"lengthUnit", lScene.mAsf->mLengthUnit},
                        {"angleUnit", lScene.mAsf->mAngleUnit}};
    lResult["eval"] = json::array({DescribeTransforms(lScene.mNodes[0], pCase["eval"])});
    return lResult;
}

json RunBind(const json& pCase)
{
    KHostCase lScene(pCase);
    json      lResult;
    SetUpFrames(lScene, pCase, json::array());
    lResult["ok"] = lScene.mAsf->MergeQEXToASF(lScene.mNodes[pCase["mergeRoot"].get<size_t>()]);
    lResult["asf"] = DescribeBones(lScene.mAsf->mRoot);
    if (pCase.value("removeEndSite", false))
    {
        lScene.mAsf->mRoot->RemoveEndSite();
        lResult["cleaned"] = DescribeBones(lScene.mAsf->mRoot);
    }
    return lResult;
}

json IndexOf(const KHostCase& pScene, const KQexAsfNode* pBone)
{
    for (size_t lIter = 0; lIter < pScene.mBones.size(); ++lIter)
    {
        if (pScene.mBones[lIter] == pBone)
        {
            return lIter;
        }
    }
    return nullptr;
}

void RunModelOp(KHostCase& pScene, const json& pOp, json& pAnswers)
{
    const std::string lName = pOp[0].get<std::string>();
    KQexAsfNode*      lBone = pScene.mBones[pOp[1].get<size_t>()];
    if (lName == "find")
    {
        pAnswers.push_back(IndexOf(pScene, lBone->Find(pOp[2].get<std::string>().c_str())));
    }
    else if (lName == "child")
    {
        pAnswers.push_back(IndexOf(pScene, lBone->GetChild(pOp[2].get<int>())));
    }
    else if (lName == "add")
    {
        lBone->AddChild(pScene.mBones[pOp[2].get<size_t>()]);
    }
    else if (lName == "remove")
    {
        lBone->RemoveChild(pScene.mBones[pOp[2].get<size_t>()]);
    }
    else
    {
        FAIL() << "unknown operation " << lName;
    }
}

json RunModel(const json& pCase)
{
    KHostCase lScene(pCase);
    json      lResult = {{"answers", json::array()}, {"parents", json::array()}, {"children", json::array()}};
    for (const json& lOp : pCase["ops"])
    {
        RunModelOp(lScene, lOp, lResult["answers"]);
    }
    for (KQexAsfNode* lBone : lScene.mBones)
    {
        json lChildren = json::array();
        for (int lIter = 0; lIter < lBone->mChildBuf.GetCount(); ++lIter)
        {
            lChildren.push_back(IndexOf(lScene, lBone->GetChild(lIter)));
        }
        lResult["parents"].push_back(lBone->mParent ? IndexOf(lScene, lBone->mParent) : json(nullptr));
        lResult["children"].push_back(lChildren);
    }
    const std::vector<KQexAsfNode*> lKept = BonesOf(lScene.mAsf->mRoot);
    for (KQexAsfNode* lBone : lScene.mBones)
    {
        if (!lBone->mParent && std::find(lKept.begin(), lKept.end(), lBone) == lKept.end())
        {
            QexSdkDelete(lBone);
        }
    }
    return lResult;
}

struct KKind
{
    const char* mName;
    json (*mRun)(const json&);
};

const KKind kKinds[] = {{"model", RunModel}, {"import", RunImport}, {"merge", RunMerge}, {"export", RunExport}, {"bind", RunBind}};

class KHostVectorsTest : public testing::TestWithParam<KKind>
{
};

std::string Summary(const std::vector<std::string>& pTexts)
{
    std::string lAll;
    for (size_t lIter = 0; lIter < pTexts.size() && lIter < 5; ++lIter)
    {
        lAll += "\n    " + pTexts[lIter];
    }
    return lAll + "\n    " + std::to_string(pTexts.size()) + " in all";
}

TEST_P(KHostVectorsTest, MatchTheExpectedResults)
{
    const std::vector<json> lCases = ReadJsonLines(VectorsDir() / "host" / "cases.jsonl");
    const std::vector<json> lExpected = ReadJsonLines(VectorsDir() / "host" / "expected.jsonl");
    ASSERT_EQ(lExpected.size(), lCases.size() + 1); // The last line holds the assertions of the whole run.
    int lCount = 0;
    for (size_t lIter = 0; lIter < lCases.size(); ++lIter)
    {
        const json& lCase = lCases[lIter];
        json        lWanted = lExpected[lIter];
        ASSERT_EQ(lCase["name"], lWanted["name"]);
        if (lCase["kind"] != GetParam().mName)
        {
            continue;
        }
        ++lCount;
        for (const char* lKey : {"exactKeys", "keyReducer", "kind", "name"})
        {
            lWanted.erase(lKey);
        }
        const std::vector<std::string> lDifferences = Differences(lWanted, GetParam().mRun(lCase), 1e-7);
        EXPECT_TRUE(lDifferences.empty()) << lCase["name"] << " " << lCase["covers"] << Summary(lDifferences);
    }
    EXPECT_GT(lCount, 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, KHostVectorsTest, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<KKind>& pInfo) { return std::string(pInfo.param.mName); });

/// Runs in a process of its own, because each assertion is reported once per process.
[[noreturn]] void RunAllForAssertions()
{
    KAssertWatch lWatch;
    for (const json& lCase : ReadJsonLines(VectorsDir() / "host" / "cases.jsonl"))
    {
        for (const KKind& lKind : kKinds)
        {
            if (lCase["kind"] == lKind.mName)
            {
                lKind.mRun(lCase);
            }
        }
    }
    std::vector<json> lTexts;
    for (const KAssertReport& lReport : lWatch.GetReports())
    {
        lTexts.push_back({lReport.mFile, lReport.mText});
    }
    std::sort(lTexts.begin(), lTexts.end());
    std::_Exit(json(lTexts) == ReadJsonLines(VectorsDir() / "host" / "expected.jsonl").back()["texts"] ? 0 : 1);
}

TEST(KHostVectorsAssertTest, TheWholeRunReportsTheExpectedAssertions)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(RunAllForAssertions(), testing::ExitedWithCode(0), "");
}

} // namespace
