#include <qexfigure/kqexdofcolumns.h>

#include <new>
#include <unordered_map>

namespace qexsdk
{

std::vector<KQexDofColumn> KQexDofColumnsOf(const KQexFigure& pFigure, const KQexFigureTake* pTake, double pPerCentimetre,
                                            double pPerDegree)
{
    std::vector<KQexDofTrack>                   lTracks;
    std::vector<KQexDofColumn>                  lColumns;
    std::unordered_map<const KQexNode*, size_t> lJoints;
    for (size_t i = 0; i < pFigure.GetJoints().size(); ++i)
    {
        lJoints.emplace(pFigure.GetJoints()[i].mNode, i);
    }
    if (pTake != nullptr && !pFigure.GetDofTracks(*pTake, lTracks))
    {
        throw std::bad_alloc();
    }
    for (const KQexDofTrack& lTrack : lTracks)
    {
        KQexDofColumn lColumn;
        lColumn.mJoint = lJoints.at(lTrack.mNode);
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
    std::vector<double> lLimits;
    for (const KQexDofColumn& lColumn : pColumns)
    {
        lLimits.push_back(lColumn.mDof.GetMin());
        lLimits.push_back(lColumn.mDof.GetMax());
    }
    return lLimits;
}

} // namespace qexsdk
