#ifndef APPS_ASF_ASFPROGRAM_H
#define APPS_ASF_ASFPROGRAM_H

namespace asfapp
{

/// The program `asf`: runs the command given in the arguments.
/// \return the exit status, see EExit
int RunProgram(int pArgumentCount, char** pArguments);

} // namespace asfapp

#endif
