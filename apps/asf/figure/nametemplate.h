#ifndef APPS_ASF_FIGURE_NAMETEMPLATE_H
#define APPS_ASF_FIGURE_NAMETEMPLATE_H

#include <apps/asf/console.h>

#include <cstddef>
#include <string>

/// \file
/// Names of outputs with words in braces, such as {name}.bvh; {{ is a brace.

namespace asfapp
{

/// What replaces the words in a name.
struct KNameWords
{
    std::string mTake;       ///< {name} and {take}.
    std::string mSkeleton;   ///< {skeleton}.
    size_t      mNumber = 1; ///< {n}, from 1.
    std::string mSuffix;     ///< {-take}: empty for the only take, else - and its name.
};

/// False, after an error that names the known words, if \p pName has another word in braces. An opening brace alone is none.
bool CheckNameTemplate(const std::string& pName, KConsole& pConsole);

/// True if \p pName has a word that differs from take to take: {name}, {take}, {-take} or {n}.
bool NamesTake(const std::string& pName);

/// \p pName with its words replaced.
std::string FillName(const std::string& pName, const KNameWords& pWords);

/// \p pText as a part of a file's name: no folder, no control characters; \p pIfEmpty if it is empty.
std::string FileNamePart(const std::string& pText, const char* pIfEmpty);

} // namespace asfapp

#endif
