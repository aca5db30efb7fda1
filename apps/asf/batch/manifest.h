#ifndef APPS_ASF_BATCH_MANIFEST_H
#define APPS_ASF_BATCH_MANIFEST_H

#include <apps/asf/report/jsontext.h>
#include <kbaselib/kbase/kfilelock.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// \file
/// What a run has made, a JSON object a line, in a folder below OUTDIR. docs/json.md has the keys.

namespace asfapp
{

/// Folder of manifests and of files that are being made, below OUTDIR.
constexpr const char* kBatchFolder = ".asf-batch";

/// The part of a collection that a run does.
struct KShard
{
    uint32_t mIndex = 1; ///< 1 to mCount.
    uint32_t mCount = 1;

    /// Whether \p pName belongs to it: by a hash of the name alone, so that parts stay the same when files are added.
    bool Has(const std::string& pName) const;

    /// "1-of-4"
    std::string GetWord() const { return std::to_string(mIndex) + "-of-" + std::to_string(mCount); }
};

/// The last lines about each motion, of all manifests below an OUTDIR: those of the highest generation. Keeps only where they are.
class KManifestIndex
{
public:
    /// Reads all manifests in \p pFolder. Lines that are not whole, as after a crash, are ignored. False after an error.
    bool Read(const std::string& pFolder, KConsole& pConsole);

    /// The last line about the motion \p pName, see KCollection::RecordOf(). False if there is none.
    bool Find(const std::string& pName, KJson& pLine) const;

    /// Calls \p pSee with the last line of each motion.
    void ForEach(const std::function<void(const std::string& pName, const KJson& pLine)>& pSee) const;

private:
    struct KPlace
    {
        uint32_t mFile = 0;
        uint32_t mGeneration = 0; ///< Numbers the lines about a motion, in whatever manifest they are.
        uint64_t mAt = 0;
    };

    bool ReadFile(const std::string& pPath, KConsole& pConsole);
    bool ReadLine(const KPlace& pPlace, KJson& pLine, std::string& pName) const;

    std::vector<std::string>             mPaths;
    std::unordered_map<uint64_t, KPlace> mPlaces; ///< By the hash of a motion's name.
};

/// A manifest that lines are appended to, each passed to the system at once. Only one process has it open.
class KManifestWriter
{
public:
    ~KManifestWriter();

    /// False after an error, also if another process has it open.
    bool Open(const std::string& pPath, KConsole& pConsole);

    /// Appends a line. False, with the reason in \p pReason, if it could not be written.
    bool Append(const KJson& pLine, std::string& pReason);

private:
    bool OpenFile(const std::string& pPath);

    qexsdk::KFileLock mLock;
    int               mFile = -1;
    bool              mIsTorn = false; ///< The file ends within a line.
};

} // namespace asfapp

#endif
