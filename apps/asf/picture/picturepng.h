#ifndef APPS_ASF_PICTURE_PICTUREPNG_H
#define APPS_ASF_PICTURE_PICTUREPNG_H

#include <qexfigure/picture/kqexsvg.h>

#include <string>

namespace asfapp
{

/// Whether this build writes PNG: needs librsvg.
bool IsPngBuiltIn();

/// The largest width in pixels that a PNG with these proportions can have; no more than \p pWidth, rounded up, which is above 0.
int MaxPngWidth(double pWidth, double pHeight);

/// Draws \p pSvg, which is no wider than MaxPngWidth(), as a PNG file of its size. "", or an error text; \p pPng is empty then.
std::string DrawPng(const qexsdk::KQexSvg& pSvg, std::string& pPng);

} // namespace asfapp

#endif
