#ifndef APPS_ASF_PICTURE_PICTUREFRAMES_H
#define APPS_ASF_PICTURE_PICTUREFRAMES_H

#include <cstddef>
#include <vector>

namespace asfapp
{

/// The default: up to five frames of \p pCount, evenly spaced from the first to the last.
std::vector<size_t> DefaultFrames(size_t pCount);

/// The largest number of poses in a picture: one for each pixel of its width.
size_t MaxPoses();

/// Keeps at most MaxPoses() frames: the first, the last, and evenly spaced ones between them. Returns the number left out.
size_t LimitFrames(std::vector<size_t>& pFrames);

} // namespace asfapp

#endif
