#include <qexfigure/kqexfigureworld.h>

#include <kbaselib/kmath/kgeom.h>
#include <qexfigure/kqexfigurecurves.h>
#include <qexfigure/kqexfigureguard.h>

#include <algorithm>
#include <new>

/// \file
/// Turning figures.

namespace qexsdk
{

namespace
{

using KVector3 = qexVectorTemplate3<double>;

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
        if (KQexAnimCurveNode* lCurves = pNode.mLocalTranslation.GetCurveNode(LayerOfTake(lTake), false))
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
        if (pNode.mLocalTranslation.GetCurveNode(LayerOfTake(lTake), true) == nullptr ||
            pNode.mLocalRotation.GetCurveNode(LayerOfTake(lTake), true) == nullptr)
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
    for (unsigned int i = 0; i < 3; ++i)
    {
        lTurned.mData[lAxes[i]] = lInOrder.mData[i];
    }
    pNode.mLocalRotation.Set(lTurned);
}

/// Scaling that is the same along all axes, and in all takes, commutes with rotations.
bool IsEvenlyScaled(const KQexNode& pNode, const std::vector<KQexFigureTake>& pTakes)
{
    const KVector3 lScaling = pNode.mLocalScaling.Get();
    return lScaling.mData[0] == lScaling.mData[1] && lScaling.mData[1] == lScaling.mData[2] &&
           std::all_of(pTakes.begin(), pTakes.end(),
                       [&pNode](const KQexFigureTake& pTake)
                       {
                           const KQexAnimLayer* lLayer = LayerOfTake(pTake);
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

} // namespace qexsdk
