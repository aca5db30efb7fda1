#include <qexfigure/check/kqexfigurecheck.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexfigure/check/kqexfiguresurvey.h>
#include <qexfigure/check/kqexmotionsurvey.h>
#include <qexfigure/check/kqexsizehint.h>
#include <qexfigure/check/kqexskeletonfile.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexnumbertext.h>

namespace qexsdk
{

namespace
{

void AddNote(const KQexFigureFile& pFile, const std::string& pNote, KQexFigureReport& pReport)
{
    if (!pNote.empty())
    {
        pReport.Add(KQexFigureMessage::eNOTE, pFile.GetDisplayPath(), 0, pNote);
    }
}

bool CheckSkeletonFile(const KQexFigureFile& pFile, const KQexFigureCheckOptions& pOptions, KQexFileMessages& pMessages,
                       KQexFigureReport& pReport)
{
    KQexSkeletonFile lSkeleton;
    const bool       lOk = lSkeleton.Read(pFile, true, pReport);
    if (lOk)
    {
        AddNote(pFile, SizeHint(lSkeleton, pOptions.mScaleOption), pReport);
    }
    pMessages = lSkeleton.GetMessages();
    return lOk;
}

/// A warning for each degree of freedom that exceeds its limits.
void AddLimitWarnings(const KQexMotionSurvey& pSurvey, KQexFileMessages& pMessages)
{
    for (const KQexBoneSurvey& lBone : pSurvey.GetBones())
    {
        for (const KQexDofSurvey& lDof : lBone.mDofs)
        {
            if (lDof.mOutside > 0)
            {
                pMessages.Add(KQexTextMessage::eWARNING, 0,
                              "Bone " + lBone.mName + ": " + kDofWords[lDof.mCode] + " is outside its limits " +
                                  LimitsText(lDof.mHasMin, lDof.mMin, lDof.mHasMax, lDof.mMax) + " in " +
                                  CountText(lDof.mOutside, "frame", "frames") + ", first in frame " + std::to_string(lDof.mFirstOutside) +
                                  "; its range is " + ShortText(lDof.mLowest) + " to " + ShortText(lDof.mHighest));
            }
        }
    }
}

bool CheckMotionFile(const KQexFigureFiles& pFiles, const KQexFigureCheckOptions& pOptions, KQexFileMessages& pMessages,
                     KQexFigureReport& pReport)
{
    KQexMotionSurveyOptions lOptions;
    lOptions.mMotionRate = pOptions.mMotionRate;
    lOptions.mAllowUnmatched = pOptions.mAllowUnmatched;
    lOptions.mFindMoreErrors = true;
    lOptions.mProgress = pOptions.mProgress;
    KQexMotionSurvey lSurvey;
    const bool       lOk = lSurvey.Read(pFiles, lOptions, pReport);
    pMessages = lSurvey.GetMessages();
    if (pOptions.mLimits)
    {
        AddLimitWarnings(lSurvey, pMessages);
    }
    return lOk;
}

bool CheckFigureFile(const KQexFigureFile& pFile, const KQexFigureCheckOptions& pOptions, KQexFileMessages& pMessages,
                     KQexFigureReport& pReport)
{
    KQexFigureSurvey lSurvey;
    const bool       lOk = lSurvey.Read(pFile, pOptions.mProgress, pReport) && lSurvey.AddFindings(pReport);
    if (lOk)
    {
        AddNote(pFile, SizeHint(pFile, lSurvey, pOptions.mScaleOption), pReport);
    }
    pMessages = lSurvey.GetMessages();
    return lOk;
}

} // namespace

bool CheckFigure(const KQexFigureFiles& pFiles, const KQexFigureCheckOptions& pOptions, KQexFileMessages& pMessages,
                 KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport,
                      [&]
                      {
                          pMessages = KQexFileMessages();
                          const bool lOk = !pFiles.mMotions.empty() ? CheckMotionFile(pFiles, pOptions, pMessages, pReport)
                                           : pFiles.mFigure.GetFormat() == eFIGURE_ASF
                                               ? CheckSkeletonFile(pFiles.mFigure, pOptions, pMessages, pReport)
                                               : CheckFigureFile(pFiles.mFigure, pOptions, pMessages, pReport);
                          return lOk && pMessages.mErrors == 0;
                      });
}

} // namespace qexsdk
