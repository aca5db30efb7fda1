#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFACCESSOR_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFACCESSOR_H

#include <qexioplugins/gltf/kqexgltfsource.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A strided array in a buffer, checked to lie within it.
struct KQexGltfArray
{
    const unsigned char* mData = nullptr;    ///< The first element; null: no data.
    size_t               mStride = 0;        ///< Bytes from one element to the next.
    int                  mComponentType = 0; ///< A valid componentType of glTF.
};

/// An accessor of the file: elements of 1 to 16 numbers, from a buffer or zero, with sparse elements replaced. A view: the source
/// must outlive it.
class KQexGltfAccessor
{
public:
    /// Number of elements.
    size_t GetCount() const { return mCount; }
    /// Components of an element, 1 to 16.
    int GetComponents() const { return mComponents; }

    /// Whether the elements are in a buffer. If not, GetCount() is the file's number, unchecked.
    bool HasData() const { return mElements.mData != nullptr; }

    /// Stores the GetComponents() numbers of element \p pIndex, less than GetCount(). Normalized integers are converted to -1 to 1.
    void Get(size_t pIndex, double* pResult) const;

private:
    friend class KQexGltfAccessors;

    KQexGltfArray mElements;
    size_t        mCount = 0;
    int           mComponents = 0;
    bool          mIsNormalized = false;
    size_t        mSparseCount = 0;
    KQexGltfArray mSparseIndices; ///< Increasing.
    KQexGltfArray mSparseValues;
};

/// The accessors of a file. Each one is validated on first access: all its indices, offsets and sizes are in range. Throws
/// KQexGltfError.
class KQexGltfAccessors
{
public:
    /// \p pSource must outlive this.
    explicit KQexGltfAccessors(KQexGltfSource& pSource);

    /// Number of accessors.
    size_t GetCount() const { return mAccessors.size(); }

    /// Accessor \p pIndex, less than GetCount(). Valid as long as this.
    const KQexGltfAccessor& Get(size_t pIndex);

private:
    KQexGltfAccessor Check(size_t pIndex);
    void             CheckSparse(const KQexGltfJson::KValue& pSparse, const std::string& pName, KQexGltfAccessor& pAccessor);
    KQexGltfArray    CheckArray(const KQexGltfJson::KValue& pFrom, int pComponentType, int pComponents, size_t pCount,
                                const std::string& pName);

    KQexGltfSource&                   mSource;
    std::vector<KQexGltfJson::KValue> mAccessors;
    std::vector<KQexGltfJson::KValue> mViews;
    size_t                            mBufferCount;
    std::vector<KQexGltfAccessor>     mChecked;
    std::vector<bool>                 mIsChecked;
};

} // namespace qexsdk

#endif
