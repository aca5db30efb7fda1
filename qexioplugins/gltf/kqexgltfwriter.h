#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFWRITER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFWRITER_H

#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfbuffer.h>
#include <qexioplugins/gltf/kqexgltfmesh.h>
#include <qexioplugins/gltf/kqexgltftracks.h>
#include <qexioplugins/motion/kqexsafenames.h>
#include <qexioplugins/motion/kqexsides.h>
#include <qexscene/kqexframe.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace qexsdk
{

/// A node to write.
struct KQexGltfNode
{
    KQexNode*  mNode;   ///< The node; its scene owns it.
    int        mParent; ///< Index of the parent, -1 for a root.
    int        mTree;   ///< Index of its tree.
    KQexMatrix mRest;   ///< Global rest transform, centimetres.
};

/// A bone of the preview mesh.
struct KQexGltfBone
{
    size_t mJoint;    ///< The joint at its start, which moves it: index in the skin.
    double mStart[3]; ///< Rest position, file units.
    double mEnd[3];   ///< Rest position, file units.
};

/// Builds the JSON and the buffer of a glTF file from trees of nodes. Throws std::bad_alloc when memory runs out.
class KQexGltfWriter
{
public:
    /// Messages go to \p pFile, which must outlive this.
    KQexGltfWriter(KQexFileGltf& pFile, const KQexGltfWriteOptions& pOptions) : mFile(pFile), mOptions(pOptions), mBuffer(mModel) {}

    /// Builds all but the animations from the trees at \p pRoots.
    void Build(const std::vector<KQexNode*>& pRoots);

    /// The sink for the frames of take \p pTake of the options; takes are written in order. Owned by this.
    KQexFrameSink* BeginTake(size_t pTake);

    /// Adds the animation after all frames.
    void EndTake(size_t pTake);

    /// The options.
    const KQexGltfWriteOptions& GetOptions() const { return mOptions; }

    /// The JSON text, with the buffer at \p pUri ("" for the BIN chunk).
    std::string GetJson(const std::string& pUri);

    /// The bytes of the file's buffer.
    const std::vector<unsigned char>& GetBytes() { return mBuffer.GetBytes(); }

private:
    void        AddTree(KQexNode* pRoot, const KQexFrame& pRest);
    std::string SafeName(KQexUniqueNames& pNames, const std::string& pName, const char* pIfEmpty);
    void        AddNodes();
    void        AddSkin(int pTree);
    void        AddInverseBinds(const std::vector<size_t>& pJoints, KQexGltfModel::KSkin& pSkin);
    void        AddMesh(int pTree, const std::vector<size_t>& pJoints, int pSkin);
    void        CollectBones(int pTree, const std::vector<size_t>& pJoints, std::vector<KQexGltfBone>& pBones) const;
    int         GetMaterial(KQexSide pSide);
    void        AddPrimitive(const KQexGltfBoneMesh& pBones, KQexSide pSide, KQexGltfModel::KMesh& pMesh);
    int         AddTimes(const KQexSampling& pSampling);
    void        AddStillChannel(KQexGltfModel::KAnimation& pAnimation, int pTimes, long long pFrames);
    void        GetPosition(const KQexGltfNode& pNode, double* pPosition) const;

    KQexFileGltf&                   mFile;
    const KQexGltfWriteOptions      mOptions;
    KQexGltfModel                   mModel;
    KQexGltfBuffer                  mBuffer;
    KQexUniqueNames                 mNodeNames;
    KQexUniqueNames                 mTakeNames;
    std::array<int, kSideCount>     mMaterials{-1, -1, -1}; ///< Material of each side's bones; -1: not added yet.
    std::vector<KQexGltfNode>       mNodes;                 ///< Each tree in pre-order; also the file's first nodes, in this order.
    std::vector<size_t>             mTreeStarts;            ///< First node of each tree.
    int                             mTimes = -1;            ///< Accessor of the current take's times.
    std::unique_ptr<KQexGltfTracks> mTracks;                ///< The current take's; null between takes.
};

} // namespace qexsdk

#endif
