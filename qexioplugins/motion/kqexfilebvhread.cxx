#include <qexioplugins/motion/kqexbvhtokens.h>
#include <qexioplugins/motion/kqexfilebvh.h>
#include <qexscene/kqexsceneundo.h>

#include <algorithm>
#include <limits>
#include <new>

namespace qexsdk
{

namespace
{

// "%.*s" takes an int and a pointer.
#define QEX_VIEW(pView) static_cast<int>((pView).size()), (pView).data()

/// Channel words by code: positions x, y, z are 0 to 2, rotations about x, y, z are 3 to 5.
constexpr const char* kChannelWords[6] = {"Xposition", "Yposition", "Zposition", "Xrotation", "Yrotation", "Zrotation"};

template <typename T>
void ReserveOneMore(std::vector<T>& pVector)
{
    if (pVector.size() == pVector.capacity())
    {
        pVector.reserve(2 * pVector.size() + 8);
    }
}

/// The tree under construction, and the curves that its channels fill.
class KBvhBuilder
{
public:
    KBvhBuilder(KQexFileBvh& pFile, KQexScene* pScene, const KQexBvhReadOptions& pOptions)
        : mFile(pFile), mTokens(pFile), mScene(pScene), mOptions(pOptions)
    {
    }

    bool ReadHierarchy();
    bool ReadMotion(KQexBvhReadResult& pResult);
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
    KBvhTokens                mTokens;
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

bool KBvhBuilder::Expected(const char* pWhat)
{
    const std::string_view lFound = mTokens.Offending();
    if (!mFile.HasFailed())
    {
        mFile.Error("%s expected, found (%.*s)\n", pWhat, QEX_VIEW(lFound));
    }
    return false;
}

bool KBvhBuilder::OutOfMemory()
{
    mFile.Error("Out of memory\n");
    return false;
}

KQexNode* KBvhBuilder::MakeNode(const std::string& pName)
{
    KQexNode*     lNode = KQexNode::Create(mScene, pName.c_str());
    KQexSkeleton* lSkeleton = lNode != nullptr ? KQexSkeleton::Create(mScene, "") : nullptr;
    if (lSkeleton == nullptr)
    {
        if (lNode != nullptr)
        {
            lNode->Destroy();
        }
        return nullptr;
    }
    lSkeleton->SetSkeletonType(KQexSkeleton::eSKELETON_JOINT);
    lNode->SetNodeAttribute(lSkeleton);
    lNode->SetRotationActive(true);
    return lNode;
}

bool KBvhBuilder::OpenJoint(bool pIsEndSite)
{
    std::string lName(mTokens.NextName());
    if (pIsEndSite)
    {
        lName = std::string(mOpen.back().mNode->GetName()) + "_End";
    }
    else if (lName.empty())
    {
        return Expected("Joint name");
    }
    if (!mTokens.Accept("{"))
    {
        return Expected("{");
    }
    // Room first: nothing may fail between making the node and having it in the tree.
    ReserveOneMore(mOpen);
    ReserveOneMore(mRoots);
    KQexNode* lNode = MakeNode(lName);
    if (lNode == nullptr)
    {
        return OutOfMemory();
    }
    if (mOpen.empty())
    {
        mRoots.push_back(lNode);
    }
    else
    {
        mOpen.back().mNode->AddChild(lNode);
    }
    mOpen.push_back(KOpenJoint{lNode, {0, 0, 0}, pIsEndSite});
    return true;
}

bool KBvhBuilder::ReadOffset()
{
    KOpenJoint& lJoint = mOpen.back();
    for (double& lValue : lJoint.mOffset)
    {
        if (!mTokens.NextNumber(lValue))
        {
            return Expected("Offset value");
        }
        lValue *= mOptions.mScale;
    }
    lJoint.mNode->mLocalTranslation.Set(qexVectorTemplate3<double>(lJoint.mOffset[0], lJoint.mOffset[1], lJoint.mOffset[2]));
    return true;
}

int KBvhBuilder::ReadChannelWord()
{
    for (int lCode = 0; lCode < 6; ++lCode)
    {
        if (mTokens.Accept(kChannelWords[lCode]))
        {
            return lCode;
        }
    }
    return -1;
}

bool KBvhBuilder::MakeCurve(KQexNode* pNode, int pCode)
{
    const bool               lIsPosition = pCode < 3;
    const unsigned int       lAxis = static_cast<unsigned int>(pCode % 3);
    KQexProperty&            lProperty = lIsPosition ? static_cast<KQexProperty&>(pNode->mLocalTranslation) : pNode->mLocalRotation;
    KQexAnimCurveNode*       lCurveNode = lProperty.GetCurveNode(true, mOptions.mTakeName.c_str());
    static const char* const sSuffixes[6] = {"_tx", "_ty", "_tz", "_rx", "_ry", "_rz"};
    const std::string        lName = std::string(pNode->GetName()) + sSuffixes[pCode];
    ReserveOneMore(mChannels);
    KQexAnimCurve* lCurve = lCurveNode != nullptr ? KQexAnimCurve::Create(mScene, lName.c_str()) : nullptr;
    if (lCurve == nullptr)
    {
        return OutOfMemory();
    }
    if (!lCurveNode->ConnectToChannel(lCurve, lAxis, true))
    {
        lCurve->Destroy(false, false);
        return OutOfMemory();
    }
    mChannels.push_back(KChannel{lCurve, lIsPosition ? mOptions.mScale : 1.0});
    return true;
}

/// The rotation order of channels listed with the last applied first. Axes that have no channel stay at zero, so where
/// they stand in the order does not matter.
bool KBvhBuilder::SetOrder(KQexNode* pNode, const int* pAxes, int pCount)
{
    int lAxes[3] = {0, 1, 2};
    int lPlace = 0;
    for (int i = pCount - 1; i >= 0; --i)
    {
        for (int j = lPlace; j < 3; ++j)
        {
            if (lAxes[j] == pAxes[i])
            {
                std::swap(lAxes[j], lAxes[lPlace]);
            }
        }
        ++lPlace;
    }
    for (int lOrder = 0; lOrder < 6; ++lOrder)
    {
        const int* lRow = KmEulerAxis[2 * lOrder];
        if (lRow[0] == lAxes[0] && lRow[1] == lAxes[1])
        {
            pNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(lOrder));
        }
    }
    return true;
}

bool KBvhBuilder::ReadChannels()
{
    long long lCount = 0;
    if (!mTokens.NextCount(lCount))
    {
        return Expected("Number of channels");
    }
    if (lCount > 6)
    {
        mFile.Error("More than six channels (%lld)\n", lCount);
        return false;
    }
    KQexNode* lNode = mOpen.back().mNode;
    int       lRotations[3] = {0, 0, 0};
    int       lRotationCount = 0;
    unsigned  lSeen = 0;
    for (long long i = 0; i < lCount; ++i)
    {
        const int lCode = ReadChannelWord();
        if (lCode < 0)
        {
            return Expected("Channel name");
        }
        if ((lSeen & (1u << lCode)) != 0)
        {
            mFile.Error("Channel repeated (%s)\n", kChannelWords[lCode]);
            return false;
        }
        lSeen |= 1u << lCode;
        if (lCode >= 3)
        {
            lRotations[lRotationCount++] = lCode - 3;
        }
        if (!MakeCurve(lNode, lCode))
        {
            return false;
        }
    }
    return SetOrder(lNode, lRotations, lRotationCount);
}

bool KBvhBuilder::ReadJointStatement()
{
    if (mTokens.Accept("}"))
    {
        mOpen.pop_back();
        return true;
    }
    if (mTokens.Accept("OFFSET"))
    {
        return ReadOffset();
    }
    if (mTokens.Accept("CHANNELS"))
    {
        return ReadChannels();
    }
    if (!mOpen.back().mIsEndSite)
    {
        if (mTokens.Accept("JOINT"))
        {
            return OpenJoint(false);
        }
        if (mTokens.Accept("End"))
        {
            mTokens.Accept("Site");
            return OpenJoint(true);
        }
    }
    return Expected("OFFSET, CHANNELS, JOINT, End Site or }");
}

bool KBvhBuilder::ReadHierarchy()
{
    if (!mTokens.Accept("HIERARCHY"))
    {
        return Expected("HIERARCHY");
    }
    while (mTokens.Accept("ROOT"))
    {
        if (!OpenJoint(false))
        {
            return false;
        }
        while (!mOpen.empty())
        {
            if (!ReadJointStatement())
            {
                return false;
            }
        }
    }
    return !mRoots.empty() || Expected("ROOT");
}

bool KBvhBuilder::ReadFrameCount()
{
    if (!mTokens.Accept("Frames"))
    {
        return Expected("Frames:");
    }
    return mTokens.NextCount(mDeclared) || Expected("Number of frames");
}

bool KBvhBuilder::ReadFrameTime()
{
    if (!mTokens.Accept("Frame") || !mTokens.Accept("Time"))
    {
        return Expected("Frame Time:");
    }
    double lSeconds = 0.0;
    if (!mTokens.NextNumber(lSeconds))
    {
        return Expected("Frame time");
    }
    if (mOptions.mFramesPerSecond > 0.0)
    {
        lSeconds = 1.0 / mOptions.mFramesPerSecond;
    }
    else if (!(lSeconds > 0.0))
    {
        mFile.Warning("Frame time is not above zero (%g), using 120 frames a second\n", lSeconds);
        lSeconds = 1.0 / 120.0;
    }
    mStep = NearestFrameStep(lSeconds).Get();
    if (mStep <= 0)
    {
        mFile.Error("Frame time out of range (%g)\n", lSeconds);
        return false;
    }
    return true;
}

bool KBvhBuilder::AppendFrame()
{
    if (mFrames > (std::numeric_limits<long long>::max() - mStep) / mStep)
    {
        mFile.Error("More frames than can be timed (%lld)\n", mFrames);
        return false;
    }
    const KTime lTime(mFrames * mStep);
    for (size_t i = 0; i < mChannels.size(); ++i)
    {
        if (!mChannels[i].mCurve->AppendSample(lTime, static_cast<float>(mFrame[i] * mChannels[i].mFactor)))
        {
            return OutOfMemory();
        }
    }
    ++mFrames;
    return true;
}

/// Reads one frame's values and appends them when all are there: curves only ever hold complete frames.
bool KBvhBuilder::ReadFrame(bool& pAtEnd)
{
    pAtEnd = mTokens.Peek().empty() && !mFile.HasFailed();
    if (pAtEnd)
    {
        return true;
    }
    for (size_t i = 0; i < mFrame.size(); ++i)
    {
        if (!mTokens.NextNumber(mFrame[i]))
        {
            const std::string_view lFound = mTokens.Offending();
            if (!mFile.HasFailed())
            {
                mFile.Error("Frame %lld, value %zu of %zu: number expected, found (%.*s)\n", mFrames + 1, i + 1, mFrame.size(),
                            QEX_VIEW(lFound));
            }
            return false;
        }
    }
    return AppendFrame();
}

bool KBvhBuilder::ReadFrames()
{
    // Without channels there is nothing that frames could be told by, however many are declared.
    bool lAtEnd = mFrame.empty();
    while (!lAtEnd)
    {
        if (!ReadFrame(lAtEnd))
        {
            return false;
        }
        if (mOptions.mProgress && mFrames % 256 == 0 &&
            !mOptions.mProgress(mDeclared > 0 ? std::min(1.0, static_cast<double>(mFrames) / static_cast<double>(mDeclared)) : 0.0))
        {
            mCancelled = true;
            return false;
        }
    }
    if (mFrame.empty() ? !mTokens.Peek().empty() : mFrames != mDeclared)
    {
        mFile.Warning("%lld frames declared, %lld found\n", mDeclared, mFrames);
    }
    return true;
}

bool KBvhBuilder::ReadMotion(KQexBvhReadResult& pResult)
{
    if (mTokens.Peek().empty() && !mFile.HasFailed())
    {
        mFile.Warning("No MOTION section, using the rest pose\n");
        return true;
    }
    if (!mTokens.Accept("MOTION"))
    {
        return Expected("ROOT or MOTION");
    }
    if (!ReadFrameCount() || !ReadFrameTime())
    {
        return false;
    }
    mFrame.resize(mChannels.size());
    const bool lOk = ReadFrames() || (mOptions.mKeepGoodFrames && !mCancelled && HasFrames());
    pResult.mCancelled = mCancelled;
    return lOk;
}

void KBvhBuilder::Finish(KQexBvhReadResult& pResult)
{
    KQexNode* lParent = mOptions.mParentNode != nullptr ? mOptions.mParentNode : mScene->GetRootNode();
    for (KQexNode* lRoot : mRoots)
    {
        lParent->AddChild(lRoot);
    }
    pResult.mRoots.swap(mRoots);
    pResult.mFrames = mFrames;
    pResult.mStep = KTime(mStep);
}

} // namespace

KQexFileBvh::KQexFileBvh(bool pVerb) : KQexTextFile("BVH", " \t:", "", true, pVerb) {}

KQexFileBvh::~KQexFileBvh()
{
    Close();
}

bool KQexFileBvh::Read(KQexScene* pScene, const KQexBvhReadOptions& pOptions, KQexBvhReadResult& pResult)
{
    pResult = KQexBvhReadResult();
    KQexSceneUndo lUndo(pScene);
    KBvhBuilder   lBuilder(*this, pScene, pOptions);
    try
    {
        if (lBuilder.ReadHierarchy() && lBuilder.ReadMotion(pResult))
        {
            lBuilder.Finish(pResult);
            lUndo.Keep();
            return true;
        }
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
    }
    return false;
}

} // namespace qexsdk
