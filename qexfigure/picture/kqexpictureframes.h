#ifndef QEXFIGURE_PICTURE_KQEXPICTUREFRAMES_H
#define QEXFIGURE_PICTURE_KQEXPICTUREFRAMES_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <vector>

namespace qexsdk
{

/// The default: up to five frames of \p pCount, evenly spaced from the first to the last.
QEX_API std::vector<size_t> DefaultPictureFrames(size_t pCount);

/// The largest number of poses in a picture: one for each pixel of its width.
QEX_API size_t MaxPicturePoses();

/// Keeps at most MaxPicturePoses() frames: the first, the last, and evenly spaced ones between them. Returns the number left out.
QEX_API size_t LimitPictureFrames(std::vector<size_t>& pFrames);

} // namespace qexsdk

#endif
