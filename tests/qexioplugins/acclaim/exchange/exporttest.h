#ifndef TESTS_QEXIOPLUGINS_ACCLAIM_EXCHANGE_EXPORTTEST_H
#define TESTS_QEXIOPLUGINS_ACCLAIM_EXCHANGE_EXPORTTEST_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <tests/qexioplugins/acclaim/exchange/exportpositions.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <string>

namespace qextest
{

using namespace qexsdk;

/// A scene with a tree of named nodes.
class KExportTest : public testing::Test
{
protected:
    KQexNode* Add(KQexNode* pParent, const char* pName, double pX, double pY, double pZ)
    {
        KQexNode* lNode = KQexNode::Create(mScene.get(), pName);
        (pParent != nullptr ? pParent : mScene->GetRootNode())->AddChild(lNode);
        lNode->SetRotationActive(true);
        lNode->mLocalTranslation.Set(qexVectorTemplate3<double>(pX, pY, pZ));
        return lNode;
    }

    /// A root "hips" at the origin and below it "bone", 5 cm long, with its end node.
    KQexNode* AddBone()
    {
        KQexNode* lBone = Add(Add(nullptr, "hips", 0, 0, 0), "bone", 0, 0, 0);
        Add(lBone, "bone_End", 0, 5, 0);
        return lBone;
    }

    /// Keys at frames 0 and 1 of a take.
    void Animate(KQexProperty pProperty, unsigned int pChannel, float pFirst, float pSecond, const char* pTake = "take")
    {
        KQexAnimCurve* lCurve = KQexAnimCurve::Create(mScene.get(), "curve");
        pProperty.GetCurveNode(true, pTake)->ConnectToChannel(lCurve, pChannel, true);
        lCurve->AppendSample(FrameTime(0), pFirst);
        lCurve->AppendSample(FrameTime(1), pSecond);
    }

    static KQexAcclaimSource SkeletonSource(const std::string& pAsf)
    {
        return KQexAcclaimSource::Buffer(pAsf.data(), pAsf.size(), "back.asf");
    }

    /// Reads a skeleton into mBack, null on failure, and its notes for writing motion into mOptions.
    KQexImportAcclaimResult ReadBack(const std::string& pAsf)
    {
        KQexImportAcclaimResult lResult;
        mBack = KQexImporterAcclaim::ReadSkeleton(SkeletonSource(pAsf), KQexImportAcclaimOptions(), lResult);
        mOptions.mSkeletonNotes = lResult.mSkeletonNotes;
        return lResult;
    }

    void Export(KQexNode* pRoot)
    {
        EXPECT_TRUE(KQexExporterAcclaim::ExportBuffers(pRoot, mAsf, mAmc, mOptions, mResult));
        const KQexImportAcclaimResult lResult = ReadBack(mAsf);
        ASSERT_TRUE(mBack) << mAsf;
        EXPECT_TRUE(lResult.mMessages.empty());
    }

    std::string PathOf(const std::string& pName) const { return (mDir / pName).string(); }

    /// Exports the takes to out.asf and TAKE.amc, all in one call.
    void ExportTakes(KQexNode* pRoot, const std::vector<std::string>& pTakes)
    {
        std::vector<KQexExportMotion> lMotions;
        for (const std::string& lTake : pTakes)
        {
            lMotions.push_back({PathOf(lTake + ".amc"), mScene->FindAnimStack(lTake.c_str()), {}});
        }
        EXPECT_TRUE(KQexExporterAcclaim::Export(pRoot, PathOf("out.asf").c_str(), lMotions, mOptions, mResult)) << Warnings();
        mAsf = ReadFile(mDir / "out.asf");
    }

    /// Expects that TAKE.amc moves the skeleton in \p pAsf as the take moves the nodes at and below \p pRoot, each of which has a joint of
    /// its name. \return the root's node of the imported figure
    KQexNode* ExpectSameMotion(KQexNode* pRoot, const std::string& pTake, const std::string& pAsf, double pTolerance = 1e-3)
    {
        KQexImportAcclaimResult lResult;
        mImported = MakeScene();
        EXPECT_TRUE(
            KQexImporterAcclaim::Import(mImported.get(), pAsf.c_str(), PathOf(pTake + ".amc").c_str(), KQexImportAcclaimOptions(), lResult))
            << (lResult.mMessages.empty() ? "" : lResult.mMessages.back().mMessage.mText);
        mScene->GetEvaluator()->SetContext(mScene->FindAnimStack(pTake.c_str()));
        if (lResult.mRootNode != nullptr)
        {
            const int lFrames = static_cast<int>(lResult.mTakes.front().mInfo.mFrameCount);
            SCOPED_TRACE("take " + pTake);
            EXPECT_EQ(ExpectSamePositions(NodePositions(pRoot, lFrames), NodePositions(lResult.mRootNode, lFrames), pTolerance),
                      pRoot->GetChildCount(true) + 1);
        }
        mScene->GetEvaluator()->SetContext(nullptr);
        return lResult.mRootNode;
    }

    /// ExportTakes(), and ExpectSameMotion() for each.
    void ExpectTakesAreKept(KQexNode* pRoot, const std::vector<std::string>& pTakes, double pTolerance = 1e-3)
    {
        ExportTakes(pRoot, pTakes);
        for (const std::string& lTake : pTakes)
        {
            ExpectSameMotion(pRoot, lTake, PathOf("out.asf"), pTolerance);
        }
        EXPECT_EQ(Warnings().find("can't express"), std::string::npos) << Warnings();
    }

    /// The names of all objects of the scene, in order of creation: what an export must not change.
    std::string Objects() const
    {
        std::string lNames;
        for (const KQexObject* lObject = mScene->GetFirstObject(); lObject != nullptr; lObject = mScene->GetNextObject(lObject))
        {
            lNames += lObject->GetName() + std::string("\n");
        }
        return lNames;
    }

    std::string Warnings() const
    {
        std::string lAll;
        for (const KQexImportMessage& lMessage : mResult.mMessages)
        {
            lAll += lMessage.mMessage.mText + "\n";
        }
        return lAll;
    }

    /// Names in pre-order, each indented by its depth.
    std::string Tree() const
    {
        std::string lTree;
        std::string lIndent;
        KQexAsfWalk lWalk(mBack->mRoot);
        while (HKQexAsfNode lBone = lWalk.Next())
        {
            if (!lWalk.IsEntering())
            {
                lIndent.pop_back();
                continue;
            }
            lTree += lIndent + lBone->mName + "\n";
            lIndent += ' ';
        }
        return lTree;
    }

    KTempDir                 mDir;
    KScenePtr                mScene = MakeScene();
    KScenePtr                mImported;
    KQexExportAcclaimOptions mOptions;
    KQexExportAcclaimResult  mResult;
    std::string              mAsf;
    std::string              mAmc;
    KQexAsfSceneOwner        mBack;
};

} // namespace qextest

#endif
