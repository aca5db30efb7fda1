#ifndef APPS_ASF_FIGURE_MOTIONSCENE_H
#define APPS_ASF_FIGURE_MOTIONSCENE_H

#include <apps/asf/figure/motioninput.h>
#include <apps/asf/figure/skeletonfile.h>
#include <qexscene/kqexscene.h>

#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

/// A joint of an imported skeleton: the start of a bone, or the end of a leaf bone.
struct KJoint
{
    std::string mName;
    int         mParent = -1;   ///< Index of the parent joint, -1 for the root.
    bool        mIsEnd = false; ///< The end of a leaf bone, named after it with the suffix _End.
};

/// A skeleton and its motion as a scene; gives the position of every joint in every frame of the file.
class KMotionScene
{
public:
    KMotionScene();
    ~KMotionScene();
    KMotionScene(const KMotionScene&) = delete;
    KMotionScene& operator=(const KMotionScene&) = delete;

    /// Imports \p pInput and prints the messages. False after an error.
    bool Import(const KMotionInput& pInput, const KMotionOptions& pOptions, KConsole& pConsole);

    /// All joints in pre-order, the root first.
    const std::vector<KJoint>& GetJoints() const { return mJoints; }

    /// Frame numbers, ascending.
    const std::vector<long long>& GetFrames() const { return mFrames; }

    /// Frames per second.
    double GetRate() const { return mInfo.mSamplesPerSecond; }

    /// Seconds from the file's first frame to frame \p pIndex of GetFrames().
    double GetSeconds(size_t pIndex) const { return TimeOf(pIndex).GetSeconds(); }

    /// World positions of all joints in frame \p pIndex of GetFrames(), in centimetres. Only after a successful Import().
    void Evaluate(size_t pIndex, std::vector<KPoint>& pPositions);

private:
    void          CollectJoints();
    void          CollectFrames();
    qexsdk::KTime TimeOf(size_t pIndex) const { return mTimes[pIndex]; }

    qexsdk::KQexScene*           mScene;
    qexsdk::KQexNode*            mRoot = nullptr;
    qexsdk::KQexAmcInfo          mInfo;
    std::vector<KJoint>          mJoints;
    std::vector<long long>       mFrames;
    std::vector<qexsdk::KTime>   mTimes;
    qexsdk::KQexGlobalTransforms mTransforms;
};

} // namespace asfapp

#endif
