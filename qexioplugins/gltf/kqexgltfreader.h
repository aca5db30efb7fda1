#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFREADER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFREADER_H

#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfaccessor.h>
#include <qexioplugins/gltf/kqexgltfkeys.h>
#include <qexioplugins/gltf/kqexgltfsource.h>
#include <qexioplugins/motion/kqexsafenames.h>
#include <qexscene/kqexnodepose.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qexsdk
{

/// A node of the file and the scene node made from it.
struct KQexGltfReadNode
{
    KQexGltfJson::KValue mFrom;               ///< The node's JSON object.
    std::vector<int>     mChildren;           ///< Indices of its children.
    int                  mParent = -1;        ///< Index of its parent; -1: none.
    bool                 mIsJoint = false;    ///< Gets a skeleton attribute: a joint of a skin, or any node when there are no skins.
    bool                 mIsAnimated = false; ///< Target of an animation channel.
    bool                 mHasPivots = false;  ///< It has a pre- or post-rotation.
    int                  mOrder = 0;          ///< Order code of its Euler angles.
    KQexQuaternion       mPreInverse;         ///< Inverse of its pre-rotation.
    KQexQuaternion       mPost;               ///< Its post-rotation.
    KQexNode*            mNode = nullptr;     ///< The scene node; null when skipped.
};

/// The keys of one property of one node in an animation.
struct KQexGltfReadTrack
{
    KQexGltfReadNode* mTarget;   ///< The node.
    KQexNodeProperty  mProperty; ///< What it animates.
    KQexGltfKeys      mKeys;     ///< Its keys.
};

/// Builds nodes and takes from a file. Throws KQexGltfError, and std::bad_alloc when memory runs out; the caller must then undo what
/// was built.
class KQexGltfReader
{
public:
    /// Reads \p pSource into \p pScene; messages go to \p pFile. All arguments must outlive this.
    KQexGltfReader(KQexFileGltf& pFile, KQexGltfSource& pSource, KQexScene* pScene, const KQexGltfReadOptions& pOptions);
    KQexGltfReader(const KQexGltfReader&) = delete;
    KQexGltfReader& operator=(const KQexGltfReader&) = delete;

    /// Creates the nodes of the file's scene, with their rest pose and extras.
    void ReadNodes();

    /// Creates the takes. False when the progress callback cancels.
    bool ReadTakes();

    /// Adds the root nodes to their parent and moves the results to \p pResult.
    void Finish(KQexGltfReadResult& pResult);

private:
    void             CheckExtensions();
    void             LinkNodes();
    void             CheckCycles() const;
    void             MarkJoints();
    void             MarkAnimated();
    bool             IsMeshOnly(const KQexGltfReadNode& pNode) const;
    std::vector<int> FindRoots();
    void             MakeTree(int pRoot);
    void             MakeNode(int pIndex);
    void             SetTransform(KQexGltfReadNode& pNode, const std::string& pName);
    void             SetMatrix(KQexGltfReadNode& pNode, const std::string& pName);
    void SetRest(KQexGltfReadNode& pNode, const double pTranslation[3], const KQexQuaternion& pRotation, const double pScaling[3]);
    void ReadExtras(KQexGltfReadNode& pNode);
    void ReadLimits(const KQexGltfJson::KValue& pFrom, KQexLimits& pLimits) const;
    void ReadDofs(const KQexGltfJson::KValue& pFrom, std::vector<KQexBoneDof>& pDofs) const;
    void ToEuler(const KQexGltfReadNode& pNode, const KQexQuaternion& pRotation, const double pNear[3], double pAngles[3]) const;
    bool ReadTake(size_t pIndex);
    void ReadTracks(const KQexGltfJson::KValue& pAnimation, const std::string& pName, std::vector<KQexGltfReadTrack>& pTracks);
    KQexGltfReadTrack ReadTrack(const KQexGltfJson::KValue& pSampler, const std::string& pName, KQexGltfReadNode* pTarget,
                                KQexNodeProperty pProperty);
    std::shared_ptr<const std::vector<double>> GetTimes(size_t pAccessor, const std::string& pName);

    /// Even frames that hold \p pTracks; \p pFramesPerSecond 0: at the rate that fits their keys.
    static KQexSampling FindSampling(const std::vector<KQexGltfReadTrack>& pTracks, double pFramesPerSecond);

    void FillCurves(KQexAnimStack* pStack, KQexGltfReadTrack& pTrack, const KQexSampling& pSampling);
    void CountKeys(double pKeys, const std::string& pName);
    void Warn(const std::string& pText) { mFile.Report(KQexTextMessage::eWARNING, pText); }

    KQexFileGltf&                                                mFile;
    KQexGltfSource&                                              mSource;
    KQexScene*                                                   mScene;
    const KQexGltfReadOptions&                                   mOptions;
    KQexGltfJson::KValue                                         mRoot;
    KQexGltfAccessors                                            mAccessors;
    std::vector<KQexGltfReadNode>                                mNodes;
    std::vector<KQexGltfJson::KValue>                            mAnimations;
    std::vector<KQexNode*>                                       mRoots; ///< Without a parent until Finish().
    std::vector<KQexGltfTake>                                    mTakes;
    KQexBoneDofs                                                 mBoneDofs;
    KQexUniqueNames                                              mTakeNames;
    std::map<size_t, std::shared_ptr<const std::vector<double>>> mTimes;          ///< Key times by input accessor.
    double                                                       mKeyCount = 0.0; ///< Keys read and made so far.
};

/// Reads an array of \p pCount numbers. False when \p pFrom is missing; throws when it is anything else.
bool GltfReadNumbers(const KQexGltfJson::KValue& pFrom, int pCount, double* pResult, const std::string& pName);

} // namespace qexsdk

#endif
