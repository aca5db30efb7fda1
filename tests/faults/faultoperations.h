#ifndef TESTS_FAULTS_FAULTOPERATIONS_H
#define TESTS_FAULTS_FAULTOPERATIONS_H

#include <tests/faults/faultstage.h>

#include <functional>
#include <ostream>
#include <vector>

namespace qextest
{

/// An operation to inject faults into.
struct KFaultOperation
{
    const char*                  mName;
    bool                         mNeedsMotion;       ///< Needs an imported motion in the scene.
    std::vector<const char*>     mInputs;            ///< Names of the input files that it reads.
    std::vector<const char*>     mOutputs;           ///< Names of the output files that it writes.
    bool                         mIsProgram;         ///< A command line run; it does not use the scene.
    std::function<bool(KStage&)> mRun;               ///< Returns whether it succeeded; stores its errors in the stage.
    bool                         mNeedsFile = false; ///< Its outputs are files with a table of contents, which pipes and devices cannot be.
};

std::ostream& operator<<(std::ostream& pOut, const KFaultOperation& pOperation);

/// All operations of the library, and conversions by the command line.
const std::vector<KFaultOperation>& FaultOperations();

} // namespace qextest

#endif
