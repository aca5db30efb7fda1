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

/// Names and words that are remembered so as to warn once, and how much of each: a file of nothing but unknown names must not
/// fill the memory. Beyond the first bound a text file keeps no further warnings either.
const size_t kMaxSaid = KQexTextFile::kMaxMessages;
const size_t kMaxSaidLength = 256;

int Length(std::string_view pText)
{
    return static_cast<int>(pText.size() < kMaxSaidLength ? pText.size() : kMaxSaidLength);
}

} // namespace

KQexAmcReader::KQexAmcReader(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcReadOptions& pOptions,
                             KQexAmcVisitor& pVisitor, KQexAmcHeader& pHeader, KQexAmcInfo& pInfo)
    : mFile(pFile), mAsfScene(pAsfScene), mOptions(pOptions), mVisitor(pVisitor), mHeader(pHeader), mInfo(pInfo)
{
    mBones.Build(pAsfScene->mRoot, pOptions.mSkeletonNotes);
    mFrame.mBones = &mBones.mBones;
    mFrame.mPresent = &mPresent;
    mNeverAbsent.resize(mBones.mBones.size());
    for (size_t i = 0; i < mNeverAbsent.size(); ++i)
    {
        mNeverAbsent[i] = static_cast<int>(i);
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
    // A pose of one moment lasts one frame: a curve needs two keys to be kept.
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
        if (!ReadLine())
        {
            return false;
        }
    }
    if (mFile.HasFailed())
    {
        return false;
    }
    FinishFile();
    return !mStopped;
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
    if (lFirst == ':')
    {
        return ReadWord(lToken, std::string_view(lTo, static_cast<size_t>(lEnd - lTo)));
    }
    if ((lFirst >= '0' && lFirst <= '9') || lFirst == '-' || lFirst == '+')
    {
        // A skeleton may have bones named like numbers; their lines have values, those of frame numbers have none.
        const std::string_view lRest = TrimAmcText(std::string_view(lTo, static_cast<size_t>(lEnd - lTo)));
        long long              lNumber = 0;
        if (KNumberParse(lToken, lNumber) == KNumberStatus::eOK && (lRest.empty() || mBones.Find(lToken) < 0))
        {
            return ReadFrameLine(lNumber, lRest);
        }
        double lValue = 0.0;
        if (mBones.Find(lToken) < 0 && KNumberParse(lToken, lValue) == KNumberStatus::eOK)
        {
            return FailFrameNumber(lToken);
        }
    }
    return ReadBoneLine(lToken, lTo, lEnd);
}

/// A number that is none for a frame still ends the frame before it, which is complete.
bool KQexAmcReader::FailFrameNumber(std::string_view pToken)
{
    if (!mInFrame || CommitFrame())
    {
        mFile.Error("Frame number expected, not (%.*s)\n", Length(pToken), pToken.data());
    }
    return false;
}

bool KQexAmcReader::ReadWord(std::string_view pWord, std::string_view pRest)
{
    const KQexAmcWord lWord = FindAmcWord(pWord);
    if (lWord == eAMC_UNKNOWN)
    {
        if (SayFirst(KToLower(std::string(pWord.substr(0, kMaxSaidLength)))))
        {
            mFile.Warning("Ignoring unknown keyword (%.*s)\n", Length(pWord), pWord.data());
        }
        return true;
    }

    if (mInfo.mFrameCount > 0 || mInFrame)
    {
        const bool lMatters = lWord == eAMC_DEGREES || lWord == eAMC_RADIANS || lWord == eAMC_SAMPLES_PER_SECOND;
        if (lMatters && SayFirst(KToLower(std::string(pWord))))
        {
            mFile.Warning("Ignoring %.*s after the first frame\n", Length(pWord), pWord.data());
        }
        return true;
    }
    const KQexAmcAngle     lAngleBefore = mHeader.mAngle;
    const std::string_view lRest = TrimAmcText(pRest);
    if (TakeAmcWord(lWord, lRest, mHeader) == eAMC_WORD_UNUSABLE)
    {
        mFile.Warning("Can't use the value of %.*s (%.*s)\n", Length(pWord), pWord.data(), Length(lRest), lRest.data());
    }
    if (lAngleBefore != eAMC_ANGLE_SKELETON && lAngleBefore != mHeader.mAngle)
    {
        mFile.Warning("Angles in degrees and in radians, the later word (%.*s) holds\n", Length(pWord), pWord.data());
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
        mInfo.mFirstFrame = mInfo.mLowestFrame = mInfo.mHighestFrame = mBefore = pNumber;
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

    // The number may itself be what the end of the file cut short; that is said when the file ends.
    const bool lWhole = mFile.HasLineEnd();
    if (lWhole && !lFirst && pNumber <= mBefore)
    {
        mFile.Warning("Frame %lld comes after frame %lld, what comes later holds\n", pNumber, mBefore);
    }
    if (!pRest.empty() && SayFirst("text after a frame number"))
    {
        mFile.Warning("Ignoring the text after a frame number (%.*s)\n", Length(pRest), pRest.data());
    }
    return true;
}

/// Lines follow each other as they did the frame before, nearly always: that guess saves the search.
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

/// Whether it is the first time that a message about pWhat is due. Once too many were given, it never is.
bool KQexAmcReader::SayFirst(std::string_view pWhat)
{
    if (mSaid.size() >= kMaxSaid || mSaid.find(pWhat) != mSaid.end())
    {
        return false;
    }
    mSaid.emplace(pWhat);
    return true;
}

void KQexAmcReader::SayUnknown(std::string_view pName)
{
    if (SayFirst(pName.substr(0, kMaxSaidLength)))
    {
        mFile.Warning("The skeleton has no bone %.*s, its values are ignored\n", Length(pName), pName.data());
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
        // A lone word that the end of the file cuts short is no bone's whole name.
        mCutShort = pText == pEnd && mInFrame && !mFile.HasLineEnd();
        if (!mCutShort)
        {
            SayUnknown(pName);
        }
        return true;
    }
    KQexAmcLine& lLine = mBones.mLines[static_cast<size_t>(lFound)];
    if (lLine.mTakesAnyCount)
    {
        return true;
    }
    if (!mInFrame)
    {
        mFile.Error("Frame number expected before bone %.*s\n", Length(pName), pName.data());
        return false;
    }
    if (!ReadValues(lLine, pText, pEnd))
    {
        return mCutShort;
    }
    if (pText != pEnd && !lLine.mSaidTooMany)
    {
        lLine.mSaidTooMany = true;
        mFile.Warning("Bone %.*s has more than %d values, ignoring the others (%.*s)\n", Length(lLine.mName), lLine.mName.data(),
                      lLine.mValueCount, Length(std::string_view(pText, static_cast<size_t>(pEnd - pText))), pText);
    }
    NotePresent(lLine);
    return true;
}

void KQexAmcReader::NotePresent(KQexAmcLine& pLine)
{
    if (pLine.mFrame != mInfo.mFrameCount)
    {
        pLine.mFrame = mInfo.mFrameCount;
        if (pLine.mBone >= 0)
        {
            mPresent.push_back(pLine.mBone);
        }
    }
    else if (!pLine.mSaidTwice)
    {
        pLine.mSaidTwice = true;
        mFile.Warning("Bone %.*s stands twice in frame %lld, what comes later holds\n", Length(pLine.mName), pLine.mName.data(),
                      mFrame.mNumber);
    }
}

/// Reads the values of one line. pText begins at the first and is left behind the last, at the next token or the end.
bool KQexAmcReader::ReadValues(const KQexAmcLine& pLine, const char*& pText, const char* pEnd)
{
    double      lPassedOver[6];
    double*     lValues = pLine.mBone >= 0 ? mBones.mBones[static_cast<size_t>(pLine.mBone)].mValues : lPassedOver;
    const int   lDofCount = pLine.mValueCount - static_cast<int>(pLine.mLengthPlaces.size());
    const char* lAt = pText;
    size_t      lLength = 0;
    int         lDof = 0;
    for (int i = 0; i < pLine.mValueCount; ++i)
    {
        double      lValue = 0.0;
        const char* lBehind = lAt == pEnd ? nullptr : KNumberScan(lAt, pEnd, lValue);
        if (lBehind == nullptr || (lBehind != pEnd && !IsAmcBlank(*lBehind)))
        {
            lBehind = lAt;
            while (lBehind != pEnd && !IsAmcBlank(*lBehind))
            {
                ++lBehind;
            }
            const std::string_view lToken(lAt, static_cast<size_t>(lBehind - lAt));
            if (KNumberParse(lToken, lValue) != KNumberStatus::eOK)
            {
                return FailValue(pLine, i, lToken, lBehind == pEnd);
            }
        }
        if (lLength < pLine.mLengthPlaces.size() && pLine.mLengthPlaces[lLength] == i)
        {
            ++lLength;
        }
        else if (lDof < lDofCount)
        {
            lValues[lDof++] = lValue;
        }
        while (lBehind != pEnd && IsAmcBlank(*lBehind))
        {
            ++lBehind;
        }
        lAt = lBehind;
    }
    pText = lAt;
    return true;
}

bool KQexAmcReader::FailValue(const KQexAmcLine& pLine, int pPlace, std::string_view pToken, bool pAtEnd)
{
    mCutShort = pAtEnd && !mFile.HasLineEnd();
    if (mCutShort)
    {
        return false;
    }
    const std::string lWords = mBones.Words(pLine);
    if (pToken.empty())
    {
        mFile.Error("Bone %.*s: %d values expected (%s), only %d found\n", Length(pLine.mName), pLine.mName.data(), pLine.mValueCount,
                    lWords.c_str(), pPlace);
    }
    else
    {
        mFile.Error("Bone %.*s: a number expected for %s of (%s), not (%.*s)\n", Length(pLine.mName), pLine.mName.data(),
                    mBones.Word(pLine, pPlace), lWords.c_str(), Length(pToken), pToken.data());
    }
    return false;
}

} // namespace qexsdk
