#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/amc/kqexamcwriter.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kAngleNoise = 1e-5;  ///< Degrees by which single-precision curves of half a turn are off.
constexpr double kLengthNoise = 2e-7; ///< Part of a length by which places are off: single precision, three times over by way of glTF.
constexpr int    kFewestDecimals = 2; ///< Even in gimbal lock angles keep these.
constexpr int    kMostDecimals = 6;

/// Digits behind the point that are above twice the noise.
int DecimalsFor(double pNoise)
{
    int    lDecimals = kMostDecimals;
    double lStep = 1e-6;
    while (lDecimals > kFewestDecimals && lStep < 4.0 * pNoise)
    {
        lStep *= 10.0;
        --lDecimals;
    }
    return lDecimals;
}

/// Decimals of a bone's angles, of which the largest is \p pTurned. Close to gimbal lock, where a pair of angles is known worse than the
/// fewest decimals tell, the angles are changed to others for the same rotation of which only one is.
int AngleDecimals(const KQexDofSolver& pSolver, double* pAngles, double pTurned)
{
    constexpr double kWidestStep = 1.0; // Wider ones would show as jumps between frames.
    const double     lNoise = kAngleNoise * pTurned / 180.0;
    const int        lMost = DecimalsFor(lNoise);
    if (lMost == DecimalsFor(lNoise * pSolver.GetGainBound(pAngles)))
    {
        return lMost;
    }
    const double lOutside = lNoise * pSolver.GetGain(pAngles);
    double       lStep = 0.01;
    if (lStep >= 4.0 * lOutside)
    {
        return DecimalsFor(lOutside);
    }
    while (lStep < 4.0 * lOutside && lStep < kWidestStep)
    {
        lStep *= 10.0;
    }
    pSolver.RoundInLock(pAngles, lStep);
    return lMost;
}

} // namespace

void KQexAmcWriter::FormatBone(const KQexAmcWriteBone& pBone, const double* pValues, std::string& pText) const
{
    const KQexAsfNode& lNode = *pBone.mBone;
    char               lLine[sizeof(lNode.mName) + 6 * (1 + kNumberBufferSize) + 1];
    double             lAngles[6];
    double             lPlace = pBone.mFit.GetRestLength() * mToFile;
    double             lTurned = 180.0;
    GatherAngles(lNode, pValues, lAngles);
    for (int i = 0; i < lNode.mOrderCount; ++i)
    {
        (lNode.mOrderBuf[i] <= 2 ? lPlace : lTurned) = std::max(std::fabs(pValues[i]), lNode.mOrderBuf[i] <= 2 ? lPlace : lTurned);
    }
    const int     lLengthDecimals = DecimalsFor(kLengthNoise * lPlace);
    const int     lAngleDecimals = AngleDecimals(pBone.mFit.GetSolver(), lAngles, lTurned);
    const double* lAngle = lAngles;
    char*         lEnd = std::copy(lNode.mName, lNode.mName + pBone.mNameLength, lLine);
    auto          lLength = pBone.mLengthPlaces.begin();
    int           lOnLine = 0;
    for (int i = 0; i < lNode.mOrderCount; ++i, ++lOnLine)
    {
        for (; lLength != pBone.mLengthPlaces.end() && *lLength == lOnLine; ++lLength, ++lOnLine)
        {
            pText.append(lLine, static_cast<size_t>(lEnd - lLine)).append(" 0");
            lEnd = lLine;
        }
        *lEnd++ = ' ';
        lEnd = lNode.mOrderBuf[i] <= 2 ? KNumberPrintFixed(lEnd, lEnd + kNumberBufferSize, pValues[i], lLengthDecimals)
                                       : KNumberPrintFixed(lEnd, lEnd + kNumberBufferSize, *lAngle++, lAngleDecimals);
    }
    pText.append(lLine, static_cast<size_t>(lEnd - lLine));
    for (; lLength != pBone.mLengthPlaces.end(); ++lLength)
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
        if (lBone.mBone->mOrderCount > 0 || !lBone.mLengthPlaces.empty())
        {
            FormatBone(lBone, pValues + lBone.mValue, pText);
        }
    }
}

void KQexAmcWriter::WriteHeader()
{
    if (!mOptions.mAsfName.empty())
    {
        mFile.Print(0, "#!OML:ASF %s\n", mOptions.mAsfName.c_str());
    }
    mFile.Print(0, ":FULLY-SPECIFIED\n:DEGREES\n");
    if (mOptions.mTellRate)
    {
        mFile.Print(0, ":SAMPLES-PER-SECOND %.10g\n", 705600000.0 / static_cast<double>(mOptions.mSampling.mStep.Get()));
    }
}

bool KQexAmcWriter::WriteFrames()
{
    const KQexFrameRun lRun = qexsdk::WriteFrames(*this, mOptions.mSampling, mValueCount, mThreads, mFile.GetOutput(), mOptions.mProgress);
    if (lRun == KQexFrameRun::eOUT_OF_MEMORY)
    {
        mFile.Error("Out of memory\n");
    }
    return lRun == KQexFrameRun::eDONE;
}

void KQexAmcWriter::TellLosses()
{
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        KQexAmcLoss lLoss;
        for (const std::unique_ptr<KQexAmcScratch>& lScratch : mScratch)
        {
            lLoss.mDegrees = std::max(lLoss.mDegrees, lScratch->mLosses[i].mDegrees);
            lLoss.mCentimetres = std::max(lLoss.mCentimetres, lScratch->mLosses[i].mCentimetres);
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
