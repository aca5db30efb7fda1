#ifndef APPS_ASF_REPORT_FIGURECOMPARE_H
#define APPS_ASF_REPORT_FIGURECOMPARE_H

#include <apps/asf/figure/figurescene.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace asfapp
{

/// What two figures are compared in.
enum EAspect
{
    eASPECT_NAMES,     ///< Joints of one that the other lacks.
    eASPECT_PARENTS,   ///< Joints that hang on another one.
    eASPECT_REST,      ///< Places at rest, seen from the root.
    eASPECT_LENGTHS,   ///< Distances between joints and their parents at rest.
    eASPECT_DOFS,      ///< Degrees of freedom and their order.
    eASPECT_LIMITS,    ///< Limits of the degrees of freedom.
    eASPECT_FRAMES,    ///< Numbers of frames.
    eASPECT_POSITIONS, ///< Places in the world, frame by frame.
    eASPECT_COUNT
};

/// The word of an aspect on the command line and in JSON.
const char* AspectWord(int pAspect);

/// How far two figures differ in one aspect.
struct KAspectResult
{
    bool        mIsCompared = false; ///< Both have it.
    bool        mDiffers = false;    ///< By more than the tolerance.
    double      mLargest = 0;        ///< Centimetres, degrees, or a count where there is nothing to measure.
    const char* mUnit = "";          ///< "cm", "deg", "" for a count.
    std::string mWhere;              ///< Where the largest difference is, or why nothing is compared.
};

/// Compares two figures joint by joint: the roots with each other, whatever their names, all others by name.
class KFigureComparison
{
public:
    /// \p pTolerance: of a length, as part of the first figure's height; of an angle, in radians.
    KFigureComparison(KFigureScene& pFirst, KFigureScene& pSecond, double pTolerance);

    void Run(const KConsole& pConsole);

    /// Centimetres: from the lowest joint at rest to the highest; of a figure that lies flat, its largest extent.
    double GetHeight() const { return mHeight; }

    const KAspectResult& Get(int pAspect) const { return mResults[pAspect]; }

    /// Joints that only the first (0) or the second (1) figure has.
    const std::vector<std::string>& GetOnly(int pFigure) const { return mOnly[pFigure]; }

    /// Number of joints that both have, and of a figure's joints.
    size_t GetPairCount() const { return mPairs.size(); }
    size_t GetJointCount(int pFigure) const { return mSides[pFigure].mNodes.size(); }

    /// Frames of a figure, 0 without motion.
    const qexsdk::KQexSampling& GetSampling(int pFigure) const { return mSides[pFigure].mSampling; }

private:
    struct KPlaceXyz
    {
        double mData[3] = {0, 0, 0};
    };

    struct KSide
    {
        KFigureScene*                              mFigure = nullptr;
        std::vector<qexsdk::KQexNode*>             mNodes;   ///< In pre-order.
        std::vector<int>                           mParents; ///< Index of the nearest paired node above; -1 for none.
        std::vector<KPlaceXyz>                     mRest;
        std::unordered_map<std::string, int>       mByName; ///< First of each name.
        std::unordered_map<qexsdk::KQexNode*, int> mPlaces;
        qexsdk::KQexSampling                       mSampling;
        qexsdk::KQexGlobalTransforms               mTransforms;
    };

    void Collect(int pSide);
    void MakePairs();
    void FindParents(int pSide);
    void CompareTrees();
    void CompareRest();
    void CompareDofs();
    void CompareLimits(const std::string& pBone, const qexsdk::KQexBoneDof& pFirst, const qexsdk::KQexBoneDof& pSecond);
    void CompareMotion(const KConsole& pConsole);
    void CompareFrame(long long pFrame);
    void Evaluate(int pSide, qexsdk::KTime pTime, std::vector<KPlaceXyz>& pPlaces);
    void Note(int pAspect, double pValue, const std::string& pWhere);

    double                           mTolerance;
    double                           mHeight = 0;
    KSide                            mSides[2];
    std::vector<std::pair<int, int>> mPairs; ///< Indices of the same joint in both.
    std::vector<std::string>         mOnly[2];
    KAspectResult                    mResults[eASPECT_COUNT];
};

} // namespace asfapp

#endif
