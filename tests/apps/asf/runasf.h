#ifndef TESTS_APPS_ASF_RUNASF_H
#define TESTS_APPS_ASF_RUNASF_H

#include <tests/support/runprogram.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <nlohmann/json.hpp>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace qextest
{

/// The words of \p pCall, which are separated by blanks: arguments of a call.
inline std::vector<std::string> WordsOf(const std::string& pCall)
{
    std::istringstream lWords(pCall);
    return {std::istream_iterator<std::string>(lWords), std::istream_iterator<std::string>()};
}

/// Runs the built `asf` with \p pArguments, without colours.
inline KRunResult RunAsf(const std::vector<std::string>& pArguments, KRunOptions pOptions = {})
{
    std::vector<std::string> lArguments{QEX_ASF_PROGRAM};
    lArguments.insert(lArguments.end(), pArguments.begin(), pArguments.end());
    pOptions.mEnvironment.emplace("TERM", "dumb");
    return RunProgram(lArguments, pOptions);
}

/// Runs \p pScript with sh; $ASF is the program.
inline KRunResult RunShell(const std::string& pScript, KRunOptions pOptions = {})
{
    pOptions.mEnvironment["ASF"] = QEX_ASF_PROGRAM;
    return RunProgram({"sh", "-c", pScript}, pOptions);
}

/// Parses standard output, which must be one JSON object on one line.
inline nlohmann::json JsonOf(const KRunResult& pResult)
{
    EXPECT_EQ(pResult.mOut.find('\n'), pResult.mOut.size() - 1) << pResult.mOut;
    return nlohmann::json::parse(pResult.mOut, nullptr, false);
}

inline std::string Sample(const char* pName)
{
    return (SamplesDir() / pName).string();
}

/// A small skeleton without problems: root, hip (no DOF), thigh and shin.
inline std::string SmallSkeleton()
{
    return ":version 1.10\n:name small\n:units\n  mass 1.0\n  length 0.45\n  angle deg\n:documentation\n  none\n:root\n"
           "  order TX TY TZ RX RY RZ\n  axis XYZ\n  position 0 0 0\n  orientation 0 0 0\n:bonedata\n"
           "  begin\n    id 1\n    name hip\n    direction 1 0 0\n    length 1\n    axis 0 0 0 XYZ\n  end\n"
           "  begin\n    id 2\n    name thigh\n    direction 0 -1 0\n    length 7\n    axis 0 0 0 XYZ\n    dof rx ry rz\n"
           "    limits (-160 20)\n      (-70 70)\n      (-inf inf)\n  end\n"
           "  begin\n    id 3\n    name shin\n    direction 0 -1 0\n    length 7\n    axis 0 0 0 XYZ\n    dof rx\n    limits (-10 170)\n  "
           "end\n"
           ":hierarchy\n  begin\n    root hip\n    hip thigh\n    thigh shin\n  end\n";
}

/// Number of the line of \p pText that contains \p pPart, from 1; 0 if none does.
inline int LineOf(const std::string& pText, const std::string& pPart)
{
    const size_t lPosition = pText.find(pPart);
    return lPosition == std::string::npos
               ? 0
               : 1 + static_cast<int>(std::count(pText.begin(), pText.begin() + static_cast<std::ptrdiff_t>(lPosition), '\n'));
}

} // namespace qextest

#endif
