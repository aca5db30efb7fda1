#ifndef APPS_ASF_FIGURE_MOTIONOPTIONS_H
#define APPS_ASF_FIGURE_MOTIONOPTIONS_H

#include <apps/asf/console.h>
#include <qexfigure/kqexfigure.h>

#include <cstdint>
#include <string>

namespace asfapp
{

/// Options shared by the commands that read figures.
struct KMotionOptions
{
    std::string mAsf;                    ///< --asf; empty: search for it.
    bool        mSearchesAbove = false;  ///< --search-above: search for it in the folder above, too.
    std::string mFrom;                   ///< --from: format of a single input; empty: detected.
    bool        mHasRate = false;        ///< The command takes --fps.
    std::string mFps;                    ///< --fps, the rate wanted in the output, as given; empty: the file's.
    double      mRate = 0;               ///< --fps as a number, 0 without one.
    double      mSampleRate = 0;         ///< Rate at which glTF curves are sampled when read; 0: that of their keys.
    std::string mSourceFps;              ///< --source-fps, the rate of AMC files, as given; empty: the file's, else 120.
    double      mMotionRate = 0;         ///< --source-fps as a number, 0 without one.
    bool        mAllowUnmatched = false; ///< --allow-unmatched: accept a motion of another skeleton.
    bool        mKeepDofValues = false;  ///< The command needs the values of degrees of freedom.
    bool        mQuiet = false;
};

/// Parses a rate: "120", "23.976" or "30000/1001". False, and \p pRate unchanged, if \p pText is not a rate in [1e-3, 1e6].
bool ParseRate(const std::string& pText, double& pRate);

/// Parses a number of bytes: "800000", "64K", "512M" or "2G" (of 1024). False, and \p pBytes unchanged, if \p pText is none above 0.
bool ParseBytes(const std::string& pText, uint64_t& pBytes);

/// Parses all of \p pText as a finite number. False if it is not one.
bool ParseNumber(const std::string& pText, double& pValue);

/// Checks and applies the options. False after an error.
bool ApplyMotionOptions(KMotionOptions& pOptions, KConsole& pConsole);

/// The options for opening files.
qexsdk::KQexFigureFilesOptions FilesOptions(const KMotionOptions& pOptions);

} // namespace asfapp

#endif
