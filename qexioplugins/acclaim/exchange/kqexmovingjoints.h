#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXMOVINGJOINTS_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXMOVINGJOINTS_H

#include <qexscene/kqexscene.h>

#include <unordered_map>
#include <vector>

namespace qexsdk
{

/// Whether the node is not at its parent's position at rest.
bool HasOffset(const KQexNode& pNode);

/// What moves in a tree in any of several takes, each joint relative to its parent. A snapshot.
class KQexMovingJoints
{
public:
    /// Examines the nodes at and below \p pRoot. Null among \p pTakes is the rest pose. May throw std::bad_alloc.
    KQexMovingJoints(const KQexNode* pRoot, const std::vector<KQexAnimStack*>& pTakes);

    /// Whether the joint's position relative to its parent changes: its translation, or the scaling of a node above it.
    bool Translates(const KQexNode* pNode) const { return Has(pNode, eTRANSLATES); }

    /// Whether its rotation changes.
    bool Rotates(const KQexNode* pNode) const { return Has(pNode, eROTATES); }

    /// Either of the two.
    bool Moves(const KQexNode* pNode) const { return Has(pNode, eTRANSLATES | eROTATES); }

    /// Whether neither changes, nor the scaling of the node or of one above it.
    bool IsStill(const KQexNode* pNode) const { return !Has(pNode, eTRANSLATES | eROTATES | eSCALES); }

    /// Whether any joint below the root translates.
    bool HasTranslations() const { return mHasTranslations; }

    /// Whether a node's scaling changes, or differs from axis to axis.
    bool HasUnevenScaling() const { return mHasUnevenScaling; }

private:
    enum EFlag : unsigned
    {
        eNONE = 0,
        eTRANSLATES = 1,
        eROTATES = 2,
        eSCALES = 4, ///< The scaling of the node or of one above it changes.
        eUNEVEN = 8, ///< That scaling differs from axis to axis.
        eSHEARS = 16 ///< Below such a node, the node or one above it rotates, which changes the offsets below it.
    };

    bool     Has(const KQexNode* pNode, unsigned pFlags) const;
    unsigned FlagsOf(const KQexNode* pNode) const;
    unsigned OwnFlags(const KQexNode& pNode) const;
    unsigned AllFlags(const KQexNode& pNode, unsigned pParentFlags) const;

    std::vector<const KQexAnimLayer*>             mLayers; ///< Of the takes.
    std::unordered_map<const KQexNode*, unsigned> mFlags;  ///< Nodes without flags are left out.
    bool                                          mHasTranslations = false;
    bool                                          mHasUnevenScaling = false;
};

} // namespace qexsdk

#endif
