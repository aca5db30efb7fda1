#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFACCESSOR_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFACCESSOR_H

#include <qexioplugins/gltf/kqexgltfsource.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A run of numbers in a buffer that is known to lie within it.
struct KQexGltfNumbers
{
    const unsigned char* mData = nullptr;    ///< The first element; null: no numbers.
    size_t               mStride = 0;        ///< Bytes from one element to the next.
    int                  mComponentType = 0; ///< The file's own code, of the ones that KQexGltfAccessor takes.
};

/// An accessor of the file: elements of 1 to 16 numbers, in a buffer, or zeros, with single elements replaced. A view; the
/// source has to outlive it.
class KQexGltfAccessor
{
public:
    /// Number of elements.
    size_t GetCount() const { return mCount; }
    /// Numbers in an element, 1 to 16.
    int GetComponents() const { return mComponents; }

    /// Whether the elements stand in a buffer: else the count is nothing but a claim.
    bool HasData() const { return mNumbers.mData != nullptr; }

    /// Element \p pIndex below GetCount(); whole numbers that are marked as fractions become those.
    void Get(size_t pIndex, double* pResult) const;

private:
    friend class KQexGltfAccessors;

    KQexGltfNumbers mNumbers;
    size_t          mCount = 0;
    int             mComponents = 0;
    bool            mIsFraction = false;
    size_t          mSparseCount = 0;
    KQexGltfNumbers mSparseIndices; ///< In rising order.
    KQexGltfNumbers mSparseValues;
};

/// The accessors of a file, each checked when it is asked for the first time: every index, offset and size lies within what it
/// refers to. Throws KQexGltfError.
class KQexGltfAccessors
{
public:
    /// \p pSource has to outlive this.
    explicit KQexGltfAccessors(KQexGltfSource& pSource);

    /// Number of accessors.
    size_t GetCount() const { return mAccessors.size(); }

    /// Accessor \p pIndex below GetCount(). Valid as long as this.
    const KQexGltfAccessor& Get(size_t pIndex);

private:
    KQexGltfAccessor Check(size_t pIndex);
    void             CheckSparse(const KQexGltfJson::KValue& pSparse, const std::string& pName, KQexGltfAccessor& pAccessor);
    KQexGltfNumbers  CheckNumbers(const KQexGltfJson::KValue& pFrom, int pComponentType, int pComponents, size_t pCount,
                                  const std::string& pName);

    KQexGltfSource&                   mSource;
    std::vector<KQexGltfJson::KValue> mAccessors;
    std::vector<KQexGltfJson::KValue> mViews;
    size_t                            mBuffers;
    std::vector<KQexGltfAccessor>     mChecked;
    std::vector<bool>                 mIsChecked;
};

} // namespace qexsdk

#endif
