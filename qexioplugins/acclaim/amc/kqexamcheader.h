#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCHEADER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCHEADER_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <string>
#include <string_view>

namespace qexsdk
{

/// The keywords; each begins with a colon.
enum KQexAmcWord
{
    eAMC_FULLY_SPECIFIED,
    eAMC_DEGREES,
    eAMC_RADIANS,
    eAMC_SAMPLES_PER_SECOND,
    eAMC_FRAME_RANGE,
    eAMC_ASF_FILE,
    eAMC_ASF_PATH,
    eAMC_UNKNOWN
};

/// Result of parsing a keyword's value.
enum KQexAmcWordResult
{
    eAMC_WORD_VALID,
    eAMC_WORD_INVALID ///< The value is missing or invalid; the header is unchanged.
};

/// Result of parsing a comment.
enum KQexAmcCommentResult
{
    eAMC_COMMENT_OTHER, ///< It is not about the rate.
    eAMC_COMMENT_RATE,
    eAMC_COMMENT_INVALID ///< It is, but has no valid rate or something after it; the header is unchanged.
};

/// The keyword equal to \p pToken, ignoring case; eAMC_UNKNOWN when there is none.
KQexAmcWord FindAmcWord(std::string_view pToken);

/// Parses a keyword's value, the rest of its line, into a header.
KQexAmcWordResult ParseAmcWord(KQexAmcWord pWord, std::string_view pRest, KQexAmcHeader& pHeader);

/// Parses the skeleton file's path from a comment line of the form "#!OML:ASF path". False when \p pLine is no such line.
bool ParseAmcOmlLine(std::string_view pLine, KQexAmcHeader& pHeader);

/// Parses the rate from a comment line of the form "# samples-per-second 30" with nothing else in it, which keeps the rate where readers
/// of other makers do not expect :SAMPLES-PER-SECOND.
KQexAmcCommentResult ParseAmcRateComment(std::string_view pLine, KQexAmcHeader& pHeader);

/// Rate of a header: :SAMPLES-PER-SECOND is the format's own keyword and wins over the comment. 0 when there is neither.
inline double GetAmcRate(const KQexAmcHeader& pHeader)
{
    return pHeader.mSamplesPerSecond > 0.0 ? pHeader.mSamplesPerSecond : pHeader.mCommentRate;
}

/// The lines before the first frame: the skeleton as a "#!OML:ASF" comment, the rates, :FULLY-SPECIFIED, the angles' unit, the frame range;
/// each as far as \p pHeader has it. A rate reads back to the same frame time.
std::string AmcHeaderText(const KQexAmcHeader& pHeader);

/// Whether a frame at \p pSamplesPerSecond lasts at least one tick and at most 1e6 seconds.
bool IsAmcRate(double pSamplesPerSecond);

/// Ticks of a frame at a valid rate. A rate such as 30000/1001 is inexact as a double, but its frame is a whole number of ticks: the result
/// is whole when it is within 1e-9 of it.
double AmcFrameTicks(double pSamplesPerSecond);

/// Whether \p pCharacter separates tokens: a blank, a tab or any other control character.
inline bool IsAmcBlank(char pCharacter)
{
    return static_cast<unsigned char>(pCharacter) <= ' ';
}

/// Removes the first token from \p pText and returns it; empty when there is none.
std::string_view NextAmcToken(std::string_view& pText);

/// \p pText without leading and trailing blanks.
std::string_view TrimAmcText(std::string_view pText);

} // namespace qexsdk

#endif
