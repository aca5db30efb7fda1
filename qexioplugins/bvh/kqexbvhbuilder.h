#ifndef QEXIOPLUGINS_BVH_KQEXBVHBUILDER_H
#define QEXIOPLUGINS_BVH_KQEXBVHBUILDER_H

#include <qexioplugins/bvh/kqexbvhtokens.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

#include <string>
#include <vector>

// A string view as the two arguments of "%.*s".
#define QEX_PRINTF_VIEW(pView) static_cast<int>((pView).size()), (pView).data()

namespace qexsdk
{

/// State of reading one file: the tree under construction and the curves of its channels. When an operation returns false or throws
/// std::bad_alloc, the caller undoes what was created.
class KQexBvhBuilder
{
public:
    /// All arguments must outlive the builder.
    KQexBvhBuilder(KQexFileBvh& pFile, KQexScene* pScene, const KQexBvhReadOptions& pOptions)
        : mFile(pFile), mTokens(pFile), mScene(pScene), mOptions(pOptions)
    {
    }

    /// Reads the joints; the roots have no parent yet.
    bool ReadHierarchy();
    /// Reads the frames into the curves.
    bool ReadMotion(KQexBvhReadResult& pResult);
    /// Adds the roots to the scene and fills \p pResult.
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
        bool      mIsEndSite;
        unsigned  mChannels = 0;                ///< Bit n: the channel with code n was read.
        int       mRotationAxes[3] = {0, 0, 0}; ///< Of its rotation channels, in the file's order.
        int       mRotationCount = 0;
    };

    bool      OpenJoint(bool pIsEndSite);
    bool      ReadJointStatement();
    bool      ReadOffset();
    bool      ReadChannels();
    int       ReadChannelWord();
    bool      AddChannel(int pCode);
    void      SetOrder(const KOpenJoint& pJoint);
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
    std::vector<double>       mFrame; ///< Values of one frame, one per channel.
    long long                 mDeclared = -1;
    long long                 mFrames = 0;
    long long                 mStep = 0; ///< Ticks between frames.
    bool                      mCancelled = false;
};

} // namespace qexsdk

#endif
