#include <qexioplugins/acclaim/amc/kqexamcreader.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/knumberscan.h>
#include <qexioplugins/acclaim/amc/kqexamcheader.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

/// Maximum number of names and words kept in order to warn once, and maximum bytes of each, so that a file of unknown names cannot fill
/// the memory. KQexTextFile keeps no more warnings either.
const size_t kMaxWarned = KQexTextFile::kMaxMessages;
const size_t kMaxWarnedLength = 256;

int ClippedLength(std::string_view pText)
{
    return static_cast<int>(pText.size() < kMaxWarnedLength ? pText.size() : kMaxWarnedLength);
}

} // namespace

KQexAmcReader::KQexAmcReader(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcReadOptions& pOptions,
                             KQexAmcVisitor& pVisitor, KQexAmcHeader& pHeader, KQexAmcInfo& pInfo)
    : mFile(pFile), mAsfScene(pAsfScene), mOptions(pOptions), mVisitor(pVisitor), mHeader(pHeader), mInfo(pInfo)
{
    mBones.Build(pAsfScene->mRoot, pOptions.mSkeletonNotes);
    mFrame.mBones = &mBones.mBones;
    mFrame.mPresent = &mPresent;
    mAlwaysPresent.resize(mBones.mBones.size());
    for (size_t i = 0; i < mAlwaysPresent.size(); ++i)
    {
        mAlwaysPresent[i] = static_cast<int>(i);
    }
}

bool KQexAmcReader::Run()
{
    const bool lOk = ReadLines();
    if (mStopped || (!lOk && !(mOptions.mKeepGoodFrames && mInfo.mFrameCount > 0)))
    {
        return false;
    }
    if (mInfo.mFrameCount == 0)
    {
        mFile.Error("The motion has no complete frame\n");
        return false;
    }
    FinishMatch();
    // A motion of a single frame lasts one frame: a curve needs two keys to be kept.
    if (mInfo.mHighestFrame == mInfo.mLowestFrame)
    {
        mInfo.mStop = KTime(mInfo.mStart.Get() + std::max(1LL, std::llround(mTicks)));
    }
    return true;
}

bool KQexAmcReader::ReadLines()
{
    for (bool lLine = mFile.FirstLine(); lLine; lLine = mFile.NextLine())
    {
        if (!ReadLine() && !LeaveFrame())
        {
            return false;
        }
    }
    if (mFile.HasFailed())
    {
        return false;
    }
    FinishFile();
    return !mStopped && !(mOptions.mFindMoreErrors && mFile.GetErrorCount() > 0);
}

/// After an error: drops the frame in progress, so that reading goes on with the next one. False if it must end.
bool KQexAmcReader::LeaveFrame()
{
    if (!mOptions.mFindMoreErrors || mStopped || mFile.HasFailed())
    {
        return false;
    }
    if (mFile.GetErrorCount() >= KQexFileAcclaimAmc::kMaxErrors)
    {
        mFile.Warning("Reading stops here, after %d errors\n", KQexFileAcclaimAmc::kMaxErrors);
        return false;
    }
    mInFrame = false;
    mIsLeaving = true;
    mPresent.clear();
    for (KQexAmcLine& lLine : mBones.mLines)
    {
        lLine.mFrame = -1;
    }
    return true;
}

bool KQexAmcReader::ReadLine()
{
    const char* const lBegin = mFile.GetLine();
    const char* const lEnd = lBegin + mFile.GetLineLength();
    const char*       lFrom = lBegin;
    while (lFrom != lEnd && IsAmcBlank(*lFrom))
    {
        ++lFrom;
    }
    const char* lTo = lFrom;
    while (lTo != lEnd && !IsAmcBlank(*lTo))
    {
        ++lTo;
    }
    const std::string_view lToken(lFrom, static_cast<size_t>(lTo - lFrom));
    if (lToken.empty())
    {
        return true;
    }

    const char lFirst = lToken.front();
    if (lFirst == ':' && !mIsLeaving)
    {
        return ReadWord(lToken, std::string_view(lTo, static_cast<size_t>(lEnd - lTo)));
    }
    if ((lFirst >= '0' && lFirst <= '9') || lFirst == '-' || lFirst == '+')
    {
        // Bones may be named like numbers. Their lines have values, those of frame numbers have none.
        const std::string_view lRest = TrimAmcText(std::string_view(lTo, static_cast<size_t>(lEnd - lTo)));
        long long              lNumber = 0;
        if (KNumberParse(lToken, lNumber) == KNumberStatus::eOK && (lRest.empty() || mBones.Find(lToken) < 0))
        {
            mIsLeaving = false;
            return ReadFrameLine(lNumber, lRest);
        }
        double lValue = 0.0;
        if (mBones.Find(lToken) < 0 && KNumberParse(lToken, lValue) == KNumberStatus::eOK)
        {
            mIsLeaving = false;
            return FailFrameNumber(lToken);
        }
    }
    return mIsLeaving || ReadBoneLine(lToken, lTo, lEnd);
}

/// An invalid frame number still ends the previous frame, which is complete.
bool KQexAmcReader::FailFrameNumber(std::string_view pToken)
{
    if (!mInFrame || CommitFrame())
    {
        mFile.Error("Frame number expected, not (%.*s)\n", ClippedLength(pToken), pToken.data());
    }
    return false;
}

bool KQexAmcReader::ReadWord(std::string_view pWord, std::string_view pRest)
{
    const KQexAmcWord lWord = FindAmcWord(pWord);
    if (lWord == eAMC_UNKNOWN)
    {
        if (IsFirstWarning(KToLower(std::string(pWord.substr(0, kMaxWarnedLength)))))
        {
            mFile.Warning("Ignoring unknown keyword (%.*s)\n", ClippedLength(pWord), pWord.data());
        }
        return true;
    }

    if (mInfo.mFrameCount > 0 || mInFrame)
    {
        const bool lMatters = lWord == eAMC_DEGREES || lWord == eAMC_RADIANS || lWord == eAMC_SAMPLES_PER_SECOND;
        if (lMatters && IsFirstWarning(KToLower(std::string(pWord))))
        {
            mFile.Warning("Ignoring %.*s after the first frame\n", ClippedLength(pWord), pWord.data());
        }
        return true;
    }
    const KQexAmcAngle     lAngleBefore = mHeader.mAngle;
    const std::string_view lRest = TrimAmcText(pRest);
    if (ParseAmcWord(lWord, lRest, mHeader) == eAMC_WORD_INVALID)
    {
        mFile.Warning("Invalid value of %.*s (%.*s)\n", ClippedLength(pWord), pWord.data(), ClippedLength(lRest), lRest.data());
    }
    if (lAngleBefore != eAMC_ANGLE_SKELETON && lAngleBefore != mHeader.mAngle)
    {
        mFile.Warning("Angles in degrees and in radians, the last one (%.*s) wins\n", ClippedLength(pWord), pWord.data());
    }
    return true;
}

bool KQexAmcReader::ReadFrameLine(long long pNumber, std::string_view pRest)
{
    if (mInFrame ? !CommitFrame() : !BeginFrames())
    {
        return false;
    }

    const bool lFirst = mInfo.mFrameCount == 0;
    if (lFirst)
    {
        mInfo.mFirstFrame = mInfo.mLowestFrame = mInfo.mHighestFrame = mPreviousNumber = pNumber;
    }
    if (!ComputeTime(pNumber, mFrame.mTime))
    {
        mFile.Error("Frame number %lld is too far from the first, %lld\n", pNumber, mInfo.mFirstFrame);
        return false;
    }
    mFrame.mNumber = pNumber;
    mFrame.mLate = !lFirst && pNumber <= mInfo.mHighestFrame;
    mInFrame = true;
    mPresent.clear();

    // Without a line end the number itself may be cut short; FinishFile() reports that.
    if (mFile.HasLineEnd() && !lFirst && pNumber <= mPreviousNumber)
    {
        mFile.Warning("Frame %lld comes after frame %lld, the last one wins\n", pNumber, mPreviousNumber);
    }
    if (!pRest.empty() && IsFirstWarning("text after a frame number"))
    {
        mFile.Warning("Ignoring the text after a frame number (%.*s)\n", ClippedLength(pRest), pRest.data());
    }
    return true;
}

/// Lines nearly always have the same order as in the previous frame: that guess saves the search.
int KQexAmcReader::FindLine(std::string_view pName)
{
    std::vector<KQexAmcLine>& lLines = mBones.mLines;
    const int                 lGuess = mLine < 0 ? 0 : lLines[static_cast<size_t>(mLine)].mNext;
    int                       lFound = lLines[static_cast<size_t>(lGuess)].mName == pName ? lGuess : mBones.Find(pName);
    if (lFound < 0 && pName.size() > kMaxName)
    {
        lFound = mBones.Find(pName.substr(0, kMaxName));
    }
    if (lFound < 0)
    {
        return lFound;
    }
    if (mLine >= 0)
    {
        lLines[static_cast<size_t>(mLine)].mNext = lFound;
    }
    mLine = lFound;
    return lFound;
}

/// Whether pWhat was not warned about before; remembers it. Always false once kMaxWarned texts are kept.
bool KQexAmcReader::IsFirstWarning(std::string_view pWhat)
{
    if (mWarned.size() >= kMaxWarned || mWarned.find(pWhat) != mWarned.end())
    {
        return false;
    }
    mWarned.emplace(pWhat);
    return true;
}

void KQexAmcReader::WarnUnknown(std::string_view pName)
{
    if (IsFirstWarning(pName.substr(0, kMaxWarnedLength)))
    {
        ++mUnknownNames;
        KQexSkeletonMatch::AddName(mInfo.mMatch.mOnlyInMotion, std::string(pName.substr(0, kMaxWarnedLength)));
        mFile.Warning("The skeleton has no bone %.*s, its values are ignored\n", ClippedLength(pName), pName.data());
    }
}

bool KQexAmcReader::ReadBoneLine(std::string_view pName, const char* pText, const char* pEnd)
{
    while (pText != pEnd && IsAmcBlank(*pText))
    {
        ++pText;
    }
    const int lFound = FindLine(pName);
    if (lFound < 0)
    {
        // A lone word at the end of the file, without a line end, may be a name cut short.
        mCutShort = pText == pEnd && mInFrame && !mFile.HasLineEnd();
        if (!mCutShort)
        {
            WarnUnknown(pName);
        }
        return true;
    }
    KQexAmcLine& lLine = mBones.mLines[static_cast<size_t>(lFound)];
    lLine.mIsInMotion = true;
    if (lLine.mIsRemoved)
    {
        return true;
    }
    if (!mInFrame)
    {
        mFile.Error("Frame number expected before bone %.*s\n", ClippedLength(pName), pName.data());
        return false;
    }
    if (!ReadValues(lLine, pText, pEnd))
    {
        return mCutShort;
    }
    if (pText != pEnd && !lLine.mWarnedTooMany)
    {
        lLine.mWarnedTooMany = true;
        mFile.Warning("Bone %.*s has more than %d value%s, ignoring the others (%.*s)\n", ClippedLength(lLine.mName), lLine.mName.data(),
                      lLine.mValueCount, lLine.mValueCount == 1 ? "" : "s",
                      ClippedLength(std::string_view(pText, static_cast<size_t>(pEnd - pText))), pText);
    }
    MarkPresent(lLine);
    return true;
}

void KQexAmcReader::MarkPresent(KQexAmcLine& pLine)
{
    if (pLine.mFrame != mInfo.mFrameCount)
    {
        pLine.mFrame = mInfo.mFrameCount;
        if (pLine.mBone >= 0)
        {
            mPresent.push_back(pLine.mBone);
        }
    }
    else if (!pLine.mWarnedDuplicate)
    {
        pLine.mWarnedDuplicate = true;
        mFile.Warning("Bone %.*s appears twice in frame %lld, the last one wins\n", ClippedLength(pLine.mName), pLine.mName.data(),
                      mFrame.mNumber);
    }
}

/// Reads the values of one line. pText starts at the first value and is moved past the last, to the next token or the end.
bool KQexAmcReader::ReadValues(const KQexAmcLine& pLine, const char*& pText, const char* pEnd)
{
    double      lIgnored[6];
    double*     lValues = pLine.mBone >= 0 ? mBones.mBones[static_cast<size_t>(pLine.mBone)].mValues : lIgnored;
    const int   lDofCount = pLine.mValueCount - static_cast<int>(pLine.mLengthIndices.size());
    const char* lAt = pText;
    size_t      lLength = 0;
    int         lDof = 0;
    for (int i = 0; i < pLine.mValueCount; ++i)
    {
        double      lValue = 0.0;
        const char* lAfter = lAt == pEnd ? nullptr : KNumberScan(lAt, pEnd, lValue);
        if (lAfter == nullptr || (lAfter != pEnd && !IsAmcBlank(*lAfter)))
        {
            lAfter = lAt;
            while (lAfter != pEnd && !IsAmcBlank(*lAfter))
            {
                ++lAfter;
            }
            const std::string_view lToken(lAt, static_cast<size_t>(lAfter - lAt));
            if (KNumberParse(lToken, lValue) != KNumberStatus::eOK)
            {
                return FailValue(pLine, i, lToken, lAfter == pEnd);
            }
        }
        if (lLength < pLine.mLengthIndices.size() && pLine.mLengthIndices[lLength] == i)
        {
            ++lLength;
        }
        else if (lDof < lDofCount)
        {
            lValues[lDof++] = lValue;
        }
        while (lAfter != pEnd && IsAmcBlank(*lAfter))
        {
            ++lAfter;
        }
        lAt = lAfter;
    }
    pText = lAt;
    return true;
}

bool KQexAmcReader::FailValue(const KQexAmcLine& pLine, int pIndex, std::string_view pToken, bool pAtEnd)
{
    mCutShort = pAtEnd && !mFile.HasLineEnd();
    if (mCutShort)
    {
        return false;
    }
    const std::string lWords = mBones.Words(pLine);
    if (pToken.empty())
    {
        mFile.Error("Bone %.*s: %d value%s expected (%s), only %d found\n", ClippedLength(pLine.mName), pLine.mName.data(),
                    pLine.mValueCount, pLine.mValueCount == 1 ? "" : "s", lWords.c_str(), pIndex);
    }
    else
    {
        mFile.Error("Bone %.*s: number expected for %s of (%s), not (%.*s)\n", ClippedLength(pLine.mName), pLine.mName.data(),
                    mBones.Word(pLine, pIndex), lWords.c_str(), ClippedLength(pToken), pToken.data());
    }
    return false;
}

} // namespace qexsdk
