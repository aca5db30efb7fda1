#ifndef QEXFIGURE_KQEXMOTIONARRAYS_H
#define QEXFIGURE_KQEXMOTIONARRAYS_H

#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurepose.h>
#include <qexfigure/kqexnpzfile.h>
#include <qexscene/kqexframesink.h>

#include <memory>

namespace qexsdk
{

/// Which arrays an archive of a motion has; docs/arrays.md lists them.
enum class KQexArraySet
{
    eMOTION,   ///< The skeleton at rest, and all transforms.
    eIMITATION ///< Positions, rotations and velocities of bodies and degrees of freedom, for training simulated characters.
};

/// What KQexMakeMotionArrays() writes.
struct QEX_API KQexMotionArrayOptions
{
    KQexArraySet          mSet = KQexArraySet::eMOTION; ///< The arrays.
    KQexOutputSpace       mSpace;                       ///< Their unit of length and axes.
    const KQexFigureTake* mTake = nullptr;              ///< One of the figure's; null: at rest.
    KQexSampling          mSampling;                    ///< The frames that KQexRunFrames() is given.
};

/// The sink that writes a motion of \p pFigure to \p pFile, both of which must outlive it. After the run, the caller finishes the file.
/// Null if there is no memory, and for eIMITATION if the figure has not one root. The sink's Write() is false if the file fails.
QEX_API std::unique_ptr<KQexFrameSink> KQexMakeMotionArrays(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions,
                                                            KQexNpzFile& pFile) noexcept;

} // namespace qexsdk

#endif
