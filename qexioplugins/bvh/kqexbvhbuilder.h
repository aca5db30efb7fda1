#ifndef QEXIOPLUGINS_BVH_KQEXBVHBUILDER_H
#define QEXIOPLUGINS_BVH_KQEXBVHBUILDER_H

#include <qexioplugins/bvh/kqexbvhtokens.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

#include <string>
#include <vector>

// "%.*s" takes an int and a pointer.
#define QEX_VIEW(pView) static_cast<int>((pView).size()), (pView).data()

namespace qexsdk
{

/// One read of a file: the tree under construction, and the curves that its channels fill. What was made is the caller's to undo when an
/// operation returns false or throws std::bad_alloc.
class KQexBvhBuilder
{
public:
    /// All of them have to outlive this.
    KQexBvhBuilder(KQexFileBvh& pFile, KQexScene* pScene, const KQexBvhReadOptions& pOptions)
        : mFile(pFile), mTokens(pFile), mScene(pScene), mOptions(pOptions)
    {
    }

    /// The joints, none of them below a node of the scene yet.
    bool ReadHierarchy();
    /// The frames, into curves.
    bool ReadMotion(KQexBvhReadResult& pResult);
    /// Adds the roots to the scene.
    void Finish(KQexBvhReadResult& pResult);

private:
    struct KChannel
    {
        KQexAnimCurve* mCurve;
        double         mFactor;
    };

    struct KOpenJoint
    {
        KQexNode* mNode;
        double    mOffset[3];
        bool      mIsEndSite;
    };

    bool      OpenJoint(bool pIsEndSite);
    bool      ReadJointStatement();
    bool      ReadOffset();
    bool      ReadChannels();
    int       ReadChannelWord();
    bool      SetOrder(KQexNode* pNode, const int* pAxes, int pCount);
    KQexNode* MakeNode(const std::string& pName);
    bool      MakeCurve(KQexNode* pNode, int pCode);
    bool      ReadFrameCount();
    bool      ReadFrameTime();
    bool      ReadFrames();
    bool      ReadFrame(bool& pAtEnd);
    bool      AppendFrame();
    bool      Expected(const char* pWhat);
    bool      OutOfMemory();
    bool      HasFrames() const { return mFrames > 0; }

    KQexFileBvh&              mFile;
    KQexBvhTokens             mTokens;
    KQexScene*                mScene;
    const KQexBvhReadOptions& mOptions;
    std::vector<KQexNode*>    mRoots;
    std::vector<KOpenJoint>   mOpen; ///< From the root down to the joint being read.
    std::vector<KChannel>     mChannels;
    std::vector<double>       mFrame; ///< Values of one frame, one a channel.
    long long                 mDeclared = -1;
    long long                 mFrames = 0;
    long long                 mStep = 0; ///< Ticks between frames.
    bool                      mCancelled = false;
};

} // namespace qexsdk

#endif
