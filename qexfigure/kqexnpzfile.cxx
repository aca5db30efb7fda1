#include <qexfigure/kqexnpzfile.h>

#include <qexfigure/kqexcrc32.h>

#include <cerrno>
#include <exception>
#include <utility>

namespace qexsdk
{

namespace
{

constexpr size_t   kBufferSize = 256 * 1024;     ///< Of each array: pieces that the disk takes at once.
constexpr uint64_t kMaxFile = uint64_t(1) << 61; ///< Sums of such sizes fit 64 bits.
constexpr uint64_t kPlainVersion = 20;           ///< Versions of the zip format that a reader needs.
constexpr uint64_t kZip64Version = 45;
constexpr uint64_t kUnixVersion = 3 << 8 | kZip64Version; ///< Made on Unix: the attributes are a file's mode.
constexpr uint64_t kFileMode = 0100644;
constexpr uint64_t kNoTime = 0x0021U << 16; ///< Midnight of 1 January 1980: the same arrays make the same file.
constexpr uint64_t kIn64 = 0xFFFFFFFF;      ///< The number is in the ZIP64 field.

/// A record of little-endian numbers.
class KRecord
{
public:
    KRecord& Put(int pBytes, uint64_t pNumber)
    {
        for (int lByte = 0; lByte < pBytes; ++lByte)
        {
            mText += static_cast<char>((pNumber >> (8 * lByte)) & 0xFF);
        }
        return *this;
    }
    KRecord& Put(const std::string& pText)
    {
        mText += pText;
        return *this;
    }

    /// What every record of a file has: no flags, not compressed, no time, checksum, sizes, lengths of the name and the field that follow.
    KRecord& PutFile(uint32_t pCrc, uint64_t pSize, const std::string& pName, const std::string& pField)
    {
        Put(4, 0).Put(4, kNoTime).Put(4, pCrc).Put(4, pSize).Put(4, pSize);
        return Put(2, pName.size()).Put(2, pField.size());
    }

    const std::string& GetText() const { return mText; }

private:
    std::string mText;
};

/// The ZIP64 field of a record with these numbers; "" without any.
std::string Zip64Field(const std::vector<uint64_t>& pNumbers)
{
    KRecord lField;
    if (!pNumbers.empty())
    {
        lField.Put(2, 1).Put(2, 8 * pNumbers.size());
    }
    for (const uint64_t lNumber : pNumbers)
    {
        lField.Put(8, lNumber);
    }
    return lField.GetText();
}

} // namespace

template <typename TDo>
bool KQexNpzFile::Guarded(const TDo& pDo) noexcept
{
    try
    {
        if (!mOut.HasFailed() && pDo())
        {
            return true;
        }
        mOut.SetFailed(EINVAL); // The first reason stays.
    }
    catch (const std::exception&)
    {
        mOut.SetFailed(ENOMEM);
    }
    return false;
}

/// Adds a member with its head. False if no file can hold it.
bool KQexNpzFile::AddMember(const std::string& pName, const KQexArrayHead& pHead)
{
    KMember lMember;
    if (!pHead.GetSize(lMember.mSize) || lMember.mSize > kMaxFile || mEnd > kMaxFile)
    {
        mOut.SetFailed(EFBIG);
        return false;
    }
    lMember.mName = pName + ".npy";
    lMember.mType = pHead.mType;
    lMember.mAt = mEnd;
    lMember.mBuffer = KQexNpyStart(pHead);
    lMember.mSize += lMember.mBuffer.size();
    mEnd += LocalRecord(lMember).size() + lMember.mSize;
    mMembers.push_back(std::move(lMember));
    return CountBytes(mMembers.back(), 0);
}

int KQexNpzFile::Add(const std::string& pName, const KQexArrayHead& pHead) noexcept
{
    return Guarded([&] { return AddMember(pName, pHead); }) ? static_cast<int>(mMembers.size()) - 1 : -1;
}

bool KQexNpzFile::Append(int pArray, const double* pNumbers, size_t pCount) noexcept
{
    return Guarded(
        [&]
        {
            KMember&     lMember = mMembers.at(static_cast<size_t>(pArray));
            const size_t lStart = lMember.mBuffer.size();
            KQexAppendItems(lMember.mType, pNumbers, pCount, lMember.mBuffer);
            return CountBytes(lMember, lStart);
        });
}

bool KQexNpzFile::AddNumbers(const std::string& pName, const KQexArrayHead& pHead, const std::vector<double>& pNumbers) noexcept
{
    const int lArray = Add(pName, pHead);
    return lArray >= 0 && Append(lArray, pNumbers.data(), pNumbers.size());
}

bool KQexNpzFile::AddTexts(const std::string& pName, const std::vector<std::string>& pTexts) noexcept
{
    return Guarded(
        [&]
        {
            std::string   lBytes;
            KQexArrayHead lHead;
            KQexAppendTexts(pTexts, lHead, lBytes);
            if (Add(pName, lHead) < 0)
            {
                return false;
            }
            const size_t lStart = mMembers.back().mBuffer.size();
            mMembers.back().mBuffer += lBytes;
            return CountBytes(mMembers.back(), lStart);
        });
}

/// Counts the bytes of the buffer from pStart on, and writes it when it is large enough.
bool KQexNpzFile::CountBytes(KMember& pMember, size_t pStart)
{
    const size_t lSize = pMember.mBuffer.size() - pStart;
    if (lSize > pMember.mSize - pMember.mWritten)
    {
        return false;
    }
    pMember.mCrc = KCrc32(pMember.mCrc, pMember.mBuffer.data() + pStart, lSize);
    pMember.mWritten += lSize;
    return pMember.mBuffer.size() < kBufferSize || Flush(pMember);
}

bool KQexNpzFile::Flush(KMember& pMember)
{
    const uint64_t lAt = pMember.mAt + LocalRecord(pMember).size() + pMember.mWritten - pMember.mBuffer.size();
    const bool     lOk = mOut.WriteAt(lAt, pMember.mBuffer.data(), pMember.mBuffer.size());
    pMember.mBuffer.clear();
    return lOk;
}

/// The record before a member's bytes; its length does not depend on them.
std::string KQexNpzFile::LocalRecord(const KMember& pMember) const
{
    const bool        lIsLarge = IsLarge(pMember.mSize);
    const uint64_t    lSize = lIsLarge ? kIn64 : pMember.mSize;
    const std::string lField = lIsLarge ? Zip64Field({pMember.mSize, pMember.mSize}) : "";
    return KRecord()
        .Put("PK\3\4")
        .Put(2, lIsLarge ? kZip64Version : kPlainVersion)
        .PutFile(pMember.mCrc, lSize, pMember.mName, lField)
        .Put(pMember.mName)
        .Put(lField)
        .GetText();
}

std::string KQexNpzFile::DirectoryRecord(const KMember& pMember) const
{
    std::vector<uint64_t> lLarge;
    if (IsLarge(pMember.mSize))
    {
        lLarge = {pMember.mSize, pMember.mSize};
    }
    if (IsLarge(pMember.mAt))
    {
        lLarge.push_back(pMember.mAt);
    }
    const uint64_t    lSize = IsLarge(pMember.mSize) ? kIn64 : pMember.mSize;
    const std::string lField = Zip64Field(lLarge);
    return KRecord()
        .Put("PK\1\2")
        .Put(2, kUnixVersion)
        .Put(2, lField.empty() ? kPlainVersion : kZip64Version)
        .PutFile(pMember.mCrc, lSize, pMember.mName, lField)
        .Put(6, 0) // No comment; the first disk; binary.
        .Put(4, kFileMode << 16)
        .Put(4, IsLarge(pMember.mAt) ? kIn64 : pMember.mAt)
        .Put(pMember.mName)
        .Put(lField)
        .GetText();
}

std::string KQexNpzFile::EndRecords(uint64_t pDirectorySize) const
{
    constexpr uint64_t kMaxCount = 0xFFFF;
    const bool         lIsLarge = IsLarge(pDirectorySize) || IsLarge(mEnd) || mMembers.size() >= kMaxCount;
    KRecord            lRecord;
    if (lIsLarge)
    {
        lRecord.Put("PK\6\6")
            .Put(8, 44) // Bytes of the record after this number.
            .Put(2, kUnixVersion)
            .Put(2, kZip64Version)
            .Put(8, 0)
            .Put(8, mMembers.size())
            .Put(8, mMembers.size())
            .Put(8, pDirectorySize)
            .Put(8, mEnd);
        lRecord.Put("PK\6\7").Put(4, 0).Put(8, mEnd + pDirectorySize).Put(4, 1);
    }
    const uint64_t lCount = lIsLarge ? kMaxCount : mMembers.size();
    return lRecord.Put("PK\5\6")
        .Put(4, 0)
        .Put(2, lCount)
        .Put(2, lCount)
        .Put(4, lIsLarge ? kIn64 : pDirectorySize)
        .Put(4, lIsLarge ? kIn64 : mEnd)
        .Put(2, 0)
        .GetText();
}

bool KQexNpzFile::Finish() noexcept
{
    return Guarded(
        [&]
        {
            std::string lDirectory;
            for (KMember& lMember : mMembers)
            {
                const std::string lRecord = LocalRecord(lMember);
                if (lMember.mWritten != lMember.mSize || !mOut.WriteAt(lMember.mAt, lRecord.data(), lRecord.size()) || !Flush(lMember))
                {
                    return false;
                }
                lDirectory += DirectoryRecord(lMember);
            }
            lDirectory += EndRecords(lDirectory.size());
            return mOut.WriteAt(mEnd, lDirectory.data(), lDirectory.size());
        });
}

} // namespace qexsdk
