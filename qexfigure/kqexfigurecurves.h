#ifndef QEXFIGURE_KQEXFIGURECURVES_H
#define QEXFIGURE_KQEXFIGURECURVES_H

#include <qexfigure/kqexfigure.h>

namespace qexsdk
{

/// The note on a motion without a frame rate, neither in its file nor in the options.
inline constexpr const char* kDefaultRateNote = "has no frame rate, using 120 frames per second";

/// The layer with the take's curves.
inline KQexAnimLayer* LayerOfTake(const KQexFigureTake& pTake)
{
    return KQexLayerOf(pTake.mStack);
}

/// Maps a translation in one take: the channels' values, and their curves at all of their key times. May throw std::bad_alloc.
void MapCurves(KQexAnimCurveNode& pCurves, const KQexMatrix& pMap);

} // namespace qexsdk

#endif
