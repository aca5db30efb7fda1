#include <tests/qexioplugins/acclaim/asf/asftestsupport.h>
#include <tests/support/testfolders.h>
#include <tests/support/vectors.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace qextest
{

using namespace qexsdk;

namespace
{

constexpr double kTolerance = 1e-9;

/// The start of a message whose wording the cases leave open, by kind.
std::string StartOfKind(const std::string& pKind)
{
    static const std::map<std::string, std::string> sStarts = {{"cut-string", "Name cut to 50 characters ("},
                                                               {"cycle", "Bone under itself ("},
                                                               {"second-root", "Second :root takes over the bones"},
                                                               {"extra-dof", "Too many degrees of freedom ("},
                                                               {"utf-16", "UTF-16 text is not supported"}};
    const auto                                      lFound = sStarts.find(pKind);
    return lFound == sStarts.end() ? "no such kind: " + pKind : lFound->second;
}

struct KExpectedMessage
{
    std::string mSeverity;
    int         mLine;
    std::string mText; ///< The whole text, or its start when the wording is open.
    int         mMinCount = 1;
    int         mMaxCount = 1;
    bool        mExact = true;
};

KExpectedMessage ExpectedOf(const KJson& pMessage)
{
    KExpectedMessage lResult{pMessage[0], pMessage[1], Bytes(pMessage[2])};
    if (lResult.mText[0] != '~')
    {
        return lResult;
    }
    const size_t lBlank = lResult.mText.find(' ');
    EXPECT_EQ(std::sscanf(lResult.mText.c_str() + lBlank, "%d..%d", &lResult.mMinCount, &lResult.mMaxCount), 2);
    lResult.mText = StartOfKind(lResult.mText.substr(1, lBlank - 1));
    lResult.mExact = false;
    return lResult;
}

bool Matches(const KExpectedMessage& pExpected, const KQexTextMessage& pActual)
{
    const bool lError = pActual.mSeverity == KQexTextMessage::eERROR;
    if (lError != (pExpected.mSeverity == "E") || (pExpected.mLine != -1 && pExpected.mLine != pActual.mLine))
    {
        return false;
    }
    return pExpected.mExact ? pActual.mText == pExpected.mText : pActual.mText.compare(0, pExpected.mText.size(), pExpected.mText) == 0;
}

/// Messages of open wording are matched and removed first; the others must agree in order.
void CompareMessages(std::vector<KQexTextMessage> pActual, const KJson& pExpected)
{
    std::vector<KExpectedMessage> lExact;
    for (const KJson& lMessage : pExpected)
    {
        const KExpectedMessage lExpected = ExpectedOf(lMessage);
        if (lExpected.mExact)
        {
            lExact.push_back(lExpected);
            continue;
        }
        int lFound = 0;
        for (auto i = pActual.begin(); i != pActual.end() && lFound < lExpected.mMaxCount;)
        {
            const bool lMatches = Matches(lExpected, *i);
            lFound += lMatches ? 1 : 0;
            i = lMatches ? pActual.erase(i) : i + 1;
        }
        EXPECT_GE(lFound, lExpected.mMinCount) << lExpected.mText;
    }
    for (size_t i = 0; i < std::max(lExact.size(), pActual.size()); ++i)
    {
        if (i >= pActual.size())
        {
            FAIL() << "missing: " << lExact[i].mSeverity << lExact[i].mLine << " " << lExact[i].mText;
        }
        if (i >= lExact.size())
        {
            FAIL() << "not expected: " << MessageLine(pActual[i]);
        }
        ASSERT_TRUE(Matches(lExact[i], pActual[i]))
            << MessageLine(pActual[i]) << "\nexpected " << lExact[i].mSeverity << lExact[i].mLine << " " << lExact[i].mText;
    }
}

std::vector<double> RotationElements(const KgeRMatrix& pMatrix)
{
    std::vector<double> lNumbers;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            lNumbers.push_back(pMatrix.mData[i][j]);
        }
    }
    return lNumbers;
}

/// The rotation by angles about x, y and z, applied in the order of the bone's DOFs; the root's order is XYZ.
KgeRMatrix RotationOf(HKQexAsfNode pNode, const std::vector<double>& pAngles)
{
    const int  lOrder = pNode->mParent == nullptr ? 0 : EulerOrderFromOrderBuf(pNode->mOrderBuf, pNode->mOrderCount);
    const auto lAngle = [&](int pStep)
    {
        return pAngles[static_cast<size_t>(KmEulerAxis[lOrder][pStep])];
    };
    KgeRMatrix lResult;
    KgeSet(lResult, KgeRVector(lAngle(0), lAngle(1), lAngle(2)), lOrder);
    return lResult;
}

/// Expects equal angles, or other angles of the same rotation, as may happen near gimbal lock.
void CompareAngles(HKQexAsfNode pNode, const KJson& pExpected)
{
    if (AreNear(pNode->mLR.mData, 3, pExpected, kTolerance))
    {
        return;
    }
    const std::vector<double> lActual(pNode->mLR.mData, pNode->mLR.mData + 3);
    EXPECT_TRUE(
        AreNear(RotationElements(RotationOf(pNode, lActual)), KJson(RotationElements(RotationOf(pNode, Numbers(pExpected)))), 1e-7));
}

void CompareLimits(HKQexAsfNode pNode, const KJson& pExpected)
{
    for (int i = 0; i < pNode->mOrderCount; ++i)
    {
        EXPECT_TRUE(AreNear(pNode->mLimitsBuf[pNode->mOrderBuf[i]], 2, pExpected["limits"][static_cast<size_t>(i)], kTolerance)) << i;
    }
    for (size_t i = 0; i < 6; ++i)
    {
        for (size_t j = 0; j < 2; ++j)
        {
            EXPECT_EQ(pNode->mLimitsActive[i][j], pExpected["active"][i][j].get<bool>()) << "active " << i << " " << j;
        }
    }
}

void CompareNode(HKQexAsfNode pNode, const KJson& pExpected)
{
    SCOPED_TRACE(pNode->mName);
    EXPECT_EQ(std::string(pNode->mName), Bytes(pExpected["name"]));
    EXPECT_EQ(std::vector<int>(pNode->mOrderBuf, pNode->mOrderBuf + pNode->mOrderCount), pExpected["order"].get<std::vector<int>>());
    CompareLimits(pNode, pExpected);
    EXPECT_EQ(pNode->mOrientationOrder, pExpected["ori_order"].get<int>());
    EXPECT_TRUE(AreNear(pNode->mOrientationV.mData, 3, pExpected["ori"], kTolerance));
    EXPECT_TRUE(AreNear(pNode->mPositionV.mData, 3, pExpected["pos"], kTolerance));
    EXPECT_TRUE(AreNear(pNode->mDirectionV.mData, 3, pExpected["dir"], kTolerance));
    EXPECT_TRUE(AreNear(&pNode->mLength, 1, KJson::array({pExpected["len"]}), kTolerance));
    EXPECT_TRUE(AreNear(RotationElements(pNode->mAxisRM), pExpected["axis"], kTolerance));
    EXPECT_TRUE(AreNear(RotationElements(pNode->mAxisRMInv), pExpected["axisinv"], kTolerance));
    EXPECT_TRUE(AreNear(RotationElements(pNode->mParentAxisRM), pExpected["paxis"], kTolerance));
    EXPECT_TRUE(AreNear(RotationElements(pNode->mParentAxisRMInv), pExpected["paxisinv"], kTolerance));
    EXPECT_TRUE(AreNear(pNode->mParentPositionV.mData, 3, pExpected["ppos"], kTolerance));
    EXPECT_TRUE(AreNear(pNode->mLT.mData, 3, pExpected["lt"], kTolerance));
    CompareAngles(pNode, pExpected["lr"]);
}

void CompareNodes(HKQexAsfNode pRoot, const KJson& pExpected)
{
    const std::vector<HKQexAsfNode> lNodes = PreOrder(pRoot);
    ASSERT_EQ(lNodes.size(), pExpected.size());
    for (size_t i = 0; i < lNodes.size(); ++i)
    {
        CompareNode(lNodes[i], pExpected[i]);
        const int lParent = pExpected[i]["parent"].get<int>();
        EXPECT_EQ(lNodes[i]->mParent, lParent < 0 ? nullptr : lNodes[static_cast<size_t>(lParent)]) << lNodes[i]->mName;
    }
}

void CompareCase(const KJson& pCase)
{
    const std::string lText = ReadFile(VectorsDir() / "asf" / "files" / pCase["file"].get<std::string>());
    KAsfReading       lReading;
    lReading.ReadText(lText, pCase["removeDummyNodes"], pCase["setRotatePivotOffet"], pCase["setPreRotation"]);
    EXPECT_EQ(lReading.mOk, pCase["ok"].get<bool>());
    CompareMessages(lReading.mMessages, pCase["messages"]);
    const KJson& lScene = pCase["scene"];
    EXPECT_EQ(std::string(lReading.mScene->mName), Bytes(lScene["name"]));
    EXPECT_TRUE(AreNear({lReading.mScene->mMassUnit, lReading.mScene->mLengthUnit, lReading.mScene->mAngleUnit},
                        KJson::array({lScene["mass"], lScene["length"], lScene["angle"]}), kTolerance));
    CompareNodes(lReading.mScene->mRoot, pCase["nodes"]);
    if (lReading.mOk)
    {
        EXPECT_EQ(WrittenText(lReading.mScene), Bytes(pCase["written"]));
    }
}

TEST(AsfReadVectors, EveryCaseAgrees)
{
    const std::vector<KJson> lCases = ReadJsonLines(VectorsDir() / "asf" / "expected.jsonl");
    ASSERT_GT(lCases.size(), 0u);
    for (const KJson& lCase : lCases)
    {
        SCOPED_TRACE(lCase["file"].get<std::string>());
        CompareCase(lCase);
    }
}

} // namespace

} // namespace qextest
