#ifndef QEXFIGURE_PICTURE_KQEXANGLES_H
#define QEXFIGURE_PICTURE_KQEXANGLES_H

#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurefiles.h>
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
    std::vector<std::string> mJoints;                 ///< Names; of several joints with one name, the first.
    std::string              mJointOption;            ///< How a user of the program names mJoints ("--curves: "); may be empty.
    double                   mMotionRate = 0;         ///< Frames per second of AMC motions; 0: the file's rate, else 120.
    bool                     mAllowUnmatched = false; ///< Accept an AMC motion of another skeleton, see KQexSkeletonMatch.
    KQexProgress             mProgress;               ///< Called with the fraction done, 0 to 1; false cancels. May be empty.
};

/// The rotations of the first motion of \p pFiles, an AMC file, as it has them: the degrees of freedom of each bone with their limits,
/// turns beyond 180 degrees included. No value where a frame leaves the bone out. Sets the chart's subtitle, times, numbers and panels. False, with
/// an error in \p pReport, if a file cannot be read, a bone does not exist or does not rotate, or memory runs out.
QEX_API bool CollectAngles(const KQexFigureFiles& pFiles, const KQexAngleOptions& pOptions, KQexChart& pChart,
                           KQexFigureReport& pReport) noexcept;

/// The same for a loaded figure, in \p pTake, one of its takes: the degrees of freedom of GetDofTracks(), between keys as it says; of joints
/// without (glTF; AMC without mKeepDofValues), the local Euler angles of the node, in its rotation order, without limits. False as above.
QEX_API bool CollectAngles(const KQexFigure& pFigure, const KQexFigureTake& pTake, const KQexAngleOptions& pOptions, KQexChart& pChart,
                           KQexFigureReport& pReport) noexcept;

} // namespace qexsdk

#endif
