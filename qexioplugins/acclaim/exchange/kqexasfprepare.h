#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFPREPARE_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFPREPARE_H

#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A bone of an extracted skeleton and the host node that it was made for; null for a bone that extraction put in front of another.
struct KQexAsfOrigin
{
    HKQexAsfNode mBone; ///< The bone; the skeleton owns it.
    KQexNode*    mNode; ///< The node it was made for, or null; the host scene owns it.
};

/// Makes an extracted skeleton ready to be written: see KQexExportAcclaimOptions::mServe. All steps change the model only.
class KQexAsfPreparation
{
public:
    /// \p pScene was extracted from the tree at \p pRoot with \p pHasTranslations for extraction's flag.
    KQexAsfPreparation(KQexAsfScene* pScene, KQexNode* pRoot, const KQexAnimLayer* pLayer, const KQexExportAcclaimOptions& pOptions,
                       bool pHasTranslations);

    /// Runs all steps. False when memory runs out; the model is then unspecified, and still releases all it holds.
    bool Run();

    /// All bones with their nodes, in pre-order, the root first.
    const std::vector<KQexAsfOrigin>& GetOrigins() const { return mOrigins; }

    /// What the user should know, one text each.
    const std::vector<std::string>& GetWarnings() const { return mWarnings; }

private:
    void FindOrigins();
    void TellDroppedLeaves();
    void MakeNamesValid();
    void NameBone(HKQexAsfNode pBone, const std::string& pName);
    bool AddSharedStart();
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
