#include <kbaselib/kmath/keulernearest.h>
#include <kbaselib/kmath/kmath.h>
#include <qexioplugins/gltf/kqexgltfreader.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <unordered_set>

namespace qexsdk
{

namespace
{

constexpr double kBaseKeys = 4e6;     ///< Keys that a file of any size may have.
constexpr double kKeysPerByte = 16.0; ///< Additional keys per byte of the file.
constexpr double kMaxTime = 1e9;      ///< Largest absolute time of a key, in seconds.

int PropertyIndexOf(const char* pPath)
{
    static const char* const sPaths[3] = {"translation", "rotation", "scale"};
    for (int i = 0; i < 3; ++i)
    {
        if (std::strcmp(pPath, sPaths[i]) == 0)
        {
            return i;
        }
    }
    return -1;
}

KQexGltfInterpolation InterpolationOf(const KQexGltfJson::KValue& pFrom, const std::string& pName)
{
    const std::string lWord = pFrom.IsValid() ? pFrom.GetText() : "LINEAR";
    if (lWord == "LINEAR")
    {
        return KQexGltfInterpolation::eLINEAR;
    }
    if (lWord == "STEP")
    {
        return KQexGltfInterpolation::eSTEP;
    }
    if (lWord == "CUBICSPLINE")
    {
        return KQexGltfInterpolation::eCUBIC;
    }
    throw KQexGltfError(pName + ": unknown value (" + lWord.substr(0, 100) + ")");
}

float ToFloat(double pValue)
{
    if (std::fabs(pValue) > static_cast<double>(std::numeric_limits<float>::max()))
    {
        throw KQexGltfError("A value is too large");
    }
    return static_cast<float>(pValue);
}

KQexProperty& PropertyOf(KQexNode* pNode, KQexNodeProperty pProperty)
{
    return pProperty == eNODE_TRANSLATION ? pNode->mLocalTranslation
           : pProperty == eNODE_ROTATION  ? pNode->mLocalRotation
                                          : pNode->mLocalScaling;
}

/// Creates three curves for the property on the take's base layer.
void MakeCurves(KQexAnimStack* pStack, KQexNode* pNode, KQexNodeProperty pProperty, KQexAnimCurve** pCurves)
{
    static const char* const sSuffixes[3][3] = {{"_tx", "_ty", "_tz"}, {"_rx", "_ry", "_rz"}, {"_sx", "_sy", "_sz"}};
    KQexAnimLayer*           lLayer = pStack->GetOrCreateBaseLayer();
    KQexAnimCurveNode*       lCurveNode = lLayer != nullptr ? PropertyOf(pNode, pProperty).GetCurveNode(lLayer, true) : nullptr;
    for (unsigned int i = 0; i < 3; ++i)
    {
        const std::string lName = std::string(pNode->GetName()) + sSuffixes[pProperty][i];
        pCurves[i] = lCurveNode != nullptr ? KQexAnimCurve::Create(pNode->GetScene(), lName.c_str()) : nullptr;
        if (pCurves[i] == nullptr)
        {
            throw std::bad_alloc();
        }
        if (!lCurveNode->ConnectToChannel(pCurves[i], i, true))
        {
            pCurves[i]->Destroy(false, false);
            throw std::bad_alloc();
        }
    }
}

} // namespace

/// Limits the number of keys by the size of the file: two keys that are days apart would otherwise make millions of frames.
void KQexGltfReader::CountKeys(double pKeys, const std::string& pName)
{
    mKeyCount += pKeys;
    if (mKeyCount > kBaseKeys + kKeysPerByte * static_cast<double>(mSource.GetSize()))
    {
        throw KQexGltfError(pName + ": too many keys for the size of the file; try a lower frame rate");
    }
}

std::shared_ptr<const std::vector<double>> KQexGltfReader::GetTimes(size_t pAccessor, const std::string& pName)
{
    std::shared_ptr<const std::vector<double>>& lCached = mTimes[pAccessor];
    if (lCached != nullptr)
    {
        return lCached;
    }
    const KQexGltfAccessor& lFrom = mAccessors.Get(pAccessor);
    if (lFrom.GetComponents() != 1 || !lFrom.HasData() || lFrom.GetCount() == 0)
    {
        throw KQexGltfError(pName + " has no times");
    }
    CountKeys(static_cast<double>(lFrom.GetCount()), pName);
    auto lTimes = std::make_shared<std::vector<double>>(lFrom.GetCount());
    for (size_t i = 0; i < lTimes->size(); ++i)
    {
        double& lTime = (*lTimes)[i];
        lFrom.Get(i, &lTime);
        if (!(std::fabs(lTime) <= kMaxTime) || (i > 0 && lTime < (*lTimes)[i - 1]))
        {
            throw KQexGltfError(pName + ": invalid time at key " + std::to_string(i));
        }
    }
    lCached = lTimes;
    return lCached;
}

void KQexGltfReader::ReadTracks(const KQexGltfJson::KValue& pAnimation, const std::string& pName, std::vector<KQexGltfReadTrack>& pTracks)
{
    const std::vector<KQexGltfJson::KValue> lSamplers = GltfMembers(pAnimation["samplers"], pName + ".samplers");
    std::unordered_set<size_t>              lTargets;
    size_t                                  lChannel = 0;
    for (KQexGltfJson::KValue lFrom = pAnimation["channels"].GetFirst(); lFrom.IsValid(); lFrom = lFrom.GetNext(), ++lChannel)
    {
        const std::string lName = pName + ".channels[" + std::to_string(lChannel) + "]";
        const int         lSampler = GltfIndex(lFrom["sampler"], lSamplers.size(), lName + ".sampler");
        const int         lNode = GltfIndex(lFrom["target"]["node"], mNodes.size(), lName + ".target.node");
        const int         lProperty = PropertyIndexOf(lFrom["target"]["path"].GetText());
        if (lSampler < 0)
        {
            throw KQexGltfError(lName + ".sampler is missing");
        }
        // Channels of extensions and of morph weights, and those of skipped nodes.
        if (lNode < 0 || lProperty < 0 || mNodes[static_cast<size_t>(lNode)].mNode == nullptr)
        {
            continue;
        }
        const size_t lTarget = 3 * static_cast<size_t>(lNode) + static_cast<size_t>(lProperty);
        if (!lTargets.insert(lTarget).second)
        {
            Warn(lName + " has the same target as an earlier channel, ignored");
            continue;
        }
        pTracks.push_back(ReadTrack(lSamplers[static_cast<size_t>(lSampler)], pName + ".samplers[" + std::to_string(lSampler) + "]",
                                    &mNodes[static_cast<size_t>(lNode)], static_cast<KQexNodeProperty>(lProperty)));
    }
}

KQexGltfReadTrack KQexGltfReader::ReadTrack(const KQexGltfJson::KValue& pSampler, const std::string& pName, KQexGltfReadNode* pTarget,
                                            KQexNodeProperty pProperty)
{
    const int lInput = GltfIndex(pSampler["input"], mAccessors.GetCount(), pName + ".input");
    const int lOutput = GltfIndex(pSampler["output"], mAccessors.GetCount(), pName + ".output");
    if (lInput < 0 || lOutput < 0)
    {
        throw KQexGltfError(pName + (lInput < 0 ? ".input" : ".output") + " is missing");
    }
    const KQexGltfInterpolation                      lInterpolation = InterpolationOf(pSampler["interpolation"], pName + ".interpolation");
    const std::shared_ptr<const std::vector<double>> lTimes = GetTimes(static_cast<size_t>(lInput), pName + ".input");
    const KQexGltfAccessor&                          lValues = mAccessors.Get(static_cast<size_t>(lOutput));
    const size_t                                     lWanted = lTimes->size() * (lInterpolation == KQexGltfInterpolation::eCUBIC ? 3 : 1);
    if (lValues.GetComponents() != (pProperty == eNODE_ROTATION ? 4 : 3) || lValues.GetCount() != lWanted)
    {
        throw KQexGltfError(pName + ".output does not have " + std::to_string(lWanted) + " values of " +
                            (pProperty == eNODE_ROTATION ? "4" : "3") + " numbers");
    }
    CountKeys(static_cast<double>(lTimes->size()), pName);
    return KQexGltfReadTrack{pTarget, pProperty, KQexGltfKeys(lTimes, &lValues, lInterpolation, pProperty == eNODE_ROTATION)};
}

KQexSampling KQexGltfReader::FindSampling(const std::vector<KQexGltfReadTrack>& pTracks, double pFramesPerSecond)
{
    KQexGltfTimes lTimes;
    double        lFirst = std::numeric_limits<double>::max();
    double        lLast = -lFirst;
    for (const KQexGltfReadTrack& lTrack : pTracks)
    {
        lTimes.push_back(lTrack.mKeys.GetSharedTimes());
        lFirst = std::min(lFirst, lTimes.back()->front());
        lLast = std::max(lLast, lTimes.back()->back());
    }
    std::sort(lTimes.begin(), lTimes.end());
    lTimes.erase(std::unique(lTimes.begin(), lTimes.end()), lTimes.end());

    long long lStep = 0;
    if (pFramesPerSecond > 0.0)
    {
        lStep = NearestFrameStep(1.0 / pFramesPerSecond).Get();
    }
    else
    {
        lStep = GltfFindStep(lTimes, lFirst);
        lStep = lStep > 0 ? lStep : kDefaultFrameStep.Get();
    }
    if (lStep <= 0)
    {
        throw KQexGltfError("Frame rate out of range");
    }
    const double lSeconds = KTime(lStep).GetSeconds();
    const double lStart = std::round(lFirst / lSeconds);
    const double lFrames = (lLast - lFirst) / lSeconds;
    KQexSampling lSampling;
    lSampling.mStep = KTime(lStep);
    lSampling.mStart =
        KTime(std::fabs(lFirst - lStart * lSeconds) <= GltfTimeTolerance(lFirst, lSeconds) ? static_cast<long long>(lStart) * lStep
                                                                                           : KTime::FromSeconds(lFirst).Get());
    lSampling.mCount = static_cast<long long>(std::ceil(lFrames - GltfTimeTolerance(lLast, lSeconds) / lSeconds)) + 1;
    return lSampling;
}

void KQexGltfReader::FillCurves(KQexAnimStack* pStack, KQexGltfReadTrack& pTrack, const KQexSampling& pSampling)
{
    KQexNode*              lNode = pTrack.mTarget->mNode;
    const KQexNodeProperty lProperty = pTrack.mProperty;
    const double           lFactor = lProperty == eNODE_TRANSLATION ? mOptions.mScale : 1.0;
    const double           lStep = pSampling.mStep.GetSeconds();
    const auto             lRest = KQexGet<qexVectorTemplate3<double>>(PropertyOf(lNode, lProperty));
    double                 lNear[3] = {lRest.mData[0], lRest.mData[1], lRest.mData[2]};
    double                 lValue[16];
    KQexAnimCurve*         lCurves[3];
    MakeCurves(pStack, lNode, lProperty, lCurves);
    for (long long lFrame = 0; lFrame < pSampling.mCount; ++lFrame)
    {
        const KTime  lTime = pSampling.GetTime(lFrame);
        const double lSeconds = lTime.GetSeconds();
        if (!pTrack.mKeys.Evaluate(lSeconds, GltfTimeTolerance(lSeconds, lStep), lValue))
        {
            throw KQexGltfError(std::string("Node (") + lNode->GetName() + "): a key's value is not finite");
        }
        if (lProperty == eNODE_ROTATION)
        {
            KQexQuaternion lRotation{{lValue[0], lValue[1], lValue[2], lValue[3]}};
            lRotation.Normalize();
            ToEuler(*pTrack.mTarget, lRotation, lNear, lNear);
            KmVset(lValue, lNear);
        }
        for (int i = 0; i < 3; ++i)
        {
            if (!lCurves[i]->AppendSample(lTime, ToFloat(lValue[i] * lFactor)))
            {
                throw std::bad_alloc();
            }
        }
    }
}

bool KQexGltfReader::ReadTake(size_t pIndex)
{
    const std::string              lName = "animations[" + std::to_string(pIndex) + "]";
    const std::string              lText = mAnimations[pIndex]["name"].GetText();
    std::vector<KQexGltfReadTrack> lTracks;
    ReadTracks(mAnimations[pIndex], lName, lTracks);
    if (lTracks.empty())
    {
        Warn("Animation (" + (lText.empty() ? lName : lText) + ") moves no node, ignored");
        return true;
    }
    const KQexSampling lSampling = FindSampling(lTracks, mOptions.mFramesPerSecond);
    const KQexSampling lFileSampling = mOptions.mFramesPerSecond > 0.0 ? FindSampling(lTracks, 0.0) : lSampling;
    const std::string  lTakeName = mTakeNames.Make(lText.empty() ? "Take " + std::to_string(pIndex + 1) : lText);
    KQexAnimStack*     lStack = mScene->CreateAnimStack(lTakeName.c_str());
    if (lStack == nullptr)
    {
        throw std::bad_alloc();
    }
    for (size_t i = 0; i < lTracks.size(); ++i)
    {
        const double lFraction = static_cast<double>(i) / static_cast<double>(lTracks.size());
        if (mOptions.mProgress && !mOptions.mProgress((static_cast<double>(pIndex) + lFraction) / static_cast<double>(mAnimations.size())))
        {
            return false;
        }
        CountKeys(3.0 * static_cast<double>(lSampling.mCount), lName);
        FillCurves(lStack, lTracks[i], lSampling);
    }
    mTakes.push_back(KQexGltfTake{lStack, lSampling, lFileSampling, lText.empty() ? lTakeName : lText});
    return true;
}

bool KQexGltfReader::ReadTakes()
{
    for (int i = 0; i < mScene->GetAnimStackCount(); ++i)
    {
        mTakeNames.Make(mScene->GetAnimStack(i)->GetName());
    }
    for (size_t i = 0; i < mAnimations.size(); ++i)
    {
        if (!ReadTake(i))
        {
            return false;
        }
    }
    return true;
}

/// Euler angles of a node whose local rotation, pivots included, is \p pRotation: the triple nearest to \p pNear, which may alias
/// \p pAngles.
void KQexGltfReader::ToEuler(const KQexGltfReadNode& pNode, const KQexQuaternion& pRotation, const double pNear[3], double pAngles[3]) const
{
    const KQexQuaternion lQ = pNode.mHasPivots ? pNode.mPreInverse * pRotation * pNode.mPost : pRotation;
    lQ.ToEuler(pNode.mOrder, pNear, pAngles);
}

} // namespace qexsdk
