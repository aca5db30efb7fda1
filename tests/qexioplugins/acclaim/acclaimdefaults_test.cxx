#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <gtest/gtest.h>

// Default options, and results before anything is filled in.

using namespace qexsdk;

namespace
{

TEST(AcclaimDefaults, MotionFile)
{
    const KQexAmcHeader lHeader;
    EXPECT_EQ(lHeader.mSamplesPerSecond, 0.0);
    EXPECT_EQ(lHeader.mAngle, eAMC_ANGLE_SKELETON);
    EXPECT_FALSE(lHeader.mHasFrameRange);
    EXPECT_EQ(lHeader.mFrameRange[0], 0);
    EXPECT_EQ(lHeader.mFrameRange[1], 0);

    const KQexAmcReadOptions lRead;
    EXPECT_EQ(lRead.mSamplesPerSecond, 0.0);
    EXPECT_FALSE(lRead.mSetRotatePivotOffet || lRead.mSetPreRotation || lRead.mKeepGoodFrames || lRead.mFindMoreErrors);

    const KQexAmcInfo lInfo;
    EXPECT_EQ(lInfo.mFrameCount, 0);
    EXPECT_EQ(lInfo.mFirstFrame, 0);
    EXPECT_EQ(lInfo.mLowestFrame, 0);
    EXPECT_EQ(lInfo.mHighestFrame, 0);
    EXPECT_EQ(lInfo.mSamplesPerSecond, 0.0);
    EXPECT_EQ(lInfo.mRateSource, eAMC_RATE_DEFAULT);
    EXPECT_EQ(lInfo.mStart.Get(), 0);
    EXPECT_EQ(lInfo.mStop.Get(), 0);
    EXPECT_FALSE(lInfo.mCancelled);
    EXPECT_EQ(lInfo.mMatch.mInSkeleton + lInfo.mMatch.mInMotion + lInfo.mMatch.mMatched, 0U);
    EXPECT_TRUE(lInfo.mMatch.IsPlausible());

    const KQexAmcBone lBone;
    EXPECT_EQ(lBone.mFrame, -1);
    for (const double lValue : lBone.mValues)
    {
        EXPECT_EQ(lValue, 0.0);
    }
    const KQexAmcFrame lFrame;
    EXPECT_EQ(lFrame.mIndex, 0);
    EXPECT_EQ(lFrame.mNumber, 0);
    EXPECT_FALSE(lFrame.mLate);
    EXPECT_EQ(lFrame.mLengthFactor, 1.0);
    EXPECT_EQ(lFrame.mAngleFactor, 1.0);

    const KQexAmcWriteOptions lWrite;
    EXPECT_EQ(lWrite.mScale, 1.0);
    EXPECT_EQ(lWrite.mRestAlignment, eAMC_REST_FIND);
    EXPECT_FALSE(lWrite.mWriteRate);
    EXPECT_EQ(lWrite.mThreads, 0);
}

TEST(AcclaimDefaults, Importer)
{
    const KQexImportAcclaimOptions lOptions;
    EXPECT_FALSE(lOptions.mRemoveDummies);
    EXPECT_TRUE(lOptions.mSetLimits);
    EXPECT_EQ(lOptions.mSamplesPerSecond, 0.0);
    EXPECT_FALSE(lOptions.mUseConstantKeyReducer || lOptions.mKeepGoodFrames || lOptions.mAllowUnmatched || lOptions.mKeepAsfScene ||
                 lOptions.mVerbose);
    const KQexImportAcclaimResult lResult;
    EXPECT_FALSE(lResult.mOk || lResult.mCancelled);
    EXPECT_EQ(lResult.mRootNode, nullptr);
}

TEST(AcclaimDefaults, Exporter)
{
    const KQexExportAcclaimOptions lOptions;
    EXPECT_EQ(lOptions.mStack, nullptr);
    EXPECT_EQ(lOptions.mTranslations, eTRANSLATION_DOFS_MOVING);
    EXPECT_EQ(lOptions.mBaseScale, 1.0);
    EXPECT_FALSE(lOptions.mBasePoseFirstFrame || lOptions.mWriteRate || lOptions.mAllowUnmatched);
    EXPECT_EQ(lOptions.mPrepared, nullptr);
    EXPECT_TRUE(lOptions.mAdaptForFile);
    EXPECT_EQ(lOptions.mLengthUnit, 1.0);
    EXPECT_EQ(lOptions.mThreads, 0);
    const KQexExportAcclaimResult lResult;
    EXPECT_FALSE(lResult.mOk || lResult.mCancelled);
    EXPECT_EQ(lResult.mBones, 0);
}

} // namespace
