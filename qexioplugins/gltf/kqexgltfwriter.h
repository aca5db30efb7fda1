#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFWRITER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFWRITER_H

#include <kbaselib/kbase/kparallel.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfbuffer.h>
#include <qexioplugins/gltf/kqexgltfmesh.h>
#include <qexioplugins/motion/kqexsafenames.h>
#include <qexioplugins/motion/kqexsides.h>
#include <qexscene/kqexnodepose.h>

#include <array>
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

/// The keys of one property of one node in a take; empty when it does not move.
struct KQexGltfTrack
{
    KQexNodeProperty   mProperty; ///< What it animates.
    std::vector<float> mValues;   ///< Three or four numbers per key, in the file's units.
};

/// Builds the JSON and the buffer of a glTF file from trees of nodes. Throws std::bad_alloc when memory runs out.
class KQexGltfWriter
{
public:
    /// Messages go to \p pFile. Both arguments must outlive this.
    KQexGltfWriter(KQexFileGltf& pFile, const KQexGltfWriteOptions& pOptions)
        : mFile(pFile), mOptions(pOptions), mBuffer(mModel), mThreads(KThreadCount(pOptions.mThreads))
    {
    }

    /// Builds the file from the trees at \p pRoots. False when the progress callback cancels.
    bool Build(const std::vector<KQexNode*>& pRoots);

    /// The JSON text, with the buffer at \p pUri ("" for the BIN chunk).
    std::string GetJson(const std::string& pUri);

    /// The bytes of the file's buffer.
    const std::vector<unsigned char>& GetBytes() { return mBuffer.GetBytes(); }

private:
    bool        AddTree(KQexNode* pRoot);
    std::string SafeName(KQexUniqueNames& pNames, const std::string& pName, const char* pIfEmpty);
    void        AddNodes();
    void        AddSkin(int pTree);
    void        AddInverseBinds(const std::vector<size_t>& pJoints, KQexGltfModel::KSkin& pSkin);
    void        AddMesh(int pTree, const std::vector<size_t>& pJoints, int pSkin);
    void        CollectBones(int pTree, const std::vector<size_t>& pJoints, std::vector<KQexGltfBone>& pBones) const;
    int         GetMaterial(KQexSide pSide);
    void        AddPrimitive(const KQexGltfBoneMesh& pBones, KQexSide pSide, KQexGltfModel::KMesh& pMesh);
    bool        AddAnimation(const KQexGltfTake& pTake);
    void        ReserveTake(const KQexAnimLayer* pLayer, long long pFrames);
    void        MakeTracks(KQexNode* pNode, const KQexGltfTake& pTake, std::vector<KQexGltfTrack>& pTracks) const;
    void MakeVectorTrack(const KQexNodePose& pRest, const KQexNodePose& pPose, const KQexSampling& pSampling, KQexGltfTrack& pTrack) const;
    void MakeRotationTrack(const KQexNodePose& pRest, const KQexNodePose& pPose, const KQexSampling& pSampling,
                           KQexGltfTrack& pTrack) const;
    int  AddTimes(const KQexSampling& pSampling);
    void AddChannel(KQexGltfModel::KAnimation& pAnimation, int pTimes, size_t pNode, const KQexGltfTrack& pTrack);
    void AddStillChannel(KQexGltfModel::KAnimation& pAnimation, const KQexSampling& pSampling);
    void GetPosition(const KQexGltfNode& pNode, double* pPosition) const;

    KQexFileGltf&               mFile;
    const KQexGltfWriteOptions& mOptions;
    KQexGltfModel               mModel;
    KQexGltfBuffer              mBuffer;
    int                         mThreads;
    KQexUniqueNames             mNodeNames;
    std::array<int, kSideCount> mMaterials{-1, -1, -1}; ///< Material of each side's bones; -1: not added yet.
    std::vector<KQexGltfNode>   mNodes;                 ///< Each tree in pre-order; also the file's first nodes, in this order.
    std::vector<size_t>         mTreeStarts;            ///< First node of each tree.
    size_t                      mDoneNodes = 0;         ///< Nodes animated so far, summed over the takes; for the progress.
};

} // namespace qexsdk

#endif
