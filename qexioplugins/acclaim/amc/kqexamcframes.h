#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCFRAMES_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCFRAMES_H

#include <kbaselib/kmath/kgeom.h>
#include <qexscene/kqexframe.h>
#include <qexscene/kqexscene.h>

#include <cstddef>
#include <vector>

namespace qexsdk
{

/// Where a joint is and how it is turned, world space.
struct KQexJointFrame
{
    KgeRMatrix mRotation;         ///< A rotation, whatever scaling and shear the node has.
    double     mPosition[3] = {}; ///< Centimetres.
};

/// The frames of a tree's nodes at one time, numbered as in the KQexFrame that they come from.
class KQexJointFrames
{
public:
    /// Takes over the nodes of \p pFrame, which has world transforms. The rotation is that of the world transform; where that has none,
    /// because the node or an ancestor is scaled to zero, its local rotation continues its parent's frame. May throw std::bad_alloc the
    /// first time.
    void Set(const KQexFrame& pFrame);

    /// The frame of node \p pIndex.
    const KQexJointFrame& GetFrame(size_t pIndex) const { return mFrames[pIndex]; }

private:
    void ContinueParent(const KQexFrame& pFrame, size_t pIndex);

    std::vector<KQexJointFrame> mFrames; ///< One per node.
};

} // namespace qexsdk

#endif
