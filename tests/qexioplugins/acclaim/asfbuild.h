#ifndef TESTS_QEXIOPLUGINS_ACCLAIM_ASFBUILD_H
#define TESTS_QEXIOPLUGINS_ACCLAIM_ASFBUILD_H

#include <qexioplugins/acclaim/kqexasfscene.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

/// \file
/// One-line builders of skeletons and host scenes for tests.

namespace qextest
{

/// A host scene and a skeleton. The skeleton is destroyed first: it may own curves of the scene.
struct KScenePair
{
    KScenePair() : mScene(qexsdk::KQexScene::Create("stage")), mAsf(qexsdk::QexSdkNew<qexsdk::KQexAsfScene>()) {}
    ~KScenePair()
    {
        mAsf->Destroy();
        mScene->Destroy();
    }
    KScenePair(const KScenePair&) = delete;
    KScenePair& operator=(const KScenePair&) = delete;

    qexsdk::KQexScene*    mScene;
    qexsdk::KQexAsfScene* mAsf;
};

/// Sets the bone's axis angles and the matrices that follow from them.
inline void SetAxis(qexsdk::KQexAsfNode* pBone, const qexsdk::KgeRVector& pAngles)
{
    pBone->mOrientationV = pAngles;
    qexsdk::KgeSet(pBone->mAxisRM, pAngles);
    qexsdk::KgeInverse(pBone->mAxisRMInv, pBone->mAxisRM);
}

/// A new bone named \p pName with the DOF codes \p pDofs, appended to \p pParent unless that is null.
inline qexsdk::KQexAsfNode* Bone(qexsdk::KQexAsfNode* pParent, const char* pName, const std::vector<int>& pDofs = {5, 4, 3})
{
    qexsdk::KQexAsfNode* lBone = qexsdk::QexSdkNew<qexsdk::KQexAsfNode>();
    std::snprintf(lBone->mName, sizeof(lBone->mName), "%s", pName);
    for (int lCode : pDofs)
    {
        lBone->mOrderBuf[lBone->mOrderCount++] = lCode;
    }
    if (pParent != nullptr)
    {
        pParent->AddChild(lBone);
    }
    return lBone;
}

/// The same with the bone vector (direction times length) \p pVector and the axis angles \p pAngles.
inline qexsdk::KQexAsfNode* Bone(qexsdk::KQexAsfNode* pParent, const char* pName, const std::vector<int>& pDofs,
                                 const qexsdk::KgeTVector& pVector, const qexsdk::KgeRVector& pAngles = qexsdk::KgeRVector())
{
    qexsdk::KQexAsfNode* lBone = Bone(pParent, pName, pDofs);
    lBone->mLength = qexsdk::KgeLength(pVector);
    qexsdk::KgeNorm(lBone->mDirectionV, pVector);
    SetAxis(lBone, pAngles);
    return lBone;
}

/// The names of a bone's children, separated by blanks.
inline std::string ChildNames(qexsdk::KQexAsfNode* pBone)
{
    std::string lNames;
    for (int lIter = 0; pBone->GetChild(lIter); ++lIter)
    {
        lNames += std::string(lIter > 0 ? " " : "") + pBone->GetChild(lIter)->mName;
    }
    return lNames;
}

enum EShape
{
    eCHAIN,
    eFAN,
    eCOMB,
    eRANDOM
};

constexpr const char* kShapeNames[] = {"Chain", "Fan", "Comb", "Random"};

/// A root and \p pCount - 1 bones below it in the given shape (a comb is a chain with a leaf at every bone), named b1, b2, …, with random
/// DOF lists, directions, lengths and axes. With \p pDummies about a third of the bones have no DOF.
inline std::vector<qexsdk::KQexAsfNode*> RandomBones(EShape pShape, int pCount, unsigned int pSeed, bool pDummies)
{
    std::mt19937                           lRandom(pSeed);
    std::uniform_real_distribution<double> lAngle(-180.0, 180.0);
    std::uniform_real_distribution<double> lPart(-1.0, 1.0);
    const auto                             lDice = [&](int pSides)
    {
        return static_cast<int>(lRandom() % static_cast<unsigned int>(pSides));
    };

    std::vector<qexsdk::KQexAsfNode*> lBones = {Bone(nullptr, "root", {0, 1, 2, 5, 4, 3})};
    SetAxis(lBones[0], {lAngle(lRandom), lAngle(lRandom), lAngle(lRandom)});
    lBones[0]->mPositionV = qexsdk::KgeTVector(lPart(lRandom), lPart(lRandom), lPart(lRandom));
    for (int lIter = 1; lIter < pCount; ++lIter)
    {
        int lParent = 0;
        if (pShape == eCHAIN)
        {
            lParent = lIter - 1;
        }
        else if (pShape == eCOMB)
        {
            lParent = lIter % 2 == 1 ? lIter - 1 : lIter < 3 ? 0 : lIter - 2;
        }
        else if (pShape == eRANDOM)
        {
            lParent = lDice(lIter);
        }
        std::vector<int> lDofs;
        if (!pDummies || lDice(3) != 0)
        {
            for (int lCount = 1 + lDice(6); lCount > 0; --lCount)
            {
                lDofs.push_back(lDice(6));
            }
        }
        const qexsdk::KgeTVector lVector(lPart(lRandom), lPart(lRandom), lPart(lRandom));
        const qexsdk::KgeRVector lAxis(lAngle(lRandom), lAngle(lRandom), lAngle(lRandom));
        lBones.push_back(Bone(lBones[static_cast<size_t>(lParent)], ("b" + std::to_string(lIter)).c_str(), lDofs, lVector, lAxis));
    }
    return lBones;
}

/// The names of the tree at a node, as "root(a(b(c(c_End))) d(d_End))".
inline std::string NodeTree(const qexsdk::KQexNode* pNode)
{
    std::string lText = pNode->GetName();
    for (const qexsdk::KQexNode* lChild = pNode->GetFirstChild(); lChild != nullptr; lChild = lChild->GetNextSibling())
    {
        lText += (lChild == pNode->GetFirstChild() ? "(" : " ") + NodeTree(lChild);
    }
    return lText + (pNode->GetFirstChild() != nullptr ? ")" : "");
}

} // namespace qextest

#endif
