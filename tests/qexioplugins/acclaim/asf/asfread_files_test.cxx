#include <tests/qexioplugins/acclaim/asf/asftestsupport.h>
#include <tests/support/corpus.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

/// Whole skeletons, compared with a plain parser that shares no code with the library.

namespace qextest
{

using namespace qexsdk;
namespace fs = std::filesystem;

namespace
{

using KFilePoint = std::array<double, 3>;

/// A bone as the plain parser reads it.
struct KPlainBone
{
    KFilePoint  mDirection{};
    double      mLength = 0.0;
    size_t      mDofs = 0;
    std::string mParent = "root";
};

struct KPlainSkeleton
{
    double                            mUnit = 1.0;
    KFilePoint                        mRoot{};
    std::map<std::string, KPlainBone> mBones;

    /// End of a bone in the rest pose: the root position as in the file, plus the bone vectors in centimetres, which are global.
    KFilePoint EndOf(const std::string& pName) const
    {
        KFilePoint lEnd = mRoot;
        for (std::string lName = pName; lName != "root"; lName = mBones.at(lName).mParent)
        {
            const KPlainBone& lBone = mBones.at(lName);
            const double      lSize = std::sqrt(lBone.mDirection[0] * lBone.mDirection[0] + lBone.mDirection[1] * lBone.mDirection[1] +
                                                lBone.mDirection[2] * lBone.mDirection[2]);
            for (size_t i = 0; i < 3; ++i)
            {
                lEnd[i] += lBone.mDirection[i] / lSize * lBone.mLength * 2.54 / mUnit;
            }
        }
        return lEnd;
    }
};

std::vector<std::string> Words(std::string pLine)
{
    pLine = pLine.substr(0, pLine.find('#'));
    for (char& lCharacter : pLine)
    {
        if (lCharacter == '(' || lCharacter == ')' || lCharacter == ',')
        {
            lCharacter = ' ';
        }
    }
    std::istringstream       lStream(pLine);
    std::vector<std::string> lWords;
    for (std::string lWord; lStream >> lWord;)
    {
        lWords.push_back(lWord);
    }
    return lWords;
}

KFilePoint Point(const std::vector<std::string>& pWords)
{
    return {std::stod(pWords[1]), std::stod(pWords[2]), std::stod(pWords[3])};
}

KPlainSkeleton ReadPlainly(const std::string& pText)
{
    KPlainSkeleton     lSkeleton;
    KPlainBone         lBone;
    std::string        lSection;
    std::string        lName;
    std::istringstream lStream(pText);
    for (std::string lLine; std::getline(lStream, lLine);)
    {
        const std::vector<std::string> lWords = Words(lLine);
        if (lWords.empty())
        {
            continue;
        }
        const std::string& lFirst = lWords[0];
        if (lFirst[0] == ':')
        {
            lSection = lFirst;
        }
        else if (lSection == ":units" && lFirst == "length")
        {
            lSkeleton.mUnit = std::stod(lWords[1]);
        }
        else if (lSection == ":root" && lFirst == "position")
        {
            lSkeleton.mRoot = Point(lWords);
        }
        else if (lSection == ":hierarchy" && lFirst != "begin" && lFirst != "end")
        {
            for (size_t i = 1; i < lWords.size(); ++i)
            {
                lSkeleton.mBones.at(lWords[i]).mParent = lFirst;
            }
        }
        else if (lSection != ":bonedata")
        {
            continue;
        }
        else if (lFirst == "begin")
        {
            lBone = KPlainBone();
        }
        else if (lFirst == "name")
        {
            lName = lWords[1];
        }
        else if (lFirst == "direction")
        {
            lBone.mDirection = Point(lWords);
        }
        else if (lFirst == "length")
        {
            lBone.mLength = std::stod(lWords[1]);
        }
        else if (lFirst == "dof")
        {
            lBone.mDofs = lWords.size() - 1;
        }
        else if (lFirst == "end")
        {
            lSkeleton.mBones[lName] = lBone;
        }
    }
    return lSkeleton;
}

void Compare(const KPlainSkeleton& pExpected, const KAsfReading& pReading)
{
    const std::vector<HKQexAsfNode> lNodes = PreOrder(pReading.mScene->mRoot);
    ASSERT_EQ(lNodes.size(), pExpected.mBones.size() + 1);
    std::map<HKQexAsfNode, KFilePoint> lEnds;
    const double*                      lRoot = lNodes[0]->mPositionV.mData;
    lEnds[lNodes[0]] = {lRoot[0], lRoot[1], lRoot[2]};
    for (size_t i = 1; i < lNodes.size(); ++i)
    {
        HKQexAsfNode lNode = lNodes[i];
        SCOPED_TRACE(lNode->mName);
        ASSERT_EQ(pExpected.mBones.count(lNode->mName), 1u);
        EXPECT_EQ(lNode->mParent->mName, pExpected.mBones.at(lNode->mName).mParent);
        EXPECT_EQ(static_cast<size_t>(lNode->mOrderCount), pExpected.mBones.at(lNode->mName).mDofs);
        const KFilePoint lExpected = pExpected.EndOf(lNode->mName);
        for (size_t j = 0; j < 3; ++j)
        {
            lEnds[lNode][j] = lEnds[lNode->mParent][j] + lNode->mPositionV.mData[j];
            EXPECT_NEAR(lEnds[lNode][j], lExpected[j], 1e-9);
        }
    }
}

TEST(AsfReadFiles, MatchThePlainParser)
{
    for (const fs::path& lPath : CorpusFiles(".asf"))
    {
        SCOPED_TRACE(lPath);
        const std::string  lText = ReadFile(lPath);
        KAsfReading        lReading;
        KQexFileAcclaimAsf lFile(false);
        ASSERT_TRUE(lFile.OpenRead(lPath.c_str()));
        ASSERT_TRUE(lFile.Read(lReading.mScene, false, false, false));
        EXPECT_TRUE(lFile.GetMessages().empty());
        EXPECT_EQ(lFile.GetWarningCount() + lFile.GetErrorCount(), 0);
        Compare(ReadPlainly(lText), lReading);
    }
}

} // namespace

} // namespace qextest
