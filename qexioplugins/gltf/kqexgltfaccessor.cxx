#include <qexioplugins/gltf/kqexgltfaccessor.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace qexsdk
{

namespace
{

/// Values of glTF's componentType.
enum EComponent
{
    eBYTE = 5120,
    eUNSIGNED_BYTE = 5121,
    eSHORT = 5122,
    eUNSIGNED_SHORT = 5123,
    eUNSIGNED_INT = 5125,
    eFLOAT = 5126
};

size_t ComponentSize(int pType)
{
    switch (pType)
    {
    case eBYTE:
    case eUNSIGNED_BYTE:
        return 1;
    case eSHORT:
    case eUNSIGNED_SHORT:
        return 2;
    case eUNSIGNED_INT:
    case eFLOAT:
        return 4;
    default:
        return 0;
    }
}

int ComponentCount(const std::string& pType)
{
    struct KCount
    {
        const char* mType;
        int         mCount;
    };
    static constexpr KCount sCounts[] = {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT2", 4}, {"MAT3", 9}, {"MAT4", 16}};
    for (const KCount& lCount : sCounts)
    {
        if (pType == lCount.mType)
        {
            return lCount.mCount;
        }
    }
    return 0;
}

template <typename T>
double Load(const unsigned char* pFrom)
{
    T lValue;
    std::memcpy(&lValue, pFrom, sizeof lValue);
    return static_cast<double>(lValue);
}

double LoadNumber(const unsigned char* pFrom, int pType)
{
    switch (pType)
    {
    case eBYTE:
        return Load<std::int8_t>(pFrom);
    case eUNSIGNED_BYTE:
        return Load<std::uint8_t>(pFrom);
    case eSHORT:
        return Load<std::int16_t>(pFrom);
    case eUNSIGNED_SHORT:
        return Load<std::uint16_t>(pFrom);
    case eUNSIGNED_INT:
        return Load<std::uint32_t>(pFrom);
    default:
        return Load<float>(pFrom);
    }
}

/// The value of a normalized integer that stands for 1.
double FullScale(int pType)
{
    switch (pType)
    {
    case eBYTE:
        return 127.0;
    case eUNSIGNED_BYTE:
        return 255.0;
    case eSHORT:
        return 32767.0;
    case eUNSIGNED_SHORT:
        return 65535.0;
    case eUNSIGNED_INT:
        return 4294967295.0;
    default:
        return 1.0;
    }
}

size_t SparseIndex(const KQexGltfArray& pIndices, size_t pAt)
{
    return static_cast<size_t>(LoadNumber(pIndices.mData + pAt * pIndices.mStride, pIndices.mComponentType));
}

} // namespace

void KQexGltfAccessor::Get(size_t pIndex, double* pResult) const
{
    const unsigned char* lFrom = mElements.mData != nullptr ? mElements.mData + pIndex * mElements.mStride : nullptr;
    size_t               lLow = 0;
    size_t               lHigh = mSparseCount;
    while (lLow < lHigh)
    {
        const size_t lMiddle = lLow + (lHigh - lLow) / 2;
        (SparseIndex(mSparseIndices, lMiddle) < pIndex ? lLow : lHigh) =
            SparseIndex(mSparseIndices, lMiddle) < pIndex ? lMiddle + 1 : lMiddle;
    }
    if (lLow < mSparseCount && SparseIndex(mSparseIndices, lLow) == pIndex)
    {
        lFrom = mSparseValues.mData + lLow * mSparseValues.mStride;
    }
    const size_t lSize = ComponentSize(mElements.mComponentType);
    for (int i = 0; i < mComponents; ++i)
    {
        pResult[i] = lFrom != nullptr ? LoadNumber(lFrom + static_cast<size_t>(i) * lSize, mElements.mComponentType) : 0.0;
        if (mIsNormalized)
        {
            // The lowest signed integer is clamped to -1.
            pResult[i] = std::max(pResult[i] / FullScale(mElements.mComponentType), -1.0);
        }
    }
}

KQexGltfAccessors::KQexGltfAccessors(KQexGltfSource& pSource)
    : mSource(pSource),
      mAccessors(GltfMembers(pSource.GetJson().GetRoot()["accessors"], "accessors")),
      mViews(GltfMembers(pSource.GetJson().GetRoot()["bufferViews"], "bufferViews")),
      mBufferCount(pSource.GetJson().GetRoot()["buffers"].GetCount()),
      mChecked(mAccessors.size()),
      mIsChecked(mAccessors.size(), false)
{
}

const KQexGltfAccessor& KQexGltfAccessors::Get(size_t pIndex)
{
    if (!mIsChecked[pIndex])
    {
        mChecked[pIndex] = Check(pIndex);
        mIsChecked[pIndex] = true;
    }
    return mChecked[pIndex];
}

KQexGltfAccessor KQexGltfAccessors::Check(size_t pIndex)
{
    const KQexGltfJson::KValue lFrom = mAccessors[pIndex];
    const std::string          lName = "accessors[" + std::to_string(pIndex) + "]";
    KQexGltfAccessor           lAccessor;
    lAccessor.mComponents = ComponentCount(lFrom["type"].GetText());
    const size_t lType = GltfSize(lFrom["componentType"], 0, lName + ".componentType");
    if (lAccessor.mComponents == 0 || lType > eFLOAT || ComponentSize(static_cast<int>(lType)) == 0)
    {
        throw KQexGltfError(lName + ": unknown type or componentType");
    }
    lAccessor.mElements.mComponentType = static_cast<int>(lType);
    lAccessor.mCount = GltfSize(lFrom["count"], 0, lName + ".count");
    lAccessor.mIsNormalized = lFrom["normalized"].IsTrue();
    if (lFrom["bufferView"].IsValid())
    {
        lAccessor.mElements = CheckArray(lFrom, static_cast<int>(lType), lAccessor.mComponents, lAccessor.mCount, lName);
    }
    if (lFrom["sparse"].IsValid())
    {
        CheckSparse(lFrom["sparse"], lName + ".sparse", lAccessor);
    }
    return lAccessor;
}

void KQexGltfAccessors::CheckSparse(const KQexGltfJson::KValue& pSparse, const std::string& pName, KQexGltfAccessor& pAccessor)
{
    const KQexGltfJson::KValue lIndices = pSparse["indices"];
    const size_t               lType = GltfSize(lIndices["componentType"], 0, pName + ".indices.componentType");
    if (lType != eUNSIGNED_BYTE && lType != eUNSIGNED_SHORT && lType != eUNSIGNED_INT)
    {
        throw KQexGltfError(pName + ".indices: invalid componentType");
    }
    const size_t lCount = GltfSize(pSparse["count"], 0, pName + ".count");
    pAccessor.mSparseIndices = CheckArray(lIndices, static_cast<int>(lType), 1, lCount, pName + ".indices");
    pAccessor.mSparseValues =
        CheckArray(pSparse["values"], pAccessor.mElements.mComponentType, pAccessor.mComponents, lCount, pName + ".values");
    for (size_t i = 0; i < lCount; ++i)
    {
        const size_t lIndex = SparseIndex(pAccessor.mSparseIndices, i);
        if (lIndex >= pAccessor.mCount || (i > 0 && lIndex <= SparseIndex(pAccessor.mSparseIndices, i - 1)))
        {
            throw KQexGltfError(pName + ".indices are out of range or not increasing");
        }
    }
    pAccessor.mSparseCount = lCount;
}

KQexGltfArray KQexGltfAccessors::CheckArray(const KQexGltfJson::KValue& pFrom, int pComponentType, int pComponents, size_t pCount,
                                            const std::string& pName)
{
    const int lView = GltfIndex(pFrom["bufferView"], mViews.size(), pName + ".bufferView");
    if (lView < 0)
    {
        throw KQexGltfError(pName + ".bufferView is missing");
    }
    const KQexGltfJson::KValue lFrom = mViews[static_cast<size_t>(lView)];
    const std::string          lName = "bufferViews[" + std::to_string(lView) + "]";
    const int                  lIndex = GltfIndex(lFrom["buffer"], mBufferCount, lName + ".buffer");
    if (lIndex < 0)
    {
        throw KQexGltfError(lName + ".buffer is missing");
    }
    const std::string_view lBuffer = mSource.GetBuffer(static_cast<size_t>(lIndex));
    const size_t           lViewStart = GltfSize(lFrom["byteOffset"], 0, lName + ".byteOffset");
    const size_t           lViewSize = GltfSize(lFrom["byteLength"], 0, lName + ".byteLength");
    if (lViewStart > lBuffer.size() || lViewSize > lBuffer.size() - lViewStart)
    {
        throw KQexGltfError(lName + " does not fit into buffers[" + std::to_string(lIndex) + "]");
    }
    const size_t  lElement = ComponentSize(pComponentType) * static_cast<size_t>(pComponents);
    const size_t  lStart = GltfSize(pFrom["byteOffset"], 0, pName + ".byteOffset");
    KQexGltfArray lArray;
    lArray.mComponentType = pComponentType;
    lArray.mStride = GltfSize(lFrom["byteStride"], lElement, lName + ".byteStride");
    if (lArray.mStride < lElement)
    {
        throw KQexGltfError(lName + ".byteStride is smaller than an element");
    }
    // Divides, because a product of numbers from the file could overflow.
    if (lStart > lViewSize ||
        (pCount > 0 && (lElement > lViewSize - lStart || (pCount - 1) > (lViewSize - lStart - lElement) / lArray.mStride)))
    {
        throw KQexGltfError(pName + " does not fit into " + lName);
    }
    lArray.mData = reinterpret_cast<const unsigned char*>(lBuffer.data()) + lViewStart + lStart;
    return lArray;
}

} // namespace qexsdk
