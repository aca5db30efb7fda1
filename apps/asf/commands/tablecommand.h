#ifndef APPS_ASF_COMMANDS_TABLECOMMAND_H
#define APPS_ASF_COMMANDS_TABLECOMMAND_H

#include <apps/asf/figure/loading.h>
#include <apps/asf/figure/worldoptions.h>
#include <qexfigure/table/kqextable.h>
#include <qexfigure/table/kqextablevalues.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

/// \file
/// What the commands share that write a table with a row for each frame.

namespace asfapp
{

/// The arguments of such a command.
struct KTableOptions
{
    std::string              mCommand; ///< "positions", "rotations" or "angles".
    std::vector<std::string> mFiles;
    std::string              mOutput = "-";
    std::string              mFrames;
    std::string              mTake;
    std::vector<std::string> mJoints;
    bool                     mWide = false;
    bool                     mEnds = false;
    KMotionOptions           mMotion;
    KWorldOptions            mWorld;
};

/// Adds the arguments to \p pCommand. The command's callback calls RunTable().
void AddTableOptions(CLI::App& pCommand, KTableOptions& pOptions, bool pHasEnds);

/// Completes the head of the table for the joints \p pPicked (indices) of a loaded motion, and makes what computes its numbers. Null after
/// an error.
using KMakeTable = std::function<std::unique_ptr<qexsdk::KQexTableValues>(KLoadedMotion& pMotion, const std::vector<size_t>& pPicked,
                                                                          qexsdk::KQexTable& pTable)>;

/// Loads the motion and writes the table.
void RunTable(KTableOptions& pOptions, const KMakeTable& pMake, KConsole& pConsole);

/// Adds an item for each joint, with \p pDecimals digits.
void AddJointItems(const KLoadedMotion& pMotion, const std::vector<size_t>& pPicked, int pDecimals, qexsdk::KQexTable& pTable);

} // namespace asfapp

#endif
