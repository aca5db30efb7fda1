#ifndef APPS_ASF_COMMANDS_COMMANDS_H
#define APPS_ASF_COMMANDS_COMMANDS_H

#include <apps/asf/console.h>

namespace CLI
{
class App;
}

/// \file
/// One function per command: gives it its options, help and examples, and a callback that runs it.
/// A command reports through the console, which also holds the exit status.

namespace asfapp
{

void SetUpInfo(CLI::App& pCommand, KConsole& pConsole);
void SetUpCheck(CLI::App& pCommand, KConsole& pConsole);
void SetUpDraw(CLI::App& pCommand, KConsole& pConsole);
void SetUpPositions(CLI::App& pCommand, KConsole& pConsole);
void SetUpRotations(CLI::App& pCommand, KConsole& pConsole);
void SetUpAngles(CLI::App& pCommand, KConsole& pConsole);
void SetUpConvert(CLI::App& pCommand, KConsole& pConsole);
void SetUpBatch(CLI::App& pCommand, KConsole& pConsole);
void SetUpEdit(CLI::App& pCommand, KConsole& pConsole);
void SetUpDiff(CLI::App& pCommand, KConsole& pConsole);

} // namespace asfapp

#endif
