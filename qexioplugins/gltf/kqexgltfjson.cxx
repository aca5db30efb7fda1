#include <qexioplugins/gltf/kqexgltfjson.h>

#include <nlohmann/json.hpp>

#include <cstring>

namespace qexsdk
{

namespace
{

constexpr size_t kMaxJson = 0x7FFFFFFFu; ///< Bytes of text: offsets have 32 bits.
constexpr size_t kMaxMessage = 300;      ///< Bytes of a parser message, which may quote a long token.

} // namespace

KQexGltfJson::KValue KQexGltfJson::KValue::operator[](const char* pKey) const
{
    if (!Is(eOBJECT))
    {
        return {};
    }
    KValue lMember = GetFirst();
    while (lMember.IsValid() && std::strcmp(lMember.GetKey(), pKey) != 0)
    {
        lMember = lMember.GetNext();
    }
    return lMember;
}

/// Appends values to a KQexGltfJson on the parser's events.
class KQexGltfJsonBuilder : public nlohmann::json_sax<nlohmann::json>
{
public:
    explicit KQexGltfJsonBuilder(KQexGltfJson& pJson) : mJson(pJson) {}

    bool null() override { return Add(KQexGltfJson::eNULL, 0.0); }
    bool boolean(bool pValue) override { return Add(KQexGltfJson::eBOOLEAN, pValue ? 1.0 : 0.0); }
    bool number_integer(number_integer_t pValue) override { return Add(KQexGltfJson::eNUMBER, static_cast<double>(pValue)); }
    bool number_unsigned(number_unsigned_t pValue) override { return Add(KQexGltfJson::eNUMBER, static_cast<double>(pValue)); }
    bool number_float(number_float_t pValue, const string_t&) override { return Add(KQexGltfJson::eNUMBER, pValue); }
    bool binary(binary_t&) override { return Add(KQexGltfJson::eNULL, 0.0); }

    bool string(string_t& pValue) override
    {
        if (mExcessDepth == 0)
        {
            Add(KQexGltfJson::eTEXT, 0.0);
            const std::uint32_t lText = AddText(pValue);
            mJson.mEntries.back().mFirst = lText;
        }
        return true;
    }

    bool key(string_t& pKey) override
    {
        mKey = mExcessDepth == 0 ? AddText(pKey) : 0;
        return true;
    }

    bool start_object(std::size_t) override { return Open(KQexGltfJson::eOBJECT); }
    bool start_array(std::size_t) override { return Open(KQexGltfJson::eARRAY); }
    bool end_object() override { return Close(); }
    bool end_array() override { return Close(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& pError) override
    {
        // The parser's messages start with an exception id in brackets.
        const char* lText = std::strchr(pError.what(), ']');
        lText = lText != nullptr ? lText + 2 : pError.what();
        throw KQexGltfError("Not JSON: " + std::string(lText, strnlen(lText, kMaxMessage)));
    }

private:
    /// A container that is still open, and its last member so far.
    struct KOpen
    {
        std::uint32_t mIndex;
        std::uint32_t mLast;
    };

    std::uint32_t AddText(const std::string& pText)
    {
        const auto lOffset = static_cast<std::uint32_t>(mJson.mTexts.size());
        mJson.mTexts.append(pText.c_str());
        mJson.mTexts += '\0';
        return lOffset;
    }

    bool Add(KQexGltfJson::EType pType, double pNumber)
    {
        if (mExcessDepth > 0)
        {
            return true;
        }
        const auto           lIndex = static_cast<std::uint32_t>(mJson.mEntries.size());
        KQexGltfJson::KEntry lEntry;
        lEntry.mType = pType;
        lEntry.mNumber = pNumber;
        lEntry.mKey = mKey;
        mKey = 0;
        mJson.mEntries.push_back(lEntry);
        if (!mOpen.empty())
        {
            KOpen& lOpen = mOpen.back();
            (lOpen.mLast == KQexGltfJson::kNone ? mJson.mEntries[lOpen.mIndex].mFirst : mJson.mEntries[lOpen.mLast].mNext) = lIndex;
            lOpen.mLast = lIndex;
            ++mJson.mEntries[lOpen.mIndex].mCount;
        }
        return true;
    }

    bool Open(KQexGltfJson::EType pType)
    {
        if (mExcessDepth == 0)
        {
            const bool lTooDeep = mOpen.size() >= KQexGltfJson::kMaxDepth;
            Add(lTooDeep ? KQexGltfJson::eNULL : pType, 0.0);
            if (!lTooDeep)
            {
                mOpen.push_back(KOpen{static_cast<std::uint32_t>(mJson.mEntries.size()) - 1, KQexGltfJson::kNone});
                return true;
            }
        }
        ++mExcessDepth;
        return true;
    }

    bool Close()
    {
        if (mExcessDepth > 0)
        {
            --mExcessDepth;
            return true;
        }
        mOpen.pop_back();
        return true;
    }

    KQexGltfJson&      mJson;
    std::vector<KOpen> mOpen;
    size_t             mExcessDepth = 0; ///< Open containers beyond kMaxDepth.
    std::uint32_t      mKey = 0;         ///< Offset in mTexts of the next value's key.
};

void KQexGltfJson::Parse(const char* pText, size_t pSize)
{
    mEntries.clear();
    mTexts.assign(1, '\0');
    if (pSize > kMaxJson)
    {
        throw KQexGltfError("More than 2 GB of JSON");
    }
    KQexGltfJsonBuilder lBuilder(*this);
    nlohmann::json::sax_parse(pText, pText + pSize, &lBuilder);
}

} // namespace qexsdk
