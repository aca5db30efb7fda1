#ifndef TESTS_QEXIOPLUGINS_GLTF_ASSIMPSCENE_H
#define TESTS_QEXIOPLUGINS_GLTF_ASSIMPSCENE_H

#include <tests/support/corpus.h>

#include <assimp/Importer.hpp>

#include <filesystem>
#include <memory>

namespace qextest
{

/// A file read with assimp. The test fails when assimp cannot read it.
class KAssimpScene
{
public:
    explicit KAssimpScene(const std::filesystem::path& pPath);
    ~KAssimpScene();
    KAssimpScene(const KAssimpScene&) = delete;
    KAssimpScene& operator=(const KAssimpScene&) = delete;

    int GetAnimationCount() const;

    /// Global positions of the nodes at \p pSeconds of an animation (-1: rest pose), in the file's units.
    KJointPositions PositionsAt(int pAnimation, double pSeconds) const;

private:
    std::unique_ptr<Assimp::Importer> mImporter;
    const aiScene*                    mScene;
};

} // namespace qextest

#endif
