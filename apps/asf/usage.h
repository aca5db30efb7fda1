#ifndef APPS_ASF_USAGE_H
#define APPS_ASF_USAGE_H

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// \file
/// Texts of usage errors: what was expected, and what to type instead.

namespace asfapp
{

/// Accepts numbers from \p pMin to \p pMax; whole ones only with \p pIsWhole.
CLI::Validator NumberFrom(double pMin, double pMax, bool pIsWhole = false);

/// Accepts the words of \p pWords.
CLI::Validator OneOf(std::vector<std::string> pWords);

/// "a, b or c".
std::string ListWords(const std::vector<std::string>& pWords);

/// The error text for a call that the parser refuses, in one line.
std::string DescribeUsageError(const CLI::App& pProgram, const CLI::ParseError& pError);

/// The option of the command called \p pName ("--fps", "FILE"), null if there is none. The parser's own look-up cannot pass on a lack of
/// memory.
const CLI::Option* FindOption(const CLI::App& pCommand, const std::string& pName);

} // namespace asfapp

#endif
