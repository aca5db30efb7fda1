#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFREADER_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFREADER_H

#include <qexioplugins/gltf/kqexfilegltf.h>
#include <qexioplugins/gltf/kqexgltfaccessor.h>
#include <qexioplugins/gltf/kqexgltfkeys.h>
#include <qexioplugins/gltf/kqexgltfpose.h>
#include <qexioplugins/gltf/kqexgltfsource.h>
#include <qexioplugins/motion/kqexsafenames.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qexsdk
{

/// A node of the file, and what becomes of it.
struct KGltfReadNode
{
    KGltfJson::KValue mFrom;              ///< The node's JSON object.
    std::vector<int>  mChildren;          ///< Indices of its children.
    int               mParent = -1;       ///< Index of its parent; -1: none.
    bool              mIsJoint = false;   ///< A skin names it.
    bool              mIsMoved = false;   ///< An animation has it as a target.
    bool              mHasPivots = false; ///< Its pre- or post-rotation is not nothing.
    int               mOrder = 0;         ///< Order code of its angles.
    KQuaternion       mPreInverse;        ///< The way back from its pre-rotation.
    KQuaternion       mPost;              ///< Its post-rotation.
    KQexNode*         mNode = nullptr;    ///< Null: left out.
};

/// One property of one node over an animation.
struct KGltfReadTrack
{
    KGltfReadNode* mTarget;   ///< The node that moves.
    int            mProperty; ///< 0 translation, 1 rotation, 2 scale.
    KGltfKeys      mKeys;     ///< How it moves.
};

/// Builds nodes and takes from a file. Throws KGltfError, and what the standard library throws when memory runs out; what was built
/// is then the caller's to undo.
class KGltfReader
{
public:
    /// Reads \p pSource into \p pScene; messages go to \p pFile. All of them have to outlive this.
    KGltfReader(KQexFileGltf& pFile, KGltfSource& pSource, KQexScene* pScene, const KQexGltfReadOptions& pOptions);
    KGltfReader(const KGltfReader&) = delete;
    KGltfReader& operator=(const KGltfReader&) = delete;

    /// Makes the nodes of the file's scene, with their rest pose and extras.
    void ReadNodes();

    /// False when the progress call cancels.
    bool ReadTakes();

    /// Hangs the roots into the scene.
    void Finish(KQexGltfReadResult& pResult);

private:
    void             CheckExtensions();
    void             LinkNodes();
    void             CheckCircles() const;
    void             MarkJoints();
    void             MarkMoved();
    bool             IsMeshOnly(const KGltfReadNode& pNode) const;
    std::vector<int> FindTops();
    void             MakeTree(int pTop);
    void             MakeNode(int pIndex);
    void             SetTransform(KGltfReadNode& pNode, const std::string& pName);
    void             SetMatrix(KGltfReadNode& pNode, const std::string& pName);
    void             SetRest(KGltfReadNode& pNode, const double pTranslation[3], const KQuaternion& pRotation, const double pScaling[3]);
    void             ReadExtras(KGltfReadNode& pNode);
    void             ReadLimits(const KGltfJson::KValue& pFrom, KQexLimits& pLimits) const;
    void             ReadDofs(const KGltfJson::KValue& pFrom, std::vector<KQexBoneDof>& pDofs) const;
    void             ToAngles(const KGltfReadNode& pNode, const KQuaternion& pRotation, const double pNear[3], double pAngles[3]) const;
    bool             ReadTake(size_t pIndex);
    void             ReadTracks(const KGltfJson::KValue& pAnimation, const std::string& pName, std::vector<KGltfReadTrack>& pTracks);
    KGltfReadTrack   ReadTrack(const KGltfJson::KValue& pSampler, const std::string& pName, KGltfReadNode* pTarget, int pProperty);
    std::shared_ptr<const std::vector<double>> GetTimes(size_t pAccessor, const std::string& pName);
    KQexSampling                               FindSampling(const std::vector<KGltfReadTrack>& pTracks) const;
    void                                       FillCurves(KQexAnimStack* pStack, KGltfReadTrack& pTrack, const KQexSampling& pSampling);
    void                                       Spend(double pKeys, const std::string& pName);
    void                                       Warn(const std::string& pText) { mFile.Report(KQexTextMessage::eWARNING, pText); }

    KQexFileGltf&                                                mFile;
    KGltfSource&                                                 mSource;
    KQexScene*                                                   mScene;
    const KQexGltfReadOptions&                                   mOptions;
    KGltfJson::KValue                                            mRoot;
    KGltfAccessors                                               mAccessors;
    std::vector<KGltfReadNode>                                   mNodes;
    std::vector<KGltfJson::KValue>                               mAnimations;
    std::vector<KQexNode*>                                       mRoots; ///< Not yet below a node of the scene.
    std::vector<KQexGltfTake>                                    mTakes;
    KQexBoneDofs                                                 mBoneDofs;
    KQexUniqueNames                                              mTakeNames;
    std::map<size_t, std::shared_ptr<const std::vector<double>>> mTimes;       ///< Key times by accessor.
    double                                                       mSpent = 0.0; ///< Keys looked at and made.
};

/// Exactly \p pCount finite numbers. False when \p pFrom is missing; throws when it is anything else.
bool GltfNumbers(const KGltfJson::KValue& pFrom, int pCount, double* pResult, const std::string& pName);

/// Makes \p pRotation a unit quaternion; false, and identity, when it has no length.
bool GltfNormalize(KQuaternion& pRotation);

} // namespace qexsdk

#endif
