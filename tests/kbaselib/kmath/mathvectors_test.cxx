#include <kbaselib/kmath/kgeom.h>

#include <tests/kbaselib/kmath/rotations.h>
#include <tests/support/testfolders.h>
#include <tests/support/vectors.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace qexsdk
{
namespace
{

using namespace qextest;
using KValues = std::vector<double>;

/// The arguments of one call, by index.
class KCall
{
public:
    explicit KCall(const KJson& pOp) : mOp(pOp) {}

    double           Number(size_t pIndex) const { return mOp.at(pIndex).get<double>(); }
    int              Integer(size_t pIndex) const { return mOp.at(pIndex).get<int>(); }
    std::vector<int> Integers(size_t pIndex) const { return mOp.at(pIndex).get<std::vector<int>>(); }

    /// A vector. Its fourth component is the argument's or 1, depending on whether returning it runs the copy constructor.
    KgeTVector Vector(size_t pIndex) const
    {
        KgeTVector lV;
        Fill(lV.mData, pIndex);
        return lV;
    }
    /// Copies all numbers of the argument to \p pTo.
    void Fill(double* pTo, size_t pIndex) const
    {
        const KValues lValues = Numbers(mOp.at(pIndex));
        std::copy(lValues.begin(), lValues.end(), pTo);
    }
    KgeRVector Angles(size_t pIndex) const
    {
        KgeRVector lV;
        lV = Vector(pIndex).mData;
        return lV;
    }
    /// All sixteen numbers of a matrix.
    KgeRMatrix Matrix(size_t pIndex) const
    {
        KgeRMatrix lM;
        Fill(lM.mData[0], pIndex);
        return lM;
    }

private:
    const KJson& mOp;
};

KValues Four(const double* pV)
{
    return KValues(pV, pV + 4);
}

/// Runs \p pFunction on a matrix filled with 100, 101 … and returns its sixteen numbers.
template <typename TFunction>
KValues Filled(TFunction pFunction)
{
    double lM[4][4];
    FillSequence(lM);
    pFunction(lM);
    return Sixteen(lM);
}

template <typename TFunction>
KValues Three(TFunction pFunction)
{
    double lV[3];
    pFunction(lV);
    return Triple(lV);
}

void Append(KValues& pValues, const KValues& pMore)
{
    pValues.insert(pValues.end(), pMore.begin(), pMore.end());
}

KValues VectorOps(const KCall& pCall)
{
    const KgeTVector lA = pCall.Vector(2);
    const KgeTVector lB = pCall.Vector(3);
    KgeTVector       lOut;
    lOut.mData[3] = pCall.Number(1);
    KValues lValues;
    Append(lValues, Four(KgeSet(lOut, lA[0], lA[1], lA[2]).mData));
    Append(lValues, Four(KgeAdd(lOut, lA, lB).mData));
    Append(lValues, Four(KgeMult(lOut, lA, pCall.Number(4)).mData));
    Append(lValues, Four(KgeNorm(lOut, lA).mData));
    Append(lValues, Four(KgeSet(lOut, lA).mData));
    lValues.push_back(KgeLength(lA));
    return lValues;
}

KValues Rotations(const KCall& pCall)
{
    const KgeRVector lAngles = pCall.Angles(1);
    const int        lOrder = pCall.Integer(2);
    KgeRMatrix       lOrdered;
    KgeRMatrix       lXYZ;
    KgeRMatrix       lOut;
    KgeRVector       lBack;
    KgeSet(lOrdered, lAngles, lOrder);
    KgeSet(lXYZ, lAngles);
    KValues lValues = Nine(lOrdered.mData);
    Append(lValues, Nine(KgeInverse(lOut, lXYZ).mData));
    Append(lValues, Nine(KgeMult(lOut, lXYZ, lOrdered).mData));
    Append(lValues, Nine(lXYZ.mData));
    Append(lValues, Triple(KgeSetXYZ(lBack, lOrdered)));
    Append(lValues, Triple(KgeSet(lBack, lOrdered)));
    Append(lValues, Triple(KgeSet(lBack, lXYZ, lOrder)));
    return lValues;
}

KValues VectorCopy(const KCall& pCall)
{
    KgeTVector lFrom;
    pCall.Fill(lFrom.mData, 1);
    const KgeTVector lCopy(lFrom);
    return Four(lCopy.mData);
}

KValues VectorInit(const KCall& pCall)
{
    KgeTVector lV;
    pCall.Fill(lV.mData, 1);
    lV.Init();
    return Four(lV.mData);
}

KValues VectorAssign(const KCall& pCall)
{
    KgeTVector lTo;
    pCall.Fill(lTo.mData, 1);
    return Four((lTo = pCall.Vector(2)).mData);
}

KValues OrderToList(const KCall& pCall)
{
    std::vector<int> lList = pCall.Integers(1);
    OrderBufFromEulerOrder(lList.data(), static_cast<int>(lList.size()), static_cast<ERotationOrder>(pCall.Integer(2)));
    return KValues(lList.begin(), lList.end());
}

KValues ListToOrder(const KCall& pCall)
{
    const std::vector<int> lList = pCall.Integers(1);
    return {static_cast<double>(EulerOrderFromOrderBuf(lList.data(), static_cast<int>(lList.size())))};
}

using KOperation = std::function<KValues(const KCall&)>;
using KOperations = std::map<std::string, KOperation>;

/// \name Operations by signature
///@{
KOperation Scalar(double (*pFunction)(double))
{
    return [pFunction](const KCall& pCall)
    {
        return KValues{pFunction(pCall.Number(1))};
    };
}
KOperation Scalar(double (*pFunction)(double, double))
{
    return [pFunction](const KCall& pCall)
    {
        return KValues{pFunction(pCall.Number(1), pCall.Number(2))};
    };
}
KOperation SineAndCosine(double (*pFunction)(double, double*))
{
    return [pFunction](const KCall& pCall)
    {
        double       lCos;
        const double lSin = pFunction(pCall.Number(1), &lCos);
        return KValues{lSin, lCos};
    };
}
KOperation VectorToVector(double* (*pFunction)(double*, const double*))
{
    return [pFunction](const KCall& pCall)
    {
        return Three([&](double* pOut) { pFunction(pOut, pCall.Vector(1).mData); });
    };
}
KOperation MatrixToMatrix(KmMatrix (*pFunction)(KmMatrix, KmConstMatrix))
{
    return [pFunction](const KCall& pCall)
    {
        return Filled([&](KmMatrix pM) { pFunction(pM, pCall.Matrix(1).mData); });
    };
}
KOperation VectorToMatrix(KmMatrix (*pFunction)(KmMatrix, const double*))
{
    return [pFunction](const KCall& pCall)
    {
        return Filled([&](KmMatrix pM) { pFunction(pM, pCall.Vector(1).mData); });
    };
}
KOperation MatrixToVector(double* (*pFunction)(double*, KmConstMatrix))
{
    return [pFunction](const KCall& pCall)
    {
        return Three([&](double* pOut) { pFunction(pOut, pCall.Matrix(1).mData); });
    };
}
/// Runs \p pFunction in place on the matrix that is argument \p pIndex.
KOperation InPlace(void (*pFunction)(KmMatrix, const KCall&), size_t pIndex)
{
    return [pFunction, pIndex](const KCall& pCall)
    {
        KgeRMatrix lM = pCall.Matrix(pIndex);
        pFunction(lM.mData, pCall);
        return Sixteen(lM.mData);
    };
}
///@}

KOperations ScalarOperations()
{
    return {
        {"kNorm",
         [](const KCall& pCall)
         {
             return KValues{kNorm(pCall.Number(1), pCall.Number(2), pCall.Number(3))};
         }},
        {"kHypot", Scalar(kHypot<double>)},
        {"kSqrt", Scalar(kSqrt<double>)},
        {"kSqrtnz", Scalar(kSqrtnz<double>)},
        {"kSin", Scalar(kSin<double>)},
        {"kCos", Scalar(kCos<double>)},
        {"kAsin", Scalar(kAsin<double>)},
        {"kAsind", Scalar(kAsind<double>)},
        {"kAtan", Scalar(kAtan<double>)},
        {"kAtand", Scalar(kAtand<double>)},
        {"kSinCos", SineAndCosine([](double pAngle, double* pCos) { return kSinCos(pAngle, pCos); })},
        {"kSinCosd", SineAndCosine([](double pAngle, double* pCos) { return kSinCosd(pAngle, pCos); })},
    };
}

KOperations VectorOperations()
{
    return {
        {"KmV",
         [](const KCall& pCall)
         {
             return Three([&](double* pOut) { KmV(pOut, pCall.Number(1), pCall.Number(2), pCall.Number(3)); });
         }},
        {"KmVset", VectorToVector(KmVset)},
        {"KmVneg", VectorToVector(KmVneg)},
        {"KmVnegInPlace",
         [](const KCall& pCall)
         {
             KgeTVector lV = pCall.Vector(1);
             return Triple(KmVneg(lV.mData, lV.mData));
         }},
        {"KmVadd",
         [](const KCall& pCall)
         {
             return Three([&](double* pOut) { KmVadd(pOut, pCall.Vector(1).mData, pCall.Vector(2).mData); });
         }},
        {"KmVN",
         [](const KCall& pCall)
         {
             return Three([&](double* pOut) { KmVN(pOut, pCall.Vector(1).mData, pCall.Number(2)); });
         }},
        {"KmVlength",
         [](const KCall& pCall)
         {
             return KValues{KmVlength(pCall.Vector(1).mData)};
         }},
        {"KmVnorm", VectorToVector(KmVnorm)},
        {"KmRV",
         [](const KCall& pCall)
         {
             return Three([&](double* pOut) { KmRV(pOut, pCall.Matrix(1).mData, pCall.Vector(2).mData); });
         }},
        {"KgeTVectorDefault",
         [](const KCall&)
         {
             return Four(KgeTVector().mData);
         }},
        {"KgeTVectorCopy", VectorCopy},
        {"KgeTVectorInit", VectorInit},
        {"KgeTVectorAssign", VectorAssign},
        {"KgeTVectorOps", VectorOps},
        {"KgeRVectorDefault",
         [](const KCall&)
         {
             return Triple(KgeRVector());
         }},
    };
}

KOperations MatrixOperations()
{
    return {
        {"KmId",
         [](const KCall&)
         {
             return Filled([](KmMatrix pM) { KmId(pM); });
         }},
        {"KmRinit", InPlace([](KmMatrix pM, const KCall&) { KmRinit(pM); }, 1)},
        {"KmRset", MatrixToMatrix(KmRset)},
        {"KmRi", MatrixToMatrix(KmRi)},
        {"KmRiInPlace", InPlace([](KmMatrix pM, const KCall&) { KmRi(pM, pM); }, 1)},
        {"KmRR",
         [](const KCall& pCall)
         {
             return Filled([&](KmMatrix pM) { KmRR(pM, pCall.Matrix(1).mData, pCall.Matrix(2).mData); });
         }},
        {"KmRRIntoA", InPlace([](KmMatrix pA, const KCall& pCall) { KmRR(pA, pA, pCall.Matrix(2).mData); }, 1)},
        {"KmRRIntoB", InPlace([](KmMatrix pB, const KCall& pCall) { KmRR(pB, pCall.Matrix(1).mData, pB); }, 2)},
        {"KmRRIntoBoth", InPlace([](KmMatrix pM, const KCall&) { KmRR(pM, pM, pM); }, 1)},
        {"KgeRMatrixDefault",
         [](const KCall&)
         {
             return Sixteen(KgeRMatrix().mData);
         }},
        {"KgeRMatrixFromVector",
         [](const KCall& pCall)
         {
             return Sixteen(KgeRMatrix(pCall.Angles(1)).mData);
         }},
        {"KgeRotations", Rotations},
    };
}

KOperations EulerOperations()
{
    return {
        {"KmXYZtoR",
         [](const KCall& pCall)
         {
             return Filled([&](KmMatrix pM) { KmXYZtoR(pM, pCall.Number(1), pCall.Number(2), pCall.Number(3)); });
         }},
        {"KmVXYZtoR", VectorToMatrix(KmVXYZtoR)},
        {"KmVtoR", VectorToMatrix(KmVtoR)},
        {"KmIJKtoR",
         [](const KCall& pCall)
         {
             return Filled([&](KmMatrix pM) { KmIJKtoR(pM, pCall.Number(1), pCall.Number(2), pCall.Number(3), pCall.Integer(4)); });
         }},
        {"KmVIJKtoR",
         [](const KCall& pCall)
         {
             return Filled([&](KmMatrix pM) { KmVIJKtoR(pM, pCall.Vector(1).mData, pCall.Integer(2)); });
         }},
        {"KmRtoVXYZ", MatrixToVector(KmRtoVXYZ)},
        {"KmRtoV", MatrixToVector(KmRtoV)},
        {"KmRtoVord",
         [](const KCall& pCall)
         {
             return Three([&](double* pOut) { KmRtoVord(pOut, pCall.Matrix(1).mData, pCall.Integer(2)); });
         }},
        {"KmEulerAxis",
         [](const KCall& pCall)
         {
             return KValues(KmEulerAxis[pCall.Integer(1)], KmEulerAxis[pCall.Integer(1)] + 3);
         }},
        {"EulerOrderFromOrderBuf", ListToOrder},
        {"OrderBufFromEulerOrder", OrderToList},
    };
}

TEST(MathVectorsTest, EveryCallAgrees)
{
    const std::vector<KJson> lCases = ReadJsonLines(VectorsDir() / "host" / "cases.jsonl");
    const std::vector<KJson> lExpected = ReadJsonLines(VectorsDir() / "host" / "expected.jsonl");
    ASSERT_GE(lExpected.size(), lCases.size());

    KOperations lOperations = ScalarOperations();
    for (const KOperations& lMore : {VectorOperations(), MatrixOperations(), EulerOperations()})
    {
        lOperations.insert(lMore.begin(), lMore.end());
    }
    size_t lCalls = 0;
    for (size_t lCase = 0; lCase < lCases.size(); ++lCase)
    {
        if (lCases[lCase].at("kind") != "math")
        {
            continue;
        }
        ASSERT_EQ(lExpected[lCase].at("name"), lCases[lCase].at("name"));
        const KJson& lOps = lCases[lCase].at("ops");
        const KJson& lValues = lExpected[lCase].at("values");
        ASSERT_EQ(lOps.size(), lValues.size());
        for (size_t lOp = 0; lOp < lOps.size(); ++lOp, ++lCalls)
        {
            const auto lFound = lOperations.find(lOps[lOp].at(0).get<std::string>());
            ASSERT_NE(lFound, lOperations.end()) << lOps[lOp];
            EXPECT_TRUE(AreNear(lFound->second(KCall(lOps[lOp])), lValues[lOp], 1e-9)) << lCases[lCase].at("name") << ": " << lOps[lOp];
        }
    }
    EXPECT_GT(lCalls, 0U);
}

} // namespace
} // namespace qexsdk
