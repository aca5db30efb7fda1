#include <apps/asf/batch/checksum.h>

#include <kbaselib/kbase/kbytesource.h>
#include <qexfigure/kqexcrc32.h>

#include <vector>

namespace asfapp
{

bool ReadChecksum(const std::string& pPath, uint32_t& pSum)
{
    constexpr size_t    kChunk = 1 << 18;
    qexsdk::KByteSource lSource;
    std::vector<char>   lBytes(kChunk);
    if (!lSource.OpenPath(pPath.c_str(), true))
    {
        return false;
    }
    pSum = 0;
    ptrdiff_t lRead = 0;
    while ((lRead = lSource.Read(lBytes.data(), lBytes.size())) > 0)
    {
        pSum = qexsdk::KCrc32(pSum, lBytes.data(), static_cast<size_t>(lRead));
    }
    return lRead == 0;
}

} // namespace asfapp
