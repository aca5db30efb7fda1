#include <qexioplugins/bvh/kqexbvhbuilder.h>

#include <kbaselib/kmath/keulertable.h>

#include <utility>

namespace qexsdk
{

namespace
{

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

} // namespace

bool KQexBvhBuilder::Expected(const char* pWhat)
{
    const std::string_view lFound = mTokens.Offending();
    if (!mFile.HasFailed())
    {
        mFile.Error("%s expected, found (%.*s)\n", pWhat, QEX_PRINTF_VIEW(lFound));
    }
    return false;
}

bool KQexBvhBuilder::OutOfMemory()
{
    mFile.Error("Out of memory\n");
    return false;
}

KQexNode* KQexBvhBuilder::MakeNode(const std::string& pName)
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

bool KQexBvhBuilder::OpenJoint(bool pIsEndSite)
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
    // Reserve first: nothing may fail between creating the node and adding it to the tree.
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
    mOpen.push_back(KOpenJoint{lNode, pIsEndSite});
    return true;
}

bool KQexBvhBuilder::ReadOffset()
{
    double lOffset[3];
    for (double& lValue : lOffset)
    {
        if (!mTokens.NextNumber(lValue))
        {
            return Expected("Offset value");
        }
        lValue *= mOptions.mScale;
    }
    mOpen.back().mNode->mLocalTranslation.Set(qexVectorTemplate3<double>(lOffset[0], lOffset[1], lOffset[2]));
    return true;
}

int KQexBvhBuilder::ReadChannelWord()
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

bool KQexBvhBuilder::MakeCurve(KQexNode* pNode, int pCode)
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

/// Sets the rotation order from the axes of the rotation channels, which a file lists last applied first. An axis without a
/// channel stays at zero, so its position in the order does not matter.
void KQexBvhBuilder::SetOrder(const KOpenJoint& pJoint)
{
    int lAxes[3] = {0, 1, 2};
    int lSorted = 0;
    for (int i = pJoint.mRotationCount - 1; i >= 0; --i)
    {
        for (int j = lSorted; j < 3; ++j)
        {
            if (lAxes[j] == pJoint.mRotationAxes[i])
            {
                std::swap(lAxes[j], lAxes[lSorted]);
            }
        }
        ++lSorted;
    }
    for (int lOrder = 0; lOrder < 6; ++lOrder)
    {
        const int* lRow = KmEulerAxis[2 * lOrder];
        if (lRow[0] == lAxes[0] && lRow[1] == lAxes[1])
        {
            pJoint.mNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(lOrder));
        }
    }
}

/// Adds the channel to the joint being read. A joint may have several channel statements; none repeats a channel of another.
bool KQexBvhBuilder::AddChannel(int pCode)
{
    KOpenJoint& lJoint = mOpen.back();
    if ((lJoint.mChannels & (1u << pCode)) != 0)
    {
        mFile.Error("Channel repeated (%s)\n", kChannelWords[pCode]);
        return false;
    }
    lJoint.mChannels |= 1u << pCode;
    if (pCode >= 3)
    {
        lJoint.mRotationAxes[lJoint.mRotationCount++] = pCode - 3;
    }
    return MakeCurve(lJoint.mNode, pCode);
}

bool KQexBvhBuilder::ReadChannels()
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
    if (lCount > 0 && mOpen.back().mIsEndSite)
    {
        mFile.Warning("End Site has channels (%s), they are read\n", mOpen.back().mNode->GetName());
    }
    for (long long i = 0; i < lCount; ++i)
    {
        const int lCode = ReadChannelWord();
        if (lCode < 0)
        {
            return Expected("Channel name");
        }
        if (!AddChannel(lCode))
        {
            return false;
        }
    }
    SetOrder(mOpen.back());
    return true;
}

bool KQexBvhBuilder::ReadJointStatement()
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
    if (mOpen.back().mIsEndSite)
    {
        return Expected("OFFSET or }");
    }
    if (mTokens.Accept("JOINT"))
    {
        return OpenJoint(false);
    }
    if (mTokens.Accept("End"))
    {
        mTokens.Accept("Site");
        return OpenJoint(true);
    }
    return Expected("OFFSET, CHANNELS, JOINT, End Site or }");
}

bool KQexBvhBuilder::ReadHierarchy()
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

void KQexBvhBuilder::Finish(KQexBvhReadResult& pResult)
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

} // namespace qexsdk
