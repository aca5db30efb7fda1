#ifndef QEXFIGURE_KQEXNPZFILE_H
#define QEXFIGURE_KQEXNPZFILE_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexfigure/kqexnpy.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qexsdk
{

/// An .npz file: a zip archive of arrays, not compressed. The size of each array is known in advance, so all of them can grow at once:
/// each has its position in the file, and memory holds only a few hundred kilobytes of it. ZIP64 where sizes or positions need it.
///
/// A failure marks the output as failed (KOutputFile::GetReason()); every later call is then false. Nothing throws.
class QEX_API KQexNpzFile
{
public:
    /// From this size or position on, ZIP64 records hold it.
    static constexpr uint64_t kMaxPlain = 0xFFFFFFFF;

    /// Writes to \p pOut, which is open, for which KOutputFile::CanWriteAt() is true, and which must outlive it. \p pMaxPlain is lower only
    /// in tests.
    explicit KQexNpzFile(KOutputFile& pOut, uint64_t pMaxPlain = kMaxPlain) : mOut(pOut), mMaxPlain(pMaxPlain) {}

    /// Adds an array named \p pName (ASCII, no other array's). \return its index for Append(); -1 after a failure.
    int Add(const std::string& pName, const KQexArrayHead& pHead) noexcept;

    /// Appends items, see KQexAppendItems(), to array \p pArray of Add(). False after a failure, and for more items than it has.
    bool Append(int pArray, const double* pNumbers, size_t pCount) noexcept;

    /// Adds an array with all its items, as many as \p pHead has.
    bool AddNumbers(const std::string& pName, const KQexArrayHead& pHead, const std::vector<double>& pNumbers) noexcept;

    /// Adds an array of texts (UTF-8), one axis.
    bool AddTexts(const std::string& pName, const std::vector<std::string>& pTexts) noexcept;

    /// Writes the table of contents. False after a failure, and if an array lacks items. The output is still to be closed.
    bool Finish() noexcept;

private:
    struct KMember
    {
        std::string   mName; ///< Of the file in the archive.
        KQexArrayType mType = KQexArrayType::eFLOAT32;
        uint64_t      mAt = 0;      ///< Position of its record in the file.
        uint64_t      mSize = 0;    ///< Bytes, head included.
        uint64_t      mWritten = 0; ///< Bytes of mSize that are in the file or in mBuffer.
        uint32_t      mCrc = 0;     ///< Of the bytes so far.
        std::string   mBuffer;      ///< Bytes not yet written.
    };

    template <typename TDo>
    bool Guarded(const TDo& pDo) noexcept;
    bool AddMember(const std::string& pName, const KQexArrayHead& pHead);
    bool CountBytes(KMember& pMember, size_t pStart);
    bool Flush(KMember& pMember);

    std::string LocalRecord(const KMember& pMember) const;
    std::string DirectoryRecord(const KMember& pMember) const;
    std::string EndRecords(uint64_t pDirectorySize) const;
    bool        IsLarge(uint64_t pNumber) const { return pNumber >= mMaxPlain; }

    KOutputFile&         mOut;
    uint64_t             mMaxPlain;
    uint64_t             mEnd = 0; ///< After the last member.
    std::vector<KMember> mMembers;
};

} // namespace qexsdk

#endif
