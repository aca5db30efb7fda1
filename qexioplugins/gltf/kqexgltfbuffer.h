#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFBUFFER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFBUFFER_H

#include <qexioplugins/gltf/kqexgltfmodel.h>

#include <cstdint>
#include <vector>

namespace qexsdk
{

/// The one buffer of a glTF file under construction, and its accessors. Numbers stand in it as the file has them, little-endian,
/// like every machine this builds for.
class KQexGltfBuffer
{
public:
    /// Puts accessors and views into \p pModel, which has to outlive this.
    explicit KQexGltfBuffer(KQexGltfModel& pModel) : mModel(pModel) {}

    /// Adds an accessor over \p pCount elements made of 32-bit floats, not yet set.
    /// \param pTarget eGLTF_ARRAY_BUFFER for vertices, 0 otherwise
    int AddFloats(KQexGltfElement pElement, size_t pCount, int pTarget = 0);

    /// Adds an accessor over vectors of four 16-bit joints, \p pValues one after another, with its minimum and maximum.
    int AddJoints(const std::vector<std::uint16_t>& pValues);

    /// The floats of accessor \p pAccessor. Valid until the next accessor is added.
    float* GetFloats(int pAccessor);

    /// Writes the accessor's minimum and maximum, component by component, as its floats are now.
    void SetBounds(int pAccessor);

    /// The bytes of the buffer; may be moved out when the file is complete.
    std::vector<unsigned char>& GetBytes() { return mBytes; }

private:
    int    AddAccessor(int pComponentType, KQexGltfElement pElement, size_t pCount, size_t pBytes, int pTarget);
    size_t GetOffset(int pAccessor) const;

    KQexGltfModel&             mModel;
    std::vector<unsigned char> mBytes;
};

} // namespace qexsdk

#endif
