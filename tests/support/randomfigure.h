#ifndef TESTS_SUPPORT_RANDOMFIGURE_H
#define TESTS_SUPPORT_RANDOMFIGURE_H

#include <string>

/// \file
/// Random skeleton files with motions, for property tests.

namespace qextest
{

/// A skeleton file and a motion for it.
struct KRandomFigure
{
    std::string mAsf;
    std::string mAmc;
    bool        mIsRootRotated = false; ///< The root's rest orientation is not zero.
};

/// The figure of \p pSeed, always the same: \p pBones bones "b0", "b1", … in a random tree, with random length, direction, axis, axis
/// word and degrees of freedom (none to six, in any order, including translations), some with limits, in one of several length units,
/// in degrees or radians; the root's words are in random order. In the motion every degree of freedom oscillates for \p pFrames frames.
KRandomFigure MakeRandomFigure(unsigned int pSeed, int pBones, int pFrames);

} // namespace qextest

#endif
