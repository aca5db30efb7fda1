#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFSOURCE_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFSOURCE_H

#include <qexioplugins/gltf/kqexgltfjson.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qexsdk
{

/// A glTF file: its JSON and its buffers, each of which is loaded on first access. All operations throw KQexGltfError.
class KQexGltfSource
{
public:
    /// Reads the file at \p pPath ("-": standard input); its first bytes decide whether it is binary or JSON.
    void OpenPath(const std::string& pPath);

    /// Opens a file in memory, which must outlive this, as if it were at \p pPath; if that is empty, it may not refer to other files.
    void OpenBytes(std::string_view pBytes, const std::string& pPath);

    /// The file's JSON; empty before OpenPath() or OpenBytes().
    const KQexGltfJson& GetJson() const { return mJson; }

    /// Bytes of the file and of the buffer files read so far.
    size_t GetSize() const;

    /// The bytes of buffer \p pIndex; its size is the buffer's byteLength.
    std::string_view GetBuffer(size_t pIndex);

private:
    void             Open();
    void             OpenBinary();
    std::string_view Fetch(const KQexGltfJson::KValue& pBuffer, size_t pIndex);
    std::string_view FetchFile(const std::string& pUri);

    std::string                        mPath; ///< Empty for memory and standard input.
    std::string                        mFileBytes;
    std::string_view                   mBytes;
    std::string_view                   mChunk; ///< The BIN chunk of a binary file.
    bool                               mHasChunk = false;
    KQexGltfJson                       mJson;
    std::vector<KQexGltfJson::KValue>  mBuffers;
    std::vector<std::string_view>      mFetched; ///< By buffer index; null data until loaded.
    std::map<std::string, std::string> mFiles;   ///< Contents of files by path: several buffers may share a file.
    std::map<size_t, std::string>      mDecoded; ///< Contents of data URIs by buffer index.
};

/// The members of the array \p pArray, for access by index; empty when missing. Throws when it is not an array; \p pName is its name
/// in the message.
std::vector<KQexGltfJson::KValue> GltfMembers(const KQexGltfJson::KValue& pArray, const std::string& pName);

/// A size or offset: an integer from 0 to 2^53. \p pDefault when \p pValue is missing; throws when it is anything else.
size_t GltfSize(const KQexGltfJson::KValue& pValue, size_t pDefault, const std::string& pName);

/// An index less than \p pCount; -1 when \p pValue is missing. Throws when it is anything else.
int GltfIndex(const KQexGltfJson::KValue& pValue, size_t pCount, const std::string& pName);

} // namespace qexsdk

#endif
