#ifndef QEXFIGURE_KQEXFIGUREWORLD_H
#define QEXFIGURE_KQEXFIGUREWORLD_H

#include <qexfigure/kqexfigure.h>

/// \file
/// Changes to where a loaded figure is in the world, for all writers alike. After false, memory ran out: the figure is of no use then.

namespace qexsdk
{

/// What TurnFigureZUp() turns.
enum KQexFigureTurn
{
    eFIGURE_TURN_ALL,   ///< Rest pose and takes, such that a skeleton that is extracted from the figure is turned at rest as well.
    eFIGURE_TURN_MOTION ///< Takes only: for writing the motion of a skeleton that stays as it is.
};

/// Turns the figure from y up to z up, a quarter turn about the world's x: y becomes z, z becomes -y. Key times stay.
QEX_API bool TurnFigureZUp(KQexFigure& pFigure, KQexFigureTurn pTurn) noexcept;

/// Takes the horizontal way out of all takes: in each, the joint that carries a tree stays above or below its position in the first frame;
/// its height and all rotations stay. That joint is the root, or, if this does not move in the take and has only one child with
/// children, the first joint down from there that moves. Key times stay.
QEX_API bool HoldFigureInPlace(KQexFigure& pFigure) noexcept;

} // namespace qexsdk

#endif
