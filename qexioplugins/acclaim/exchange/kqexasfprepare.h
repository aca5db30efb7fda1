#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFPREPARE_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFPREPARE_H

#include <qexioplugins/acclaim/exchange/kqexasforigins.h>
#include <qexioplugins/acclaim/exchange/kqexmovingjoints.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <string>
#include <unordered_set>
#include <vector>

namespace qexsdk
{

/// Adapts an extracted skeleton for the file: see KQexExportAcclaimOptions::mAdaptForFile. Changes the model only.
class KQexAsfPreparation
{
public:
    /// \p pScene was extracted from the tree at \p pRoot, with translation DOFs if \p pHasTranslations and with the ends that
    /// AddEndNodes() gave \p pLeaves. The evaluator's current take is that of the extraction. All arguments must outlive this.
    KQexAsfPreparation(KQexAsfScene* pScene, KQexNode* pRoot, const KQexMovingJoints& pMoving, const KQexExportAcclaimOptions& pOptions,
                       bool pHasTranslations, const std::unordered_set<const KQexNode*>& pLeaves);

    /// Runs all steps. False when memory runs out; the model is then unspecified, but can be destroyed without leaks.
    bool Run();

    /// All bones with their nodes, in pre-order, the root first.
    const std::vector<KQexAsfOrigin>& GetOrigins() const { return mOrigins; }

    /// Names of the bones whose ends were added.
    const std::vector<std::string>& GetAddedEnds() const { return mAddedEnds; }

    /// Losses, one text each.
    const std::vector<std::string>& GetWarnings() const { return mWarnings; }
    /// What was changed on purpose, one text each.
    const std::vector<std::string>& GetNotes() const { return mNotes; }

private:
    bool RunSteps();
    bool AddSharedOffset();
    void SetDofs(const KQexAsfOrigin& pOrigin);
    void SetKnownDofs(KQexAsfNode& pBone, const std::vector<KQexBoneDof>& pDofs) const;
    void MoveLimits(KQexAsfNode& pBone) const;
    bool IsDummy(const KQexAsfOrigin& pOrigin) const;
    void Round(bool pLeaves);
    void NoteAddedEnds(double pLength);
    void WarnDroppedLeaves();

    KQexAsfScene*                              mScene;
    KQexNode*                                  mRoot;
    const KQexMovingJoints&                    mMoving;
    const KQexExportAcclaimOptions&            mOptions;
    bool                                       mHasTranslations;
    const std::unordered_set<const KQexNode*>& mLeaves;
    std::vector<KQexAsfOrigin>                 mOrigins;
    std::vector<std::string>                   mAddedEnds;
    std::vector<std::string>                   mWarnings;
    std::vector<std::string>                   mNotes;
};

} // namespace qexsdk

#endif
