#include <qexfigure/picture/kqexangles.h>

#include <kbaselib/kmath/keulertable.h>
#include <qexfigure/kqexfigurecurves.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexfigurejoint.h>
#include <qexfigure/kqexnumbertext.h>

#include <algorithm>
#include <cmath>
#include <new>

/// \file
/// Angles of a scene's joints.

namespace qexsdk
{

namespace
{

/// One angle of the node in every frame.
void AddAngle(const KQexNode& pNode, const KQexAnimLayer* pLayer, int pAxis, const std::vector<KTime>& pTimes, KQexChartPanel& pPanel)
{
    const KQexAnimCurveNode* lCurves = pNode.mLocalRotation.GetCurveNode(pLayer);
    const double             lRest = pNode.mLocalRotation.Get()[pAxis];
    KQexChartSeries          lSeries;
    lSeries.mName = std::string("r") + "xyz"[pAxis];
    lSeries.mColour = static_cast<size_t>(pAxis);
    lSeries.mValues.reserve(pTimes.size());
    for (const KTime lTime : pTimes)
    {
        lSeries.mValues.push_back(lCurves != nullptr ? lCurves->Evaluate(static_cast<unsigned int>(pAxis), lTime) : lRest);
    }
    pPanel.mSeries.push_back(std::move(lSeries));
}

/// All angles of the node, in the order in which they are applied.
void AddEulerAngles(const KQexNode& pNode, const KQexAnimLayer* pLayer, const std::vector<KTime>& pTimes, KQexChartPanel& pPanel)
{
    const int* lAxes = KmRotationOrderAxes(pNode.GetRotationOrder());
    for (int i = 0; i < 3; ++i)
    {
        AddAngle(pNode, pLayer, lAxes[i], pTimes, pPanel);
    }
}

/// The rotations that the file has for the node, with their limits. None if it has none.
void AddTracks(const KQexNode* pNode, const std::vector<KQexDofTrack>& pTracks, const std::vector<KTime>& pTimes, KQexChartPanel& pPanel)
{
    for (const KQexDofTrack& lTrack : pTracks)
    {
        const KQexBoneDof& lDof = lTrack.mDof;
        if (lTrack.mNode != pNode || lDof.mWord[0] != 'r')
        {
            continue;
        }
        KQexChartSeries lSeries;
        lSeries.mName = lDof.mWord;
        lSeries.mColour = static_cast<size_t>(lDof.mWord[1] - 'x');
        lSeries.mHasMin = lDof.mHasMin;
        lSeries.mHasMax = lDof.mHasMax;
        lSeries.mMin = lDof.mMin;
        lSeries.mMax = lDof.mMax;
        // Keys have single precision: a value at a limit is rounded by up to 6e-8 of it.
        lSeries.mTolerance += 1e-7 * std::max(std::fabs(lDof.mMin), std::fabs(lDof.mMax));
        KQexKeyTimes::KCursor lCursor;
        for (const KTime lTime : pTimes)
        {
            lSeries.mValues.push_back(lTrack.Evaluate(lTime, lCursor));
        }
        pPanel.mSeries.push_back(std::move(lSeries));
    }
}

bool CollectPanels(const KQexFigure& pFigure, const KQexFigureTake& pTake, const KQexAngleOptions& pOptions, KQexChart& pChart,
                   KQexFigureReport& pReport)
{
    KQexFigureFrames          lFrames;
    std::vector<KQexDofTrack> lTracks;
    if (!pFigure.CollectFrames(pTake, lFrames) || !pFigure.GetDofTracks(pTake, lTracks))
    {
        throw std::bad_alloc();
    }
    pChart.mSeconds.clear();
    pChart.mPanels.clear();
    pChart.mNumbers = lFrames.mNumbers;
    pChart.mSubtitle =
        CountText(static_cast<long long>(lFrames.mTimes.size()), "frame", "frames") + ", " + ShortText(pTake.mRate) + " a second";
    for (const KTime lTime : lFrames.mTimes)
    {
        pChart.mSeconds.push_back(lTime.GetSeconds() - pTake.mOrigin.GetSeconds());
    }
    for (const std::string& lName : pOptions.mJoints)
    {
        const int lJoint = FindFigureJoint(pFigure.GetJoints(), lName, pOptions.mJointOption, pReport);
        if (lJoint < 0)
        {
            return false;
        }
        const KQexNode* lNode = pFigure.GetJoints()[static_cast<size_t>(lJoint)].mNode;
        KQexChartPanel  lPanel{lName, "degrees", "\xC2\xB0", {}};
        AddTracks(lNode, lTracks, lFrames.mTimes, lPanel);
        if (lPanel.mSeries.empty() && pTake.mDofValues != nullptr)
        {
            return pReport.Fail(eFIGURE_USAGE, "", pOptions.mJointOption + "the joint " + lName + " has no rotations");
        }
        if (lPanel.mSeries.empty())
        {
            AddEulerAngles(*lNode, LayerOfTake(pTake), lFrames.mTimes, lPanel);
        }
        pChart.mPanels.push_back(std::move(lPanel));
        if (pOptions.mProgress &&
            !pOptions.mProgress(static_cast<double>(pChart.mPanels.size()) / static_cast<double>(pOptions.mJoints.size())))
        {
            pReport.SetCancelled();
            return false;
        }
    }
    return true;
}

} // namespace

bool CollectAngles(const KQexFigure& pFigure, const KQexFigureTake& pTake, const KQexAngleOptions& pOptions, KQexChart& pChart,
                   KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport, [&] { return CollectPanels(pFigure, pTake, pOptions, pChart, pReport); });
}

} // namespace qexsdk
