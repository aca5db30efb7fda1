#ifndef TESTS_QEXIOPLUGINS_ACCLAIM_EXCHANGE_EXPORTPOSITIONS_H
#define TESTS_QEXIOPLUGINS_ACCLAIM_EXCHANGE_EXPORTPOSITIONS_H

#include <tests/support/randomscene.h>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

/// \file
/// Where the joints of two figures are.

namespace qextest
{

using namespace qexsdk;

/// Positions by node and frame, in the evaluator's current take.
using KNodePositions = std::map<std::string, std::vector<KQexVector4>>;

/// Global positions of every node by name and frame. The root's node is named "root", as in an exported skeleton.
inline KNodePositions NodePositions(KQexNode* pRoot, int pFrames)
{
    KNodePositions       lPositions;
    KQexGlobalTransforms lPose;
    for (int lFrame = 0; lFrame < pFrames; ++lFrame)
    {
        EXPECT_TRUE(pRoot->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(pRoot, FrameTime(lFrame), lPose));
        for (int i = 0; i < lPose.GetCount(); ++i)
        {
            lPositions[i == 0 ? "root" : lPose.GetNode(i)->GetName()].push_back(lPose.GetTransform(i).GetT());
        }
    }
    return lPositions;
}

inline double NodeDistance(const KQexVector4& pA, const KQexVector4& pB)
{
    return std::sqrt((pA[0] - pB[0]) * (pA[0] - pB[0]) + (pA[1] - pB[1]) * (pA[1] - pB[1]) + (pA[2] - pB[2]) * (pA[2] - pB[2]));
}

/// Expects the nodes that \p pOld and \p pNew share to have equal positions. \return their number
inline int ExpectSamePositions(const KNodePositions& pOld, const KNodePositions& pNew, double pTolerance)
{
    int lCount = 0;
    for (const auto& [lName, lFrames] : pOld)
    {
        const auto lFound = pNew.find(lName);
        if (lFound == pNew.end())
        {
            continue;
        }
        ++lCount;
        for (size_t i = 0; i < lFrames.size(); ++i)
        {
            EXPECT_LT(NodeDistance(lFrames[i], lFound->second[i]), pTolerance) << lName << " frame " << i;
            if (NodeDistance(lFrames[i], lFound->second[i]) >= pTolerance)
            {
                return lCount;
            }
        }
    }
    return lCount;
}

} // namespace qextest

#endif
