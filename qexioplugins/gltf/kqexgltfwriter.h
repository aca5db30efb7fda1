#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFWRITER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFWRITER_H

#include <kbaselib/kbase/kparallel.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfbuffer.h>
#include <qexioplugins/gltf/kqexgltfpose.h>
#include <qexioplugins/motion/kqexsafenames.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A node of the file.
struct KQexGltfNode
{
    KQexNode*  mNode;   ///< The node; its scene owns it.
    int        mParent; ///< Index of the parent, -1 for a top node.
    int        mTree;   ///< Index of its tree.
    KQexMatrix mRest;   ///< Global transform at rest, centimetres.
};

/// The keys of one property of one node over a take; empty when nothing moves.
struct KQexGltfTrack
{
    int                mProperty; ///< 0 translation, 1 rotation, 2 scale.
    std::vector<float> mValues;   ///< Three or four numbers a key, in the file's units.
};

/// Builds the parts of a glTF file from trees of nodes. May throw what the standard library throws when memory runs out.
class KQexGltfWriter
{
public:
    /// Messages go to \p pFile; both have to outlive this.
    KQexGltfWriter(KQexFileGltf& pFile, const KQexGltfWriteOptions& pOptions)
        : mFile(pFile), mOptions(pOptions), mBuffer(mModel), mThreads(KThreadCount(pOptions.mThreads))
    {
    }

    /// Makes the file of the trees at \p pRoots. False when the progress call cancels.
    bool Build(const std::vector<KQexNode*>& pRoots);

    /// The JSON text, with a buffer at \p pUri ("" for the binary chunk).
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
    bool        AddAnimation(const KQexGltfTake& pTake);
    void        ReserveTake(const KQexAnimLayer* pLayer, long long pFrames);
    void        MakeTracks(KQexNode* pNode, const KQexGltfTake& pTake, std::vector<KQexGltfTrack>& pTracks) const;
    void        MakeVectorTrack(const KQexGltfNodePose& pRest, const KQexGltfNodePose& pPose, const KQexSampling& pSampling,
                                KQexGltfTrack& pTrack) const;
    void        MakeRotationTrack(const KQexGltfNodePose& pRest, const KQexGltfNodePose& pPose, const KQexSampling& pSampling,
                                  KQexGltfTrack& pTrack) const;
    int         AddTimes(const KQexSampling& pSampling);
    void        AddChannel(KQexGltfModel::KAnimation& pAnimation, int pTimes, size_t pNode, const KQexGltfTrack& pTrack);
    void        GetPlace(const KQexGltfNode& pNode, double* pPlace) const;
    size_t      mDone = 0;

    KQexFileGltf&               mFile;
    const KQexGltfWriteOptions& mOptions;
    KQexGltfModel               mModel;
    KQexGltfBuffer              mBuffer;
    int                         mThreads;
    std::vector<KQexGltfNode>   mNodes; ///< Each tree in pre-order; the first nodes of the file, in this order.
    std::vector<size_t>         mTops;  ///< First node of each tree.
};

} // namespace qexsdk

#endif
