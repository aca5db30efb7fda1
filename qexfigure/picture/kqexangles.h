#ifndef QEXFIGURE_PICTURE_KQEXANGLES_H
#define QEXFIGURE_PICTURE_KQEXANGLES_H

#include <qexfigure/kqexfigure.h>
#include <qexfigure/picture/kqexchart.h>

#include <string>
#include <vector>

/// \file
/// The angles of joints over a motion, for DrawChart(): a panel for each joint, in degrees.

namespace qexsdk
{

/// Whose angles to collect.
struct QEX_API KQexAngleOptions
{
    std::vector<std::string> mJoints;      ///< Names; of several joints with one name, the first.
    std::string              mJointOption; ///< How a user of the program names mJoints ("--curves: "); may be empty.
    KQexProgress             mProgress;    ///< Called with the fraction done, 0 to 1; false cancels. May be empty.
};

/// The rotations of \p pTake, one of the figure's takes, at its frames: the degrees of freedom of GetDofTracks() with their limits, turns
/// beyond 180 degrees included; of joints without (glTF; AMC without mKeepDofValues), the local Euler angles of the node, in its rotation
/// order, without limits. Sets the chart's subtitle, times, numbers and panels. False, with an error in \p pReport, if a joint does not
/// exist, if the take has its AMC file's values but none for a joint, or if memory runs out; also when cancelled.
QEX_API bool CollectAngles(const KQexFigure& pFigure, const KQexFigureTake& pTake, const KQexAngleOptions& pOptions, KQexChart& pChart,
                           KQexFigureReport& pReport) noexcept;

} // namespace qexsdk

#endif
