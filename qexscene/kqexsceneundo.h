#ifndef QEXSCENE_KQEXSCENEUNDO_H
#define QEXSCENE_KQEXSCENEUNDO_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexscene.h>

namespace qexsdk
{

/// Restores an evaluator's current animation stack on destruction.
class KQexContextGuard
{
public:
    /// \p pEvaluator must outlive the guard.
    explicit KQexContextGuard(KQexAnimEvaluator* pEvaluator) : mEvaluator(pEvaluator), mStack(pEvaluator->GetContext()) {}
    ~KQexContextGuard() { mEvaluator->SetContext(mStack); }
    KQexContextGuard(const KQexContextGuard&) = delete;
    KQexContextGuard& operator=(const KQexContextGuard&) = delete;

private:
    KQexAnimEvaluator* mEvaluator;
    KQexAnimStack*     mStack;
};

/// Undoes what a reader added to a scene, unless Keep() is called: on destruction it destroys every object created since its
/// construction and restores the current animation stack. Values and curves of older objects are not restored.
class QEX_API KQexSceneUndo
{
public:
    /// Null: nothing to undo.
    explicit KQexSceneUndo(KQexScene* pScene);
    ~KQexSceneUndo();
    KQexSceneUndo(const KQexSceneUndo&) = delete;
    KQexSceneUndo& operator=(const KQexSceneUndo&) = delete;

    /// Keeps what was added.
    void Keep() { mScene = nullptr; }

    /// Whether destruction will undo.
    bool IsArmed() const { return mScene != nullptr; }

private:
    KQexScene*        mScene;
    const KQexObject* mLast = nullptr; ///< The newest object at construction; never null, since a scene has a root node.
    KQexAnimStack*    mContext = nullptr;
};

} // namespace qexsdk

#endif
