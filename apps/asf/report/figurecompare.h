#ifndef APPS_ASF_REPORT_FIGURECOMPARE_H
#define APPS_ASF_REPORT_FIGURECOMPARE_H

#include <apps/asf/console.h>
#include <apps/asf/report/figurepairing.h>
#include <qexfigure/kqexfigure.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <algorithm>
#include <string>
#include <vector>

namespace asfapp
{

/// The aspects in which two figures are compared.
enum EAspect
{
    eASPECT_NAMES,     ///< Joints that only one has; dummies (IsFigureDummy()) and ends of leaves do not count.
    eASPECT_PARENTS,   ///< Joints with a different parent.
    eASPECT_REST,      ///< Positions at rest, relative to the topmost joint that both have.
    eASPECT_LENGTHS,   ///< Distances between joints and their parents at rest.
    eASPECT_DOFS,      ///< Degrees of freedom and their order.
    eASPECT_LIMITS,    ///< Limits of the degrees of freedom.
    eASPECT_FRAMES,    ///< Frame counts.
    eASPECT_RATE,      ///< Frames per second.
    eASPECT_DURATION,  ///< Seconds from the first frame to the last.
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
    double      mLargest = 0;        ///< In mUnit; infinite for a limit that only one has.
    const char* mUnit = "";          ///< "cm", "deg", "fps", "s", or "" for a count.
    bool        mIsOneSided = false; ///< Not compared because only one has it.
    std::string mWhere;              ///< Where the largest difference is, or why nothing was compared.
};

/// Compares two figures joint by joint, as KFigurePairing pairs them.
class KFigureComparison
{
public:
    /// \p pTolerance: for lengths, a fraction of the reference length; for angles, radians.
    KFigureComparison(qexsdk::KQexFigure& pFirst, qexsdk::KQexFigure& pSecond, double pTolerance);

    void Run(const KConsole& pConsole);

    /// Height of the first figure at rest, in centimetres; its largest extent if it lies flat.
    double GetHeight() const { return mHeight; }

    /// The height in centimetres; for a figure without height the extent of its motion, or 1 without that, too.
    double GetReferenceLength() const { return mReference; }

    /// Tolerance of lengths, in centimetres.
    double GetLengthTolerance() const { return mTolerance * mReference; }

    const KAspectResult& Get(int pAspect) const { return mResults[pAspect]; }

    /// Joints that only the first (0) or the second (1) figure has, without ends that a writer added.
    const std::vector<std::string>& GetOnly(int pFigure) const { return mOnly[pFigure]; }

    /// Number of joints of the first (0) or the second (1) figure.
    size_t GetJointCount(int pFigure) const { return mSides[pFigure].mJoints.mNodes.size(); }

    /// Number of joints that were compared.
    size_t GetPairCount() const { return mPairing.GetPairs().size(); }

    /// Number of frames that were compared: those that both motions have.
    long long GetComparedFrames() const { return std::min(mSides[0].mSampling.mCount, mSides[1].mSampling.mCount); }

    /// Whether joints, or frames, were left out of the comparison, because only one figure has them.
    bool HasUnpairedJoints() const { return !mOnly[0].empty() || !mOnly[1].empty(); }
    bool HasUnpairedFrames() const { return mResults[eASPECT_FRAMES].mIsCompared && mResults[eASPECT_FRAMES].mDiffers; }

    /// How many joints were paired by their names after the last colon, and an example: "mixamorig:Spine and Spine".
    int         GetBareCount() const { return mPairing.GetBareCount(); }
    std::string GetBareExample() const;

    /// Frames of a figure; their count is 0 without motion.
    const qexsdk::KQexSampling& GetSampling(int pFigure) const { return mSides[pFigure].mSampling; }

private:
    struct KPosition
    {
        double mData[3] = {0, 0, 0};
    };

    struct KSide
    {
        qexsdk::KQexFigure*          mFigure = nullptr;
        KPairingSide                 mJoints;
        std::vector<int>             mParents; ///< Index of the nearest paired ancestor; -1 for none.
        std::vector<int>             mTops;    ///< Index of the topmost paired joint at or above it; its own if there is none above.
        std::vector<KPosition>       mRest;
        qexsdk::KQexSampling         mSampling;
        qexsdk::KQexGlobalTransforms mTransforms;
    };

    static double Distance(const double* pOne, const double* pOther);

    void        Collect(int pSide);
    void        ReportOnly();
    void        FindParents(int pSide);
    void        CompareTrees();
    void        FindReference();
    void        CompareRest();
    void        CompareDofs();
    void        CompareLimits(const std::string& pBone, const qexsdk::KQexBoneDof& pFirst, const qexsdk::KQexBoneDof& pSecond);
    void        CompareMotion(const KConsole& pConsole);
    void        CompareRates();
    void        CompareFrame(long long pFrame);
    void        Evaluate(int pSide, qexsdk::KTime pTime, std::vector<KPosition>& pPositions);
    void        UpdateLargest(int pAspect, double pValue, const std::string& pWhere);
    std::string NameOf(int pSide, int pIndex) const;

    double                   mTolerance;
    double                   mHeight = 0;
    double                   mReference = 0;
    KSide                    mSides[2];
    KFigurePairing           mPairing;
    std::vector<std::string> mOnly[2];
    KAspectResult            mResults[eASPECT_COUNT];
};

} // namespace asfapp

#endif
