#ifndef APPS_ASF_COMMANDS_COMMANDS_H
#define APPS_ASF_COMMANDS_COMMANDS_H

#include <apps/asf/console.h>

namespace CLI
{
class App;
}

/// \file
/// One function per command: adds the command with its options, help and examples to the program, and a callback that runs it.
/// A command reports through the console, which also holds the exit status.

namespace asfapp
{

void AddInfoCommand(CLI::App& pProgram, KConsole& pConsole);
void AddCheckCommand(CLI::App& pProgram, KConsole& pConsole);
void AddDrawCommand(CLI::App& pProgram, KConsole& pConsole);
void AddPositionsCommand(CLI::App& pProgram, KConsole& pConsole);
void AddRotationsCommand(CLI::App& pProgram, KConsole& pConsole);
void AddAnglesCommand(CLI::App& pProgram, KConsole& pConsole);
void AddConvertCommand(CLI::App& pProgram, KConsole& pConsole);
void AddBatchCommand(CLI::App& pProgram, KConsole& pConsole);
void AddEditCommand(CLI::App& pProgram, KConsole& pConsole);
void AddDiffCommand(CLI::App& pProgram, KConsole& pConsole);

} // namespace asfapp

#endif
