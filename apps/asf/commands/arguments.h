#ifndef APPS_ASF_COMMANDS_ARGUMENTS_H
#define APPS_ASF_COMMANDS_ARGUMENTS_H

#include <apps/asf/figure/convertoptions.h>
#include <apps/asf/figure/motionoptions.h>
#include <apps/asf/figure/worldoptions.h>

#include <string>
#include <vector>

namespace CLI
{
class App;
}

/// \file
/// Arguments that several commands share, and those of `asf convert`, for the parser.

namespace asfapp
{

/// Adds --fps, the rate of the output, with \p pText for its help.
void AddRate(CLI::App& pCommand, const std::string& pText, KMotionOptions& pOptions);

/// Adds --source-fps, the rate of AMC files.
void AddSourceRate(CLI::App& pCommand, KMotionOptions& pOptions);

/// Adds --asf, --source-fps, --allow-unmatched and --quiet, after AddRate() if the command has an output with a rate. The command's
/// callback must call ApplyMotionOptions().
void AddMotionOptions(CLI::App& pCommand, KMotionOptions& pOptions);

/// Adds --search-above.
void AddSearchAbove(CLI::App& pCommand, KMotionOptions& pOptions);

/// Adds --allow-unmatched.
void AddAllowUnmatched(CLI::App& pCommand, KMotionOptions& pOptions);

/// Adds --from.
void AddFormatOption(CLI::App& pCommand, std::string& pFormat);

/// Adds --scale, --units, --up and --in-place.
void AddWorldOptions(CLI::App& pCommand, KWorldOptions& pOptions);

/// Adds the options of `asf convert`.
void AddConvertOptions(CLI::App& pCommand, KConvertOptions& pOptions);

/// Adds those of them that fit any number of files: what of a motion is written, and how.
void AddEachFileOptions(CLI::App& pCommand, KConvertOptions& pOptions);

/// Splits `-o A.asf B.amc` of convert and edit into options with one name each, so that -o never consumes the name of an input.
std::vector<std::string> SplitOutputPairs(int pArgumentCount, char** pArguments);

} // namespace asfapp

#endif
