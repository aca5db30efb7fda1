#ifndef KBASELIB_KBASE_KSYSTEM_H
#define KBASELIB_KBASE_KSYSTEM_H

#include <kbaselib/kbase/kbaseexport.h>

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>

/// \file
/// All that differs between operating systems. A folder for each system has its calls (posix/); no other source includes a system's
/// header, names its types or asks which one it is.

namespace qexsdk
{

struct KProcessOptions;
struct KProcessResult;

/// File numbers of the standard streams, which are open from the start.
inline constexpr int kStandardInput = 0;
inline constexpr int kStandardOutput = 1; ///< See kStandardInput.
inline constexpr int kStandardError = 2;  ///< See kStandardInput.

/// Size of a path, with its NUL, that no system opens if it is exceeded.
inline constexpr size_t kMaxPathSize = 4096;

/// What a file is.
struct KFileInfo
{
    /// Kinds of files.
    enum EKind
    {
        eREGULAR, ///< A file with contents.
        eFOLDER,  ///< A folder.
        eLINK,    ///< A symbolic link itself.
        eOTHER    ///< A pipe, a device, a socket.
    };

    EKind    mKind = eOTHER; ///< Its kind.
    uint64_t mSize = 0;      ///< Bytes.
    int64_t  mModified = 0;  ///< Time of the last change of its contents: nanoseconds since 1970, UTC.
    uint64_t mDevice = 0;    ///< Two paths lead to the same file if device and index are equal.
    uint64_t mIndex = 0;     ///< See mDevice.
    uint32_t mMode = 0;      ///< Permissions, for mChangeMode only.
};

/// How to open a file. It is not inherited by programs that are started, and never becomes the controlling terminal.
enum EOpenMode
{
    eOPEN_READ,
    eOPEN_READ_AT_ONCE, ///< For reading, without waiting for the writer of a FIFO.
    eOPEN_WRITE,        ///< An existing file, for writing.
    eOPEN_NEW,          ///< A new file, for writing, with the usual permissions: fails if anything has its name, a link included.
    eOPEN_APPEND,       ///< For writing at its end, wherever that is by then; created if it is missing.
    eOPEN_LOCK          ///< A file to be locked, created if it is missing; its contents stay.
};

/// What to wait for.
enum EFileEvent
{
    eCAN_READ,
    eCAN_WRITE
};

/// The system's calls, one entry each. Those without another result return 0, or -1 with errno, as POSIX has it. All that the library
/// and the program ask of the system goes through this table, so that a test can make the Nth call fail, be interrupted or be cut short.
struct KSystemCalls
{
    // Files.
    int (*mOpen)(const char* pPath, EOpenMode pMode);                                     ///< A file number, or -1.
    std::ptrdiff_t (*mRead)(int pFile, void* pData, size_t pSize);                        ///< Bytes read, 0 at the end, or -1.
    std::ptrdiff_t (*mWrite)(int pFile, const void* pData, size_t pSize);                 ///< Bytes written, or -1.
    std::ptrdiff_t (*mWriteAt)(int pFile, const void* pData, size_t pSize, uint64_t pAt); ///< The same at byte \p pAt.
    int (*mClose)(int pFile);                              ///< Never called again for the same file, whatever it returns.
    int (*mRewind)(int pFile);                             ///< Back to the first byte; ESPIPE for a pipe.
    int (*mWait)(int pFile, EFileEvent pEvent);            ///< Waits until the file is ready, or has failed.
    int (*mLock)(int pFile);                               ///< Until it is closed; EWOULDBLOCK if another process has it.
    int (*mFileInfo)(int pFile, KFileInfo* pInfo);         ///< Of an open file.
    int (*mInfo)(const char* pPath, KFileInfo* pInfo);     ///< Follows links.
    int (*mLinkInfo)(const char* pPath, KFileInfo* pInfo); ///< Of the link itself.
    std::ptrdiff_t (*mReadLink)(const char* pPath, char* pText, size_t pSize); ///< Bytes of the target, cut at \p pSize, or -1.
    int (*mCheckWrite)(const char* pPath);                                     ///< Whether the file may be written, as mOpen would find.
    int (*mChangeMode)(int pFile, uint32_t pMode);                             ///< Sets a KFileInfo's permissions.
    int (*mRename)(const char* pFrom, const char* pTo);                        ///< Replaces \p pTo atomically.
    int (*mLink)(const char* pFrom, const char* pTo);                          ///< A hard link; fails when \p pTo exists.
    int (*mUnlink)(const char* pPath);                                         ///< Async-signal-safe.

    // Processes: see kprocess.h for those of KRunProcess(), KProgramPath() and KLimitMemory().
    KProcessResult (*mRun)(const KProcessOptions& pOptions); ///< KRunProcess()
    std::string (*mProgramPath)();                           ///< KProgramPath()
    bool (*mLimitMemory)(uint64_t pBytes);                   ///< KLimitMemory()
    int (*mProcessId)();                                     ///< Unique among the running ones.

    /// Calls \p pBefore in a thread that forks this process, and \p pAfter in it and in the new process, which has that thread alone: for
    /// locks that others may hold. Nothing where processes do not fork.
    void (*mAtFork)(void (*pBefore)(), void (*pAfter)());

    /// Calls \p pHandler before a signal from outside ends this process; it must be async-signal-safe. The signal still ends it, and one
    /// that the parent process ignores (nohup, a background job) stays ignored. From now on a closed pipe is a failed write, no signal.
    void (*mCatchEnd)(void (*pHandler)());

    /// After mCatchEnd(): the first such signal only sets \p pFlag, the second ends the process; null: the first does again.
    void (*mPostponeEnd)(std::atomic<bool>* pFlag);

    void (*mEndByPostponed)(); ///< Ends the process by the signal that was postponed, if there was one.

    // Console.
    bool (*mIsTerminal)(int pStream);   ///< Whether a stream is shown to a user.
    int (*mTerminalWidth)(int pStream); ///< Columns; 0 if unknown.

    // Locale.
    int (*mFormat)(char* pText, size_t pSize, const char* pFormat, std::va_list pArguments); ///< See KFormat().

    // Libraries that are loaded while the program runs. They stay loaded.
    void* (*mOpenLibrary)(const char* pName, int pVersion);        ///< \p pName as linked: "rsvg-2". Null if it cannot be loaded.
    void* (*mFindFunction)(void* pLibrary, const char* pFunction); ///< Null if it is missing.
    const char* (*mLibraryReason)();                               ///< Why the last of these two calls failed on this thread; never null.
};

/// The table in use, initially KSystemOwn(). Do not change it while another thread uses it.
QEX_API KSystemCalls& KSystemInUse();

/// Restores the system's calls.
QEX_API void KSystemReset();

/// The system's own calls, made by the folder of the system.
const KSystemCalls& KSystemOwn();

/// What the file at \p pPath is; follows links. False, with errno, if it cannot be found out.
QEX_API bool KGetFileInfo(const std::string& pPath, KFileInfo& pInfo);

/// Whether to retry a call that failed with errno: it was interrupted, or a non-blocking pipe was not ready; waits until it is. When
/// false, errno is the reason.
/// \param pFile  the file of the call
/// \param pEvent what the call was to do
bool KFileCanRetry(int pFile, EFileEvent pEvent);

/// The system's text for the errno \p pError; "" for 0 and when memory runs out. Thread-safe.
QEX_API std::string KFileErrorText(int pError) noexcept;

} // namespace qexsdk

#endif
