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

/// The parts in a row. They are made in this order, which those of a sum need not be: so chance falls alike with every compiler.
std::string Join(std::initializer_list<std::string> pParts)
{
    std::string lText;
    for (const std::string& lPart : pParts)
    {
        lText += lPart;
    }
    return lText;
}

/// A bone's name and its DOF words with the swing of each.
struct KMoving
{
    struct KSwing
    {
        std::string mWord;
        double      mSize = 0.0;
        double      mSpeed = 0.0;
        double      mPhase = 0.0;
    };

    std::string         mName;
    std::vector<KSwing> mSwings;
};

class KFigureMaker
{
public:
    explicit KFigureMaker(unsigned int pSeed) : mRandom(pSeed)
    {
        mIsRadians = Chance(0.3);
        mAngle = mIsRadians ? kPi / 180.0 : 1.0;
    }

    KRandomFigure Make(int pBones, int pFrames)
    {
        KRandomFigure lFigure;
        MakeHead(lFigure);
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
    bool   Chance(double pPart) { return Between(0.0, 1.0) < pPart; }
    size_t Below(size_t pCount) { return std::uniform_int_distribution<size_t>(0, pCount - 1)(mRandom); }

    std::string Vector(double pSize)
    {
        const std::string lX = Number(Between(-pSize, pSize));
        const std::string lY = Number(Between(-pSize, pSize));
        return lX + " " + lY + " " + Number(Between(-pSize, pSize));
    }

    std::vector<std::string> Some(std::vector<std::string> pWords, size_t pCount)
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

    /// Remembers how the words of \p pName swing; gives them back in a row.
    std::string Swing(const std::string& pName, const std::vector<std::string>& pWords, double pShift)
    {
        KMoving     lMoving{pName, {}};
        std::string lRow;
        for (const std::string& lWord : pWords)
        {
            const bool lIsShift = lWord[0] == 't' || lWord[0] == 'T';
            lMoving.mSwings.push_back({lWord, Between(0.0, lIsShift ? pShift : 100.0 * mAngle), Between(0.1, 0.6), Between(0.0, 6.0)});
            lRow += " " + lWord;
        }
        mMoving.push_back(lMoving);
        return lRow;
    }

    void MakeHead(KRandomFigure& pFigure)
    {
        const char* lUnits[] = {"0.45", "1", "2.54", "0.1"};
        pFigure.mIsRootTurned = Chance(0.5);
        pFigure.mAsf =
            Join({":version 1.10\n:name figure\n:units\n  mass 1.0\n  length ", lUnits[Below(4)], "\n  angle ", mIsRadians ? "rad" : "deg",
                  "\n:documentation\n  random\n:root\n  order", Swing("root", Some({"TX", "TY", "TZ", "RX", "RY", "RZ"}, 6), 20.0),
                  "\n  axis ", AxisWord(), "\n  position ", Chance(0.5) ? Vector(5.0) : "0 0 0", "\n  orientation ",
                  pFigure.mIsRootTurned ? Vector(90.0 * mAngle) : "0 0 0", "\n:bonedata\n"});
    }

    void MakeLimits(KRandomFigure& pFigure, const std::vector<std::string>& pWords)
    {
        std::string lBefore = "    limits (";
        for (const std::string& lWord : pWords)
        {
            const double lUnit = lWord[0] == 'r' ? mAngle : 1.0;
            pFigure.mAsf += Join({lBefore, Chance(0.3) ? "-inf" : Number(-Between(10.0, 180.0) * lUnit), " ",
                                  Chance(0.3) ? "inf" : Number(Between(10.0, 180.0) * lUnit), ")\n"});
            lBefore = "      (";
        }
    }

    void MakeBone(KRandomFigure& pFigure, int pIndex)
    {
        const std::string        lName = "b" + std::to_string(pIndex);
        const size_t             lTurns[] = {0, 1, 2, 3, 3, 3};
        std::vector<std::string> lWords = Some({"rx", "ry", "rz"}, lTurns[Below(6)]);
        if (Chance(0.15))
        {
            const std::vector<std::string> lShifts = Some({"tx", "ty", "tz"}, 1 + Below(3));
            lWords.insert(Chance(0.5) ? lWords.begin() : lWords.end(), lShifts.begin(), lShifts.end());
        }
        pFigure.mAsf +=
            Join({"  begin\n    id ", std::to_string(pIndex + 1), "\n    name ", lName, "\n    direction ", Vector(1.0), "\n    length ",
                  Number(Between(0.2, 8.0)), "\n    axis ", Chance(0.7) ? Vector(180.0 * mAngle) : "0 0 0", " ", AxisWord(), "\n"});
        if (!lWords.empty())
        {
            pFigure.mAsf += "    dof" + Swing(lName, lWords, 1.0) + "\n";
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
        const double             lFan = Between(0.0, 0.3);
        for (int i = 0; i < pBones; ++i)
        {
            const size_t lBone = static_cast<size_t>(i);
            const size_t lParent = i == 0 || Chance(lFan) ? 0 : Chance(0.6) ? lBone : 1 + Below(lBone);
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
            for (const KMoving& lMoving : mMoving)
            {
                pFigure.mAmc += lMoving.mName;
                for (const KMoving::KSwing& lSwing : lMoving.mSwings)
                {
                    pFigure.mAmc += " " + Number(lSwing.mSize * std::sin(lSwing.mPhase + lSwing.mSpeed * lFrame));
                }
                pFigure.mAmc += "\n";
            }
        }
    }

    std::mt19937         mRandom;
    bool                 mIsRadians = false;
    double               mAngle = 1.0; ///< A degree in the file's unit.
    std::vector<KMoving> mMoving;
};

} // namespace

KRandomFigure MakeRandomFigure(unsigned int pSeed, int pBones, int pFrames)
{
    return KFigureMaker(pSeed).Make(pBones, pFrames);
}

} // namespace qextest
