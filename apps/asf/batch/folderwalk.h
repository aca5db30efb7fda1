#ifndef APPS_ASF_BATCH_FOLDERWALK_H
#define APPS_ASF_BATCH_FOLDERWALK_H

#include <apps/asf/console.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace asfapp
{

/// \p pPath as an absolute one without links and without a slash at its end; also if it does not exist.
std::string WithoutLinks(const std::filesystem::path& pPath);

/// Walks a folder, depth first, entries sorted, links followed, each folder once. Pipes, sockets and devices are skipped.
class KFolderWalk
{
public:
    /// \p pLeftOut: a folder that is skipped, as WithoutLinks() has it; empty: none. Problems are reported and raise the exit status.
    KFolderWalk(std::string pRoot, std::string pLeftOut, KConsole& pConsole);

    /// The next file's path relative to the root. False at the end.
    bool Next(std::string& pName);

private:
    struct KLevel
    {
        std::string              mName; ///< Relative to the root, with a slash at its end unless empty.
        std::vector<std::string> mNames;
        size_t                   mNext = 0;
    };

    void Enter(const std::string& pName);
    void ReadNames(KLevel& pLevel);

    const std::filesystem::path mRoot;
    const std::string           mLeftOut;
    KConsole&                   mConsole;
    std::vector<KLevel>         mLevels;
    std::set<std::string>       mSeen; ///< Folders without links: each is read once, however many links lead to it.
};

} // namespace asfapp

#endif
