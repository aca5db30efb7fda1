#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFSCAN_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFSCAN_H

#include <kbaselib/kbase/kbits.h>
#include <kbaselib/kbase/knumberscan.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qexsdk
{

/// Lines that are in memory already, looked at token by token, for those that nearly all skeleton files have nearly everywhere: plain,
/// complete, nothing left over, no comment. It is strict and says only yes or no, which takes a third of the time that the text services
/// need; after a no they look at the same line, and know what it is and what to say about it.
///
/// Tokens are those of the text services with KQexFileAcclaimAsf::smDel and smCom. Each operation goes on behind what it found and is
/// true; or it is false, and nothing is found any more.
class KQexAsfScan
{
public:
    /// The lines behind the current one of \p pInput, which has to stay as it is until TakeLines().
    explicit KQexAsfScan(KLineReader& pInput)
        : mInput(pInput),
          mBegin(pInput.GetAhead() > 0 ? pInput.GetAheadText() : kNothing),
          mEnd(mBegin + pInput.GetAhead()),
          mAt(mBegin),
          mLine(mBegin),
          mLines(0),
          mTaken(GetPlace())
    {
    }

    /// The next token is \p pWord, in small letters as there.
    bool Word(const char* pWord)
    {
        SkipBlanks();
        while (*pWord != '\0' && *pWord == *mAt)
        {
            ++pWord;
            ++mAt;
        }
        return *pWord == '\0' && IsTokenEnd();
    }

    /// Index of the first entry of \p pTokens that the next token equals in small or capital letters, -1 for none. The entries are small
    /// letters, two at least.
    int Letters(const KToken* pTokens)
    {
        SkipBlanks();
        // Capitals and small letters differ in one bit. The first two tell nearly all entries apart.
        const unsigned lStart = KBitsAt<uint16_t>(mAt) | 0x2020u;
        for (int lIter = 0; *pTokens[lIter].mStr != '\0'; ++lIter)
        {
            const char* lEntry = pTokens[lIter].mStr;
            if (KBitsAt<uint16_t>(lEntry) != lStart)
                continue;
            const char* lAt = mAt + sizeof(uint16_t);
            for (lEntry += sizeof(uint16_t); *lEntry != '\0' && *lEntry == (*lAt | 0x20); ++lEntry)
                ++lAt;
            if (*lEntry != '\0' || ClassOf(*lAt) < eBLANK)
                continue;
            mAt = lAt;
            return lIter;
        }
        return -1;
    }

    /// The next \p pCount tokens are short plain numbers, which go to \p pValue.
    bool Numbers(double* pValue, int pCount)
    {
        for (int lIter = 0; lIter < pCount; ++lIter)
        {
            SkipBlanks();
            const char* lEnd = KNumberScan(mAt, mEnd + KLineReader::kReadable, pValue[lIter]);
            if (lEnd == nullptr)
                return false;
            mAt = lEnd;
            if (!IsTokenEnd())
                return false;
        }
        return true;
    }

    /// The next token is a whole number without a sign, of up to nine digits.
    bool Digits()
    {
        SkipBlanks();
        const char* lFirst = mAt;
        while (static_cast<unsigned char>(*mAt - '0') < 10)
            ++mAt;
        return mAt != lFirst && mAt - lFirst < 10 && IsTokenEnd();
    }

    /// The next token, of \p pLength characters, up to \p pMax and printable ASCII all; null when there is no such token.
    const char* Text(size_t& pLength, size_t pMax)
    {
        SkipBlanks();
        const char* lFirst = mAt;
        while (ClassOf(*mAt) == eNAME)
            ++mAt;
        pLength = static_cast<size_t>(mAt - lFirst);
        return pLength > 0 && pLength <= pMax && IsTokenEnd() ? lFirst : nullptr;
    }

    /// Nothing but blanks is left of the line, which ends with LF or CR LF.
    bool LineEnd()
    {
        SkipBlanks();
        if (static_cast<size_t>(mAt - mLine) > KLineReader::kMaxLine)
            return false;
        const char* lFeed = mAt + (*mAt == '\r' ? 1 : 0);
        if (*lFeed != '\n')
            return false;
        mAt = lFeed + 1;
        mLine = mAt;
        ++mLines;
        return true;
    }

    /// Whether the line that is being looked at has its end in memory and is not longer than a line may be.
    bool HasWholeLine()
    {
        // Few buffers hold a line that is too long.
        if (static_cast<size_t>(mEnd - mLine) > KLineReader::kMaxLine)
            return std::memchr(mLine, '\n', KLineReader::kMaxLine) != nullptr;
        if (mLastFeed == nullptr)
            for (mLastFeed = mEnd; mLastFeed != mBegin && *mLastFeed != '\n';)
                --mLastFeed;
        return mLine <= mLastFeed && *mLastFeed == '\n';
    }

    /// Where the line that is being looked at begins, and how many lines were found before it.
    struct KPlace
    {
        const char* mLine;  ///< The line's first byte.
        int         mLines; ///< Lines before it, counted from where the scan began.
    };

    /// See KPlace.
    KPlace GetPlace() const { return {mLine, mLines}; }

    /// The lines up to \p pPlace are those that TakeLines() takes.
    void Keep(const KPlace& pPlace) { mTaken = pPlace; }
    /// The same for all lines found so far.
    void Keep() { Keep(GetPlace()); }

    /// Takes the lines kept out of the input, whose next line is the one behind them.
    void TakeLines() { mInput.SkipAhead(static_cast<size_t>(mTaken.mLine - mBegin), mTaken.mLines); }

private:
    enum EClass : unsigned char
    {
        eOTHER, ///< What the text services decide about, among it the NUL behind the lines.
        eNAME,
        eBLANK, ///< This one and the next end a token.
        eLINE_END
    };

    struct KClasses
    {
        constexpr KClasses() : mOf{}
        {
            for (int i = '!'; i <= '~'; ++i)
                mOf[i] = eNAME;
            for (const char lBlank : {' ', '\t', ',', '(', ')'})
                mOf[static_cast<unsigned char>(lBlank)] = eBLANK;
            mOf[static_cast<unsigned char>('\r')] = eLINE_END;
            mOf[static_cast<unsigned char>('\n')] = eLINE_END;
            mOf[static_cast<unsigned char>('#')] = eOTHER;
        }

        EClass mOf[256];
    };

    static EClass ClassOf(char pCharacter)
    {
        static constexpr KClasses kClasses;
        return kClasses.mOf[static_cast<unsigned char>(pCharacter)];
    }

    // What is looked at together may reach beyond the end of a line.
    static_assert(sizeof(uint32_t) <= KLineReader::kReadable);

    void SkipBlanks()
    {
        // Most lines begin with that many.
        if (KBitsAt<uint32_t>(mAt) == 0x20202020u)
            mAt += sizeof(uint32_t);
        while (ClassOf(*mAt) == eBLANK)
            ++mAt;
    }

    bool IsTokenEnd() const { return ClassOf(*mAt) >= eBLANK; }

    static constexpr char kNothing[1 + KLineReader::kReadable] = {};

    KLineReader& mInput;
    const char*  mBegin;
    const char*  mEnd;
    const char*  mAt;
    const char*  mLine;               ///< Begin of the line that mAt is in.
    const char*  mLastFeed = nullptr; ///< Where the last line end is; null while it is not known.
    int          mLines;
    KPlace       mTaken;
};

} // namespace qexsdk

#endif
