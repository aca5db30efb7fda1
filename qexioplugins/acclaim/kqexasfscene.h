#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFSCENE_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFSCENE_H

#include <qexioplugins/acclaim/kqexasfnode.h>

#include <memory>

namespace qexsdk
{

class KQexAsfScene;

/// Handle of a skeleton: a plain pointer.
using HKQexAsfScene = KQexAsfScene*;

/// One Acclaim skeleton: its name, its units and its tree of bones, and the conversions to and from host nodes.
///
/// Made by QexSdkNew<KQexAsfScene>(), released by Destroy() or QexSdkDelete. Owns the root bone and, through it, the whole
/// tree. A scene whose bones still own sampled curves is destroyed before the host scene that the curves were made in.
class QEX_API KQexAsfScene
{
public:
    /// An empty skeleton: no name, all units 1, no root.
    KQexAsfScene();

    /// Releases the root and with it every bone.
    virtual ~KQexAsfScene();

    /// Releases this object: the destructor, then the memory.
    virtual void Destroy();

    KQexAsfScene(const KQexAsfScene&) = delete;
    KQexAsfScene& operator=(const KQexAsfScene&) = delete;

    /// The name's buffer of 1024 characters; callers write the name into it.
    char* GetName();

    /// The root bone, or null.
    HKQexAsfNode GetRootNode();

    /// Builds host skeleton nodes for all bones (see KQexAsfNode::ASFToQEX). The caller adds the result to a parent.
    /// \return the root bone's node; null without a root or when memory ran out.
    KQexNode* ASFToQEX(KQexScene* pScene, const char* pTakeName, bool pSetLimits, bool pSetRotatePivotOffet, bool pSetPreRotation);

    /// Binds the skeleton to the hierarchy below \p pRootNode: searches it for a node with the root bone's name and calls
    /// KQexAsfNode::MergeASFToQEX() with that node's parent. Without such a node, builds a new skeleton below \p pRootNode.
    /// \return false when memory ran out for a part
    bool MergeASFToQEX(KQexScene* pScene, KQexNode* pRootNode, const char* pTakeName, bool pSetLimits, bool pSetRotatePivotOffet,
                       bool pSetPreRotation);

    /// Fills this newly constructed scene from the host tree at \p pRootNode: a bone for every node below it except leaves that are
    /// not animated, the root bone named "root", and a dummy (the child's name followed by "Dummy") above every child of a node
    /// whose children start at different positions, and above the root's only child if it has an offset. An earlier mRoot is
    /// overwritten, not destroyed. Names of more than 255 characters are cut.
    /// \param pRootNode the node that becomes the root bone; nothing of the host scene changes
    /// \param pTAnimated gives every bone but the root the three translation DOFs and the host's translation limits
    /// \param pBaseScale multiplied into the root node's local scaling, and so into every length
    /// \param pExportDefaultsAsBaseTR the pose at time zero is the rest pose; else only rotation offsets and pre-rotations are used
    /// \return true; false, and no root, only when memory runs out
    bool QEXToASF(KQexNode* pRootNode, bool pTAnimated, KQexVector4 pBaseScale, bool pExportDefaultsAsBaseTR);

    /// Pairs the bones with the host nodes of the same names below \p pRootNode, which is paired with the root whatever its name:
    /// a bone's node is searched at any depth below the node of its nearest paired ancestor. A paired bone gets that ancestor's
    /// axis as its parent axis and caches its node's offsets and curve nodes; other bones are unchanged.
    /// \return true, even when no node was found; false only when memory runs out
    bool MergeQEXToASF(KQexNode* pRootNode);

    char         mName[1024]; ///< Skeleton name, NUL-terminated. Empty by default.
    double       mMassUnit;   ///< Mass unit factor of the file. 1 by default.
    double       mLengthUnit; ///< Length unit factor of the file. 1 by default.
    double       mAngleUnit;  ///< Degrees per angle unit of the file, for motion; never applied to the skeleton. 1 by default.
    HKQexAsfNode mRoot;       ///< Root bone, owned; null by default.

private:
    KQexAsfNode* CreateRoot(KQexNode* pQexNode);
    bool RecursiveCreate(KQexNode* pQexNode, KQexAsfNode* pAsfNode, bool pTAnimated, KQexVector4 pBaseScale, bool pExportDefaultsAsBaseTR);
    void SetupNode(KQexAsfNode* pAsfNode, KQexVector4 pT, KQexVector4 pR, KQexVector4 pGS);
    bool RecursiveMerge(KQexNode* pQexNode, KQexAsfNode* pAsfNode, KQexAsfNode* pAsfReferenceNode);
};

/// Releases a skeleton through its own Destroy().
struct QEX_API KQexAsfSceneDestroyer
{
    /// Releases the skeleton with all its bones; null is allowed.
    void operator()(KQexAsfScene* pScene) const;
};

/// A skeleton that is released with its owner.
using KQexAsfSceneOwner = std::unique_ptr<KQexAsfScene, KQexAsfSceneDestroyer>;

} // namespace qexsdk

#endif
