#ifndef TESTS_QEXSCENE_LOCALMATRIX_H
#define TESTS_QEXSCENE_LOCALMATRIX_H

#include <qexscene/kqexscene.h>

#include <random>

namespace qextest
{

/// The local transform by the formula of KQexNode, computed with Imath from the node's property values (not its curves) and
/// pivots.
qexsdk::KQexMatrix LocalMatrix(const qexsdk::KQexNode& pNode);

/// The same for other local values.
qexsdk::KQexMatrix LocalMatrix(const qexsdk::KQexNode& pNode, const qexsdk::KQexVector4& pTranslation, const qexsdk::KQexVector4& pRotation,
                               const qexsdk::KQexVector4& pScaling);

/// \p pLeft · \p pRight, computed with Imath.
qexsdk::KQexMatrix Product(const qexsdk::KQexMatrix& pLeft, const qexsdk::KQexMatrix& pRight);

/// Each of the 16 numbers within \p pTolerance, relative to the larger of 1 and the expected one.
void ExpectNear(const qexsdk::KQexMatrix& pActual, const qexsdk::KQexMatrix& pExpected, double pTolerance);

/// Sets random values on nodes: pivots, rotation order and local values, some of them left at their defaults.
class KRandomNode
{
public:
    explicit KRandomNode(unsigned int pSeed) : mRandom(pSeed) {}

    void   Set(qexsdk::KQexNode& pNode);
    double Between(double pMin, double pMax) { return std::uniform_real_distribution<double>(pMin, pMax)(mRandom); }
    int    Below(int pCount) { return std::uniform_int_distribution<int>(0, pCount - 1)(mRandom); }

private:
    /// Components from -\p pMax to \p pMax; all zero in one of three cases.
    qexsdk::KQexVector4 Vector(double pMax);

    std::mt19937 mRandom;
};

} // namespace qextest

#endif
