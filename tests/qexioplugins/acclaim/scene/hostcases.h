#ifndef TESTS_QEXIOPLUGINS_ACCLAIM_SCENE_HOSTCASES_H
#define TESTS_QEXIOPLUGINS_ACCLAIM_SCENE_HOSTCASES_H

#include <qexioplugins/acclaim/kqexasfscene.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// \file
/// Skeletons and host trees from JSON and back, in the form of the cases in the folder host of VectorsDir.

namespace qextest
{

/// The host scene and the skeleton of a case. Owns both and destroys the skeleton first.
struct KHostCase
{
    explicit KHostCase(const nlohmann::json& pCase);
    ~KHostCase();
    KHostCase(const KHostCase&) = delete;
    KHostCase& operator=(const KHostCase&) = delete;

    qexsdk::KQexScene*                mScene;
    qexsdk::KQexAsfScene*             mAsf;
    std::vector<qexsdk::KQexAsfNode*> mBones; ///< In the order of the description; dangling once a clean-up removed them.
    std::vector<qexsdk::KQexNode*>    mNodes; ///< Host nodes in the order of the description.
};

/// A bone with the axis frame, DOFs and limits of its description; not attached to anything.
qexsdk::KQexAsfNode* MakeBone(const nlohmann::json& pBone);

/// The node's local translation ("t"), rotation ("r") or scaling ("s").
qexsdk::KQexProperty Property(qexsdk::KQexNode& pNode, const std::string& pWhich);

/// Every bone of the tree in pre-order with all its fields.
/// \param pLimitRows number of limit rows for a bone with DOFs other than the root; -1: all six for every bone.
nlohmann::json DescribeBones(qexsdk::KQexAsfNode* pRoot, int pLimitRows = -1);

/// Of every bone in pre-order: name, parent position and the key counts of the curves that it owns.
nlohmann::json DescribeBonesBriefly(qexsdk::KQexAsfNode* pRoot);

/// Key counts of a bone's six curves, null where there is none.
nlohmann::json DescribeCurveSizes(const qexsdk::KQexAsfNode& pBone);

/// The tree at \p pTop in pre-order with attributes, limits and curves of every take.
nlohmann::json DescribeTree(qexsdk::KQexNode* pTop);

/// For each time, the global transform of each node: the upper three rows of its matrix for column vectors.
nlohmann::json DescribeTransforms(qexsdk::KQexNode* pTop, const nlohmann::json& pTimes);

/// Every bone of the tree in pre-order.
std::vector<qexsdk::KQexAsfNode*> BonesOf(qexsdk::KQexAsfNode* pRoot);

/// Differences of \p pActual from \p pExpected, one text each; empty when they agree. Object keys that are not expected are ignored.
/// Numbers agree within \p pTolerance, absolute or relative; times and values of curve keys within 1e-5.
std::vector<std::string> Differences(const nlohmann::json& pExpected, const nlohmann::json& pActual, double pTolerance);

} // namespace qextest

#endif
