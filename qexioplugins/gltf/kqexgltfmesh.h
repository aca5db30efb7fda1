#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFMESH_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFMESH_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qexsdk
{

/// The triangles of a solid that shows a skeleton: an octahedron along each bone, thick near its start. Every corner has its own
/// vertices, so that faces look flat, and belongs to one joint altogether.
class KQexGltfBoneMesh
{
public:
    /// Adds the bone from \p pStart to \p pEnd (three coordinates each, units of the file), moved by joint \p pJoint. A bone too
    /// short to have a direction is left out.
    void AddBone(const double* pStart, const double* pEnd, std::uint16_t pJoint);

    /// Whether no bone was long enough.
    bool IsEmpty() const { return mPositions.empty(); }
    /// Number of vertices.
    size_t GetVertexCount() const { return mPositions.size() / 3; }

    const std::vector<float>&         GetPositions() const { return mPositions; } ///< Three a vertex.
    const std::vector<float>&         GetNormals() const { return mNormals; }     ///< Three a vertex, unit length.
    const std::vector<std::uint16_t>& GetJoints() const { return mJoints; }       ///< Four a vertex, the first counts.

private:
    void AddFace(const double* pA, const double* pB, const double* pC, const double* pInside, std::uint16_t pJoint);

    std::vector<float>         mPositions;
    std::vector<float>         mNormals;
    std::vector<std::uint16_t> mJoints;
};

} // namespace qexsdk

#endif
