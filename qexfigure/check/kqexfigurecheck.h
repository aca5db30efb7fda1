#ifndef QEXFIGURE_CHECK_KQEXFIGURECHECK_H
#define QEXFIGURE_CHECK_KQEXFIGURECHECK_H

#include <qexfigure/check/kqexfilemessages.h>
#include <qexfigure/kqexfigurefiles.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <string>

namespace qexsdk
{

/// What to look for.
struct QEX_API KQexFigureCheckOptions
{
    double       mMotionRate = 0;         ///< Frames per second of AMC motions; 0: the file's rate, else 120.
    bool         mAllowUnmatched = false; ///< Accept an AMC motion of another skeleton, see KQexSkeletonMatch.
    bool         mLimits = true;          ///< Warn of values outside the skeleton's limits.
    std::string  mScaleOption;            ///< How a user of the program scales a figure, for a note; may be empty.
    KQexProgress mProgress;               ///< Called with the fraction read, 0 to 1; false cancels. May be empty.
};

/// Looks for problems in a file: in the motion if \p pFiles has one (the first), else in the skeleton or the figure. Errors are what
/// makes it unreadable; after an error in a motion, reading goes on with the next frame. Warnings are about what is ignored, or read
/// otherwise than meant: bones outside the hierarchy, lower limits above the upper ones, extra text on a line; values outside the
/// skeleton's limits; names used twice, takes in which nothing moves. Nothing throws.
/// \param pMessages receives the errors and warnings about the file
/// \param pReport receives the status, messages about the motion's skeleton, and a note if the figure is far smaller or larger than people
/// \return true if there are no errors
QEX_API bool CheckFigure(const KQexFigureFiles& pFiles, const KQexFigureCheckOptions& pOptions, KQexFileMessages& pMessages,
                         KQexFigureReport& pReport) noexcept;

} // namespace qexsdk

#endif
