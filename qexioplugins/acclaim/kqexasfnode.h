#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFNODE_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFNODE_H

#include <kbaselib/kbase/karray.h>
#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/kmemory.h>
#include <kbaselib/kmath/kgeom.h>
#include <qexscene/kqexscene.h>

namespace qexsdk
{

class KQexAsfNode;

/// Handle of a bone: a plain pointer.
using HKQexAsfNode = KQexAsfNode*;

/// One bone of an Acclaim skeleton: its record in the file (name, degrees of freedom, limits, axis, direction, length), the
/// frames computed from that, and the host animation objects with its motion.
///
/// Degrees of freedom (DOFs) are integer codes: 0 tx, 1 ty, 2 tz, 3 rz, 4 ry, 5 rx. Rotation code c rotates about axis 5 - c
/// (x = 0, y = 1, z = 2). Angles are degrees. Matrices and vectors of the bone's own frame are global, in the rest pose;
/// lengths are those of the scene that the bone belongs to (centimetres after reading a file).
///
/// A bone owns its children and the curves it samples, and destroys both. It is made by QexSdkNew<KQexAsfNode>() and
/// released by QexSdkDelete, and is used by one thread at a time. No operation's stack use grows with the depth of the tree.
///
/// The two frame flags, the same in every operation that takes them:
/// - \c pSetRotatePivotOffet: the bone's offset from its parent is stored in the host node's rotation offset, not in its
///   local translation;
/// - \c pSetPreRotation: the bone's axis frame is stored in the host node's pre-rotation, not folded into its rotation.
class QEX_API KQexAsfNode
{
public:
    /// Sets the defaults stated at the fields. mOrderBuf and mLimitsBuf are left uninitialised.
    KQexAsfNode();

    /// Destroys the curves still owned (translation x, rotation x, translation y and so on), then the children in index order,
    /// each with its own curves and children. Host nodes and curve nodes stay with their scene.
    ~KQexAsfNode();

    KQexAsfNode(const KQexAsfNode&) = delete;
    KQexAsfNode& operator=(const KQexAsfNode&) = delete;

    /// \name Tree
    ///@{

    /// The child at index \p pIndex, or null past the last. A negative index is not checked.
    HKQexAsfNode GetChild(int pIndex);

    /// The first bone named \p pName (case-sensitive) in this subtree, itself first, in pre-order; null when there is none.
    HKQexAsfNode Find(const char* pName);

    /// Appends \p pChild, takes ownership and sets its mParent to this bone. Neither checks for duplicates nor detaches the child
    /// from an earlier parent. False, with the tree and the child unchanged, when memory runs out.
    bool AddChild(HKQexAsfNode pChild);

    /// Removes the first entry equal to \p pChild from the children; the caller owns it afterwards. Its mParent becomes null even
    /// when it is not a child of this bone.
    void RemoveChild(HKQexAsfNode pChild);

    ///@}
    /// \name Accessors
    ///@{

    /// Sets the scene in which curves will be made. Not owned.
    void SetScene(KQexScene* pScene);

    /// Whether the bone's limits are invalid: the writer then prints every bound as -inf or inf.
    bool GetInvalidLimits();
    /// Sets what GetInvalidLimits() returns.
    void SetInvalidLimits(bool pInvalid);

    /// Rotation offset of the host node, as cached by GetCurveNodePointers().
    KQexVector4& GetTOffset();
    /// Pre-rotation of the host node (XYZ angles), as cached by GetCurveNodePointers().
    KQexVector4& GetPreRotation();
    /// Post-rotation of the host node (XYZ angles), as cached by GetCurveNodePointers().
    KQexVector4& GetPostRotation();

    ///@}
    /// \name Frames and clean-up
    ///@{

    /// Computes the frames of this bone and of all below it: mPositionV, the parent's fields, and the local translation mLT
    /// and rotation mLR of the host node. Called on the root, with mDirectionV, mLength, mAxisRM, mAxisRMInv and the
    /// DOF list of every bone set, and with the root's position in its mPositionV.
    ///
    /// A flag that is true leaves its quantity (mLT, mLR) unchanged; with both true both are zeroed, and the parent's axis fields
    /// are unchanged.
    void SetupPosition(bool pSetRotatePivotOffet, bool pSetPreRotation);

    /// Removes every bone below this one that has no DOF at all. Its children go to the end of its parent's children, last
    /// one first, with the removed bone's offset added to theirs and its parent's axis as their parent axis; mLT and mLR follow
    /// unless their flag is true. Works bottom-up, so that chains of such bones are removed as a whole. Linear in the number of
    /// bones.
    /// \return false when memory ran out for the children of some; those stay, with their children
    bool RemoveDummy(bool pSetRotatePivotOffet, bool pSetPreRotation);

    /// Removes every bone below this one that has no children, a length of exactly 0 and neither animated translation nor
    /// animated rotation. A bone that loses its last child here stays. Linear in the number of bones.
    void RemoveEndSite();

    ///@}
    /// \name Import: bones to host nodes
    ///@{

    /// Sets the rotation order of \p pQexNode, activates its rotation, and sets its rotation offset and pre-rotation according to
    /// the flags. At a root with \p pSetRotatePivotOffet, mParentPositionV becomes the bone's own mPositionV.
    void SetDoFs(KQexNode* pQexNode, bool pSetRotatePivotOffet, bool pSetPreRotation);

    /// Copies the bone's active limits to \p pQexNode, values as stored: translation limits only with \p pSetRotatePivotOffet,
    /// rotation limits only with \p pSetPreRotation, because only then do the node's values mean what the file's limits mean.
    void SetLimits(KQexNode* pQexNode, bool pSetRotatePivotOffet, bool pSetPreRotation);

    /// Makes a host skeleton node for this bone and for every bone below it, connects the sampled curves for the take
    /// \p pTakeName, and gives a leaf of positive length an end node (its name followed by "_End"). The new node has no parent.
    /// \return the new node, owned by \p pScene; null, with the nodes made so far destroyed, when memory runs out.
    KQexNode* ASFToQEX(KQexScene* pScene, const char* pTakeName, bool pSetLimits, bool pSetRotatePivotOffet, bool pSetPreRotation);

    /// Binds this subtree to the children of \p pParent: a child node with a bone's name and a skeleton attribute only gets the
    /// bone's default values and curves, and the bone's children are bound below it; any other bone is built as by ASFToQEX() and
    /// added to its parent bone's node.
    /// \return false when memory ran out for a part, which is then missing
    bool MergeASFToQEX(KQexScene* pScene, KQexNode* pParent, const char* pTakeName, bool pSetLimits, bool pSetRotatePivotOffet,
                       bool pSetPreRotation);

    ///@}
    /// \name Motion into curves
    /// CreateDataFromDOF() and StartSamplingData() on the root, AddSampleFromDOF() on every bone for every frame,
    /// StopSamplingData() on the root, then the import connects the curves.
    ///@{

    /// Makes empty curves in \p pScene for this bone and all below it: three for translation when the bone has a translation
    /// DOF, three for rotation when it has a rotation DOF, named after the bone with _tx … _rz. Curves that a bone still owns
    /// are destroyed first.
    /// \return false when memory ran out for a group of three, which is then missing and gets no keys
    bool CreateDataFromDOF(KQexScene* pScene);

    /// Starts a sampling pass. Changes nothing; exists for symmetry with StopSamplingData().
    void StartSamplingData();

    /// Adds keys at \p pTime for one frame of this bone's motion; no other bone changes.
    /// \param pDOF mOrderCount values, in the order of mOrderBuf
    /// \param pTime time of the keys; fastest when ascending
    /// \param pLengthUnit factor of every translation value
    /// \param pAngleUnit factor of every rotation value, to degrees
    /// \param pSetRotatePivotOffet,pSetPreRotation the same as for SetupPosition() and for the import
    /// \return false when memory ran out for a key
    bool AddSampleFromDOF(const double* pDOF, const KTime& pTime, double pLengthUnit, double pAngleUnit, bool pSetRotatePivotOffet,
                          bool pSetPreRotation);

    /// Ends the sampling pass for this bone and all below it: destroys the three curves of a group whose first curve has fewer
    /// than two keys, and applies the library's rotation filter and key reducer to the others.
    void StopSamplingData();

    /// Writes mLT and mLR to the node's local translation and rotation, and connects the sampled curves to them for the take
    /// \p pTakeName. The bone no longer owns connected curves; where the take has no curve node, an assertion is reported and the
    /// bone keeps its curves.
    /// \return false when memory ran out and the bone kept curves
    bool SetKFCurves(KQexNode* pQexNode, const char* pTakeName);

    /// Caches offset, pre- and post-rotation of \p pQexNode, and the curve nodes of its local translation, rotation and scaling
    /// on the first layer of the current animation stack (null where there is none). Does nothing for a null node.
    void GetCurveNodePointers(KQexNode* pQexNode);

    ///@}

    char       mName[256];   ///< Name, NUL-terminated. All NULs by default, so that 255 characters may be copied in without a terminator.
    int        mOrderCount;  ///< Number of valid entries in mOrderBuf, 0 to 6.
    int        mOrderBuf[6]; ///< DOF codes in the order of the file. Not initialised.
    double     mLimitsBuf[6][2];    ///< [DOF code][0 lower, 1 upper], in file units. Not initialised.
    bool       mLimitsActive[6][2]; ///< [DOF code][0 lower, 1 upper]: whether that bound is finite. All false.
    int        mOrientationOrder;   ///< Rotation order code of the bone's axis line.
    KgeRVector mOrientationV;       ///< Axis angles in degrees.
    KgeTVector mPositionV;          ///< End of the bone relative to its start, global axes; at the root its position.
    KgeTVector mDirectionV;         ///< Direction, global axes.
    double     mLength;             ///< Length.

    HKQexAsfNode                 mParent;   ///< Parent bone, not owned; null at the root.
    KArrayTemplate<KQexAsfNode*> mChildBuf; ///< Children in file order, owned.

    KgeRMatrix         mAxisRM;            ///< Rotation of the bone's axis frame, global.
    KgeRMatrix         mAxisRMInv;         ///< Inverse of mAxisRM.
    KgeRMatrix         mParentAxisRM;      ///< The parent's mAxisRM, as SetupPosition() copied it.
    KgeRMatrix         mParentAxisRMInv;   ///< The parent's mAxisRMInv, as SetupPosition() copied it.
    KgeTVector         mParentPositionV;   ///< The parent's mPositionV: start of this bone relative to the parent's start.
    KgeTVector         mLT;                ///< Local translation of the bone's host node.
    KgeRVector         mLR;                ///< Local rotation of the bone's host node: angles about x, y, z in degrees.
    KQexAnimCurveNode* mLTNode;            ///< Host translation curve node, not owned.
    KQexAnimCurveNode* mLRNode;            ///< Host rotation curve node, not owned.
    KQexAnimCurveNode* mLSNode;            ///< Host scaling curve node, not owned.
    KQexVector4        mTOffset;           ///< Rotation offset of the host node (export).
    KQexVector4        mPreRotation;       ///< Pre-rotation of the host node (export).
    KQexVector4        mPostRotation;      ///< Post-rotation of the host node (export).
    KQexAnimCurve*     mLTData[3];         ///< Translation curves x, y, z being sampled, owned; null when absent.
    KQexAnimCurve*     mLRData[3];         ///< Rotation curves x, y, z being sampled, owned; null when absent.
    bool               mInvalidateRLimits; ///< Limits are invalid. False.
    KQexScene*         mScene;             ///< Scene in which curves are made, not owned.

private:
    friend class KQexAsfWalk;

    // Parent link of the walk in progress (see kqexasfwalk.h). Kept in the bone, so that a walk allocates nothing, and apart from
    // mParent, which may point elsewhere in a bone that was added or removed twice.
    int          mWalkIndex;
    HKQexAsfNode mWalkParent;
};

} // namespace qexsdk

#endif
