#include <apps/asf/report/skeletonfile.h>

#include <apps/asf/report/asflint.h>
#include <kbaselib/kbase/kmemory.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <algorithm>

namespace asfapp
{

using qexsdk::KQexFigureMessage;
using qexsdk::KQexTextMessage;

void KMessages::Add(KQexTextMessage::ESeverity pSeverity, int pLine, const std::string& pText)
{
    mList.push_back({pSeverity, pLine, pText});
    ++(pSeverity == KQexTextMessage::eERROR ? mErrors : mWarnings);
}

void KMessages::Add(const qexsdk::KQexFigureReport& pReport, const std::string& pPath)
{
    const std::string lOwn = pPath == "-" ? "<stdin>" : pPath;
    for (const KQexFigureMessage& lMessage : pReport.GetMessages())
    {
        if (lMessage.mSeverity != KQexFigureMessage::eNOTE)
        {
            const bool lIsError = lMessage.mSeverity == KQexFigureMessage::eERROR;
            const bool lIsOwn = lMessage.mPath.empty() || lMessage.mPath == lOwn;
            Add(lIsError ? KQexTextMessage::eERROR : KQexTextMessage::eWARNING, lIsOwn ? lMessage.mLine : 0,
                (lIsOwn ? std::string() : lMessage.mPath + ": ") + lMessage.mText);
        }
    }
}

void KMessages::KeepOnly(KQexTextMessage::ESeverity pSeverity)
{
    const auto lIsOther = [pSeverity](const KQexTextMessage& pMessage)
    {
        return pMessage.mSeverity != pSeverity;
    };
    mList.erase(std::remove_if(mList.begin(), mList.end(), lIsOther), mList.end());
}

void KMessages::SortByLine()
{
    std::stable_sort(mList.begin(), mList.end(),
                     [](const KQexTextMessage& pOne, const KQexTextMessage& pOther) { return pOne.mLine < pOther.mLine; });
}

void KMessages::Take(const qexsdk::KQexTextFile& pReader)
{
    mList = pReader.GetMessages();
    mErrors = pReader.GetErrorCount();
    mWarnings = pReader.GetWarningCount();
}

void KMessages::Print(const std::string& pPath, KConsole& pConsole) const
{
    for (const KQexTextMessage& lMessage : mList)
    {
        pConsole.Message(lMessage.mSeverity == KQexTextMessage::eERROR ? eERROR : eWARNING, pPath, lMessage.mLine, lMessage.mText);
    }
    const long long lOmitted = static_cast<long long>(mErrors) + mWarnings - static_cast<long long>(mList.size());
    if (lOmitted > 0)
    {
        pConsole.Message(eWARNING, pPath, 0,
                         lOmitted == 1 ? "1 further warning is not shown" : std::to_string(lOmitted) + " further warnings are not shown");
    }
}

namespace
{

/// Adds the lint's findings to a reader's messages: all of them if the file was read, else those up to the last error.
void AddFindings(const KAsfLint& pLint, bool pOk, KMessages& pMessages)
{
    int lLastError = -1;
    for (const KQexTextMessage& lMessage : pMessages.mList)
    {
        lLastError = lMessage.mSeverity == KQexTextMessage::eERROR ? lMessage.mLine : lLastError;
    }
    const bool lAll = pOk || lLastError < 0;
    int        lKept = 0;
    for (const KQexTextMessage& lFinding : pLint.GetFindings())
    {
        if (lAll || lFinding.mLine <= lLastError)
        {
            pMessages.Add(lFinding.mSeverity, lFinding.mLine, lFinding.mText);
            ++lKept;
        }
    }
    pMessages.mWarnings += lAll ? pLint.GetFindingCount() - lKept : 0;
    pMessages.SortByLine();
}

} // namespace

bool KSkeletonFile::Read(const qexsdk::KQexFigureFile& pFile, bool pLint, KConsole& pConsole)
{
    mScene.reset(qexsdk::QexSdkNew<qexsdk::KQexAsfScene>());
    bool lIsSystemError = false;
    {
        qexsdk::KQexFileAcclaimAsf lReader(false);
        mOk = pFile.OpenFor(lReader) && lReader.Read(mScene.get(), false, false, false);
        mMessages.Take(lReader);
        lIsSystemError = !mOk && lReader.HasFailed() && pFile.FailsToRead();
    }
    const bool lSilent = !mOk && mMessages.mErrors == 0;
    if (!lIsSystemError && (pLint || lSilent))
    {
        KAsfLint lLint;
        if (pFile.OpenFor(lLint))
        {
            lLint.Run();
            if (lSilent && !lLint.GetStopText().empty())
            {
                mMessages.Add(KQexTextMessage::eERROR, lLint.GetStopLine(), lLint.GetStopText());
            }
            if (pLint)
            {
                AddFindings(lLint, mOk, mMessages);
            }
        }
    }
    if (!mOk)
    {
        pConsole.Raise(lIsSystemError ? eEXIT_SYSTEM : eEXIT_INPUT);
    }
    CollectBones();
    return mOk;
}

double KSkeletonFile::GetCentimetresPerUnit() const
{
    return mScene->mLengthUnit > 0 ? qexsdk::kCentimetresPerInch / mScene->mLengthUnit : 1.0;
}

/// Numbers the bones in pre-order, without recursion: trees may be deep.
void KSkeletonFile::CollectBones()
{
    mBones.clear();
    if (mScene->mRoot == nullptr)
    {
        return;
    }
    struct KPending
    {
        qexsdk::HKQexAsfNode mNode;
        int                  mParent;
    };
    const double          lScale = GetCentimetresPerUnit();
    std::vector<KPending> lPending{{mScene->mRoot, -1}};
    while (!lPending.empty())
    {
        const KPending lNext = lPending.back();
        lPending.pop_back();
        KRestBone lBone;
        lBone.mNode = lNext.mNode;
        lBone.mParent = lNext.mParent;
        const double* lVector = lNext.mNode->mPositionV.mData;
        if (lNext.mParent < 0)
        {
            // The model holds the root's position in the file's units, the bones' vectors in centimetres.
            lBone.mStart = {lVector[0] * lScale, lVector[1] * lScale, lVector[2] * lScale};
            lBone.mEnd = lBone.mStart;
        }
        else
        {
            const KRestBone& lParent = mBones[static_cast<size_t>(lNext.mParent)];
            lBone.mDepth = lParent.mDepth + 1;
            lBone.mStart = lParent.mEnd;
            lBone.mEnd = {lBone.mStart.mX + lVector[0], lBone.mStart.mY + lVector[1], lBone.mStart.mZ + lVector[2]};
        }
        const int lIndex = static_cast<int>(mBones.size());
        mBones.push_back(lBone);
        for (int lChild = lNext.mNode->mChildBuf.GetCount() - 1; lChild >= 0; --lChild)
        {
            lPending.push_back({lNext.mNode->mChildBuf[lChild], lIndex});
        }
    }
}

bool KSkeletonFile::GetBounds(KPoint& pMin, KPoint& pMax) const
{
    if (mBones.empty())
    {
        return false;
    }
    pMin = pMax = mBones.front().mEnd;
    for (const KRestBone& lBone : mBones)
    {
        pMin = {std::min(pMin.mX, lBone.mEnd.mX), std::min(pMin.mY, lBone.mEnd.mY), std::min(pMin.mZ, lBone.mEnd.mZ)};
        pMax = {std::max(pMax.mX, lBone.mEnd.mX), std::max(pMax.mY, lBone.mEnd.mY), std::max(pMax.mZ, lBone.mEnd.mZ)};
    }
    return true;
}

} // namespace asfapp
