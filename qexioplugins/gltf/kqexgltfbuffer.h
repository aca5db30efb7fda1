#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFBUFFER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFBUFFER_H

#include <qexioplugins/gltf/kqexgltfmodel.h>

#include <cstdint>
#include <vector>

namespace qexsdk
{

/// The buffer of a glTF file under construction, and its accessors. Numbers are stored as in the file: little-endian, like every
/// machine this builds for.
class KQexGltfBuffer
{
public:
    /// Adds accessors and views to \p pModel, which must outlive this.
    explicit KQexGltfBuffer(KQexGltfModel& pModel) : mModel(pModel) {}

    /// Adds an accessor of \p pCount elements of 32-bit floats, all 0, and returns its index.
    /// \param pElement type of the elements
    /// \param pCount   number of elements
    /// \param pTarget  eGLTF_ARRAY_BUFFER for vertices, 0 otherwise
    int AddFloats(KQexGltfElement pElement, size_t pCount, int pTarget = 0);

    /// Adds an accessor of joint indices, four 16-bit numbers per element, with its minimum and maximum, and returns its index.
    int AddJoints(const std::vector<std::uint16_t>& pValues);

    /// Makes space for \p pCount floats after all accessors; replaces an earlier one. Until ReleaseReserved(), only KeepFloats() adds
    /// accessors.
    void ReserveFloats(size_t pCount);

    /// The floats of that space; those that KeepFloats() did not pass yet.
    float* GetReserved() { return reinterpret_cast<float*>(mBytes.data() + mReserved); }

    /// Adds an accessor of \p pCount elements that are in that space from float \p pFirst on, and returns its index. They move to the
    /// front, over the floats before them, so \p pFirst ascends from call to call.
    int KeepFloats(KQexGltfElement pElement, size_t pCount, size_t pFirst);

    /// Drops what is left of the space.
    void ReleaseReserved() { mBytes.resize(mEnd); }

    /// The floats of an accessor. Valid until the next accessor is added.
    float* GetFloats(int pAccessor);

    /// Sets the accessor's minimum and maximum of each component from its current floats.
    void SetBounds(int pAccessor);

    /// The bytes of the buffer.
    std::vector<unsigned char>& GetBytes() { return mBytes; }

private:
    int    AddAccessor(int pComponentType, KQexGltfElement pElement, size_t pCount, size_t pBytes, int pTarget);
    int    AddSpace(int pComponentType, KQexGltfElement pElement, size_t pCount, size_t pBytes, int pTarget);
    size_t GetOffset(int pAccessor) const;

    KQexGltfModel&             mModel;
    std::vector<unsigned char> mBytes;
    size_t                     mEnd = 0;      ///< End of the accessors' bytes.
    size_t                     mReserved = 0; ///< Start of the space of ReserveFloats().
};

} // namespace qexsdk

#endif
