// Builds a small figure and its motion in code and writes them in every format: build_figure FOLDER

#include <qex/acclaim.h>
#include <qex/bvh.h>
#include <qex/gltf.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace qexsdk;

namespace
{

/// A joint of the figure: its parent in the table (-1 for the root), and where it is, in centimetres from its parent, y up.
struct KJoint
{
    const char* mName;
    int         mParent;
    double      mOffset[3];
};

/// A name that ends in "_End" is the end of its parent's bone.
constexpr KJoint kJoints[] = {
    {"hips", -1, {0, 92, 0}},
    {"chest", 0, {0, 30, 0}},
    {"head", 1, {0, 24, 0}},
    {"head_End", 2, {0, 18, 0}},
    {"left_arm", 1, {18, 18, 0}},
    {"left_hand", 4, {52, 0, 0}},
    {"left_hand_End", 5, {12, 0, 0}},
    {"right_arm", 1, {-18, 18, 0}},
    {"right_hand", 7, {-52, 0, 0}},
    {"right_hand_End", 8, {-12, 0, 0}},
    {"left_leg", 0, {9, -4, 0}},
    {"left_foot", 10, {0, -80, 0}},
    {"left_foot_End", 11, {0, -6, 14}},
    {"right_leg", 0, {-9, -4, 0}},
    {"right_foot", 13, {0, -80, 0}},
    {"right_foot_End", 14, {0, -6, 14}},
};

constexpr KFrameRate kRate = {30, 1};
constexpr int        kFrames = 61;

/// Adds the joints' nodes to \p pScene, in the order of the table. Empty when memory runs out; the scene owns what was made.
std::vector<KQexNode*> MakeFigure(KQexScene* pScene)
{
    std::vector<KQexNode*> lNodes;
    for (const KJoint& lJoint : kJoints)
    {
        KQexNode*     lNode = KQexNode::Create(pScene, lJoint.mName);
        KQexSkeleton* lSkeleton = KQexSkeleton::Create(pScene, "");
        if (lNode == nullptr || lSkeleton == nullptr)
        {
            return {};
        }
        lSkeleton->SetSkeletonType(lJoint.mParent < 0 ? KQexSkeleton::eSKELETON_ROOT : KQexSkeleton::eSKELETON_JOINT);
        lNode->SetNodeAttribute(lSkeleton);
        lNode->mLocalTranslation.Set(KQexVector4(lJoint.mOffset[0], lJoint.mOffset[1], lJoint.mOffset[2]));
        KQexNode* lParent = lJoint.mParent < 0 ? pScene->GetRootNode() : lNodes[static_cast<size_t>(lJoint.mParent)];
        lParent->AddChild(lNode);
        lNodes.push_back(lNode);
    }
    return lNodes;
}

/// Animates one channel (0 x, 1 y, 2 z) of a node's translation or rotation in the take \p pTake: \p pMiddle plus a wave of
/// \p pSize, in centimetres or degrees, \p pCycles times in the take. False when memory runs out.
bool Swing(KQexProperty& pProperty, const char* pTake, unsigned int pChannel, double pMiddle, double pSize, double pCycles)
{
    KQexAnimCurveNode* lCurveNode = pProperty.GetCurveNode(true, pTake);
    KQexAnimCurve*     lCurve = lCurveNode != nullptr ? KQexAnimCurve::Create(lCurveNode->GetScene(), "") : nullptr;
    bool               lOk = lCurve != nullptr;
    for (int i = 0; lOk && i < kFrames; ++i)
    {
        const double lPhase = 6.283185307179586 * pCycles * i / (kFrames - 1);
        lOk = lCurve->AppendSample(KTime::FromFrame(i, kRate), static_cast<float>(pMiddle + pSize * std::sin(lPhase)));
    }
    return lOk && lCurveNode->ConnectToChannel(lCurve, pChannel, true);
}

/// Makes the figure hop and wave its left arm.
bool MakeMotion(const std::vector<KQexNode*>& pNodes, const char* pTake)
{
    return Swing(pNodes[0]->mLocalTranslation, pTake, 1, 92, 3, 4) && Swing(pNodes[0]->mLocalRotation, pTake, 1, 0, 15, 1) &&
           Swing(pNodes[4]->mLocalRotation, pTake, 2, 45, 30, 2) && Swing(pNodes[5]->mLocalRotation, pTake, 2, 20, 25, 4);
}

/// Says whether \p pPath was written, and if not, why.
template <typename TMessages>
bool Report(bool pOk, const std::string& pPath, const TMessages& pMessages)
{
    std::printf("%s %s\n", pOk ? "written:" : "not written:", pPath.c_str());
    for (const KQexTextMessage& lMessage : pMessages)
    {
        std::fprintf(stderr, "%s: %s\n", pPath.c_str(), lMessage.mText.c_str());
    }
    return pOk;
}

bool WriteAcclaim(KQexNode* pRoot, KQexAnimStack* pTake, const std::string& pName)
{
    KQexExportAcclaimOptions lOptions;
    KQexExportAcclaimResult  lResult;
    lOptions.mStack = pTake;
    KQexExporterAcclaim::Export(pRoot, (pName + ".asf").c_str(), (pName + ".amc").c_str(), lOptions, lResult);
    std::vector<KQexTextMessage> lMessages;
    for (const KQexImportMessage& lMessage : lResult.mMessages)
    {
        lMessages.push_back(lMessage.mMessage);
    }
    return Report(lResult.mOk, pName + ".asf and .amc", lMessages);
}

bool WriteBvh(KQexNode* pRoot, KQexAnimStack* pTake, const KQexSampling& pSampling, const std::string& pPath)
{
    KQexFileBvh         lFile;
    KQexBvhWriteOptions lOptions;
    lOptions.mStack = pTake;
    lOptions.mSampling = pSampling;
    // Only a successful Close() replaces an existing file.
    const bool lOk = lFile.OpenWrite(pPath.c_str()) && lFile.Write({pRoot}, lOptions) && lFile.Close();
    if (!lOk)
    {
        lFile.Discard();
    }
    return Report(lOk, pPath, lFile.GetMessages());
}

bool WriteGltf(KQexNode* pRoot, KQexAnimStack* pTake, const KQexSampling& pSampling, const std::string& pPath)
{
    KQexFileGltf         lFile;
    KQexGltfWriteOptions lOptions;
    lOptions.mTakes = {{pTake, pSampling}};
    return Report(lFile.Write(pPath, {pRoot}, lOptions), pPath, lFile.GetMessages());
}

} // namespace

int main(int pCount, char** pArguments)
{
    const std::string            lName = std::string(pCount > 1 ? pArguments[1] : ".") + "/figure";
    KQexScene*                   lScene = KQexScene::Create("figure");
    const std::vector<KQexNode*> lNodes = MakeFigure(lScene);
    bool                         lOk = !lNodes.empty() && MakeMotion(lNodes, "wave");
    if (lOk)
    {
        KQexNode*      lRoot = lNodes.front();
        KQexAnimStack* lTake = lScene->FindAnimStack("wave");
        KQexSampling   lSampling; // All frames of the take, at the rate of its keys.
        lOk = MakeSampling({lRoot}, lTake, KQexSamplingRequest(), lSampling) && WriteAcclaim(lRoot, lTake, lName) &&
              WriteBvh(lRoot, lTake, lSampling, lName + ".bvh") && WriteGltf(lRoot, lTake, lSampling, lName + ".glb");
    }
    lScene->Destroy();
    return lOk ? 0 : 1;
}
