#include <qexioplugins/gltf/kqexgltfbuffer.h>

#include <algorithm>
#include <cstring>

namespace qexsdk
{

namespace
{

size_t ComponentsOf(int pType)
{
    return static_cast<size_t>(tinygltf::GetNumComponentsInType(static_cast<uint32_t>(pType)));
}

template <typename T>
void FindBounds(tinygltf::Accessor& pAccessor, const T* pValues)
{
    const size_t lComponents = ComponentsOf(pAccessor.type);
    pAccessor.minValues.assign(pValues, pValues + lComponents);
    pAccessor.maxValues = pAccessor.minValues;
    for (size_t i = 0; i < pAccessor.count * lComponents; ++i)
    {
        const double lValue = static_cast<double>(pValues[i]);
        pAccessor.minValues[i % lComponents] = std::min(pAccessor.minValues[i % lComponents], lValue);
        pAccessor.maxValues[i % lComponents] = std::max(pAccessor.maxValues[i % lComponents], lValue);
    }
}

} // namespace

int KGltfBuffer::AddAccessor(int pComponentType, int pType, size_t pCount, size_t pBytes, int pTarget)
{
    tinygltf::BufferView lView;
    lView.buffer = 0;
    lView.byteOffset = mBytes.size();
    lView.byteLength = pBytes;
    lView.target = pTarget;
    mModel.bufferViews.push_back(lView);
    // Everything starts at a multiple of four bytes.
    mBytes.resize(mBytes.size() + (pBytes + 3) / 4 * 4);

    tinygltf::Accessor lAccessor;
    lAccessor.bufferView = static_cast<int>(mModel.bufferViews.size()) - 1;
    lAccessor.componentType = pComponentType;
    lAccessor.type = pType;
    lAccessor.count = pCount;
    mModel.accessors.push_back(lAccessor);
    return static_cast<int>(mModel.accessors.size()) - 1;
}

int KGltfBuffer::AddFloats(int pType, size_t pCount, int pTarget)
{
    return AddAccessor(TINYGLTF_COMPONENT_TYPE_FLOAT, pType, pCount, pCount * ComponentsOf(pType) * sizeof(float), pTarget);
}

int KGltfBuffer::AddJoints(const std::vector<std::uint16_t>& pValues)
{
    const size_t lBytes = pValues.size() * sizeof(std::uint16_t);
    const int    lAccessor =
        AddAccessor(TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT, TINYGLTF_TYPE_VEC4, pValues.size() / 4, lBytes, TINYGLTF_TARGET_ARRAY_BUFFER);
    std::memcpy(mBytes.data() + GetOffset(lAccessor), pValues.data(), lBytes);
    FindBounds(mModel.accessors[static_cast<size_t>(lAccessor)], pValues.data());
    return lAccessor;
}

size_t KGltfBuffer::GetOffset(int pAccessor) const
{
    const int lView = mModel.accessors[static_cast<size_t>(pAccessor)].bufferView;
    return mModel.bufferViews[static_cast<size_t>(lView)].byteOffset;
}

float* KGltfBuffer::GetFloats(int pAccessor)
{
    return reinterpret_cast<float*>(mBytes.data() + GetOffset(pAccessor));
}

void KGltfBuffer::SetBounds(int pAccessor)
{
    FindBounds(mModel.accessors[static_cast<size_t>(pAccessor)], GetFloats(pAccessor));
}

} // namespace qexsdk
