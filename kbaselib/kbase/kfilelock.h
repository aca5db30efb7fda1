#ifndef KBASELIB_KBASE_KFILELOCK_H
#define KBASELIB_KBASE_KFILELOCK_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>

namespace qexsdk
{

/// A file that one object at a time has locked, in this process or another, so that a single run works on a folder. Released with the
/// object and when the process ends, however it ends. The file stays: if it were removed, two could have locked files of the same name.
class QEX_API KFileLock
{
public:
    KFileLock() = default;
    ~KFileLock();
    KFileLock(const KFileLock&) = delete;
    KFileLock& operator=(const KFileLock&) = delete;

    /// Opens \p pPath, creating it if it is missing, and locks it without waiting; a file locked before is released. False with errno:
    /// EWOULDBLOCK if another has it.
    bool Lock(const std::string& pPath);

    /// Releases the file. Keeps errno.
    void Unlock();

    /// True between Lock() and Unlock().
    bool IsLocked() const { return mFile >= 0; }

private:
    int mFile = -1;
};

} // namespace qexsdk

#endif
