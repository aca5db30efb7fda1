#ifndef TESTS_QEXIOPLUGINS_GLTF_CONVERTEDMOTION_H
#define TESTS_QEXIOPLUGINS_GLTF_CONVERTEDMOTION_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/bvh/kqexfilebvh.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <tests/support/corpus.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

/// \file
/// Motions, written as BVH and glTF and read by other programs: their joints must be at the world positions that are known of them.

namespace qextest
{

constexpr double kPositionTolerance = 1e-3; ///< Fraction of the figure's height.

/// A motion, imported and written in both formats.
class KConvertedMotion
{
public:
    KConvertedMotion(const KCorpusPair& pPair, const KTempDir& pFolder)
        : mPair(pPair), mBvh(pFolder / (pPair.mName + ".bvh")), mGlb(pFolder / (pPair.mName + ".glb")), mScene(MakeScene())
    {
        qexsdk::KQexImportAcclaimOptions lOptions;
        EXPECT_TRUE(qexsdk::KQexImporterAcclaim::Import(mScene.get(), pPair.mAsf.c_str(), pPair.mAmc.c_str(), lOptions, mImported));
        mWorld = ReadWorld(pPair);
        mTake.mStack = mScene->FindAnimStack(mImported.mTakes[0].mName.c_str());
        EXPECT_TRUE(qexsdk::MakeSampling({mImported.mRootNode}, mTake.mStack, qexsdk::KQexSamplingRequest(), mTake.mSampling));
        WriteBvh();
        WriteGlb();
    }

    /// Frame of the written files, from 0.
    long long FrameOf(const KWorldFrame& pFrame) const { return pFrame.mNumber - mImported.mTakes[0].mInfo.mFirstFrame; }

    double FramesPerSecond() const
    {
        return static_cast<double>(qexsdk::KTime::kTicksPerSecond) / static_cast<double>(mTake.mSampling.mStep.Get());
    }

    double SecondsOf(const KWorldFrame& pFrame) const { return static_cast<double>(FrameOf(pFrame)) / FramesPerSecond(); }

    KCorpusPair              mPair;
    std::filesystem::path    mBvh;
    std::filesystem::path    mGlb;
    std::vector<KWorldFrame> mWorld; ///< Centimetres.

private:
    void WriteBvh()
    {
        qexsdk::KQexBvhWriteOptions lOptions;
        qexsdk::KQexFileBvh         lFile;
        lOptions.mStack = mTake.mStack;
        lOptions.mSampling = mTake.mSampling;
        EXPECT_TRUE(lFile.OpenWrite(mBvh.c_str()) && lFile.Write({mImported.mRootNode}, lOptions) && lFile.Close());
    }

    void WriteGlb()
    {
        qexsdk::KQexGltfWriteOptions lOptions;
        qexsdk::KQexFileGltf         lFile;
        lOptions.mTakes.push_back(mTake);
        EXPECT_TRUE(lFile.Write(mGlb.string(), {mImported.mRootNode}, lOptions));
    }

    KScenePtr                       mScene;
    qexsdk::KQexImportAcclaimResult mImported;
    qexsdk::KQexGltfTake            mTake;
};

/// The largest distance between a bone's start and its expected position, as a fraction of the figure's height. \p pFactor converts
/// \p pPositions to centimetres. Fails for a missing bone.
inline double LargestDistance(const KWorldFrame& pFrame, const KJointPositions& pPositions, double pFactor)
{
    double lLargest = 0.0;
    for (const auto& [lName, lStart] : pFrame.mStarts)
    {
        const auto lFound = pPositions.find(lName);
        if (lFound == pPositions.end())
        {
            ADD_FAILURE() << lName << " is missing";
            continue;
        }
        const KPoint lPosition{lFound->second.mX * pFactor, lFound->second.mY * pFactor, lFound->second.mZ * pFactor};
        const double lDistance = Distance(lPosition, lStart) / pFrame.mHeight;
        EXPECT_LT(lDistance, kPositionTolerance) << lName << " in frame " << pFrame.mNumber;
        lLargest = std::max(lLargest, lDistance);
    }
    return lLargest;
}

inline void ReportDistance(const std::string& pWhat, double pDistance)
{
    std::ostringstream lText;
    lText << pDistance;
    testing::Test::RecordProperty(pWhat + "_largest_distance_by_height", lText.str());
    std::cout << pWhat << ": largest distance over height " << lText.str() << '\n';
}

} // namespace qextest

#endif
