#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFJSON_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFJSON_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace qexsdk
{

/// What is wrong with a file, as the user is told. Thrown by the parts of the reader, caught by its entry.
class KQexGltfError : public std::runtime_error
{
public:
    /// An error with the text \p pText.
    explicit KQexGltfError(const std::string& pText) : std::runtime_error(pText) {}
};

/// A JSON text, as one flat list of values: reading, looking and releasing cost no stack, however deep the text is nested. What
/// is nested deeper than kMaxDepth, which nothing in glTF is, counts as null.
class KQexGltfJson
{
public:
    /// Levels of nesting that are kept.
    static constexpr size_t kMaxDepth = 64;

    /// What a value is.
    enum EType : std::uint8_t
    {
        eNULL,    ///< null, and what is nested too deep
        eBOOLEAN, ///< true or false
        eNUMBER,  ///< a double
        eTEXT,    ///< UTF-8
        eARRAY,   ///< values in order
        eOBJECT   ///< values with names
    };

    static constexpr std::uint32_t kNone = 0xFFFFFFFFu; ///< No value.

    /// A value: its number, its text, or its members.
    struct KEntry
    {
        double        mNumber = 0.0;  ///< A number; 1 for true.
        std::uint32_t mFirst = kNone; ///< Place in mTexts, or first member.
        std::uint32_t mCount = 0;     ///< Members of a container.
        std::uint32_t mNext = kNone;  ///< Next member of the container.
        std::uint32_t mKey = 0;       ///< Place in mTexts.
        EType         mType = eNULL;  ///< What it is.
    };

    /// A value of the text, or none: of a member that is missing, behind the last one. A view; the text has to outlive it.
    class KValue
    {
    public:
        KValue() = default;
        /// Entry \p pIndex of \p pJson, or none for kNone.
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

        /// The name under which the value stands in its object, "" in an array.
        const char* GetKey() const { return IsValid() ? mJson->mTexts.c_str() + Entry().mKey : ""; }

        /// Members of an array or object; 0 for any other value.
        size_t GetCount() const { return Is(eARRAY) || Is(eOBJECT) ? Entry().mCount : 0; }

        /// The first member of an array or object; then, of each, the next.
        KValue GetFirst() const { return {mJson, GetCount() > 0 ? Entry().mFirst : kNone}; }
        /// The next member of the same container, or none.
        KValue GetNext() const { return {mJson, IsValid() ? Entry().mNext : kNone}; }

        /// The member of that name, none in anything but an object. Linear in the members.
        KValue operator[](const char* pKey) const;

    private:
        const KEntry& Entry() const { return mJson->mEntries[mIndex]; }

        const KQexGltfJson* mJson = nullptr;
        std::uint32_t       mIndex = kNone;
    };

    /// Reads a text. Throws KQexGltfError with line, column and what was found when it is no JSON.
    void Parse(const char* pText, size_t pSize);

    /// The outermost value; none before Parse().
    KValue GetRoot() const { return {this, mEntries.empty() ? kNone : 0}; }

private:
    friend class KQexGltfJsonBuilder;
    std::vector<KEntry> mEntries; ///< The root first.
    std::string         mTexts;   ///< Keys and texts, each with a NUL behind it; "" at 0.
};

} // namespace qexsdk

#endif
