#include <apps/asf/report/figurecompare.h>

#include <qexioplugins/motion/kqexmotionio.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <unordered_map>

namespace asfapp
{

namespace
{

using qexsdk::KQexNode;

const char* const kAspectWords[eASPECT_COUNT] = {"names",  "parents", "rest", "lengths",  "dofs",
                                                 "limits", "frames",  "rate", "duration", "positions"};

constexpr double kLeastHeight = 1e-6; ///< Centimetres; anything lower is rounding error.

/// Bounds of positions.
struct KBounds
{
    double mMin[3] = {0, 0, 0};
    double mMax[3] = {0, 0, 0};
    bool   mIsEmpty = true;

    void Add(const double* pPosition)
    {
        for (int lAxis = 0; lAxis < 3; ++lAxis)
        {
            mMin[lAxis] = mIsEmpty ? pPosition[lAxis] : std::min(mMin[lAxis], pPosition[lAxis]);
            mMax[lAxis] = mIsEmpty ? pPosition[lAxis] : std::max(mMax[lAxis], pPosition[lAxis]);
        }
        mIsEmpty = false;
    }

    double GetExtent(int pAxis) const { return mMax[pAxis] - mMin[pAxis]; }
    double GetLargest() const { return std::max({GetExtent(0), GetExtent(1), GetExtent(2)}); }
};

} // namespace

const char* AspectWord(int pAspect)
{
    return kAspectWords[pAspect];
}

KFigureComparison::KFigureComparison(qexsdk::KQexFigure& pFirst, qexsdk::KQexFigure& pSecond, double pTolerance) : mTolerance(pTolerance)
{
    mSides[0].mFigure = &pFirst;
    mSides[1].mFigure = &pSecond;
}

double KFigureComparison::Distance(const double* pOne, const double* pOther)
{
    return std::sqrt((pOne[0] - pOther[0]) * (pOne[0] - pOther[0]) + (pOne[1] - pOther[1]) * (pOne[1] - pOther[1]) +
                     (pOne[2] - pOther[2]) * (pOne[2] - pOther[2]));
}

void KFigureComparison::Run(const KConsole& pConsole)
{
    Collect(0);
    Collect(1);
    mPairing.Run(mSides[0].mJoints, mSides[1].mJoints);
    ReportOnly();
    FindParents(0);
    FindParents(1);
    FindReference();
    CompareTrees();
    CompareRest();
    CompareDofs();
    CompareMotion(pConsole);
}

/// The top of several roots is the scene's root node, which is no joint.
void KFigureComparison::Evaluate(int pSide, qexsdk::KTime pTime, std::vector<KPosition>& pPositions)
{
    KSide&    lSide = mSides[pSide];
    KQexNode* lTop = lSide.mFigure->GetTop();
    if (!lSide.mFigure->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(lTop, pTime, lSide.mTransforms))
    {
        throw std::bad_alloc();
    }
    const int lFirst = lSide.mJoints.mHasOneRoot ? 0 : 1;
    pPositions.resize(lSide.mJoints.mNodes.size());
    for (size_t lIndex = 0; lIndex < pPositions.size(); ++lIndex)
    {
        const qexsdk::KQexVector4 lPosition = lSide.mTransforms.GetTransform(static_cast<int>(lIndex) + lFirst).GetT();
        std::copy(lPosition.mData, lPosition.mData + 3, pPositions[lIndex].mData);
    }
}

void KFigureComparison::Collect(int pSide)
{
    KSide&                     lSide = mSides[pSide];
    KQexNode*                  lTop = lSide.mFigure->GetTop();
    qexsdk::KQexAnimEvaluator* lEvaluator = lSide.mFigure->GetScene()->GetEvaluator();
    qexsdk::KQexAnimStack*     lStack = lEvaluator->GetContext();
    lSide.mJoints.mHasOneRoot = lSide.mFigure->GetRoots().size() == 1;
    lSide.mJoints.mLayer = qexsdk::KQexLayerOf(lStack);
    for (KQexNode* lNode = lSide.mJoints.mHasOneRoot ? lTop : lTop->GetNextInTree(lTop); lNode != nullptr;
         lNode = lNode->GetNextInTree(lTop))
    {
        lSide.mJoints.mNodes.push_back(lNode);
    }
    lEvaluator->SetContext(nullptr);
    Evaluate(pSide, qexsdk::KTime(0), lSide.mRest);
    lEvaluator->SetContext(lStack);
    if (!lSide.mFigure->GetTakes().empty())
    {
        qexsdk::MakeSampling(lSide.mFigure->GetRoots(), lStack, {}, lSide.mSampling);
        lSide.mSampling.mCount = lSide.mFigure->GetTakes().front().mIsSingle ? 1 : lSide.mSampling.mCount;
    }
}

std::string KFigureComparison::NameOf(int pSide, int pIndex) const
{
    return mSides[pSide].mJoints.mNodes[static_cast<size_t>(pIndex)]->GetName();
}

std::string KFigureComparison::GetBareExample() const
{
    return NameOf(0, mPairing.GetBarePair().first) + " and " + NameOf(1, mPairing.GetBarePair().second);
}

void KFigureComparison::ReportOnly()
{
    KAspectResult& lResult = mResults[eASPECT_NAMES];
    for (int lSide = 0; lSide < 2; ++lSide)
    {
        for (const int lIndex : mPairing.GetOnly(lSide))
        {
            const bool lCounts = !qexsdk::IsFigureDummy(*mSides[lSide].mJoints.mNodes[static_cast<size_t>(lIndex)]);
            mOnly[lSide].push_back(NameOf(lSide, lIndex));
            UpdateLargest(eASPECT_NAMES, lCounts ? lResult.mLargest + 1 : 0, mOnly[lSide].back());
        }
    }
    lResult.mDiffers = lResult.mLargest > 0;
    lResult.mIsCompared = true;
}

void KFigureComparison::FindParents(int pSide)
{
    KSide&                             lSide = mSides[pSide];
    const std::vector<KQexNode*>&      lNodes = lSide.mJoints.mNodes;
    std::unordered_map<KQexNode*, int> lIndices;
    std::vector<bool>                  lIsPaired(lNodes.size(), false);
    for (const auto& lPair : mPairing.GetPairs())
    {
        lIsPaired[static_cast<size_t>(pSide == 0 ? lPair.first : lPair.second)] = true;
    }
    for (size_t lIndex = 0; lIndex < lNodes.size(); ++lIndex)
    {
        const auto lFound = lIndices.find(lNodes[lIndex]->GetParent());
        // Pre-order: the parent's entry is already set.
        const int lParent = lFound == lIndices.end()                         ? -1
                            : lIsPaired[static_cast<size_t>(lFound->second)] ? lFound->second
                                                                             : lSide.mParents[static_cast<size_t>(lFound->second)];
        lSide.mParents.push_back(lParent);
        lSide.mTops.push_back(lParent < 0 ? static_cast<int>(lIndex) : lSide.mTops[static_cast<size_t>(lParent)]);
        lIndices.emplace(lNodes[lIndex], static_cast<int>(lIndex));
    }
}

void KFigureComparison::CompareTrees()
{
    std::vector<int> lSecondOf(mSides[0].mJoints.mNodes.size(), -1);
    for (const auto& lPair : mPairing.GetPairs())
    {
        lSecondOf[static_cast<size_t>(lPair.first)] = lPair.second;
    }
    KAspectResult& lResult = mResults[eASPECT_PARENTS];
    for (const auto& lPair : mPairing.GetPairs())
    {
        const int lFirst = mSides[0].mParents[static_cast<size_t>(lPair.first)];
        const int lSecond = mSides[1].mParents[static_cast<size_t>(lPair.second)];
        if ((lFirst < 0 ? -1 : lSecondOf[static_cast<size_t>(lFirst)]) != lSecond)
        {
            UpdateLargest(eASPECT_PARENTS, lResult.mLargest + 1, NameOf(0, lPair.first));
        }
    }
    lResult.mIsCompared = true;
    lResult.mDiffers = lResult.mLargest > 0;
}

void KFigureComparison::UpdateLargest(int pAspect, double pValue, const std::string& pWhere)
{
    if (pValue > mResults[pAspect].mLargest)
    {
        mResults[pAspect].mLargest = pValue;
        mResults[pAspect].mWhere = pWhere;
    }
}

/// A figure whose joints are all at one point needs a tolerance, too: that of the extent of its motion, else of a centimetre.
void KFigureComparison::FindReference()
{
    KBounds lRest;
    for (const KPosition& lPosition : mSides[0].mRest)
    {
        lRest.Add(lPosition.mData);
    }
    mHeight = lRest.GetExtent(1) > lRest.GetLargest() / 10 ? lRest.GetExtent(1) : lRest.GetLargest();
    mReference = mHeight;
    if (mHeight > kLeastHeight)
    {
        return;
    }
    KBounds                lMotion;
    std::vector<KPosition> lPositions;
    for (long long lFrame = 0; lFrame < mSides[0].mSampling.mCount; ++lFrame)
    {
        Evaluate(0, mSides[0].mSampling.GetTime(lFrame), lPositions);
        for (const KPosition& lPosition : lPositions)
        {
            lMotion.Add(lPosition.mData);
        }
    }
    mReference = lMotion.GetLargest() > kLeastHeight ? lMotion.GetLargest() : 1.0;
}

void KFigureComparison::CompareRest()
{
    for (const auto& lPair : mPairing.GetPairs())
    {
        const int lIndices[2] = {lPair.first, lPair.second};
        double    lRelative[2][3];
        double    lLengths[2] = {0, 0};
        bool      lHasParents = true;
        for (int lSide = 0; lSide < 2; ++lSide)
        {
            const size_t  lIndex = static_cast<size_t>(lIndices[lSide]);
            const int     lParent = mSides[lSide].mParents[lIndex];
            const double* lPosition = mSides[lSide].mRest[lIndex].mData;
            const double* lTop = mSides[lSide].mRest[static_cast<size_t>(mSides[lSide].mTops[lIndex])].mData;
            for (int lAxis = 0; lAxis < 3; ++lAxis)
            {
                lRelative[lSide][lAxis] = lPosition[lAxis] - lTop[lAxis];
            }
            lHasParents = lHasParents && lParent >= 0;
            lLengths[lSide] = lParent >= 0 ? Distance(lPosition, mSides[lSide].mRest[static_cast<size_t>(lParent)].mData) : 0;
        }
        UpdateLargest(eASPECT_REST, Distance(lRelative[0], lRelative[1]), NameOf(0, lPair.first));
        UpdateLargest(eASPECT_LENGTHS, lHasParents ? std::fabs(lLengths[0] - lLengths[1]) : 0, NameOf(0, lPair.first));
    }
    for (const int lAspect : {eASPECT_REST, eASPECT_LENGTHS})
    {
        mResults[lAspect].mIsCompared = true;
        mResults[lAspect].mUnit = "cm";
        mResults[lAspect].mDiffers = !(mResults[lAspect].mLargest <= GetLengthTolerance());
    }
}

} // namespace asfapp
