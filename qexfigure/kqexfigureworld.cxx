#include <qexfigure/kqexfigureworld.h>

#include <kbaselib/kmath/kgeom.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexscene/kqexsceneundo.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace qexsdk
{

namespace
{

using KVector3 = qexVectorTemplate3<double>;

constexpr unsigned int kAxes = 3;

/// From y up to z up.
KQexMatrix ZUpTurn()
{
    KQexMatrix lTurn;
    lTurn.mData[1] = KQexVector4(0.0, 0.0, 1.0);
    lTurn.mData[2] = KQexVector4(0.0, -1.0, 0.0);
    return lTurn;
}

KgeRMatrix RotationOf(const KQexMatrix& pTurn)
{
    KgeRMatrix lRotation;
    pTurn.GetRotation(lRotation);
    return lRotation;
}

KQexAnimLayer* LayerOf(const KQexFigureTake& pTake)
{
    return pTake.mStack->GetMember<KQexAnimLayer>(0);
}

/// The times of all keys of the three channels, ascending.
std::vector<KTime> KeyTimesOf(const KQexAnimCurveNode& pCurves)
{
    std::vector<KTime> lTimes;
    for (unsigned int lAxis = 0; lAxis < kAxes; ++lAxis)
    {
        const KQexAnimCurve* lCurve = pCurves.GetCurve(lAxis);
        const std::ptrdiff_t lOld = static_cast<std::ptrdiff_t>(lTimes.size());
        for (int lKey = 0; lCurve != nullptr && lKey < lCurve->GetKeyCount(); ++lKey)
        {
            lTimes.push_back(lCurve->GetTime(lKey));
        }
        std::inplace_merge(lTimes.begin(), lTimes.begin() + lOld, lTimes.end());
        lTimes.erase(std::unique(lTimes.begin(), lTimes.end()), lTimes.end());
    }
    return lTimes;
}

void SetCurve(KQexAnimCurveNode& pCurves, unsigned int pAxis, const std::vector<KTime>& pTimes, const std::vector<KQexVector4>& pPoints)
{
    KQexAnimCurve* lCurve = pCurves.GetCurve(pAxis);
    if (lCurve == nullptr)
    {
        lCurve = KQexAnimCurve::Create(pCurves.GetScene(), "");
        if (lCurve == nullptr || !pCurves.ConnectToChannel(lCurve, pAxis))
        {
            throw std::bad_alloc();
        }
    }
    lCurve->Clear();
    for (size_t lKey = 0; lKey < pTimes.size(); ++lKey)
    {
        if (!lCurve->AppendSample(pTimes[lKey], static_cast<float>(pPoints[lKey].mData[pAxis])))
        {
            throw std::bad_alloc();
        }
    }
}

/// Maps a translation in one take.
void MapCurves(KQexAnimCurveNode& pCurves, const KQexMatrix& pMap)
{
    const auto lEvaluate = [&pCurves, &pMap](KTime pTime)
    {
        return pMap.Map(KQexVector4(pCurves.Evaluate(0, pTime), pCurves.Evaluate(1, pTime), pCurves.Evaluate(2, pTime)));
    };
    const std::vector<KTime> lTimes = KeyTimesOf(pCurves);
    std::vector<KQexVector4> lPoints;
    for (const KTime& lTime : lTimes)
    {
        lPoints.push_back(lEvaluate(lTime));
    }
    const KQexVector4 lFirst = lEvaluate(lTimes.empty() ? KTime(0) : lTimes.front());
    for (unsigned int lAxis = 0; lAxis < kAxes; ++lAxis)
    {
        pCurves.SetChannelValue(lAxis, lFirst.mData[lAxis]);
        if (!lTimes.empty())
        {
            SetCurve(pCurves, lAxis, lTimes, lPoints);
        }
    }
}

KQexVector4 ToVector4(const KVector3& pVector)
{
    return KQexVector4(pVector.mData[0], pVector.mData[1], pVector.mData[2]);
}

KVector3 ToVector3(const KQexVector4& pVector)
{
    return KVector3(pVector.mData[0], pVector.mData[1], pVector.mData[2]);
}

/// pTurn, then the rotation of the XYZ angles pAngles, as such angles again. Not the base layer's conversion to XYZ angles, which is
/// rounded to the pole near it.
KQexVector4 TurnAngles(const KgeRMatrix& pTurn, const KQexVector4& pAngles)
{
    KgeRMatrix lRotation(KgeRVector(pAngles.mData[0], pAngles.mData[1], pAngles.mData[2]));
    KgeRVector lAngles;
    KgeMult(lRotation, pTurn, lRotation);
    KgeSet(lAngles, lRotation, 0);
    return KQexVector4(lAngles.mData[0], lAngles.mData[1], lAngles.mData[2]);
}

/// Makes the node's rotation order and pivots count, without changing its transform.
void ActivateRotation(KQexNode& pNode)
{
    if (!pNode.GetRotationActive())
    {
        pNode.SetRotationOrder(kPivotSet0, eEULER_XYZ);
        pNode.SetPreRotation(kPivotSet0, KQexVector4());
        pNode.SetPostRotation(kPivotSet0, KQexVector4());
        pNode.SetRotationActive(true);
    }
}

/// Puts a turn in front of the node's transform, at rest and in all takes.
void TurnNode(KQexNode& pNode, const KQexMatrix& pTurn, const std::vector<KQexFigureTake>& pTakes)
{
    ActivateRotation(pNode);
    pNode.SetRotationOffset(kPivotSet0, pTurn.Map(pNode.GetRotationOffset()));
    pNode.SetPreRotation(kPivotSet0, TurnAngles(RotationOf(pTurn), pNode.GetPreRotation()));
    pNode.mLocalTranslation.Set(ToVector3(pTurn.Map(ToVector4(pNode.mLocalTranslation.Get()))));
    for (const KQexFigureTake& lTake : pTakes)
    {
        if (KQexAnimCurveNode* lCurves = pNode.mLocalTranslation.GetCurveNode(LayerOf(lTake), false))
        {
            MapCurves(*lCurves, pTurn);
        }
    }
}

/// Turns the node's rest pose back by pTurn. Takes keep the values that they have, also those that were the rest pose's.
void TurnRestBack(KQexNode& pNode, const KQexMatrix& pTurn, const std::vector<KQexFigureTake>& pTakes)
{
    for (const KQexFigureTake& lTake : pTakes)
    {
        if (pNode.mLocalTranslation.GetCurveNode(LayerOf(lTake), true) == nullptr ||
            pNode.mLocalRotation.GetCurveNode(LayerOf(lTake), true) == nullptr)
        {
            throw std::bad_alloc();
        }
    }
    KgeRMatrix lBack = RotationOf(pTurn);
    KgeInverse(lBack, lBack);
    const KQexVector4 lOffset = pNode.GetRotationOffset();
    const KQexVector4 lAt = ToVector4(pNode.mLocalTranslation.Get());
    double            lRest[3];
    KmV(lRest, lAt.mData[0] + lOffset.mData[0], lAt.mData[1] + lOffset.mData[1], lAt.mData[2] + lOffset.mData[2]);
    KmRV(lRest, lBack.mData, lRest);
    pNode.mLocalTranslation.Set(KVector3(lRest[0] - lOffset.mData[0], lRest[1] - lOffset.mData[1], lRest[2] - lOffset.mData[2]));

    // The turn is in front of the pre-rotation; conjugated by it, in front of the local rotation.
    const int*        lAxes = KmEulerAxisRow(2 * pNode.GetRotationOrder());
    const KQexVector4 lPre = pNode.GetPreRotation();
    const KVector3    lAngles = pNode.mLocalRotation.Get();
    const KgeRMatrix  lPreRotation(KgeRVector(lPre.mData[0], lPre.mData[1], lPre.mData[2]));
    KgeRMatrix        lPreInverse;
    KgeRMatrix        lRotation;
    KgeRVector        lInOrder(lAngles.mData[lAxes[0]], lAngles.mData[lAxes[1]], lAngles.mData[lAxes[2]]);
    KgeInverse(lPreInverse, lPreRotation);
    KgeSet(lRotation, lInOrder, 2 * pNode.GetRotationOrder());
    KgeMult(lRotation, lPreRotation, lRotation);
    KgeMult(lRotation, lBack, lRotation);
    KgeMult(lRotation, lPreInverse, lRotation);
    KgeSet(lInOrder, lRotation, 2 * pNode.GetRotationOrder());
    KVector3 lTurned;
    for (unsigned int i = 0; i < kAxes; ++i)
    {
        lTurned.mData[lAxes[i]] = lInOrder.mData[i];
    }
    pNode.mLocalRotation.Set(lTurned);
}

/// Whether the values of the property change in the take.
bool Moves(const KQexProperty& pProperty, const KQexAnimLayer* pLayer)
{
    const KQexAnimCurveNode* lCurves = pProperty.GetCurveNode(pLayer);
    for (unsigned int lAxis = 0; lCurves != nullptr && lAxis < kAxes; ++lAxis)
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

/// Scaling that is the same along all axes, and in all takes, commutes with rotations.
bool IsEvenlyScaled(const KQexNode& pNode, const std::vector<KQexFigureTake>& pTakes)
{
    const KVector3 lScaling = pNode.mLocalScaling.Get();
    return lScaling.mData[0] == lScaling.mData[1] && lScaling.mData[1] == lScaling.mData[2] &&
           std::all_of(pTakes.begin(), pTakes.end(),
                       [&pNode](const KQexFigureTake& pTake)
                       {
                           const KQexAnimLayer* lLayer = LayerOf(pTake);
                           return pNode.mLocalScaling.GetCurveNode(lLayer) == nullptr;
                       });
}

/// Moves a turn that is in front of a root from its rest pose into its children: an extracted skeleton is in the root's space, so that
/// the turn would only be in the motion.
void TurnIntoChildren(KQexNode& pRoot, const KQexMatrix& pTurn, const std::vector<KQexFigureTake>& pTakes)
{
    // The inverse of the post-rotation is applied.
    pRoot.SetPostRotation(kPivotSet0, TurnAngles(RotationOf(pTurn), pRoot.GetPostRotation()));
    for (KQexNode* lChild = pRoot.GetFirstChild(); lChild != nullptr; lChild = lChild->GetNextSibling())
    {
        TurnNode(*lChild, pTurn, pTakes);
    }
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
    const KQexNode* lCarrier = FindCarrier(pRoot, LayerOf(pTake));
    if (lCarrier == nullptr || !Moves(lCarrier->mLocalTranslation, LayerOf(pTake)))
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
        MapCurves(*lTranslation.GetCurveNode(LayerOf(pTake), false),
                  Translation(lOffset, -1.0) * lToParent * lHold * lParent * Translation(lOffset, 1.0));
    }
}

} // namespace

bool TurnFigureZUp(KQexFigure& pFigure, KQexFigureTurn pTurn) noexcept
{
    KQexNode* lTop = pFigure.GetTop();
    if (lTop == nullptr)
    {
        return true;
    }
    KQexFigureReport lReport;
    return RunGuarded(lReport,
                      [&]
                      {
                          const KQexMatrix lTurn = ZUpTurn();
                          TurnNode(*lTop, lTurn, pFigure.GetTakes());
                          if (pTurn == eFIGURE_TURN_MOTION)
                          {
                              TurnRestBack(*lTop, lTurn, pFigure.GetTakes());
                          }
                          else if (IsEvenlyScaled(*lTop, pFigure.GetTakes()))
                          {
                              TurnIntoChildren(*lTop, lTurn, pFigure.GetTakes());
                          }
                          return true;
                      });
}

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
