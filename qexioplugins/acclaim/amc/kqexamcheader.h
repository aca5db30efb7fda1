#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCHEADER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCHEADER_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <string>
#include <string_view>

namespace qexsdk
{

/// The words that begin with a colon.
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

/// What became of a line that begins with a colon word.
enum KQexAmcWordResult
{
    eAMC_WORD_TAKEN,
    eAMC_WORD_UNUSABLE ///< The value behind the word makes no sense; the header is as it was.
};

/// The word that \p pToken is, whatever its case.
KQexAmcWord FindAmcWord(std::string_view pToken);

/// Enters a word and its value, the rest of its line, into a header.
KQexAmcWordResult TakeAmcWord(KQexAmcWord pWord, std::string_view pRest, KQexAmcHeader& pHeader);

/// Takes the skeleton's name from a first comment line of the form "#!OML:ASF path". False when \p pLine is no such line.
bool TakeAmcOmlLine(std::string_view pLine, KQexAmcHeader& pHeader);

/// Whether frames of \p pSamplesPerSecond have a length that a time can tell.
bool IsAmcRate(double pSamplesPerSecond);

/// Whether \p pCharacter separates tokens: a blank, a tab or any other control character.
inline bool IsAmcBlank(char pCharacter)
{
    return static_cast<unsigned char>(pCharacter) <= ' ';
}

/// The first token of \p pText, which becomes what stands behind it. Empty when there is none.
std::string_view TakeAmcToken(std::string_view& pText);

/// \p pText without blanks at its ends.
std::string_view TrimAmcText(std::string_view pText);

} // namespace qexsdk

#endif
