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
struct KQexGltfReadNode
{
    KQexGltfJson::KValue mFrom;              ///< The node's JSON object.
    std::vector<int>     mChildren;          ///< Indices of its children.
    int                  mParent = -1;       ///< Index of its parent; -1: none.
    bool                 mIsJoint = false;   ///< A skin names it.
    bool                 mIsMoved = false;   ///< An animation has it as a target.
    bool                 mHasPivots = false; ///< Its pre- or post-rotation is not nothing.
    int                  mOrder = 0;         ///< Order code of its angles.
    KQexQuaternion       mPreInverse;        ///< The way back from its pre-rotation.
    KQexQuaternion       mPost;              ///< Its post-rotation.
    KQexNode*            mNode = nullptr;    ///< Null: left out.
};

/// One property of one node over an animation.
struct KQexGltfReadTrack
{
    KQexGltfReadNode* mTarget;   ///< The node that moves.
    int               mProperty; ///< 0 translation, 1 rotation, 2 scale.
    KQexGltfKeys      mKeys;     ///< How it moves.
};

/// Builds nodes and takes from a file. Throws KQexGltfError, and what the standard library throws when memory runs out; what was built
/// is then the caller's to undo.
class KQexGltfReader
{
public:
    /// Reads \p pSource into \p pScene; messages go to \p pFile. All of them have to outlive this.
    KQexGltfReader(KQexFileGltf& pFile, KQexGltfSource& pSource, KQexScene* pScene, const KQexGltfReadOptions& pOptions);
    KQexGltfReader(const KQexGltfReader&) = delete;
    KQexGltfReader& operator=(const KQexGltfReader&) = delete;

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
    bool             IsMeshOnly(const KQexGltfReadNode& pNode) const;
    std::vector<int> FindTops();
    void             MakeTree(int pTop);
    void             MakeNode(int pIndex);
    void             SetTransform(KQexGltfReadNode& pNode, const std::string& pName);
    void             SetMatrix(KQexGltfReadNode& pNode, const std::string& pName);
    void SetRest(KQexGltfReadNode& pNode, const double pTranslation[3], const KQexQuaternion& pRotation, const double pScaling[3]);
    void ReadExtras(KQexGltfReadNode& pNode);
    void ReadLimits(const KQexGltfJson::KValue& pFrom, KQexLimits& pLimits) const;
    void ReadDofs(const KQexGltfJson::KValue& pFrom, std::vector<KQexBoneDof>& pDofs) const;
    void ToAngles(const KQexGltfReadNode& pNode, const KQexQuaternion& pRotation, const double pNear[3], double pAngles[3]) const;
    bool ReadTake(size_t pIndex);
    void ReadTracks(const KQexGltfJson::KValue& pAnimation, const std::string& pName, std::vector<KQexGltfReadTrack>& pTracks);
    KQexGltfReadTrack ReadTrack(const KQexGltfJson::KValue& pSampler, const std::string& pName, KQexGltfReadNode* pTarget, int pProperty);
    std::shared_ptr<const std::vector<double>> GetTimes(size_t pAccessor, const std::string& pName);
    KQexSampling                               FindSampling(const std::vector<KQexGltfReadTrack>& pTracks) const;
    void                                       FillCurves(KQexAnimStack* pStack, KQexGltfReadTrack& pTrack, const KQexSampling& pSampling);
    void                                       Spend(double pKeys, const std::string& pName);
    void                                       Warn(const std::string& pText) { mFile.Report(KQexTextMessage::eWARNING, pText); }

    KQexFileGltf&                                                mFile;
    KQexGltfSource&                                              mSource;
    KQexScene*                                                   mScene;
    const KQexGltfReadOptions&                                   mOptions;
    KQexGltfJson::KValue                                         mRoot;
    KQexGltfAccessors                                            mAccessors;
    std::vector<KQexGltfReadNode>                                mNodes;
    std::vector<KQexGltfJson::KValue>                            mAnimations;
    std::vector<KQexNode*>                                       mRoots; ///< Not yet below a node of the scene.
    std::vector<KQexGltfTake>                                    mTakes;
    KQexBoneDofs                                                 mBoneDofs;
    KQexUniqueNames                                              mTakeNames;
    std::map<size_t, std::shared_ptr<const std::vector<double>>> mTimes;       ///< Key times by accessor.
    double                                                       mSpent = 0.0; ///< Keys looked at and made.
};

/// Exactly \p pCount finite numbers. False when \p pFrom is missing; throws when it is anything else.
bool GltfNumbers(const KQexGltfJson::KValue& pFrom, int pCount, double* pResult, const std::string& pName);

/// Makes \p pRotation a unit quaternion; false, and identity, when it has no length.
bool GltfNormalize(KQexQuaternion& pRotation);

} // namespace qexsdk

#endif
