#ifndef TESTS_KBASELIB_KMATH_ROTATIONS_H
#define TESTS_KBASELIB_KMATH_ROTATIONS_H

#include <kbaselib/kmath/kmath.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

/// \file
/// Shared by the tests of the math layer: random rotations, and matrices as lists of numbers.

namespace qextest
{

/// Random cases per test, and the tolerance for results computed in another way.
inline constexpr int    kRandomCases = 10000;
inline constexpr double kRotationTolerance = 1e-12;

/// Random Euler angles from a fixed seed.
class KRandomAngles
{
public:
    explicit KRandomAngles(unsigned int pSeed) : mRandom(pSeed) {}

    /// An angle in degrees, -180 to 180; one in eight is a multiple of 90, the edge case of the formulas.
    double Next()
    {
        if (mRandom() % 8 == 0)
        {
            return 90.0 * (static_cast<double>(mRandom() % 5) - 2.0);
        }
        return std::uniform_real_distribution<double>(-180, 180)(mRandom);
    }

    /// Three angles.
    void Next(double* pAngles)
    {
        pAngles[0] = Next();
        pAngles[1] = Next();
        pAngles[2] = Next();
    }

    /// Sets the 3×3 part to a random rotation.
    void NextRotation(double (*pM)[4])
    {
        double lAngles[3];
        Next(lAngles);
        qexsdk::KmVXYZtoR(pM, lAngles);
    }

private:
    std::mt19937_64 mRandom;
};

/// Fills a matrix with 100, 101 … 115 row by row, so that a test sees what was written.
inline void FillSequence(double (*pM)[4])
{
    for (int lIndex = 0; lIndex < 16; ++lIndex)
    {
        pM[lIndex / 4][lIndex % 4] = 100.0 + lIndex;
    }
}

/// Copies all sixteen numbers.
inline void Copy(double (*pTo)[4], const double (*pFrom)[4])
{
    for (int lRow = 0; lRow < 4; ++lRow)
    {
        std::copy_n(pFrom[lRow], 4, pTo[lRow]);
    }
}

/// The sixteen numbers, row by row.
inline std::vector<double> Sixteen(const double (*pM)[4])
{
    std::vector<double> lSixteen;
    for (int lRow = 0; lRow < 4; ++lRow)
    {
        lSixteen.insert(lSixteen.end(), pM[lRow], pM[lRow] + 4);
    }
    return lSixteen;
}

/// The 3×3 part, row by row.
inline std::vector<double> Nine(const double (*pM)[4])
{
    std::vector<double> lNine;
    for (int lRow = 0; lRow < 3; ++lRow)
    {
        lNine.insert(lNine.end(), pM[lRow], pM[lRow] + 3);
    }
    return lNine;
}

/// Three components.
inline std::vector<double> Triple(const double* pV)
{
    return std::vector<double>(pV, pV + 3);
}

/// The largest difference between two rotations, element by element.
inline double LargestDifference(const double (*pA)[4], const double (*pB)[4])
{
    double lLargest = 0;
    for (int lRow = 0; lRow < 3; ++lRow)
    {
        for (int lColumn = 0; lColumn < 3; ++lColumn)
        {
            lLargest = std::fmax(lLargest, std::fabs(pA[lRow][lColumn] - pB[lRow][lColumn]));
        }
    }
    return lLargest;
}

} // namespace qextest

#endif
