#ifndef KBASELIB_KBASE_KOUTPUTFILE_H
#define KBASELIB_KBASE_KOUTPUTFILE_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace qexsdk
{

struct KFileInfo;

/// An output that is either the old file or the complete new one. Bytes go into a temporary file next to the target, which is renamed
/// to the target only after everything was written; until then, and after any failure, an existing target is unchanged. Standard output
/// ("-"), pipes, FIFOs, sockets and devices cannot be replaced and are written directly.
///
/// Several outputs that belong together: Prepare() each as soon as it is written, then CommitAll().
///
/// An object is used by one thread. The file is not synced to disk: the guarantee holds when the process dies at any moment, not when
/// the machine loses power.
class QEX_API KOutputFile
{
public:
    KOutputFile() = default;

    /// Discards a file that was not closed; a string keeps its contents.
    ~KOutputFile();

    KOutputFile(const KOutputFile&) = delete;
    KOutputFile& operator=(const KOutputFile&) = delete;

    /// Takes over the output of \p pOther, which is then as if it had never been opened.
    KOutputFile(KOutputFile&& pOther) noexcept;

    /// Opens \p pPath for writing, or standard output for "-". A symbolic link is followed: its target is replaced (or created), the
    /// link stays. A replaced file keeps its mode. False, with GetReason(), for a directory, a target without write permission, a
    /// folder in which no file can be created, or when memory runs out. An output that was open before is discarded.
    bool Open(const char* pPath);

    /// Opens \p pOut for writing: it is cleared, must outlive the output, and always holds what was written so far. Discard() clears it
    /// again.
    bool OpenBuffer(std::string* pOut);

    /// Appends \p pSize bytes. False when this or any earlier write failed. May only fill a buffer: Close() reports whether the bytes
    /// reached the file.
    bool Write(const char* pData, size_t pSize);

    /// Writes \p pSize bytes from byte \p pAt on, over what is there or after the end; bytes between hold zeros. Unbuffered: meant for
    /// large pieces. Later calls of Write() append at the end. False as Write(), and with ESPIPE for what CanWriteAt() refuses.
    bool WriteAt(uint64_t pAt, const char* pData, size_t pSize);

    /// True for an open file or string; false for standard output, pipes and devices, which take bytes in order only.
    bool CanWriteAt() const { return mState == eOPEN && (mOut != nullptr || !mTemporary.empty()); }

    /// First phase of closing: passes all bytes to the system and closes the file, which keeps its temporary name. False when any write
    /// failed; the temporary file is then removed. A second call returns the first result.
    bool Prepare();

    /// Second phase: renames the temporary file to the target; calls Prepare() if that was not done. False when Prepare() or the rename
    /// failed; the temporary file is then removed and the target unchanged. A second call returns the first result.
    bool Commit();

    /// Prepare() and Commit(). A second call returns the first result. When never opened: true unless something was written, which is
    /// lost.
    bool Close();

    /// Commits \p pCount outputs that belong together. If one fails, every target is restored and all outputs are discarded; but
    /// without hard links, as on some file systems, targets already replaced stay replaced. \return null, or the output that failed.
    static KOutputFile* CommitAll(KOutputFile* const* pOutputs, size_t pCount);

    /// Marks the output as failed for a reason of the caller's (\p pError, an errno): what was written is incomplete.
    void SetFailed(int pError);

    /// Discards the output: the temporary file is removed, an existing target is unchanged. What went to a pipe or a device stays
    /// there. Close() is false afterwards, unless it was called before: a closed output stays.
    void Discard();

    /// True from a successful Open() to the first Commit(), Close() or Discard().
    bool IsOpen() const { return mState == eOPEN || mState == ePREPARED; }

    /// True when something failed since Open().
    bool HasFailed() const { return mError != 0; }

    /// The errno of the first failure, 0 without one.
    int GetError() const { return mError; }

    /// True when the first failure was a pipe without a reader, which a command line ignores silently.
    bool IsBrokenPipe() const;

    /// The system's text for GetError(), "" without a failure, or when memory runs out for it.
    std::string GetReason() const noexcept;

    /// The path passed to Open(); "" for a buffer.
    const std::string& GetPath() const { return mPath; }

    /// Size of the output: the bytes accepted since Open(), and those between them.
    uint64_t GetSize() const { return mSize; }

    /// Removes the temporary files of all open outputs of the process. Async-signal-safe: for the handler of a signal that ends the
    /// process. No output may be used afterwards.
    static void RemovePending();

private:
    enum EState
    {
        eCLOSED,
        eOPEN,
        ePREPARED,
        eDONE
    };

    bool OpenDirect(const char* pPath);
    bool OpenTemporary(const std::string& pTarget, const KFileInfo* pOld);
    bool BackUpOld();
    void RestoreOld();
    void RemoveBackup();
    bool Flush();
    bool WriteAll(const char* pData, size_t pSize);
    bool WriteAllAt(uint64_t pAt, const char* pData, size_t pSize);
    bool WriteAtInString(uint64_t pAt, const char* pData, size_t pSize);
    bool Fail(int pError);
    void CloseFile();
    void RemoveTemporary();
    void Reset();

    EState       mState = eCLOSED;
    bool         mResult = true;
    int          mError = 0;
    int          mFile = -1;
    bool         mOwnsFile = false;
    bool         mIsAnyOrder = false; ///< WriteAt() was called: the system's own position is not at the end.
    int          mSlot = -1;          ///< Index in the list of pending temporary files; -1 when not in it.
    uint64_t     mSize = 0;
    char*        mBuffer = nullptr; ///< Bytes not yet passed to the system.
    size_t       mFill = 0;
    std::string* mOut = nullptr; ///< Target of OpenBuffer(), else null.
    std::string  mPath;
    std::string  mTarget;    ///< The file to replace, links resolved; "" when written directly.
    std::string  mTemporary; ///< "" when there is none.
    std::string  mBackup;    ///< Hard link to the replaced file while it may have to be restored; "" without one.
    int          mBackupSlot = -1;
    bool         mHadOld = false; ///< There was a file to replace.
};

} // namespace qexsdk

#endif
