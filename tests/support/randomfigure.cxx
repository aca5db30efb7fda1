#include <tests/support/randomfigure.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <random>
#include <vector>

namespace qextest
{

namespace
{

constexpr double kPi = 3.141592653589793;

std::string Number(double pValue)
{
    char lText[64];
    std::snprintf(lText, sizeof lText, "%.6f", pValue);
    return lText;
}

/// Concatenates the parts. Unlike the operands of +, they are evaluated in order, so that the random numbers are the same with every
/// compiler.
std::string Join(std::initializer_list<std::string> pParts)
{
    std::string lText;
    for (const std::string& lPart : pParts)
    {
        lText += lPart;
    }
    return lText;
}

/// A bone's name, and its DOF words with their oscillations.
struct KMovingBone
{
    struct KOscillation
    {
        std::string mWord;
        double      mAmplitude = 0.0;
        double      mSpeed = 0.0;
        double      mPhase = 0.0;
    };

    std::string               mName;
    std::vector<KOscillation> mOscillations;
};

class KFigureMaker
{
public:
    explicit KFigureMaker(unsigned int pSeed) : mRandom(pSeed)
    {
        mIsRadians = Chance(0.3);
        mDegree = mIsRadians ? kPi / 180.0 : 1.0;
    }

    KRandomFigure Make(int pBones, int pFrames)
    {
        KRandomFigure lFigure;
        MakeHeader(lFigure);
        for (int i = 0; i < pBones; ++i)
        {
            MakeBone(lFigure, i);
        }
        MakeTree(lFigure, pBones);
        MakeMotion(lFigure, pFrames);
        return lFigure;
    }

private:
    double Between(double pFrom, double pTo) { return std::uniform_real_distribution<double>(pFrom, pTo)(mRandom); }
    bool   Chance(double pProbability) { return Between(0.0, 1.0) < pProbability; }
    size_t Below(size_t pCount) { return std::uniform_int_distribution<size_t>(0, pCount - 1)(mRandom); }

    std::string Vector(double pSize)
    {
        const std::string lX = Number(Between(-pSize, pSize));
        const std::string lY = Number(Between(-pSize, pSize));
        return lX + " " + lY + " " + Number(Between(-pSize, pSize));
    }

    std::vector<std::string> RandomSubset(std::vector<std::string> pWords, size_t pCount)
    {
        std::shuffle(pWords.begin(), pWords.end(), mRandom);
        pWords.resize(pCount);
        return pWords;
    }

    std::string AxisWord()
    {
        const char* lWords[] = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"};
        return lWords[Below(6)];
    }

    /// Adds an oscillation for each of the words of \p pName; returns the words as one row.
    std::string AddOscillations(const std::string& pName, const std::vector<std::string>& pWords, double pMaxTranslation)
    {
        KMovingBone lMoving{pName, {}};
        std::string lRow;
        for (const std::string& lWord : pWords)
        {
            const bool lIsTranslation = lWord[0] == 't' || lWord[0] == 'T';
            lMoving.mOscillations.push_back(
                {lWord, Between(0.0, lIsTranslation ? pMaxTranslation : 100.0 * mDegree), Between(0.1, 0.6), Between(0.0, 6.0)});
            lRow += " " + lWord;
        }
        mMoving.push_back(lMoving);
        return lRow;
    }

    void MakeHeader(KRandomFigure& pFigure)
    {
        const char* lUnits[] = {"0.45", "1", "2.54", "0.1"};
        pFigure.mIsRootRotated = Chance(0.5);
        pFigure.mAsf = Join({":version 1.10\n:name figure\n:units\n  mass 1.0\n  length ", lUnits[Below(4)], "\n  angle ",
                             mIsRadians ? "rad" : "deg", "\n:documentation\n  random\n:root\n  order",
                             AddOscillations("root", RandomSubset({"TX", "TY", "TZ", "RX", "RY", "RZ"}, 6), 20.0), "\n  axis ", AxisWord(),
                             "\n  position ", Chance(0.5) ? Vector(5.0) : "0 0 0", "\n  orientation ",
                             pFigure.mIsRootRotated ? Vector(90.0 * mDegree) : "0 0 0", "\n:bonedata\n"});
    }

    void MakeLimits(KRandomFigure& pFigure, const std::vector<std::string>& pWords)
    {
        std::string lPrefix = "    limits (";
        for (const std::string& lWord : pWords)
        {
            const double lUnit = lWord[0] == 'r' ? mDegree : 1.0;
            pFigure.mAsf += Join({lPrefix, Chance(0.3) ? "-inf" : Number(-Between(10.0, 180.0) * lUnit), " ",
                                  Chance(0.3) ? "inf" : Number(Between(10.0, 180.0) * lUnit), ")\n"});
            lPrefix = "      (";
        }
    }

    void MakeBone(KRandomFigure& pFigure, int pIndex)
    {
        const std::string        lName = "b" + std::to_string(pIndex);
        const size_t             lRotationCounts[] = {0, 1, 2, 3, 3, 3};
        std::vector<std::string> lWords = RandomSubset({"rx", "ry", "rz"}, lRotationCounts[Below(6)]);
        if (Chance(0.15))
        {
            const std::vector<std::string> lTranslations = RandomSubset({"tx", "ty", "tz"}, 1 + Below(3));
            lWords.insert(Chance(0.5) ? lWords.begin() : lWords.end(), lTranslations.begin(), lTranslations.end());
        }
        pFigure.mAsf +=
            Join({"  begin\n    id ", std::to_string(pIndex + 1), "\n    name ", lName, "\n    direction ", Vector(1.0), "\n    length ",
                  Number(Between(0.2, 8.0)), "\n    axis ", Chance(0.7) ? Vector(180.0 * mDegree) : "0 0 0", " ", AxisWord(), "\n"});
        if (!lWords.empty())
        {
            pFigure.mAsf += "    dof" + AddOscillations(lName, lWords, 1.0) + "\n";
            if (Chance(0.7))
            {
                MakeLimits(pFigure, lWords);
            }
        }
        pFigure.mAsf += "  end\n";
    }

    void MakeTree(KRandomFigure& pFigure, int pBones)
    {
        std::vector<std::string> lFamilies(static_cast<size_t>(pBones) + 1);
        const double             lRootChance = Between(0.0, 0.3);
        for (int i = 0; i < pBones; ++i)
        {
            const size_t lBone = static_cast<size_t>(i);
            const size_t lParent = i == 0 || Chance(lRootChance) ? 0 : Chance(0.6) ? lBone : 1 + Below(lBone);
            lFamilies[lParent] += " b" + std::to_string(i);
        }
        pFigure.mAsf += ":hierarchy\n  begin\n";
        for (size_t i = 0; i < lFamilies.size(); ++i)
        {
            if (!lFamilies[i].empty())
            {
                pFigure.mAsf += "    " + (i == 0 ? std::string("root") : "b" + std::to_string(i - 1)) + lFamilies[i] + "\n";
            }
        }
        pFigure.mAsf += "  end\n";
    }

    void MakeMotion(KRandomFigure& pFigure, int pFrames) const
    {
        pFigure.mAmc = std::string(":FULLY-SPECIFIED\n") + (mIsRadians ? ":RADIANS\n" : ":DEGREES\n");
        for (int lFrame = 0; lFrame < pFrames; ++lFrame)
        {
            pFigure.mAmc += std::to_string(lFrame + 1) + "\n";
            for (const KMovingBone& lMoving : mMoving)
            {
                pFigure.mAmc += lMoving.mName;
                for (const KMovingBone::KOscillation& lOscillation : lMoving.mOscillations)
                {
                    pFigure.mAmc += " " + Number(lOscillation.mAmplitude * std::sin(lOscillation.mPhase + lOscillation.mSpeed * lFrame));
                }
                pFigure.mAmc += "\n";
            }
        }
    }

    std::mt19937             mRandom;
    bool                     mIsRadians = false;
    double                   mDegree = 1.0; ///< One degree in the file's unit.
    std::vector<KMovingBone> mMoving;
};

} // namespace

KRandomFigure MakeRandomFigure(unsigned int pSeed, int pBones, int pFrames)
{
    return KFigureMaker(pSeed).Make(pBones, pFrames);
}

} // namespace qextest
