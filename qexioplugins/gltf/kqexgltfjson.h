#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFJSON_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFJSON_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace qexsdk
{

/// An error in a file, with the message for the user. Thrown inside the reader and caught by KQexFileGltf.
class KQexGltfError : public std::runtime_error
{
public:
    /// An error with the text \p pText.
    explicit KQexGltfError(const std::string& pText) : std::runtime_error(pText) {}
};

/// A JSON text as a flat list of values, so that parsing, lookup and destruction do not recurse. Containers nested deeper than
/// kMaxDepth become null; glTF itself never nests that deep.
class KQexGltfJson
{
public:
    /// Maximum depth of nested containers.
    static constexpr size_t kMaxDepth = 64;

    /// Type of a value.
    enum EType : std::uint8_t
    {
        eNULL,    ///< null, or a container nested too deep
        eBOOLEAN, ///< true or false
        eNUMBER,  ///< a double
        eTEXT,    ///< UTF-8
        eARRAY,   ///< values without keys
        eOBJECT   ///< values with keys
    };

    static constexpr std::uint32_t kNone = 0xFFFFFFFFu; ///< No value.

    /// A value: a number, a text or a container.
    struct KEntry
    {
        double        mNumber = 0.0;  ///< The number; 1 for true.
        std::uint32_t mFirst = kNone; ///< Offset of the text in mTexts, or index of a container's first member.
        std::uint32_t mCount = 0;     ///< Number of members.
        std::uint32_t mNext = kNone;  ///< Index of the next member in the same container.
        std::uint32_t mKey = 0;       ///< Offset of the key in mTexts.
        EType         mType = eNULL;  ///< Kind of the value.
    };

    /// A value, or none for a missing member and after the last one. A view: the KQexGltfJson must outlive it.
    class KValue
    {
    public:
        KValue() = default;
        /// Entry \p pIndex of \p pJson; kNone for none.
        KValue(const KQexGltfJson* pJson, std::uint32_t pIndex) : mJson(pJson), mIndex(pIndex) {}

        /// Whether there is a value.
        bool IsValid() const { return mJson != nullptr && mIndex != kNone; }
        /// Whether there is a value of that type.
        bool Is(EType pType) const { return IsValid() && Entry().mType == pType; }
        /// Whether it is the word true.
        bool IsTrue() const { return Is(eBOOLEAN) && Entry().mNumber != 0.0; }
        /// The number, \p pDefault for anything else.
        double GetNumber(double pDefault) const { return Is(eNUMBER) ? Entry().mNumber : pDefault; }

        /// The text, up to its first NUL; "" for any other value.
        const char* GetText() const { return Is(eTEXT) ? mJson->mTexts.c_str() + Entry().mFirst : ""; }

        /// The value's key in its object; "" in an array.
        const char* GetKey() const { return IsValid() ? mJson->mTexts.c_str() + Entry().mKey : ""; }

        /// Members of an array or object; 0 for any other value.
        size_t GetCount() const { return Is(eARRAY) || Is(eOBJECT) ? Entry().mCount : 0; }

        /// The first member of an array or object; none for any other value. GetNext() iterates over the rest.
        KValue GetFirst() const { return {mJson, GetCount() > 0 ? Entry().mFirst : kNone}; }
        /// The next member of the same container, or none.
        KValue GetNext() const { return {mJson, IsValid() ? Entry().mNext : kNone}; }

        /// The member with key \p pKey; none when missing or not an object. Linear in the members.
        KValue operator[](const char* pKey) const;

    private:
        const KEntry& Entry() const { return mJson->mEntries[mIndex]; }

        const KQexGltfJson* mJson = nullptr;
        std::uint32_t       mIndex = kNone;
    };

    /// Parses a text. Throws KQexGltfError with line, column and the offending token when it is not JSON.
    void Parse(const char* pText, size_t pSize);

    /// The outermost value; none before Parse().
    KValue GetRoot() const { return {this, mEntries.empty() ? kNone : 0}; }

private:
    friend class KQexGltfJsonBuilder;
    std::vector<KEntry> mEntries; ///< The root first.
    std::string         mTexts;   ///< Keys and texts, each followed by a NUL; "" at offset 0.
};

} // namespace qexsdk

#endif
