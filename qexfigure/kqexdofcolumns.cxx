#include <qexfigure/kqexdofcolumns.h>

#include <limits>
#include <new>

namespace qexsdk
{

namespace
{

/// Finds joints by name; those of tracks follow each other.
class KJointFinder
{
public:
    explicit KJointFinder(const std::vector<KQexFigureJoint>& pJoints) : mJoints(pJoints) {}

    /// The index of the next joint of this name, from the one found last on; the number of joints if there is none.
    size_t Find(const std::string& pName)
    {
        for (size_t i = 0; i < mJoints.size(); ++i)
        {
            const size_t lJoint = (mLast + i) % mJoints.size();
            if (mJoints[lJoint].mName == pName)
            {
                return mLast = lJoint;
            }
        }
        return mJoints.size();
    }

private:
    const std::vector<KQexFigureJoint>& mJoints;
    size_t                              mLast = 0;
};

} // namespace

std::vector<KQexDofColumn> KQexDofColumnsOf(const KQexFigure& pFigure, const KQexFigureTake* pTake, double pPerCentimetre,
                                            double pPerDegree)
{
    std::vector<KQexDofTrack>  lTracks;
    std::vector<KQexDofColumn> lColumns;
    KJointFinder               lFinder(pFigure.GetJoints());
    if (pTake != nullptr && !pFigure.GetDofTracks(*pTake, lTracks))
    {
        throw std::bad_alloc();
    }
    for (const KQexDofTrack& lTrack : lTracks)
    {
        KQexDofColumn lColumn;
        lColumn.mJoint = lFinder.Find(lTrack.mJoint);
        if (lColumn.mJoint == pFigure.GetJoints().size())
        {
            continue; // Its bone was left out as a dummy.
        }
        lColumn.mName = lTrack.mJoint + "." + lTrack.mDof.mWord;
        lColumn.mTrack = lTrack;
        lColumn.mDof = lTrack.mDof;
        lColumn.mFactor = lColumn.IsLength() ? pPerCentimetre : pPerDegree;
        lColumn.mDof.mMin *= lColumn.mFactor;
        lColumn.mDof.mMax *= lColumn.mFactor;
        lColumns.push_back(lColumn);
    }
    return lColumns;
}

void KQexEvaluateDofs(const std::vector<KQexDofColumn>& pColumns, KTime pTime, double* pValues)
{
    KQexKeyTimes::KCursor lCursor;
    for (const KQexDofColumn& lColumn : pColumns)
    {
        *pValues++ = lColumn.mTrack.Evaluate(pTime, lCursor) * lColumn.mFactor;
    }
}

std::vector<double> KQexLimitsOf(const std::vector<KQexDofColumn>& pColumns)
{
    constexpr double    kNone = std::numeric_limits<double>::infinity();
    std::vector<double> lLimits;
    for (const KQexDofColumn& lColumn : pColumns)
    {
        lLimits.push_back(lColumn.mDof.mHasMin ? lColumn.mDof.mMin : -kNone);
        lLimits.push_back(lColumn.mDof.mHasMax ? lColumn.mDof.mMax : kNone);
    }
    return lLimits;
}

} // namespace qexsdk
