#ifndef APPS_ASF_PICTURE_PICTUREOUTPUT_H
#define APPS_ASF_PICTURE_PICTUREOUTPUT_H

#include <apps/asf/console.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexfigure/picture/kqexsvg.h>

#include <functional>
#include <string>

namespace asfapp
{

constexpr int kMinPictureWidth = 16;    ///< Pixels.
constexpr int kMaxPictureWidth = 32767; ///< Pixels.

/// False, after an error, if a picture cannot be written under the name \p pPath: the ending of another format, or .png without \p pHasPng
/// (see IsPngBuiltIn()).
bool CheckPictureName(const std::string& pPath, bool pHasPng, KConsole& pConsole);

/// Draws a picture, so many pixels wide (0: as it needs). False, with an error in the report, if it cannot be drawn.
using KDrawFunction = std::function<bool(double, qexsdk::KQexSvg&, qexsdk::KQexFigureReport&)>;

/// Writes what \p pDraw draws as PNG to a path that ends in .png, as SVG to any other. On failure an error, and the old file unchanged.
/// \param pContents what it shows, for the report of what was written
/// \param pWidth pixels; 0: as the picture needs; for PNG less, with a note, if that is too large
void WritePicture(const KDrawFunction& pDraw, const std::string& pContents, int pWidth, const std::string& pPath, KConsole& pConsole);

} // namespace asfapp

#endif
