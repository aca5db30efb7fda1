#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFPREPARE_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFPREPARE_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A bone of an extracted skeleton and the host node that it was made for.
struct KQexAsfOrigin
{
    HKQexAsfNode mBone; ///< The bone; the skeleton owns it.
    KQexNode*    mNode; ///< The node, owned by the host scene; null for a generated bone (a dummy).
};

/// Adapts an extracted skeleton for the file: see KQexExportAcclaimOptions::mAdaptForFile. Changes the model only.
class KQexAsfPreparation
{
public:
    /// \p pScene was extracted from the tree at \p pRoot, with translation DOFs if \p pHasTranslations.
    KQexAsfPreparation(KQexAsfScene* pScene, KQexNode* pRoot, const KQexAnimLayer* pLayer, const KQexExportAcclaimOptions& pOptions,
                       bool pHasTranslations);

    /// Runs all steps. False when memory runs out; the model is then unspecified, but can be destroyed without leaks.
    bool Run();

    /// All bones with their nodes, in pre-order, the root first.
    const std::vector<KQexAsfOrigin>& GetOrigins() const { return mOrigins; }

    /// Warnings for the user, one text each.
    const std::vector<std::string>& GetWarnings() const { return mWarnings; }

private:
    void FindOrigins();
    void WarnDroppedLeaves();
    void MakeNamesValid();
    void RenameBone(HKQexAsfNode pBone, const std::string& pName);
    bool AddSharedOffset();
    void SetDofs(const KQexAsfOrigin& pOrigin);
    void SetKnownDofs(KQexAsfNode& pBone, const std::vector<KQexBoneDof>& pDofs) const;
    void MoveLimits(KQexAsfNode& pBone) const;
    bool IsDummy(const KQexAsfOrigin& pOrigin) const;
    void SetUnit(KQexAsfNode& pBone) const;

    KQexAsfScene*                   mScene;
    KQexNode*                       mRoot;
    const KQexAnimLayer*            mLayer;
    const KQexExportAcclaimOptions& mOptions;
    bool                            mHasTranslations;
    std::vector<KQexAsfOrigin>      mOrigins;
    std::vector<std::string>        mWarnings;
};

} // namespace qexsdk

#endif
