#ifndef KBASELIB_KBASE_KBYTESOURCE_H
#define KBASELIB_KBASE_KBYTESOURCE_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <cstdint>

namespace qexsdk
{

/// The bytes of a file, FIFO or device, of standard input, or of memory, read from first to last. Errors are left in errno.
class QEX_API KByteSource
{
public:
    KByteSource() = default;
    ~KByteSource() { Close(); }

    KByteSource(const KByteSource&) = delete;
    KByteSource& operator=(const KByteSource&) = delete;

    /// Opens a file, or standard input for "-". False, with nothing open, for a missing or unreadable file and for a directory.
    /// \param pPath    path of the file, or "-"
    /// \param pRegular also refuse a FIFO or device, without waiting for it; standard input is never refused
    bool OpenPath(const char* pPath, bool pRegular = false);

    /// Reads \p pSize bytes at \p pData, which must outlive the reading. They stay the caller's.
    void OpenBuffer(const char* pData, size_t pSize);

    /// Closes what OpenPath() opened; standard input stays open.
    void Close();

    /// True between a successful open and Close().
    bool IsOpen() const { return mFile >= 0 || mMemory != nullptr; }

    /// Goes back to the first byte. False, with nothing changed, when seeking fails, as it does for a pipe (ESPIPE).
    bool Rewind();

    /// Reads up to \p pSize bytes into \p pTo, and waits for at least one. Returns their number; 0 at the end; -1 on failure.
    ptrdiff_t Read(char* pTo, size_t pSize);

    /// Bytes of the whole input when it was opened; 0 when unknown, as for a pipe.
    int64_t GetSize() const { return mSize; }

private:
    bool CheckKind(bool pRegular);

    int         mFile = -1;
    bool        mOwnsFile = false;
    const char* mMemory = nullptr;
    size_t      mMemorySize = 0;
    size_t      mMemoryOffset = 0;
    int64_t     mSize = 0;
};

} // namespace qexsdk

#endif
