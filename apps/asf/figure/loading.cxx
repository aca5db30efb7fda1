#include <apps/asf/figure/loading.h>

#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>

#include <new>
#include <utility>

namespace asfapp
{

using qexsdk::KQexFigureFiles;
using qexsdk::KQexFigureMessage;
using qexsdk::KQexFigureReport;

namespace
{

void RaiseStatus(const KQexFigureReport& pReport, KConsole& pConsole)
{
    pConsole.Raise(static_cast<EExit>(pReport.GetStatus()));
    if (pReport.IsOutOfMemory())
    {
        throw std::bad_alloc();
    }
}

} // namespace

void PrintReport(const KQexFigureReport& pReport, KConsole& pConsole)
{
    for (const KQexFigureMessage& lMessage : pReport.GetMessages())
    {
        const ESeverity lSeverity = lMessage.mSeverity == KQexFigureMessage::eERROR     ? eERROR
                                    : lMessage.mSeverity == KQexFigureMessage::eWARNING ? eWARNING
                                                                                        : eNOTE;
        pConsole.Message(lSeverity, lMessage.mPath.empty() ? "asf" : lMessage.mPath, lMessage.mLine, lMessage.mText);
    }
    if (pReport.IsMismatch())
    {
        NoteAllowUnmatched(pConsole);
    }
    RaiseStatus(pReport, pConsole);
}

void NoteAllowUnmatched(KConsole& pConsole)
{
    pConsole.Message(eNOTE, "asf", 0, "use --allow-unmatched to go on nevertheless");
}

bool OpenFile(qexsdk::KQexFigureFile& pFile, const std::string& pPath, KConsole& pConsole)
{
    KQexFigureReport lReport;
    const bool       lOk = pFile.Open(pPath, lReport);
    PrintReport(lReport, pConsole);
    return lOk;
}

KInputSet::KInputSet(const std::vector<std::string>& pPaths, const KMotionOptions& pOptions)
{
    for (const std::string& lPath : pPaths)
    {
        KInput                              lInput;
        std::vector<qexsdk::KQexFigureFile> lFiles;
        lInput.mIsOpen = qexsdk::OpenFigureFiles({lPath}, FilesOptions(pOptions), lFiles, lInput.mReport);
        if (lInput.mIsOpen)
        {
            lInput.mFile = lFiles.front();
            if (lInput.mFile.GetFormat() == qexsdk::eFIGURE_ASF)
            {
                mSkeletons.push_back(lInput.mFile);
            }
        }
        mFiles.push_back(std::move(lInput));
    }
}

bool KInputSet::IsOpen(size_t pIndex, KConsole& pConsole) const
{
    PrintReport(mFiles[pIndex].mReport, pConsole);
    return mFiles[pIndex].mIsOpen;
}

bool KInputSet::Pair(size_t pIndex, const KMotionOptions& pOptions, KQexFigureFiles& pPair, KQexFigureReport& pReport,
                     KConsole& pConsole) const
{
    const bool lOk = pPair.Pair(GetFile(pIndex), mSkeletons, FilesOptions(pOptions), pReport);
    PrintReport(pReport, pConsole);
    return lOk;
}

bool OpenFigure(KQexFigureFiles& pFiles, const std::vector<std::string>& pPaths, const KMotionOptions& pOptions, KConsole& pConsole)
{
    KQexFigureReport lReport;
    const bool       lOk = pFiles.Open(pPaths, FilesOptions(pOptions), lReport);
    PrintReport(lReport, pConsole);
    if (lOk && pOptions.mMotionRate > 0 && pFiles.mMotions.empty())
    {
        pConsole.Message(eNOTE, pFiles.mFigure.GetDisplayPath(), 0, "--source-fps is for AMC files, and is not used here");
    }
    return lOk;
}

bool CheckOneMotion(const KQexFigureFiles& pFiles, KConsole& pConsole)
{
    if (pFiles.mMotions.size() > 1)
    {
        pConsole.Fail(eEXIT_USAGE,
                      "expected one motion, not " + pFiles.mMotions[0].GetDisplayPath() + " and " + pFiles.mMotions[1].GetDisplayPath());
        return false;
    }
    return true;
}

bool LoadQuietly(qexsdk::KQexFigure& pFigure, const KQexFigureFiles& pFiles, qexsdk::KQexFigureOptions pOptions, KQexFigureReport& pReport,
                 KConsole& pConsole)
{
    KProgress lProgress("reading", pConsole);
    pOptions.mTakeOption = "--take";
    pOptions.mProgress = lProgress.GetFunction();
    const bool lOk = pFigure.Load(pFiles, pOptions, pReport);
    RaiseStatus(pReport, pConsole);
    return lOk;
}

bool LoadFigure(qexsdk::KQexFigure& pFigure, const KQexFigureFiles& pFiles, qexsdk::KQexFigureOptions pOptions, KConsole& pConsole)
{
    KQexFigureReport lReport;
    const bool       lOk = LoadQuietly(pFigure, pFiles, std::move(pOptions), lReport, pConsole);
    PrintReport(lReport, pConsole);
    return lOk;
}

std::vector<std::string> PathsOf(const KQexFigureFiles& pFiles)
{
    std::vector<std::string> lPaths;
    if (!pFiles.CollectPaths(lPaths))
    {
        throw std::bad_alloc();
    }
    return lPaths;
}

void PrintMessages(const qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole)
{
    for (const qexsdk::KQexImportMessage& lMessage : pResult.mMessages)
    {
        pConsole.Message(SeverityOf(lMessage.mMessage), lMessage.mPath.empty() ? "asf" : lMessage.mPath, lMessage.mMessage.mLine,
                         lMessage.mMessage.mText);
    }
}

void PrintMessages(const qexsdk::KQexFileMessages& pMessages, const std::string& pPath, KConsole& pConsole)
{
    for (const qexsdk::KQexTextMessage& lMessage : pMessages.mList)
    {
        pConsole.Message(SeverityOf(lMessage), pPath, lMessage.mLine, lMessage.mText);
    }
    const long long lOmitted =
        static_cast<long long>(pMessages.mErrors) + pMessages.mWarnings - static_cast<long long>(pMessages.mList.size());
    if (lOmitted > 0)
    {
        pConsole.Message(eWARNING, pPath, 0,
                         lOmitted == 1 ? "1 further warning is not shown" : std::to_string(lOmitted) + " further warnings are not shown");
    }
}

void PrintSizeHint(const qexsdk::KQexFigureFile& pFile, const std::string& pHint, KConsole& pConsole)
{
    if (!pHint.empty())
    {
        pConsole.Message(eNOTE, pFile.GetDisplayPath(), 0, pHint);
    }
}

bool KLoadedMotion::LoadFigureOrMotion(const KQexFigureFiles& pFiles, const KMotionOptions& pOptions, const std::string& pTake,
                                       KConsole& pConsole)
{
    qexsdk::KQexFigureOptions lOptions;
    lOptions.mMotionRate = pOptions.mMotionRate;
    lOptions.mSampleRate = pOptions.mSampleRate;
    lOptions.mAllowUnmatched = pOptions.mAllowUnmatched;
    lOptions.mKeepDofValues = pOptions.mKeepDofValues;
    lOptions.mTake = pTake;
    if (!CheckOneMotion(pFiles, pConsole) || !LoadFigure(mFigure, pFiles, std::move(lOptions), pConsole))
    {
        return false;
    }
    if (mFigure.GetTakes().empty())
    {
        return true;
    }
    mTake = &mFigure.GetTakes().front();
    if (pOptions.mRate > 0 && mTake->mIsDefaultRate)
    {
        pConsole.Message(eNOTE, pFiles.mMotions.front().GetDisplayPath(), 0,
                         "--fps is the rate of the output; if it was meant for this file, type --source-fps " + pOptions.mFps);
    }
    if (mFigure.GetTakes().size() > 1)
    {
        pConsole.Message(eNOTE, pFiles.mFigure.GetDisplayPath(), 0,
                         "has " + std::to_string(mFigure.GetTakes().size()) + " takes, using " + mTake->mName +
                             "; choose another with --take NAME");
    }
    if (!mFigure.CollectFrames(*mTake, mFrames))
    {
        throw std::bad_alloc();
    }
    return true;
}

bool KLoadedMotion::Load(const KQexFigureFiles& pFiles, const KMotionOptions& pOptions, const std::string& pTake, KConsole& pConsole)
{
    if (pFiles.mFigure.GetFormat() == qexsdk::eFIGURE_ASF && pFiles.mMotions.empty())
    {
        pConsole.Message(eERROR, pFiles.mFigure.GetDisplayPath(), 0, "is a skeleton, but a motion is expected");
        pConsole.Raise(eEXIT_USAGE);
        return false;
    }
    if (!LoadFigureOrMotion(pFiles, pOptions, pTake, pConsole))
    {
        return false;
    }
    if (!HasTake())
    {
        pConsole.Message(eERROR, pFiles.mFigure.GetDisplayPath(), 0, "has no motion");
        pConsole.Raise(eEXIT_INPUT);
    }
    return HasTake();
}

bool KLoadedMotion::Sample(size_t pFirst, size_t pLast, double pRate, qexsdk::KQexSampling& pSampling, KConsole& pConsole) const
{
    qexsdk::KQexSamplingRequest lRequest;
    KQexFigureReport            lReport;
    lRequest.mFramesPerSecond = pRate;
    lRequest.mHasStart = lRequest.mHasEnd = true;
    lRequest.mStart = GetTime(pFirst);
    lRequest.mEnd = GetTime(pLast);
    const bool lOk = qexsdk::MakeSampling(mFigure.GetRoots(), mTake->mStack, lRequest, pSampling);
    if (!lOk)
    {
        pConsole.Fail(eEXIT_USAGE, "--fps: " + ShortText(pRate) + " frames a second do not fit this motion");
    }
    const bool lFits = lOk && qexsdk::KQexFigure::CheckSpan(*mTake, pSampling, lReport);
    PrintReport(lReport, pConsole);
    return lFits;
}

void KLoadedMotion::Evaluate(qexsdk::KTime pTime, std::vector<KPoint>& pPositions)
{
    if (!mFigure.Evaluate(mTake, pTime, pPositions))
    {
        throw std::bad_alloc();
    }
}

} // namespace asfapp
