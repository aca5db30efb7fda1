#include <qexfigure/picture/kqexpicturejoints.h>

namespace qexsdk
{

namespace
{

/// The joint that bone \p pBone is named after.
size_t NamingJoint(const std::vector<KQexFigureJoint>& pJoints, size_t pBone)
{
    return pJoints[pBone].mParent < 0 ? pBone : static_cast<size_t>(pJoints[pBone].mParent);
}

/// A label for each joint, at the start of its first child's bone; for a joint without children, at the end of its own.
std::vector<KQexPictureLabel> LabelsOf(const std::vector<KQexFigureJoint>& pJoints)
{
    std::vector<size_t> lFirstChild(pJoints.size(), 0); // A root is nobody's child, so 0 is none.
    for (size_t lJoint = pJoints.size(); lJoint-- > 0;)
    {
        if (pJoints[lJoint].mParent >= 0)
        {
            lFirstChild[static_cast<size_t>(pJoints[lJoint].mParent)] = lJoint;
        }
    }
    std::vector<KQexPictureLabel> lLabels;
    for (size_t lJoint = 0; lJoint < pJoints.size(); ++lJoint)
    {
        if (!pJoints[lJoint].mIsEnd)
        {
            const bool lIsLeaf = lFirstChild[lJoint] == 0;
            lLabels.push_back({pJoints[lJoint].mName, lIsLeaf ? lJoint : lFirstChild[lJoint], lIsLeaf});
        }
    }
    return lLabels;
}

} // namespace

void SetPictureJoints(const std::vector<KQexFigureJoint>& pJoints, bool pLabels, KQexPicture& pPicture)
{
    std::vector<std::string> lNames;
    for (const KQexFigureJoint& lJoint : pJoints)
    {
        lNames.push_back(lJoint.mName);
    }
    const std::vector<KQexSide> lSides = SidesOf(lNames);
    pPicture.mNames.clear();
    pPicture.mSides.clear();
    for (size_t lBone = 0; lBone < pJoints.size(); ++lBone)
    {
        const size_t lJoint = NamingJoint(pJoints, lBone);
        pPicture.mNames.push_back(pJoints[lJoint].mName);
        pPicture.mSides.push_back(lSides[lJoint]);
    }
    pPicture.mLabels = pLabels ? LabelsOf(pJoints) : std::vector<KQexPictureLabel>();
}

KQexPicturePose PoseOf(const std::vector<KQexFigureJoint>& pJoints, const std::vector<KQexFigurePoint>& pPositions)
{
    KQexPicturePose lPose;
    lPose.mEnds = pPositions;
    lPose.mStarts.reserve(pJoints.size());
    for (size_t lBone = 0; lBone < pJoints.size(); ++lBone)
    {
        lPose.mStarts.push_back(pPositions[NamingJoint(pJoints, lBone)]);
    }
    return lPose;
}

void SetPictureBones(const std::vector<std::string>& pNames, bool pLabels, KQexPicture& pPicture)
{
    pPicture.mNames = pNames;
    pPicture.mSides = SidesOf(pNames);
    pPicture.mLabels.clear();
    for (size_t lBone = 0; pLabels && lBone < pNames.size(); ++lBone)
    {
        pPicture.mLabels.push_back({pNames[lBone], lBone, false});
    }
}

} // namespace qexsdk
