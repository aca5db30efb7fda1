#ifndef APPS_ASF_PICTURE_PICTUREOUTPUT_H
#define APPS_ASF_PICTURE_PICTUREOUTPUT_H

#include <apps/asf/console.h>
#include <apps/asf/picture/picture.h>

#include <string>

namespace asfapp
{

constexpr int kMinPictureWidth = 16;    ///< Pixels.
constexpr int kMaxPictureWidth = 32767; ///< Pixels.

/// False, after an error, if a picture cannot be written under the name \p pPath: the ending of another format, or .png without \p pHasPng
/// (see IsPngBuiltIn()).
bool CheckPictureName(const std::string& pPath, bool pHasPng, KConsole& pConsole);

/// Writes the picture as PNG to a path that ends in .png, as SVG to any other. On failure an error, and the old file unchanged.
/// \param pWidth pixels; 0: as the poses need; for PNG less, with a note, if that is too large
/// \param pInput path of the input, for messages
void WritePicture(const KPicture& pPicture, int pWidth, const std::string& pPath, const std::string& pInput, KConsole& pConsole);

} // namespace asfapp

#endif
