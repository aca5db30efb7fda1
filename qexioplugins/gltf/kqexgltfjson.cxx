#include <qexioplugins/gltf/kqexgltfjson.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>

namespace qexsdk
{

namespace
{

constexpr size_t kMaxJson = 0x7FFFFFFFu; ///< Bytes of text; places are counted in 32 bits.
constexpr size_t kMaxReason = 300;       ///< Bytes of a message: it quotes the text, which may be one long word.

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

/// Takes the parser's events and appends the values.
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
        if (mDeep == 0)
        {
            Add(KQexGltfJson::eTEXT, 0.0);
            const std::uint32_t lText = AddText(pValue);
            mJson.mEntries.back().mFirst = lText;
        }
        return true;
    }

    bool key(string_t& pKey) override
    {
        mKey = mDeep == 0 ? AddText(pKey) : 0;
        return true;
    }

    bool start_object(std::size_t) override { return Open(KQexGltfJson::eOBJECT); }
    bool start_array(std::size_t) override { return Open(KQexGltfJson::eARRAY); }
    bool end_object() override { return Close(); }
    bool end_array() override { return Close(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& pError) override
    {
        // The parser's texts begin with a number of its own in brackets.
        const char* lText = std::strchr(pError.what(), ']');
        lText = lText != nullptr ? lText + 2 : pError.what();
        throw KQexGltfError("Not JSON: " + std::string(lText, strnlen(lText, kMaxReason)));
    }

private:
    /// A container that is not ended yet, and its last member.
    struct KOpen
    {
        std::uint32_t mIndex;
        std::uint32_t mLast;
    };

    std::uint32_t AddText(const std::string& pText)
    {
        const auto lPlace = static_cast<std::uint32_t>(mJson.mTexts.size());
        mJson.mTexts.append(pText.c_str());
        mJson.mTexts += '\0';
        return lPlace;
    }

    bool Add(KQexGltfJson::EType pType, double pNumber)
    {
        if (mDeep > 0)
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
        if (mDeep == 0)
        {
            const bool lTooDeep = mOpen.size() >= KQexGltfJson::kMaxDepth;
            Add(lTooDeep ? KQexGltfJson::eNULL : pType, 0.0);
            if (!lTooDeep)
            {
                mOpen.push_back(KOpen{static_cast<std::uint32_t>(mJson.mEntries.size()) - 1, KQexGltfJson::kNone});
                return true;
            }
        }
        ++mDeep;
        return true;
    }

    bool Close()
    {
        if (mDeep > 0)
        {
            --mDeep;
            return true;
        }
        mOpen.pop_back();
        return true;
    }

    KQexGltfJson&      mJson;
    std::vector<KOpen> mOpen;
    size_t             mDeep = 0; ///< Containers open below the greatest depth.
    std::uint32_t      mKey = 0;  ///< Name of the value to come.
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
