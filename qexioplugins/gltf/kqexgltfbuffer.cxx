#include <qexioplugins/gltf/kqexgltfbuffer.h>

#include <algorithm>
#include <cstring>

namespace qexsdk
{

namespace
{

template <typename T>
void ComputeBounds(KQexGltfModel::KAccessor& pAccessor, const T* pValues)
{
    const size_t lComponents = pAccessor.mElement;
    pAccessor.mMin.assign(pValues, pValues + lComponents);
    pAccessor.mMax = pAccessor.mMin;
    for (size_t i = 0; i < pAccessor.mCount * lComponents; ++i)
    {
        const double lValue = static_cast<double>(pValues[i]);
        pAccessor.mMin[i % lComponents] = std::min(pAccessor.mMin[i % lComponents], lValue);
        pAccessor.mMax[i % lComponents] = std::max(pAccessor.mMax[i % lComponents], lValue);
    }
}

} // namespace

/// Adds an accessor of the bytes at mEnd.
int KQexGltfBuffer::AddAccessor(int pComponentType, KQexGltfElement pElement, size_t pCount, size_t pBytes, int pTarget)
{
    mModel.mViews.push_back({mEnd, pBytes, pTarget});
    mEnd += (pBytes + 3) / 4 * 4; // Each view starts at a multiple of four bytes.
    mModel.mAccessors.push_back({static_cast<int>(mModel.mViews.size()) - 1, pComponentType, pElement, pCount, {}, {}});
    return static_cast<int>(mModel.mAccessors.size()) - 1;
}

/// Adds an accessor of new bytes.
int KQexGltfBuffer::AddSpace(int pComponentType, KQexGltfElement pElement, size_t pCount, size_t pBytes, int pTarget)
{
    const int lAccessor = AddAccessor(pComponentType, pElement, pCount, pBytes, pTarget);
    mBytes.resize(mEnd);
    return lAccessor;
}

void KQexGltfBuffer::ReserveFloats(size_t pCount)
{
    mReserved = mEnd;
    mBytes.resize(mEnd + pCount * sizeof(float));
}

int KQexGltfBuffer::KeepFloats(KQexGltfElement pElement, size_t pCount, size_t pFirst)
{
    const size_t lBytes = pCount * pElement * sizeof(float);
    std::memmove(mBytes.data() + mEnd, mBytes.data() + mReserved + pFirst * sizeof(float), lBytes);
    return AddAccessor(eGLTF_FLOAT, pElement, pCount, lBytes, 0);
}

int KQexGltfBuffer::AddFloats(KQexGltfElement pElement, size_t pCount, int pTarget)
{
    return AddSpace(eGLTF_FLOAT, pElement, pCount, pCount * pElement * sizeof(float), pTarget);
}

int KQexGltfBuffer::AddJoints(const std::vector<std::uint16_t>& pValues)
{
    const size_t lBytes = pValues.size() * sizeof(std::uint16_t);
    const int    lAccessor = AddSpace(eGLTF_UNSIGNED_SHORT, eGLTF_VEC4, pValues.size() / 4, lBytes, eGLTF_ARRAY_BUFFER);
    std::memcpy(mBytes.data() + GetOffset(lAccessor), pValues.data(), lBytes);
    ComputeBounds(mModel.mAccessors[static_cast<size_t>(lAccessor)], pValues.data());
    return lAccessor;
}

size_t KQexGltfBuffer::GetOffset(int pAccessor) const
{
    const int lView = mModel.mAccessors[static_cast<size_t>(pAccessor)].mView;
    return mModel.mViews[static_cast<size_t>(lView)].mOffset;
}

float* KQexGltfBuffer::GetFloats(int pAccessor)
{
    return reinterpret_cast<float*>(mBytes.data() + GetOffset(pAccessor));
}

void KQexGltfBuffer::SetBounds(int pAccessor)
{
    ComputeBounds(mModel.mAccessors[static_cast<size_t>(pAccessor)], GetFloats(pAccessor));
}

} // namespace qexsdk
