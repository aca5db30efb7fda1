#ifndef TESTS_FAULTS_FAULTCONVERT_H
#define TESTS_FAULTS_FAULTCONVERT_H

#include <tests/faults/faultstage.h>

#include <initializer_list>

namespace qextest
{

/// Runs `asf convert` in this process, from the files \p pInputs to \p pOutputs.
bool RunConvert(KStage& pStage, std::initializer_list<const char*> pInputs, std::initializer_list<const char*> pOutputs);

} // namespace qextest

#endif
