#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFSOURCE_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFSOURCE_H

#include <qexioplugins/gltf/kqexgltfjson.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qexsdk
{

/// The bytes of a glTF file: its JSON, and its buffers, each fetched when it is asked for the first time. All operations throw
/// KQexGltfError.
class KQexGltfSource
{
public:
    /// Reads the file at \p pPath ("-": standard input), binary or JSON as its first bytes tell.
    void OpenPath(const std::string& pPath);

    /// The same for bytes that stay the caller's and outlive this. Such a file may not refer to others.
    void OpenBytes(std::string_view pBytes);

    /// The file's JSON text; empty before one of the two above.
    const KQexGltfJson& GetJson() const { return mJson; }

    /// Bytes read so far.
    size_t GetSize() const;

    /// The bytes of buffer \p pIndex: as many as it says it has.
    std::string_view GetBuffer(size_t pIndex);

private:
    void             Open();
    void             OpenBinary();
    std::string_view Fetch(const KQexGltfJson::KValue& pBuffer, size_t pIndex);
    std::string_view FetchFile(const std::string& pUri);

    std::string                        mPath; ///< "" for memory and standard input.
    std::string                        mOwned;
    std::string_view                   mBytes;
    std::string_view                   mChunk; ///< The binary file's own buffer.
    bool                               mHasChunk = false;
    KQexGltfJson                       mJson;
    std::vector<KQexGltfJson::KValue>  mBuffers;
    std::vector<std::string_view>      mFetched; ///< One for each buffer; without data while it was not asked for.
    std::map<std::string, std::string> mFiles;   ///< Bytes of files by name: many buffers may refer to one.
    std::map<size_t, std::string>      mTexts;   ///< Bytes of the buffers that stand in the JSON, by index.
};

/// The members of the array \p pArray, so that they can be looked up by index. Throws when it is there and not an array; \p pName
/// says what it is then.
std::vector<KQexGltfJson::KValue> GltfMembers(const KQexGltfJson::KValue& pArray, const std::string& pName);

/// A whole number from 0 to 2^53 that is a size or an offset. \p pDefault when \p pValue is none (missing); throws when it is
/// anything else.
size_t GltfSize(const KQexGltfJson::KValue& pValue, size_t pDefault, const std::string& pName);

/// An index below \p pCount; -1 when \p pValue is missing. Throws when it is anything else.
int GltfIndex(const KQexGltfJson::KValue& pValue, size_t pCount, const std::string& pName);

} // namespace qexsdk

#endif
