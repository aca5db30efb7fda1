// Left and right of a figure, exchanged.

#include <kbaselib/kbase/kletters.h>
#include <qexclip/kqexclipedit.h>
#include <qexclip/kqexclipsteps.h>

#include <algorithm>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>

namespace qexsdk
{

namespace
{

bool IsLetter(char pC)
{
    return (pC >= 'a' && pC <= 'z') || (pC >= 'A' && pC <= 'Z');
}

/// The other side's name in lower case for the name with "left" or "right" in it, "" when there is none.
std::string SwapWord(const std::string& pLower)
{
    for (const auto& lWords : {std::pair<const char*, const char*>{"left", "right"}, {"right", "left"}})
    {
        const size_t lAt = pLower.find(lWords.first);
        if (lAt != std::string::npos)
        {
            return std::string(pLower).replace(lAt, std::string(lWords.first).size(), lWords.second);
        }
    }
    return "";
}

constexpr size_t kMaxLetters = 8; ///< No maker's names have as many; a name of nothing else would cost the square of its length.

/// The other side's names, in lower case, for each "l" or "r" in \p pName that is a word of its own, begins the name, or is a capital at
/// its end: at most kMaxLetters.
std::vector<std::string> SwapLetters(const std::string& pName)
{
    std::vector<std::string> lNames;
    const std::string        lLower = KToLower(pName);
    for (size_t i = 0; i < pName.size() && lNames.size() < kMaxLetters; ++i)
    {
        const bool lBegins = i == 0 || !IsLetter(pName[i - 1]);
        const bool lEnds = i + 1 == pName.size() || !IsLetter(pName[i + 1]);
        const bool lIsCapitalAtEnd = lEnds && pName[i] != lLower[i];
        const bool lIsBeforeCapital = lBegins && !lEnds && pName[i + 1] != lLower[i + 1];
        if ((lLower[i] == 'l' || lLower[i] == 'r') && (i == 0 || (lBegins && lEnds) || lIsCapitalAtEnd || lIsBeforeCapital))
        {
            lNames.push_back(lLower);
            lNames.back()[i] = lLower[i] == 'l' ? 'r' : 'l';
        }
    }
    return lNames;
}

/// The world rotation of each joint in \p pPose, without scaling.
std::vector<KQexQuaternion> WorldRotations(const KQexClipData& pData, const KQexPose& pPose)
{
    std::vector<KQexQuaternion> lWorld;
    for (size_t lJoint = 0; lJoint < pPose.size(); ++lJoint)
    {
        const KQexQuaternion lLocal = KToQuaternion(pPose[lJoint].mRotation);
        const int            lParent = pData.mParents[lJoint];
        lWorld.push_back(lParent < 0 ? lLocal : lWorld[static_cast<size_t>(lParent)] * lLocal);
    }
    return lWorld;
}

/// The rotation \p pRotation seen in a mirror at the plane x = 0.
KQexQuaternion Reflect(const KQexQuaternion& pRotation)
{
    return KQexQuaternion{{pRotation.mData[0], -pRotation.mData[1], -pRotation.mData[2], pRotation.mData[3]}};
}

/// Mirrors one pose after the other.
class KQexClipMirrorer
{
public:
    KQexClipMirrorer(const KQexClipData& pData, const std::vector<int>& pPairs)
        : mData(pData), mPairs(pPairs), mRest(WorldRotations(pData, pData.mRest))
    {
    }

    KQexPose Mirror(const KQexPose& pPose) const
    {
        const std::vector<KQexQuaternion> lWorld = WorldRotations(mData, pPose);
        std::vector<KQexQuaternion>       lMirrored;
        KQexPose                          lResult(pPose.size());
        for (size_t lJoint = 0; lJoint < pPose.size(); ++lJoint)
        {
            const size_t lPair = static_cast<size_t>(mPairs[lJoint]);
            const int    lParent = mData.mParents[lJoint];
            lMirrored.push_back(Reflect(lWorld[lPair] * mRest[lPair].Inverse()) * mRest[lJoint]);
            const KQexQuaternion lLocal =
                lParent < 0 ? lMirrored[lJoint] : lMirrored[static_cast<size_t>(lParent)].Inverse() * lMirrored[lJoint];
            KFromQuaternion(lLocal, lResult[lJoint].mRotation);
            std::copy(pPose[lPair].mScaling, pPose[lPair].mScaling + 3, lResult[lJoint].mScaling);
            MirrorTranslation(lJoint, lPair, pPose, lResult[lJoint].mTranslation);
        }
        return lResult;
    }

private:
    /// The way from the translation at rest, in world axes at rest, is reflected; for roots the position itself.
    void MirrorTranslation(size_t pJoint, size_t pPair, const KQexPose& pPose, float* pResult) const
    {
        const int lParent = mData.mParents[pJoint];
        const int lPairParent = mData.mParents[pPair];
        double    lWay[3];
        for (int i = 0; i < 3; ++i)
        {
            const float lFrom = lPairParent < 0 ? 0.0F : mData.mRest[pPair].mTranslation[i];
            lWay[i] = static_cast<double>(pPose[pPair].mTranslation[i]) - static_cast<double>(lFrom);
        }
        if (lPairParent >= 0)
        {
            mRest[static_cast<size_t>(lPairParent)].Rotate(lWay, lWay);
        }
        lWay[0] = -lWay[0];
        if (lParent >= 0)
        {
            mRest[static_cast<size_t>(lParent)].Inverse().Rotate(lWay, lWay);
        }
        for (int i = 0; i < 3; ++i)
        {
            const float lTo = lParent < 0 ? 0.0F : mData.mRest[pJoint].mTranslation[i];
            pResult[i] = static_cast<float>(static_cast<double>(lTo) + lWay[i]);
        }
    }

    const KQexClipData&         mData;
    const std::vector<int>&     mPairs;
    std::vector<KQexQuaternion> mRest; ///< World rotation of each joint at rest.
};

bool ArePairs(const std::vector<int>& pPairs, int pCount)
{
    bool lOk = pPairs.size() == static_cast<size_t>(pCount) && pCount > 0;
    for (int i = 0; lOk && i < pCount; ++i)
    {
        const int lPair = pPairs[static_cast<size_t>(i)];
        lOk = lPair >= 0 && lPair < pCount && pPairs[static_cast<size_t>(lPair)] == i;
    }
    return lOk;
}

std::vector<int> ListRoots(const KQexClipData& pData)
{
    std::vector<int> lRoots;
    for (size_t lJoint = 0; lJoint < pData.mParents.size(); ++lJoint)
    {
        if (pData.mParents[lJoint] < 0)
        {
            lRoots.push_back(static_cast<int>(lJoint));
        }
    }
    return lRoots;
}

/// The joints whose pair \p pMarked lists, ascending.
std::vector<int> PairsOf(const std::vector<int>& pMarked, const std::vector<int>& pPairs)
{
    std::vector<int> lResult;
    for (const int lJoint : pMarked)
    {
        lResult.push_back(pPairs[static_cast<size_t>(lJoint)]);
    }
    std::sort(lResult.begin(), lResult.end());
    return lResult;
}

std::vector<int> FindPairs(const KQexClipData& pClip)
{
    std::unordered_map<std::string, int> lByName;
    std::vector<int>                     lPairs;
    for (size_t lJoint = 0; lJoint < pClip.mNames.size(); ++lJoint)
    {
        lByName.emplace(KToLower(pClip.mNames[lJoint]), static_cast<int>(lJoint));
        lPairs.push_back(static_cast<int>(lJoint));
    }
    for (size_t lJoint = 0; lJoint < lPairs.size(); ++lJoint)
    {
        std::vector<std::string> lNames = SwapLetters(pClip.mNames[lJoint]);
        lNames.insert(lNames.begin(), SwapWord(KToLower(pClip.mNames[lJoint])));
        for (const std::string& lName : lNames)
        {
            const auto lFound = lName.empty() ? lByName.end() : lByName.find(lName);
            if (lPairs[lJoint] == static_cast<int>(lJoint) && lFound != lByName.end() &&
                lPairs[static_cast<size_t>(lFound->second)] == lFound->second)
            {
                lPairs[lJoint] = lFound->second;
                lPairs[static_cast<size_t>(lFound->second)] = static_cast<int>(lJoint);
            }
        }
    }
    return lPairs;
}

} // namespace

std::vector<int> KQexMirrorPairs(const KQexClipData& pClip)
{
    try
    {
        return FindPairs(pClip);
    }
    catch (const std::bad_alloc&)
    {
        return {};
    }
}

bool KQexClipMirror(const KQexClip& pClip, const std::vector<int>& pPairs, KQexClip& pResult)
{
    if (!ArePairs(pPairs, pClip.GetJointCount()))
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [&pClip, &pPairs](KQexClipData& pData)
                     {
                         const KQexClipMirrorer lMirrorer(pClip.GetData(), pPairs);
                         KClearFrames(pData);
                         pData.mScaledJoints = PairsOf(pData.mScaledJoints, pPairs);
                         // A root that does not move is listed too, else it would not be reflected.
                         pData.mMovingJoints = KUnion(PairsOf(pData.mMovingJoints, pPairs), ListRoots(pData));
                         KQexPose lPose(pData.mNames.size());
                         for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
                         {
                             pClip.SampleFrame(lFrame, lPose);
                             KAppendPose(pData, lMirrorer.Mirror(lPose));
                         }
                         return true;
                     });
}

} // namespace qexsdk
