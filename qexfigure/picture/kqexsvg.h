#ifndef QEXFIGURE_PICTURE_KQEXSVG_H
#define QEXFIGURE_PICTURE_KQEXSVG_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>

namespace qexsdk
{

inline constexpr unsigned kPictureBackground = 0xfdfdfb; ///< sRGB, 0xRRGGBB.

/// A picture as SVG text, and its size.
struct QEX_API KQexSvg
{
    std::string mText;       ///< The whole file, in UTF-8.
    double      mWidth = 0;  ///< Pixels.
    double      mHeight = 0; ///< Pixels.
};

} // namespace qexsdk

#endif
