#ifndef QEXSCENE_KQEXNODELIMITS_H
#define QEXSCENE_KQEXNODELIMITS_H

#include <qexscene/kqexlimits.h>

namespace qexsdk
{

class KQexNode;

/// The limits of a node's transform. They only describe the joint; the evaluator does not clamp to them.
class QEX_API KQexNodeLimits
{
public:
    /// \param pNode the node whose limits these are.
    explicit KQexNodeLimits(KQexNode* pNode) : mLimitedNode(pNode) {}
    KQexNodeLimits(const KQexNodeLimits&) = delete;
    KQexNodeLimits& operator=(const KQexNodeLimits&) = delete;

    /// \name Enabling each group.
    /// \{
    void SetTranslationLimitActive(bool pActive) { mTranslationLimits.SetActive(pActive); } ///< mTranslationLimits.SetActive
    bool GetTranslationLimitActive() const { return mTranslationLimits.GetActive(); }       ///< mTranslationLimits.GetActive
    void SetRotationLimitActive(bool pActive) { mRotationLimits.SetActive(pActive); }       ///< mRotationLimits.SetActive
    bool GetRotationLimitActive() const { return mRotationLimits.GetActive(); }             ///< mRotationLimits.GetActive
    void SetScalingLimitActive(bool pActive) { mScalingLimits.SetActive(pActive); }         ///< mScalingLimits.SetActive
    bool GetScalingLimitActive() const { return mScalingLimits.GetActive(); }               ///< mScalingLimits.GetActive
    /// \}

    KQexLimits mTranslationLimits; ///< Centimetres, parent's space.
    KQexLimits mRotationLimits;    ///< Degrees about the node's own axes, after its pre-rotation.
    KQexLimits mScalingLimits;     ///< Factors.
    KQexNode*  mLimitedNode;       ///< The node whose limits these are.
};

} // namespace qexsdk

#endif
