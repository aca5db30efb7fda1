#ifndef QEXIOPLUGINS_MOTION_KQEXSIDES_H
#define QEXIOPLUGINS_MOTION_KQEXSIDES_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// Side of the body that a bone belongs to.
enum KQexSide
{
    eSIDE_MIDDLE,
    eSIDE_LEFT,
    eSIDE_RIGHT
};

constexpr int kSideCount = 3; ///< Number of sides.

/// The side of each bone by its name: left or right if there is a counterpart on the other side (lfoot and rfoot, LeftFoot and
/// RightFoot, foot_l and foot_r, Bip01 L Foot and Bip01 R Foot). A name-space prefix and a number at the end do not count, so
/// rig:LeftFoot_07 and rig:RightFoot_12 are a pair. Linear in the total length of the names. Throws std::bad_alloc.
QEX_API std::vector<KQexSide> SidesOf(const std::vector<std::string>& pNames);

/// Red, green and blue of a side's bones in pictures and preview meshes: sRGB, 0xRRGGBB. Left is red, right is blue, the middle grey.
QEX_API unsigned SideColor(KQexSide pSide);

} // namespace qexsdk

#endif
