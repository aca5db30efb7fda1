#ifndef QEXFIGURE_KQEXFIGUREPOSE_H
#define QEXFIGURE_KQEXFIGUREPOSE_H

#include <qexclip/kqexclipquantities.h>
#include <qexfigure/kqexfigure.h>
#include <qexscene/kqexframe.h>

#include <cstddef>
#include <vector>

namespace qexsdk
{

/// Unit of length and axes in which the joints of a figure are written.
struct QEX_API KQexOutputSpace
{
    double mPerCentimetre = 1.0; ///< Units of length per centimetre.
    bool   mZUp = false;         ///< Everything is turned by a quarter turn about x: z is up and -y is forward. Else y is up, z forward.

    /// Turns the vector \p pVector, or the three numbers of a quaternion that are along axes.
    void Turn(double pVector[3]) const;
};

/// The transforms of a figure's joints in one frame, in an output's unit and axes. With z up, the axes of the joints are turned as those
/// of the world are: what was a rotation about the joint's y is one about its z, and a joint without rotation stays one.
///
/// A root has no parent: its local transform is that in the world. Used by one thread at a time.
class QEX_API KQexFigurePose
{
public:
    /// The joints, which must outlive it, and the nodes, which have all of the joints' nodes. \p pParts: those that the frames have,
    /// eFRAME_WORLD among them. May throw std::bad_alloc.
    KQexFigurePose(const std::vector<KQexFigureJoint>& pJoints, const KQexFrameNodes& pNodes, const KQexOutputSpace& pSpace,
                   unsigned int pParts);

    /// Sets the frame whose transforms the methods below return; it must outlive this object or last until the next Set(). Does not
    /// allocate.
    void Set(const KQexFrame& pFrame);

    /// The joint's position, in units of the output.
    void GetPosition(KQexSpace pSpace, size_t pJoint, double pResult[3]) const;
    /// Its rotation, scaling left out. Needs frames with eFRAME_ROTATIONS.
    KQexQuaternion GetRotation(KQexSpace pSpace, size_t pJoint) const;
    /// Its own scale factors.
    void GetScaling(size_t pJoint, double pResult[3]) const;

private:
    bool IsWorld(KQexSpace pSpace, size_t pJoint) const { return pSpace == KQexSpace::eWORLD || (*mJoints)[pJoint].mParent < 0; }

    const std::vector<KQexFigureJoint>* mJoints;
    KQexOutputSpace                     mSpace;
    const KQexFrame*                    mFrame = nullptr;
    std::vector<size_t>                 mNodes;     ///< Index of each joint's node.
    std::vector<KQexQuaternion>         mRotations; ///< Of each node, in the world; or empty.
};

} // namespace qexsdk

#endif
