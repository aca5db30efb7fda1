#ifndef KBASELIB_KBASE_KSTRINGHASH_H
#define KBASELIB_KBASE_KSTRINGHASH_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qexsdk
{

/// Hash of a text for unordered containers whose keys come from files. Seeded with an address in the program, which systems randomize
/// for each run, so that no file can be crafted whose names all collide.
struct KStringHash
{
    /// The hash of \p pText.
    size_t operator()(std::string_view pText) const
    {
        static const char sSeed = '\0';
        uint64_t          lHash = reinterpret_cast<uintptr_t>(&sSeed) + pText.size();
        for (; pText.size() >= sizeof(uint64_t); pText.remove_prefix(sizeof(uint64_t)))
        {
            lHash = Mix(lHash, pText);
        }
        return static_cast<size_t>(Mix(Mix(lHash, pText), {}));
    }

private:
    /// Mixes the first eight bytes of \p pText, or all of a shorter one, into \p pHash. The multiplication spreads each bit upwards, the
    /// shift folds the upper half back down.
    static uint64_t Mix(uint64_t pHash, std::string_view pText)
    {
        uint64_t lText = 0;
        pText.copy(reinterpret_cast<char*>(&lText), sizeof(lText));
        const uint64_t lProduct = (pHash ^ lText) * 0x9E3779B97F4A7C15u;
        return lProduct ^ (lProduct >> 32);
    }
};

} // namespace qexsdk

#endif
