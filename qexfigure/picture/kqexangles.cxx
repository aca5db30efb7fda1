#include <qexfigure/picture/kqexangles.h>

#include <qexfigure/kqexdidyoumean.h>
#include <qexfigure/kqexfigurecurves.h>
#include <qexfigure/kqexfigureguard.h>
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

/// The axes of each rotation order, in the order in which they are applied.
constexpr unsigned int kOrderAxes[][3] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0}, {1, 0, 2}, {2, 0, 1}, {2, 1, 0}, {0, 1, 2}};

const KQexFigureJoint* FindJoint(const KQexFigure& pFigure, const std::string& pName)
{
    const auto& lJoints = pFigure.GetJoints();
    const auto  lFound =
        std::find_if(lJoints.begin(), lJoints.end(), [&pName](const KQexFigureJoint& pJoint) { return pJoint.mName == pName; });
    return lFound == lJoints.end() ? nullptr : &*lFound;
}

/// One angle of the node in every frame.
void AddAngle(const KQexNode& pNode, const KQexAnimLayer* pLayer, unsigned int pAxis, const std::vector<KTime>& pTimes,
              KQexChartPanel& pPanel)
{
    const KQexAnimCurveNode* lCurves = pNode.mLocalRotation.GetCurveNode(pLayer);
    const double             lRest = pNode.mLocalRotation.Get()[static_cast<int>(pAxis)];
    KQexChartSeries          lSeries;
    lSeries.mName = std::string("r") + "xyz"[pAxis];
    lSeries.mColour = pAxis;
    lSeries.mValues.reserve(pTimes.size());
    for (const KTime lTime : pTimes)
    {
        lSeries.mValues.push_back(lCurves != nullptr ? lCurves->Evaluate(pAxis, lTime) : lRest);
    }
    pPanel.mSeries.push_back(std::move(lSeries));
}

/// All angles of the node, in the order in which they are applied.
void AddEulerAngles(const KQexNode& pNode, const KQexAnimLayer* pLayer, const std::vector<KTime>& pTimes, KQexChartPanel& pPanel)
{
    for (const unsigned int lAxis : kOrderAxes[pNode.GetRotationOrder()])
    {
        AddAngle(pNode, pLayer, lAxis, pTimes, pPanel);
    }
}

/// The rotations that the file has for the joint, with their limits; of several joints with one name, the first's. None if it has none.
void AddTracks(const std::string& pJoint, const std::vector<KQexDofTrack>& pTracks, const std::vector<KTime>& pTimes,
               KQexChartPanel& pPanel)
{
    for (const KQexDofTrack& lTrack : pTracks)
    {
        const KQexBoneDof& lDof = lTrack.mDof;
        const auto         lIsSame = [&lDof](const KQexChartSeries& pSeries)
        {
            return pSeries.mName == lDof.mWord;
        };
        if (lTrack.mJoint != pJoint || lDof.mWord[0] != 'r' || std::any_of(pPanel.mSeries.begin(), pPanel.mSeries.end(), lIsSame))
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

bool CollectSceneAngles(const KQexFigure& pFigure, const KQexFigureTake& pTake, const KQexAngleOptions& pOptions, KQexChart& pChart,
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
        const KQexFigureJoint* lJoint = FindJoint(pFigure, lName);
        if (lJoint == nullptr)
        {
            std::vector<std::string> lNames;
            for (const KQexFigureJoint& lOther : pFigure.GetJoints())
            {
                lNames.push_back(lOther.mName);
            }
            return pReport.Fail(eFIGURE_USAGE, "", pOptions.mJointOption + "the figure has no joint " + lName + DidYouMean(lName, lNames));
        }
        KQexChartPanel lPanel{lName, "degrees", "\xC2\xB0", {}};
        AddTracks(lName, lTracks, lFrames.mTimes, lPanel);
        if (lPanel.mSeries.empty())
        {
            AddEulerAngles(*lJoint->mNode, LayerOfTake(pTake), lFrames.mTimes, lPanel);
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
    return RunGuarded(pReport, [&] { return CollectSceneAngles(pFigure, pTake, pOptions, pChart, pReport); });
}

} // namespace qexsdk
