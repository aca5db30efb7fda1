#ifndef APPS_ASF_REPORT_FIGURECOMPARE_H
#define APPS_ASF_REPORT_FIGURECOMPARE_H

#include <apps/asf/console.h>
#include <qexfigure/kqexfigure.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace asfapp
{

/// The aspects in which two figures are compared.
enum EAspect
{
    eASPECT_NAMES,     ///< Joints that only one has; dummies (IsFigureDummy()) do not count.
    eASPECT_PARENTS,   ///< Joints with a different parent.
    eASPECT_REST,      ///< Positions at rest, relative to the root.
    eASPECT_LENGTHS,   ///< Distances between joints and their parents at rest.
    eASPECT_DOFS,      ///< Degrees of freedom and their order.
    eASPECT_LIMITS,    ///< Limits of the degrees of freedom.
    eASPECT_FRAMES,    ///< Frame counts.
    eASPECT_POSITIONS, ///< World positions, frame by frame.
    eASPECT_COUNT
};

/// The name of an aspect on the command line and in JSON.
const char* AspectWord(int pAspect);

/// The difference of two figures in one aspect.
struct KAspectResult
{
    bool        mIsCompared = false; ///< Both figures have it.
    bool        mDiffers = false;    ///< By more than the tolerance.
    double      mLargest = 0;        ///< Centimetres, degrees or a count; infinite for a limit that only one has.
    const char* mUnit = "";          ///< "cm", "deg", or "" for a count.
    std::string mWhere;              ///< Where the largest difference is, or why nothing was compared.
};

/// Compares two figures joint by joint: the roots with each other, whatever their names, all others by name.
class KFigureComparison
{
public:
    /// \p pTolerance: for lengths, a fraction of the first figure's height; for angles, radians.
    KFigureComparison(qexsdk::KQexFigure& pFirst, qexsdk::KQexFigure& pSecond, double pTolerance);

    void Run(const KConsole& pConsole);

    /// Height of the first figure at rest, in centimetres; its largest extent if it lies flat.
    double GetHeight() const { return mHeight; }

    const KAspectResult& Get(int pAspect) const { return mResults[pAspect]; }

    /// Joints that only the first (0) or the second (1) figure has.
    const std::vector<std::string>& GetOnly(int pFigure) const { return mOnly[pFigure]; }

    /// Number of joints of the first (0) or the second (1) figure.
    size_t GetJointCount(int pFigure) const { return mSides[pFigure].mNodes.size(); }

    /// Frames of a figure; their count is 0 without motion.
    const qexsdk::KQexSampling& GetSampling(int pFigure) const { return mSides[pFigure].mSampling; }

private:
    struct KPosition
    {
        double mData[3] = {0, 0, 0};
    };

    struct KSide
    {
        qexsdk::KQexFigure*                        mFigure = nullptr;
        std::vector<qexsdk::KQexNode*>             mNodes;   ///< In pre-order.
        std::vector<int>                           mParents; ///< Index of the nearest paired ancestor; -1 for none.
        std::vector<KPosition>                     mRest;
        std::unordered_map<std::string, int>       mByName; ///< Index of the first node of each name.
        std::unordered_map<qexsdk::KQexNode*, int> mIndices;
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
    void Evaluate(int pSide, qexsdk::KTime pTime, std::vector<KPosition>& pPositions);
    void UpdateLargest(int pAspect, double pValue, const std::string& pWhere);

    double                           mTolerance;
    double                           mHeight = 0;
    KSide                            mSides[2];
    std::vector<std::pair<int, int>> mPairs; ///< Indices of each common joint in both figures.
    std::vector<std::string>         mOnly[2];
    KAspectResult                    mResults[eASPECT_COUNT];
};

} // namespace asfapp

#endif
