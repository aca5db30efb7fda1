#ifndef TESTS_QEXCLIP_CLIPFIGURE_H
#define TESTS_QEXCLIP_CLIPFIGURE_H

#include <qexclip/kqexclip.h>

#include <vector>

namespace qextest
{

constexpr double kNear = 2e-4; ///< Centimetres, for a figure of 180: single precision.

/// A figure symmetric at rest: hips, spine, head, both arms with elbows and both legs with knees; its root walks and all joints turn.
/// 24 frames a second. \p pSeed chooses the motion, \p pFrames its length.
qexsdk::KQexClip MakeClipFigure(unsigned int pSeed, int pFrames);

/// The world places of all joints in frame \p pFrame, three numbers each.
std::vector<double> Places(const qexsdk::KQexClip& pClip, long long pFrame);

/// The largest difference between numbers of the same index; infinite for different sizes.
double LargestDifference(const std::vector<double>& pOne, const std::vector<double>& pOther);

} // namespace qextest

#endif
