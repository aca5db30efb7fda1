#include <qexfigure/kqexfigurecurves.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexfigureworld.h>
#include <qexscene/kqexsceneundo.h>

#include <cmath>

/// \file
/// Holding figures in place.

namespace qexsdk
{

namespace
{

/// Whether the values of the property change in the take.
bool Moves(const KQexProperty& pProperty, const KQexAnimLayer* pLayer)
{
    const KQexAnimCurveNode* lCurves = pProperty.GetCurveNode(pLayer);
    for (unsigned int lAxis = 0; lCurves != nullptr && lAxis < 3; ++lAxis)
    {
        const KQexAnimCurve* lCurve = lCurves->GetCurve(lAxis);
        const double         lFirst = lCurve != nullptr ? lCurve->GetValue(0) : 0.0;
        const double         lBound = 1e-5 + 1e-6 * std::fabs(lFirst); // Rounding to single precision.
        for (int lKey = 1; lCurve != nullptr && lKey < lCurve->GetKeyCount(); ++lKey)
        {
            if (std::fabs(lCurve->GetValue(lKey) - lFirst) > lBound)
            {
                return true;
            }
        }
    }
    return false;
}

/// The joint that carries the tree at pRoot in a take, see HoldFigureInPlace(); null: none moves.
KQexNode* FindCarrier(KQexNode* pRoot, const KQexAnimLayer* pLayer)
{
    KQexNode* lNode = pRoot;
    while (lNode != nullptr && !Moves(lNode->mLocalTranslation, pLayer) && !Moves(lNode->mLocalRotation, pLayer) &&
           !Moves(lNode->mLocalScaling, pLayer))
    {
        KQexNode* lNext = nullptr;
        int       lCount = 0;
        for (KQexNode* lChild = lNode->GetFirstChild(); lChild != nullptr; lChild = lChild->GetNextSibling())
        {
            lCount += lChild->GetFirstChild() != nullptr ? 1 : 0;
            lNext = lChild->GetFirstChild() != nullptr ? lChild : lNext;
        }
        lNode = lCount == 1 ? lNext : nullptr;
    }
    return lNode;
}

/// The inverse of an affine transform, by cofactors. False if it flattens space.
bool Invert(const KQexMatrix& pMatrix, KQexMatrix& pInverse)
{
    const auto lAt = [&pMatrix](int pRow, int pColumn)
    {
        return pMatrix.mData[pColumn % 3].mData[pRow % 3];
    };
    double lDeterminant = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            pInverse.mData[i].mData[j] = lAt(i + 1, j + 1) * lAt(i + 2, j + 2) - lAt(i + 1, j + 2) * lAt(i + 2, j + 1);
        }
        lDeterminant += lAt(i, 0) * pInverse.mData[i].mData[0];
    }
    if (!(std::fabs(lDeterminant) > 0.0))
    {
        return false;
    }
    for (int i = 0; i < 3; ++i)
    {
        KmVN(pInverse.mData[i].mData, pInverse.mData[i].mData, 1.0 / lDeterminant);
    }
    pInverse.mData[3] = KQexVector4();
    const KQexVector4 lBack = pInverse.Map(pMatrix.GetT());
    pInverse.mData[3] = KQexVector4(-lBack.mData[0], -lBack.mData[1], -lBack.mData[2], 1.0);
    return true;
}

KQexMatrix Translation(const KQexVector4& pBy, double pSign)
{
    KQexMatrix lMatrix;
    lMatrix.mData[3] = KQexVector4(pSign * pBy.mData[0], pSign * pBy.mData[1], pSign * pBy.mData[2], 1.0);
    return lMatrix;
}

/// Holds the tree at pRoot in the take that is the evaluator's context. What is above the carrier does not move.
void HoldTree(KQexNode* pRoot, const KQexFigureTake& pTake)
{
    const KQexNode* lCarrier = FindCarrier(pRoot, LayerOfTake(pTake));
    if (lCarrier == nullptr || !Moves(lCarrier->mLocalTranslation, LayerOfTake(pTake)))
    {
        return;
    }
    const KQexAnimEvaluator* lEvaluator = pRoot->GetScene()->GetEvaluator();
    const KQexMatrix         lParent = lEvaluator->GetNodeGlobalTransform(lCarrier->GetParent(), pTake.mStart);
    const KQexVector4        lFirst = lEvaluator->GetNodeGlobalTransform(lCarrier, pTake.mStart).GetT();
    const KQexVector4        lOffset = lCarrier->GetRotationOffset();
    KQexMatrix               lToParent;
    KQexMatrix               lHold;
    lHold.mData[0] = lHold.mData[2] = KQexVector4(0.0, 0.0, 0.0);
    lHold.mData[3] = KQexVector4(lFirst.mData[0], 0.0, lFirst.mData[2], 1.0);
    if (Invert(lParent, lToParent))
    {
        KQexProperty lTranslation(lCarrier->mLocalTranslation);
        MapCurves(*lTranslation.GetCurveNode(LayerOfTake(pTake), false),
                  Translation(lOffset, -1.0) * lToParent * lHold * lParent * Translation(lOffset, 1.0));
    }
}

} // namespace

bool HoldFigureInPlace(KQexFigure& pFigure) noexcept
{
    if (pFigure.GetScene() == nullptr)
    {
        return true;
    }
    KQexAnimEvaluator*     lEvaluator = pFigure.GetScene()->GetEvaluator();
    const KQexContextGuard lContext(lEvaluator);
    KQexFigureReport       lReport;
    return RunGuarded(lReport,
                      [&]
                      {
                          for (const KQexFigureTake& lTake : pFigure.GetTakes())
                          {
                              lEvaluator->SetContext(lTake.mStack);
                              for (KQexNode* lRoot : pFigure.GetRoots())
                              {
                                  HoldTree(lRoot, lTake);
                              }
                          }
                          return true;
                      });
}

} // namespace qexsdk
