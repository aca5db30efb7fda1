#ifndef APPS_ASF_COMMANDS_DRAWOPTIONS_H
#define APPS_ASF_COMMANDS_DRAWOPTIONS_H

#include <apps/asf/console.h>
#include <apps/asf/figure/motionoptions.h>
#include <qexfigure/kqexfigurefiles.h>

#include <string>
#include <vector>

namespace asfapp
{

/// Options of `asf draw`.
struct KDrawOptions
{
    std::vector<std::string> mFiles;
    std::string              mOutput;
    std::string              mView; ///< Empty: front.
    std::string              mFrames;
    std::string              mTake;
    std::vector<std::string> mTrails;
    std::vector<std::string> mCurves; ///< Joints whose angles are drawn instead of poses.
    bool                     mNames = false;
    int                      mWidth = 0; ///< Pixels; 0: as the picture needs.
    KMotionOptions           mMotion;
};

/// The file's name without its folders.
std::string PictureTitle(const qexsdk::KQexFigureFile& pFile);

/// True without --curves, or if no option of poses is given with it. Else false, after an error.
bool CheckCurveOptions(const KDrawOptions& pOptions, KConsole& pConsole);

/// Draws the angles of joints in a motion. Errors are printed.
void DrawCurves(const KDrawOptions& pOptions, const qexsdk::KQexFigureFiles& pFiles, KConsole& pConsole);

} // namespace asfapp

#endif
