#ifndef PYTHON_CORE_CORESOURCE_H
#define PYTHON_CORE_CORESOURCE_H

#include <qexfigure/kqexfigurefiles.h>
#include <qexfigure/kqexfigurereport.h>

#include <pybind11/pybind11.h>

#include <optional>
#include <string>

namespace qexpython
{

/// What is read, and how. Python's code fills it; texts are bytes, as files have them.
struct KSource
{
    std::string                mPath;     ///< Or the name of the bytes.
    std::optional<std::string> mContents; ///< The contents, if they are not those of the path.
    std::string                mSkeleton; ///< Path of the skeleton of a motion alone, or the name of its bytes; empty: searched for.
    std::optional<std::string> mSkeletonContents;
    std::string                mFormat;         ///< Empty: detected.
    double                     mRate = 0;       ///< Frames per second of the clip; 0: the file's.
    double                     mSourceRate = 0; ///< Frames per second of an AMC file; 0: what it says.
    std::string                mTake;           ///< Name; empty: all.
    bool                       mFirstOnly = false;
    bool                       mAllowUnmatched = false;
    bool                       mKeepGoodFrames = false;
    bool                       mRemoveDummies = false;
    bool                       mLimits = true; ///< A check warns of values outside their limits.

    /// Opens the file and its skeleton. False, with an error in \p pReport, if that fails. Takes the bytes.
    bool Open(qexsdk::KQexFigureFiles& pFiles, qexsdk::KQexFigureReport& pReport);
};

/// A text of a file: UTF-8, other bytes as Python's surrogate escapes.
pybind11::str TextOf(const std::string& pBytes);

/// A list of (path, line, severity, text, kind).
pybind11::list MessagesOf(const qexsdk::KQexFigureReport& pReport);

/// Throws what Python has as an exception, or MemoryError, if that is why \p pReport's work ended.
void ThrowIfStopped(const qexsdk::KQexFigureReport& pReport);

} // namespace qexpython

#endif
