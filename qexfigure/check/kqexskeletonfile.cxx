#include <qexfigure/check/kqexskeletonfile.h>

#include <kbaselib/kbase/kmemory.h>
#include <qexfigure/check/kqexasflint.h>
#include <qexfigure/check/kqexbounds.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexioplugins/acclaim/asf/kqexasflock.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

/// Adds the lint's findings to a reader's messages: all of them if the file was read, else those up to the last error.
void AddLintFindings(const KQexAsfLint& pLint, bool pOk, KQexFileMessages& pMessages)
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

bool KQexSkeletonFile::Read(const KQexFigureFile& pFile, bool pLint, KQexFigureReport& pReport) noexcept
{
    mOk = false;
    mBones.clear();
    return RunGuarded(pReport, [&] { return ReadFile(pFile, pLint, pReport); });
}

bool KQexSkeletonFile::ReadFile(const KQexFigureFile& pFile, bool pLint, KQexFigureReport& pReport)
{
    const std::lock_guard<std::mutex> lLock(AsfReaderLock());
    mScene.reset(QexSdkNew<KQexAsfScene>());
    if (mScene == nullptr)
    {
        throw std::bad_alloc();
    }
    bool lIsSystemError = false;
    {
        KQexFileAcclaimAsf lReader(false);
        mOk = pFile.OpenFor(lReader) && lReader.Read(mScene.get(), false, false, false);
        mMessages.Take(lReader);
        lIsSystemError = !mOk && lReader.HasFailed() && pFile.FailsToRead();
    }
    if (!lIsSystemError)
    {
        Lint(pFile, pLint);
    }
    if (!mOk)
    {
        pReport.Raise(lIsSystemError ? eFIGURE_SYSTEM : eFIGURE_INPUT);
    }
    CollectBones();
    return mOk;
}

/// Adds all findings (\p pAll), and the reason of a failure that the reader gave no message for.
void KQexSkeletonFile::Lint(const KQexFigureFile& pFile, bool pAll)
{
    const bool  lSilent = !mOk && mMessages.mErrors == 0;
    KQexAsfLint lLint;
    if ((!pAll && !lSilent) || !pFile.OpenFor(lLint))
    {
        return;
    }
    lLint.Run();
    if (lSilent && !lLint.GetStopText().empty())
    {
        mMessages.Add(KQexTextMessage::eERROR, lLint.GetStopLine(), lLint.GetStopText());
    }
    if (pAll)
    {
        AddLintFindings(lLint, mOk, mMessages);
    }
}

double KQexSkeletonFile::GetCentimetresPerUnit() const
{
    return mScene != nullptr && mScene->mLengthUnit > 0 ? kCentimetresPerInch / mScene->mLengthUnit : 1.0;
}

/// Numbers the bones in pre-order, without recursion: trees may be deep.
void KQexSkeletonFile::CollectBones()
{
    mBones.clear();
    if (mScene->mRoot == nullptr)
    {
        return;
    }
    struct KPending
    {
        HKQexAsfNode mNode;
        int          mParent;
    };
    const double          lScale = GetCentimetresPerUnit();
    std::vector<KPending> lPending{{mScene->mRoot, -1}};
    while (!lPending.empty())
    {
        const KPending lNext = lPending.back();
        lPending.pop_back();
        KQexRestBone lBone;
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
            const KQexRestBone& lParent = mBones[static_cast<size_t>(lNext.mParent)];
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

bool KQexSkeletonFile::GetBounds(KQexFigurePoint& pMin, KQexFigurePoint& pMax) const
{
    std::vector<KQexFigurePoint> lEnds;
    lEnds.reserve(mBones.size());
    for (const KQexRestBone& lBone : mBones)
    {
        lEnds.push_back(lBone.mEnd);
    }
    return FindBounds(lEnds, pMin, pMax);
}

} // namespace qexsdk
