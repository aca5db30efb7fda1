#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCREST_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCREST_H

#include <qexioplugins/acclaim/amc/kqexamcframes.h>
#include <qexioplugins/acclaim/amc/kqexamcsteps.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <cstddef>
#include <vector>

namespace qexsdk
{

/// How the rest pose of a skeleton relates to that of the nodes that move it: by one rotation of the whole pose, or, for a skeleton of
/// the same figure in another pose, joint by joint.
class KQexAmcRest
{
public:
    /// \param pBones all bones of the skeleton in pre-order, the root first
    /// \param pJoints one per bone; the root has a node
    /// \param pFrames the nodes at rest
    /// \param pScale factor of the nodes' positions
    /// All arguments must outlive this. May throw std::bad_alloc.
    KQexAmcRest(const std::vector<HKQexAsfNode>& pBones, const std::vector<KQexAmcJoint>& pJoints, const KQexJointFrames& pFrames,
                double pScale);

    /// Chooses the alignment, or finds it from the bones that have a direction. May throw std::bad_alloc.
    void Align(KQexAmcRestAlignment pAlignment);

    /// Rotation from the skeleton's rest pose to that of the nodes, as GetFrame() gives it.
    const KgeRMatrix& GetAlign() const { return mAlign; }

    /// The rest frame of the node of joint \p pJoint, which must have one.
    const KQexJointFrame& GetFrame(std::size_t pJoint) const;

private:
    /// The way from the nearest ancestor joint with a node to a joint, at rest.
    struct KLink
    {
        std::size_t mJoint = 0;
        std::size_t mParent = 0;
        double      mInSkeleton[3] = {}; ///< Centimetres, world.
        double      mInNodes[3] = {};    ///< The same, scaled.
        double      mLength = 0.0;       ///< Of mInSkeleton.
    };

    void   FindStarts();
    void   FindLinks();
    double GetMismatch(const KLink& pLink, const KgeRMatrix& pRotation) const;
    bool   Fits(const KgeRMatrix& pRotation) const;
    double GetMeanMismatch(const KgeRMatrix& pRotation) const;
    double GetAxisMismatch(const KgeRMatrix& pRotation) const;
    bool   FindRotation(KgeRMatrix& pRotation) const;
    bool   IsSameFigure() const;

    const std::vector<HKQexAsfNode>& mBones;
    const std::vector<KQexAmcJoint>& mJoints;
    const KQexJointFrames&           mFrames;
    double                           mScale;
    KgeRMatrix                       mAlign;
    std::vector<KQexJointFrame>      mOwn;               ///< By bone: the skeleton's rest pose, its positions in units of the nodes.
    bool                             mIsByJoint = false; ///< GetFrame() gives mOwn.
    std::vector<KLink>               mLinks;             ///< Of the joints that are not where that ancestor is.
    double                           mLongest = 0.0;     ///< The longest of mLinks.
};

} // namespace qexsdk

#endif
