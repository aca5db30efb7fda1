#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFMESH_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFMESH_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qexsdk
{

/// A triangle mesh that shows a skeleton: an octahedron per bone, widest near its start. Faces share no vertices, so that they are
/// shaded flat. Each vertex is bound to one joint.
class KQexGltfBoneMesh
{
public:
    /// \p pFigureSize: the largest side of the figure's bounding box, units of the file; it limits how thin and how thick bones are.
    explicit KQexGltfBoneMesh(double pFigureSize) : mFigureSize(pFigureSize) {}

    /// Adds the bone from \p pStart to \p pEnd (three coordinates each, units of the file), bound to joint \p pJoint. Skips a bone that
    /// is too short to have a direction.
    void AddBone(const double* pStart, const double* pEnd, std::uint16_t pJoint);

    /// Whether there are no vertices.
    bool IsEmpty() const { return mPositions.empty(); }
    /// Number of vertices.
    size_t GetVertexCount() const { return mPositions.size() / 3; }

    const std::vector<float>&         GetPositions() const { return mPositions; } ///< Three per vertex.
    const std::vector<float>&         GetNormals() const { return mNormals; }     ///< Three per vertex, unit length.
    const std::vector<std::uint16_t>& GetJoints() const { return mJoints; }       ///< Four per vertex: the joint, then 0.

private:
    void AddFace(const double* pA, const double* pB, const double* pC, const double* pCentre, std::uint16_t pJoint);

    double                     mFigureSize;
    std::vector<float>         mPositions;
    std::vector<float>         mNormals;
    std::vector<std::uint16_t> mJoints;
};

} // namespace qexsdk

#endif
