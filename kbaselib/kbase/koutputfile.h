#ifndef KBASELIB_KBASE_KOUTPUTFILE_H
#define KBASELIB_KBASE_KOUTPUTFILE_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <cstdint>
#include <string>

struct stat; // the system's, not one of this name space

namespace qexsdk
{

/// An output that is either the old file or the whole new one. Bytes go into a temporary file beside the target, which
/// takes the target's name only when everything was written; until then, and after any failure, an existing target is
/// as it was. Standard output ("-"), pipes, FIFOs, sockets and devices cannot be replaced and are written directly.
///
/// Several outputs that belong together: Prepare() each as soon as it is written, then CommitAll().
///
/// One object is used by one thread. The file is not synced to the disk: the promise holds for a process that dies at any
/// moment, not for a machine that loses its power.
class QEX_API KOutputFile
{
public:
    KOutputFile() = default;

    /// Gives up a file that was not closed, as Discard() does; a string keeps what it holds.
    ~KOutputFile();

    KOutputFile(const KOutputFile&) = delete;
    KOutputFile& operator=(const KOutputFile&) = delete;

    /// Opens for writing to \p pPath, or to standard output for "-". A symbolic link is followed: the file it points at
    /// is replaced (or made), the link stays. A replaced file's mode is kept. False, with GetReason(), for a directory,
    /// a target that may not be written, a folder in which no file can be made, or when memory runs out. An output that
    /// was open before is given up.
    bool Open(const char* pPath);

    /// Opens for writing into \p pOut, which is emptied first, has to outlive the output and holds what was written so
    /// far at any moment. Discard() empties it again.
    bool OpenBuffer(std::string* pOut);

    /// Appends \p pSize bytes. False when this or any earlier write failed. May only fill a buffer: whether the bytes
    /// reached the file is what Close() answers.
    bool Write(const char* pData, size_t pSize);

    /// First phase of closing: hands all bytes over to the system and closes the file, which keeps its temporary name.
    /// False when a write failed anywhere; the temporary file is gone then. A second call gives the first answer.
    bool Prepare();

    /// Second phase: the temporary file takes the target's name. False after a Prepare() that failed (and calls it when
    /// it was left out), or when the name cannot be taken; the temporary file is gone then and the target as it was.
    /// A second call gives the first answer.
    bool Commit();

    /// Prepare() and Commit(). Called again, it gives the first result again. When never opened: true unless something was
    /// written, which is lost.
    bool Close();

    /// Completes \p pCount outputs that belong together: all take their names, or none does, in which case every target is as it
    /// was before and all outputs are given up. Only on a file system without hard links does a file that took its name before
    /// another could not keep it. \return null, or the output that failed.
    static KOutputFile* CommitAll(KOutputFile* const* pOutputs, size_t pCount);

    /// Marks the output as failed for a reason of the caller's (\p pError, an errno): what was written is not all there is.
    void SetFailed(int pError);

    /// Gives the output up: the temporary file is removed, an existing target stays as it was. What went to a pipe or a
    /// device stays there. Close() is false afterwards, except after an earlier Close(), which nothing undoes.
    void Discard();

    /// True from a successful Open() to the first Commit(), Close() or Discard().
    bool IsOpen() const { return mState == eOPEN || mState == ePREPARED; }

    /// True when something failed since Open().
    bool HasFailed() const { return mError != 0; }

    /// The errno of the first failure, 0 without one.
    int GetError() const { return mError; }

    /// True when the first failure was that nobody reads the pipe any more, which a command line passes over in silence.
    bool IsBrokenPipe() const;

    /// The system's text for GetError(), "" without a failure.
    std::string GetReason() const;

    /// The path as it was given to Open(); "" for a buffer.
    const std::string& GetPath() const { return mPath; }

    /// Bytes accepted by Write() since Open().
    uint64_t GetSize() const { return mSize; }

    /// Removes the temporary files of all outputs of the process that are open. Async-signal-safe: for the handler of a
    /// signal that ends the process, which must not use an output afterwards.
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
    bool OpenTemporary(const std::string& pTarget, const struct stat* pOld);
    bool KeepOld();
    void PutOldBack();
    void DropOld();
    bool Flush();
    bool WriteAll(const char* pData, size_t pSize);
    bool Fail(int pError);
    void CloseFile();
    void DropTemporary();
    void Reset();

    EState       mState = eCLOSED;
    bool         mResult = true;
    int          mError = 0;
    int          mFile = -1;
    bool         mOwnsFile = false;
    int          mSlot = -1; ///< Place in the list of pending temporary files, -1 when not in it.
    uint64_t     mSize = 0;
    char*        mBuffer = nullptr; ///< Bytes not yet handed to the system.
    size_t       mFill = 0;
    std::string* mOut = nullptr; ///< Target of OpenBuffer(), else null.
    std::string  mPath;
    std::string  mTarget;    ///< The file to replace, links followed; "" when written directly.
    std::string  mTemporary; ///< "" when there is none.
    std::string  mOld;       ///< Second name of the file that was replaced, as long as it may be put back; "" without one.
    int          mOldSlot = -1;
    bool         mHadOld = false; ///< There was a file to replace.
};

} // namespace qexsdk

#endif
