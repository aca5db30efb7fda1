#ifndef KBASELIB_KBASE_KSTRINGHASH_H
#define KBASELIB_KBASE_KSTRINGHASH_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qexsdk
{

/// Hash of a text for unordered containers whose keys come from files. It begins with the address of the program in memory, which systems
/// choose anew for each run, so that no file can be written whose names all collide.
struct KStringHash
{
    size_t operator()(std::string_view pText) const
    {
        static const char sPlace = '\0';
        uint64_t          lHash = reinterpret_cast<uintptr_t>(&sPlace) + pText.size();
        for (; pText.size() >= sizeof(uint64_t); pText.remove_prefix(sizeof(uint64_t)))
        {
            lHash = Mix(lHash, pText, sizeof(uint64_t));
        }
        return static_cast<size_t>(Mix(Mix(lHash, pText, pText.size()), {}, 0));
    }

private:
    /// The factor moves each bit up, and the shift brings the upper half down again.
    static uint64_t Mix(uint64_t pHash, std::string_view pText, size_t pSize)
    {
        uint64_t lText = 0;
        std::memcpy(&lText, pText.data(), pSize);
        const uint64_t lProduct = (pHash ^ lText) * 0x9E3779B97F4A7C15u;
        return lProduct ^ (lProduct >> 32);
    }
};

} // namespace qexsdk

#endif
