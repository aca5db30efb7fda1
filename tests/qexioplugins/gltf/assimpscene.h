#ifndef TESTS_QEXIOPLUGINS_GLTF_ASSIMPSCENE_H
#define TESTS_QEXIOPLUGINS_GLTF_ASSIMPSCENE_H

#include <tests/support/corpus.h>

#include <assimp/Importer.hpp>

#include <filesystem>
#include <memory>

namespace qextest
{

/// A file as assimp reads it. A file that it cannot read fails the test.
class KAssimpScene
{
public:
    explicit KAssimpScene(const std::filesystem::path& pPath);
    ~KAssimpScene();
    KAssimpScene(const KAssimpScene&) = delete;
    KAssimpScene& operator=(const KAssimpScene&) = delete;

    int GetAnimationCount() const;

    /// Where the nodes are at \p pSeconds of an animation; -1: at rest. In the file's units.
    KPlaces PlacesAt(int pAnimation, double pSeconds) const;

private:
    std::unique_ptr<Assimp::Importer> mImporter;
    const aiScene*                    mScene;
};

} // namespace qextest

#endif
