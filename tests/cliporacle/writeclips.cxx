// Writes clips and what is computed from them as NumPy arrays, for cliporacle_test.py to compare with SciPy:
// writeclips FOLDER SKELETON.asf MOTION.amc

#include <qexclip/kqexclipquantities.h>
#include <qexclip/kqexclipsteps.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexnpy.h>

#include <kbaselib/kmath/keulertable.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace qexsdk;

namespace
{

constexpr int kJoints = 12;
constexpr int kFrames = 60;
constexpr int kSamples = 400;

using KRandom = std::mt19937;

void Require(bool pDone, const char* pWhat)
{
    if (!pDone)
    {
        std::fprintf(stderr, "writeclips: %s failed\n", pWhat);
        std::exit(1);
    }
}

double Any(KRandom& pRandom, double pLimit)
{
    return std::uniform_real_distribution<double>(-pLimit, pLimit)(pRandom);
}

/// Writes numbers of the shape frames × joints × columns.
void WriteArray(const std::filesystem::path& pPath, const std::vector<double>& pNumbers, size_t pJoints, size_t pColumns)
{
    const size_t lRows = pJoints * pColumns > 0 ? pNumbers.size() / (pJoints * pColumns) : 0;
    std::string  lBytes = KQexNpyStart({KQexArrayType::eFLOAT64, {lRows, pJoints, pColumns}});
    KQexAppendItems(KQexArrayType::eFLOAT64, pNumbers.data(), pNumbers.size(), lBytes);
    std::ofstream lFile(pPath, std::ios::binary);
    lFile << lBytes;
    Require(lFile.flush().good(), "writing an array");
}

/// Writes everything about one clip into a folder.
class KClipWriter
{
public:
    KClipWriter(const std::filesystem::path& pFolder, const KQexClip& pClip)
        : mFolder(pFolder), mClip(pClip), mJoints(static_cast<size_t>(pClip.GetJointCount())), mFrames(pClip.GetFrameCount())
    {
        std::filesystem::create_directories(mFolder);
    }

    void Write(KRandom& pRandom) const
    {
        const std::vector<int>& lParents = mClip.GetData().mParents;
        WriteArray(mFolder / "parents.npy", std::vector<double>(lParents.begin(), lParents.end()), mJoints, 1);
        WriteArray(mFolder / "step.npy", {mClip.GetData().mSampling.mStep.GetSeconds()}, 1, 1);
        WritePoses("frame", mClip, FrameTimes());
        WriteSamples(pRandom);
        WriteResampled();
        WriteRotations();
        WritePlaces();
    }

private:
    std::vector<double> FrameTimes() const
    {
        std::vector<double> lTimes;
        for (long long lFrame = 0; lFrame < mFrames; ++lFrame)
        {
            lTimes.push_back(static_cast<double>(lFrame) * mClip.GetData().mSampling.mStep.GetSeconds());
        }
        return lTimes;
    }

    /// Poses at times of which the integers among \p pFrames are frames.
    void WritePoses(const std::string& pName, const KQexClip& pClip, const std::vector<double>& pTimes) const
    {
        std::vector<double> lRotations;
        std::vector<double> lTranslations;
        std::vector<double> lScalings;
        KQexPose            lPose(mJoints);
        for (const double lTime : pTimes)
        {
            Require(pClip.Sample(lTime, lPose), "sampling");
            for (const KQexJointTransform& lJoint : lPose)
            {
                lRotations.insert(lRotations.end(), lJoint.mRotation, lJoint.mRotation + 4);
                lTranslations.insert(lTranslations.end(), lJoint.mTranslation, lJoint.mTranslation + 3);
                lScalings.insert(lScalings.end(), lJoint.mScaling, lJoint.mScaling + 3);
            }
        }
        WriteArray(mFolder / (pName + "_times.npy"), pTimes, 1, 1);
        WriteArray(mFolder / (pName + "_rotations.npy"), lRotations, mJoints, 4);
        WriteArray(mFolder / (pName + "_translations.npy"), lTranslations, mJoints, 3);
        WriteArray(mFolder / (pName + "_scalings.npy"), lScalings, mJoints, 3);
    }

    void WriteSamples(KRandom& pRandom) const
    {
        std::vector<double> lTimes;
        for (int i = 0; i < kSamples; ++i)
        {
            lTimes.push_back(0.5 * mClip.GetDuration() + Any(pRandom, 0.55 * mClip.GetDuration())); // Some beyond the ends.
        }
        WritePoses("sample", mClip, lTimes);
    }

    void WriteResampled() const
    {
        KQexClip lClip;
        Require(KQexClipResample(mClip, 47.0, lClip), "resampling");
        std::vector<double> lTimes;
        for (long long lFrame = 0; lFrame < lClip.GetFrameCount(); ++lFrame)
        {
            lTimes.push_back(static_cast<double>(lFrame) * lClip.GetData().mSampling.mStep.GetSeconds());
        }
        WritePoses("resampled", lClip, lTimes);
    }

    void WriteRotations(KQexRotationForm pForm, int pOrder, const std::string& pName) const
    {
        const int           lSize = KQexRotationSize(pForm);
        std::vector<double> lNumbers(static_cast<size_t>(mFrames) * mJoints * static_cast<size_t>(lSize));
        for (const KQexSpace lSpace : {KQexSpace::eLOCAL, KQexSpace::eWORLD})
        {
            const std::string lFile = (lSpace == KQexSpace::eLOCAL ? "local_" : "world_") + pName + ".npy";
            Require(KQexGetRotations(mClip, lSpace, pForm, pOrder, 0, mFrames, lNumbers.data()), "rotations");
            WriteArray(mFolder / lFile, lNumbers, mJoints, static_cast<size_t>(lSize));
        }
    }

    void WriteRotations() const
    {
        WriteRotations(KQexRotationForm::eQUATERNION, 0, "quaternion");
        WriteRotations(KQexRotationForm::eMATRIX, 0, "matrix");
        WriteRotations(KQexRotationForm::eSIX, 0, "six");
        WriteRotations(KQexRotationForm::eAXIS_ANGLE, 0, "axis_angle");
        for (int lOrder = 0; lOrder < KmEulerAxisCount; ++lOrder)
        {
            const int*  lAxes = KmEulerAxisRow(lOrder);
            std::string lName = "euler_";
            for (const int lAxis : {lAxes[0], lAxes[1], (lOrder & 1) != 0 ? lAxes[0] : lAxes[2]})
            {
                lName += "xyz"[lAxis];
            }
            WriteRotations(KQexRotationForm::eEULER, lOrder, lName);
        }
    }

    void WritePlaces() const
    {
        std::vector<double> lNumbers(static_cast<size_t>(mFrames) * mJoints * 3);
        Require(KQexGetPositions(mClip, 0, mFrames, lNumbers.data()), "positions");
        WriteArray(mFolder / "positions.npy", lNumbers, mJoints, 3);
        Require(KQexGetVelocities(mClip, 0, mFrames, lNumbers.data()), "velocities");
        WriteArray(mFolder / "velocities.npy", lNumbers, mJoints, 3);
        Require(KQexGetAngularVelocities(mClip, 0, mFrames, lNumbers.data()), "angular velocities");
        WriteArray(mFolder / "angular_velocities.npy", lNumbers, mJoints, 3);
    }

    std::filesystem::path mFolder;
    const KQexClip&       mClip;
    size_t                mJoints;
    long long             mFrames;
};

KQexQuaternion AnyRotation(KRandom& pRandom)
{
    KQexQuaternion                   lResult;
    std::normal_distribution<double> lNumber;
    for (double& lEach : lResult.mData)
    {
        lEach = lNumber(pRandom);
    }
    lResult.Normalize();
    return lResult;
}

/// A turn by \p pDegrees about any axis.
KQexQuaternion Turn(KRandom& pRandom, double pDegrees)
{
    const KQexQuaternion lAxes = AnyRotation(pRandom);
    return lAxes * KQexQuaternion::About(0, pDegrees) * lAxes.Inverse();
}

/// The rotation of joint \p pJoint after \p pLast, its rotation in the frame before.
using KNext = std::function<KQexQuaternion(KRandom& pRandom, int pJoint, const KQexQuaternion& pLast)>;

KQexQuaternion Negative(KQexQuaternion pRotation)
{
    for (double& lNumber : pRotation.mData)
    {
        lNumber = -lNumber;
    }
    return pRotation;
}

/// About the order's axes, the middle angle within millionths to hundredths of a degree of gimbal lock, or on it.
KQexQuaternion NearLock(KRandom& pRandom, int pOrder)
{
    constexpr double kDistances[] = {0.0, 1e-6, 1e-4, 1e-2};
    const int*       lAxes = KmEulerAxisRow(pOrder);
    const bool       lRepeats = (pOrder & 1) != 0;
    const double     lLock = (pRandom() % 2 == 0 ? -1.0 : 1.0) * (lRepeats ? 180.0 * static_cast<double>(pRandom() % 2) : 90.0);
    const double     lMiddle = lLock + kDistances[pRandom() % 4];
    return KQexQuaternion::About(lAxes[lRepeats ? 0 : 2], Any(pRandom, 180.0)) * KQexQuaternion::About(lAxes[1], lMiddle) *
           KQexQuaternion::About(lAxes[0], Any(pRandom, 180.0));
}

struct KKind
{
    const char* mName;
    int         mFrames;
    bool        mIsScaled;
    KNext       mNext;
};

std::vector<KKind> Kinds()
{
    const auto lAnything = [](KRandom& pRandom, int, const KQexQuaternion&)
    {
        return AnyRotation(pRandom);
    };
    const auto lSmooth = [](KRandom& pRandom, int, const KQexQuaternion& pLast)
    {
        return Turn(pRandom, Any(pRandom, 4.0)) * pLast;
    };
    const auto lHalfTurns = [](KRandom& pRandom, int pJoint, const KQexQuaternion& pLast)
    {
        constexpr double kNear[] = {0.0, 1e-5, 1e-3, 0.1};
        return Turn(pRandom, 180.0 - kNear[pJoint % 4]) * pLast;
    };
    const auto lFlips = [](KRandom& pRandom, int, const KQexQuaternion& pLast)
    {
        const auto lWhat = pRandom() % 3;
        return lWhat == 0 ? pLast : lWhat == 1 ? Negative(pLast) : Negative(Turn(pRandom, Any(pRandom, 90.0)) * pLast);
    };
    const auto lLocks = [](KRandom& pRandom, int pJoint, const KQexQuaternion&)
    {
        return NearLock(pRandom, pJoint);
    };
    const auto lTiny = [](KRandom& pRandom, int pJoint, const KQexQuaternion&)
    {
        return Turn(pRandom, std::pow(10.0, -pJoint));
    };
    return {{"anything", kFrames, false, lAnything},   {"scaled", kFrames, true, lAnything}, {"smooth", 10 * kFrames, false, lSmooth},
            {"halfturns", kFrames, false, lHalfTurns}, {"flips", kFrames, false, lFlips},    {"locks", 5 * kFrames, false, lLocks},
            {"tiny", kFrames, false, lTiny},           {"still", 1, false, lAnything}};
}

void AppendNumbers(KRandom& pRandom, double pMiddle, double pWidth, std::vector<float>& pNumbers)
{
    for (int i = 0; i < 3; ++i)
    {
        pNumbers.push_back(static_cast<float>(pMiddle + Any(pRandom, pWidth)));
    }
}

/// Joints in a random tree, of which every third moves.
KQexClipData MakeJoints(KRandom& pRandom, const KKind& pKind)
{
    KQexClipData lData;
    lData.mSampling = KQexSampling{KTime(0), KTime(KTime::kTicksPerSecond * 1001 / 30000), pKind.mFrames};
    for (int lJoint = 0; lJoint < kJoints; ++lJoint)
    {
        KQexJointTransform lRest;
        for (float& lNumber : lRest.mTranslation)
        {
            lNumber = static_cast<float>(Any(pRandom, 20.0));
        }
        lData.mNames.push_back("joint" + std::to_string(lJoint));
        lData.mParents.push_back(lJoint == 0 ? -1 : static_cast<int>(pRandom() % static_cast<unsigned int>(lJoint)));
        lData.mRest.push_back(lRest);
        if (lJoint % 3 == 0)
        {
            lData.mMovingJoints.push_back(lJoint);
        }
        if (pKind.mIsScaled && lJoint % 4 == 1)
        {
            lData.mScaledJoints.push_back(lJoint);
        }
    }
    return lData;
}

void MakeClip(KRandom& pRandom, const KKind& pKind, KQexClip& pClip)
{
    KQexClipData                lData = MakeJoints(pRandom, pKind);
    std::vector<KQexQuaternion> lRotations(kJoints);
    for (int lFrame = 0; lFrame < pKind.mFrames; ++lFrame)
    {
        for (int lJoint = 0; lJoint < kJoints; ++lJoint)
        {
            KQexQuaternion& lRotation = lRotations[static_cast<size_t>(lJoint)];
            lRotation = pKind.mNext(pRandom, lJoint, lFrame == 0 ? AnyRotation(pRandom) : lRotation);
            for (const int i : {3, 0, 1, 2})
            {
                lData.mRotations.push_back(static_cast<float>(lRotation.mData[i]));
            }
        }
        for (size_t i = 0; i < lData.mMovingJoints.size(); ++i)
        {
            AppendNumbers(pRandom, 0.0, 20.0, lData.mTranslations);
        }
        for (size_t i = 0; i < lData.mScaledJoints.size(); ++i)
        {
            AppendNumbers(pRandom, 1.2, 0.6, lData.mScalings);
        }
    }
    Require(KQexClip::FromArrays(std::move(lData), pClip), pKind.mName);
}

void LoadClip(const char* pAsf, const char* pAmc, KQexClip& pClip)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    KQexSampling     lSampling;
    Require(lFigure.Load({pAsf, pAmc}, KQexFigureOptions(), lReport), "loading");
    const KQexFigureTake& lTake = lFigure.GetTakes().front();
    Require(MakeSampling(lFigure.GetRoots(), lTake.mStack, KQexSamplingRequest(), lSampling), "choosing frames");
    Require(lFigure.MakeClip(&lTake, lSampling, KQexClipOptions(), pClip), "making a clip");
}

} // namespace

int main(int pCount, char** pArguments)
{
    if (pCount != 4)
    {
        std::fprintf(stderr, "usage: writeclips FOLDER SKELETON.asf MOTION.amc\n");
        return 2;
    }
    const std::filesystem::path lFolder = pArguments[1];
    KRandom                     lRandom(20);
    for (const KKind& lKind : Kinds())
    {
        KQexClip lClip;
        MakeClip(lRandom, lKind, lClip);
        KClipWriter(lFolder / lKind.mName, lClip).Write(lRandom);
    }
    KQexClip lClip;
    LoadClip(pArguments[2], pArguments[3], lClip);
    KClipWriter(lFolder / "motion", lClip).Write(lRandom);
    return 0;
}
