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

/// The keyword equal to \p pToken, ignoring case; eAMC_UNKNOWN when there is none.
KQexAmcWord FindAmcWord(std::string_view pToken);

/// Parses a keyword's value, the rest of its line, into a header.
KQexAmcWordResult ParseAmcWord(KQexAmcWord pWord, std::string_view pRest, KQexAmcHeader& pHeader);

/// Parses the skeleton file's path from a comment line of the form "#!OML:ASF path". False when \p pLine is no such line.
bool ParseAmcOmlLine(std::string_view pLine, KQexAmcHeader& pHeader);

/// Whether a frame at \p pSamplesPerSecond lasts at least one tick and at most 1e6 seconds.
bool IsAmcRate(double pSamplesPerSecond);

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
