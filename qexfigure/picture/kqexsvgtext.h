#ifndef QEXFIGURE_PICTURE_KQEXSVGTEXT_H
#define QEXFIGURE_PICTURE_KQEXSVGTEXT_H

#include <string>

/// \file
/// The pieces of an SVG file's text.

namespace qexsdk
{

/// A length in pixels, with at most two decimals.
std::string Px(double pValue);

/// A colour 0xRRGGBB as "#rrggbb".
std::string HexColor(unsigned pColor);

/// Escapes text for XML. Invalid bytes and control characters become U+FFFD.
std::string EscapeXml(const std::string& pText);

/// A text element; \p pAnchor is start, middle or end.
std::string TextAt(double pX, double pY, const char* pClass, const char* pAnchor, const std::string& pText);

/// A straight line.
std::string LineAt(const char* pClass, double pX1, double pY1, double pX2, double pY2);

} // namespace qexsdk

#endif
