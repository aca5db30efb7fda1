#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/amc/kqexamcheader.h>
#include <qexioplugins/acclaim/amc/kqexamcwriter.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kAngleNoise = 1e-5;  ///< Error of a single-precision angle of 180 degrees, in degrees.
constexpr double kLengthNoise = 2e-7; ///< Relative error of positions: three roundings to single precision on the way through glTF.
constexpr int    kMinDecimals = 2;    ///< Angles keep these even in gimbal lock.
constexpr int    kMaxDecimals = 6;

/// The most decimals whose last digit is worth at least four times the noise.
int DecimalsFor(double pNoise)
{
    int    lDecimals = kMaxDecimals;
    double lStep = 1e-6;
    while (lDecimals > kMinDecimals && lStep < 4.0 * pNoise)
    {
        lStep *= 10.0;
        --lDecimals;
    }
    return lDecimals;
}

/// Decimals of a bone's angles, the largest of which is \p pLargest degrees. Close to gimbal lock the first and the third
/// angle may be too imprecise for kMinDecimals; the first is then rounded to a coarse step, and the third compensates.
int AngleDecimals(const KQexDofSolver& pSolver, double* pAngles, double pLargest)
{
    constexpr double kMaxStep = 1.0; // Larger ones would be visible as jumps between frames.
    const double     lNoise = kAngleNoise * pLargest / 180.0;
    const int        lMaxDecimals = DecimalsFor(lNoise);
    if (lMaxDecimals == DecimalsFor(lNoise * pSolver.GetGainBound(pAngles)))
    {
        return lMaxDecimals;
    }
    const double lAmplifiedNoise = lNoise * pSolver.GetGain(pAngles);
    double       lStep = 0.01;
    if (lStep >= 4.0 * lAmplifiedNoise)
    {
        return DecimalsFor(lAmplifiedNoise);
    }
    while (lStep < 4.0 * lAmplifiedNoise && lStep < kMaxStep)
    {
        lStep *= 10.0;
    }
    pSolver.RoundInLock(pAngles, lStep);
    return lMaxDecimals;
}

} // namespace

void KQexAmcWriter::FormatBone(const KQexAmcWriteBone& pBone, const double* pValues, std::string& pText) const
{
    const KQexAsfNode& lNode = *pBone.mBone;
    char               lLine[sizeof(lNode.mName) + 6 * (1 + kNumberBufferSize) + 1];
    double             lAngles[6];
    double             lLargestLength = pBone.mFit.GetRestLength() * mToFile;
    double             lLargestAngle = 180.0;
    GatherAngles(lNode, pValues, lAngles);
    for (int i = 0; i < lNode.mOrderCount; ++i)
    {
        (lNode.mOrderBuf[i] <= 2 ? lLargestLength : lLargestAngle) =
            std::max(std::fabs(pValues[i]), lNode.mOrderBuf[i] <= 2 ? lLargestLength : lLargestAngle);
    }
    const int     lLengthDecimals = DecimalsFor(kLengthNoise * lLargestLength);
    const int     lAngleDecimals = AngleDecimals(pBone.mFit.GetSolver(), lAngles, lLargestAngle);
    const double* lAngle = lAngles;
    char*         lEnd = std::copy(lNode.mName, lNode.mName + pBone.mNameLength, lLine);
    auto          lLength = pBone.mLengthIndices.begin();
    int           lIndex = 0;
    for (int i = 0; i < lNode.mOrderCount; ++i, ++lIndex)
    {
        for (; lLength != pBone.mLengthIndices.end() && *lLength == lIndex; ++lLength, ++lIndex)
        {
            pText.append(lLine, static_cast<size_t>(lEnd - lLine)).append(" 0");
            lEnd = lLine;
        }
        *lEnd++ = ' ';
        lEnd = lNode.mOrderBuf[i] <= 2 ? KNumberPrintFixed(lEnd, lEnd + kNumberBufferSize, pValues[i], lLengthDecimals)
                                       : KNumberPrintFixed(lEnd, lEnd + kNumberBufferSize, *lAngle++, lAngleDecimals);
    }
    pText.append(lLine, static_cast<size_t>(lEnd - lLine));
    for (; lLength != pBone.mLengthIndices.end(); ++lLength)
    {
        pText.append(" 0");
    }
    pText += '\n';
}

void KQexAmcWriter::Format(long long pFrame, const double* pValues, std::string& pText) const
{
    pText += std::to_string(pFrame + 1);
    pText += '\n';
    for (const KQexAmcWriteBone& lBone : mBones)
    {
        if (lBone.mBone->mOrderCount > 0 || !lBone.mLengthIndices.empty())
        {
            FormatBone(lBone, pValues + lBone.mFirstValue, pText);
        }
    }
}

void KQexAmcWriter::WriteHeader()
{
    KQexAmcHeader lHeader;
    lHeader.mAsfFile = mOptions.mAsfName;
    lHeader.mCommentRate = static_cast<double>(KTime::kTicksPerSecond) / static_cast<double>(mOptions.mSampling.mStep.Get());
    lHeader.mSamplesPerSecond = mOptions.mWriteRate ? lHeader.mCommentRate : 0.0;
    lHeader.mAngle = eAMC_ANGLE_DEGREES;
    mFile.Print(0, "%s", AmcHeaderText(lHeader).c_str());
}

bool KQexAmcWriter::Write(const KQexFrameBlock& pBlock)
{
    return mFile.GetOutput().Write(pBlock.mText.data(), pBlock.mText.size());
}

void KQexAmcWriter::ReportLosses()
{
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        KQexAmcLoss lLoss;
        for (const KQexAmcScratch& lScratch : mScratch)
        {
            lLoss.mDegrees = std::max(lLoss.mDegrees, lScratch.mLosses[i].mDegrees);
            lLoss.mCentimetres = std::max(lLoss.mCentimetres, lScratch.mLosses[i].mCentimetres);
        }
        if (lLoss.mDegrees > 0.0 && lLoss.mCentimetres > 0.0)
        {
            mFile.Warning("Motion that the DOFs can't express (%s): up to %.3g degrees and %.3g cm\n", mBones[i].mBone->mName,
                          lLoss.mDegrees, lLoss.mCentimetres);
        }
        else if (lLoss.mDegrees > 0.0)
        {
            mFile.Warning("Motion that the DOFs can't express (%s): up to %.3g degrees\n", mBones[i].mBone->mName, lLoss.mDegrees);
        }
        else if (lLoss.mCentimetres > 0.0)
        {
            mFile.Warning("Motion that the DOFs can't express (%s): up to %.3g cm\n", mBones[i].mBone->mName, lLoss.mCentimetres);
        }
    }
}

} // namespace qexsdk
