#ifndef QEXSCENE_KQEXSCENEUNDO_H
#define QEXSCENE_KQEXSCENEUNDO_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexscene.h>

namespace qexsdk
{

/// Makes an evaluator's animation stack current again, at its end, that was current at its beginning.
class KQexContextGuard
{
public:
    /// \p pEvaluator has to outlive this.
    explicit KQexContextGuard(KQexAnimEvaluator* pEvaluator) : mEvaluator(pEvaluator), mStack(pEvaluator->GetContext()) {}
    ~KQexContextGuard() { mEvaluator->SetContext(mStack); }
    KQexContextGuard(const KQexContextGuard&) = delete;
    KQexContextGuard& operator=(const KQexContextGuard&) = delete;

private:
    KQexAnimEvaluator* mEvaluator;
    KQexAnimStack*     mStack;
};

/// Undoes what a reader added to a scene, unless Keep() is called: at its end it destroys every object younger than itself, and makes
/// the animation stack current again that was. Values and curves of older objects are not restored.
class QEX_API KQexSceneUndo
{
public:
    /// Null: nothing to undo.
    explicit KQexSceneUndo(KQexScene* pScene);
    ~KQexSceneUndo();
    KQexSceneUndo(const KQexSceneUndo&) = delete;
    KQexSceneUndo& operator=(const KQexSceneUndo&) = delete;

    /// What was added stays.
    void Keep() { mScene = nullptr; }

    /// Whether there is something to undo still.
    bool IsArmed() const { return mScene != nullptr; }

private:
    KQexScene*        mScene;
    const KQexObject* mLast = nullptr; ///< The youngest object at the beginning; there is one, the root node.
    KQexAnimStack*    mContext = nullptr;
};

} // namespace qexsdk

#endif
