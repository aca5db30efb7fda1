#ifndef APPS_ASF_COMMANDS_EDITFILES_H
#define APPS_ASF_COMMANDS_EDITFILES_H

#include <apps/asf/console.h>
#include <qexfigure/kqexfigurefile.h>

#include <string>
#include <vector>

namespace asfapp
{

/// The files of one `asf edit` run: a skeleton and its motions, and where each is written.
struct KEditFiles
{
    qexsdk::KQexFigureFile              mSkeleton;
    std::string                         mSkeletonOutput;
    std::vector<qexsdk::KQexFigureFile> mMotions;
    std::vector<std::string>            mMotionOutputs; ///< One per motion.

    /// Opens \p pInputs and assigns \p pOutputs: AMC files to the motions in the order given, or one with {name} to all; any other to the
    /// skeleton. False after an error.
    bool Open(const std::vector<std::string>& pInputs, const std::vector<std::string>& pOutputs, KConsole& pConsole);

private:
    bool OpenInputs(const std::vector<std::string>& pInputs, KConsole& pConsole);
    bool AssignOutputs(const std::vector<std::string>& pOutputs, KConsole& pConsole);
    bool CheckOutputs(const std::vector<std::string>& pInputs, KConsole& pConsole) const;
};

} // namespace asfapp

#endif
