#ifndef APPS_ASF_BATCH_COLLECTION_H
#define APPS_ASF_BATCH_COLLECTION_H

#include <apps/asf/console.h>
#include <kbaselib/kbase/ksystem.h>

#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace asfapp
{

/// Motions of a collection, sorted by name. Memory: the names, and 40 bytes a file.
class KCollection
{
public:
    /// A motion.
    struct KFile
    {
        std::string mName;                 ///< Path relative to its folder: "01/01_01.amc".
        uint32_t    mFolder = 0;           ///< Index of the folder that mName is relative to.
        uint32_t    mSuffix = 0;           ///< Number added to the name of the output; 0: none.
        bool        mHasCollision = false; ///< Another motion has the same output.
    };

    /// Adds the motions of \p pInputs: folders with all that is below them, files, and patterns. What is below \p pOutput is left out.
    /// Problems are reported, raise the exit status, and cost only what they are about.
    void Add(const std::vector<std::string>& pInputs, const std::string& pOutput, KConsole& pConsole);

    /// Sorts the motions and drops those that were added twice. Outputs would be the same if names differ only in extension or in the
    /// case of letters: such motions are marked, or with \p pHasSuffixes all but the first get a number, from 2.
    void Finish(bool pHasSuffixes);

    const std::vector<KFile>& GetFiles() const { return mFiles; }

    /// The path to read.
    std::string PathOf(const KFile& pFile) const;

    /// Name of the outputs of \p pFile below OUTDIR, without extension.
    std::string OutputOf(const KFile& pFile) const;

    /// The name of \p pFile in manifests: that of its outputs with its extension, so no two motions of a collection have the same.
    std::string RecordOf(const KFile& pFile) const;

    /// Whether a file is one of the motions. Any thread may ask.
    bool IsMotionFile(const qexsdk::KFileInfo& pFile) const;

    long long GetSkeletons() const { return mSkeletons; } ///< Skeletons found.
    long long GetOthers() const { return mOthers; }       ///< Files of other kinds found.

private:
    void     AddInput(const std::string& pInput, KConsole& pConsole);
    void     AddFolder(const std::string& pFolder, const std::string& pPattern, KConsole& pConsole);
    void     AddFile(const std::string& pFolder, const std::string& pName);
    uint32_t IndexOf(const std::string& pFolder);
    void     FindCollisions(bool pHasSuffixes);

    std::vector<KFile>                              mFiles;
    mutable std::once_flag                          mIdentitiesOnce;
    mutable std::set<std::pair<uint64_t, uint64_t>> mIdentities; ///< Device and index of each motion, once they are needed.
    std::vector<std::string>                        mFolders;
    std::string                                     mOutput; ///< Left out, without links.
    long long                                       mSkeletons = 0;
    long long                                       mOthers = 0;
};

/// Reads a list of paths, one a line, or with \p pIsNull each ended by a NUL. "-" is standard input. False after an error.
bool ReadList(const std::string& pPath, bool pIsNull, std::vector<std::string>& pInputs, KConsole& pConsole);

} // namespace asfapp

#endif
