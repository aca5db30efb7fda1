#ifndef QEXIOPLUGINS_MOTION_KQEXTAKEGUARD_H
#define QEXIOPLUGINS_MOTION_KQEXTAKEGUARD_H

#include <qexscene/kqexscene.h>

namespace qexsdk
{

/// Puts an evaluator's current take back when it goes out of scope.
class KQexContextGuard
{
public:
    /// Remembers what is current; \p pEvaluator has to outlive this.
    explicit KQexContextGuard(KQexAnimEvaluator* pEvaluator) : mEvaluator(pEvaluator), mStack(pEvaluator->GetContext()) {}
    ~KQexContextGuard() { mEvaluator->SetContext(mStack); }
    KQexContextGuard(const KQexContextGuard&) = delete;
    KQexContextGuard& operator=(const KQexContextGuard&) = delete;

private:
    KQexAnimEvaluator* mEvaluator;
    KQexAnimStack*     mStack;
};

/// Takes the takes that a scene got since back out, and makes the former current one current again, unless Keep() was called:
/// for readers that leave the scene as it was when they fail.
class KQexTakeGuard
{
public:
    /// Remembers the takes of \p pScene, which has to outlive this.
    explicit KQexTakeGuard(KQexScene* pScene)
        : mScene(pScene), mCount(pScene->GetAnimStackCount()), mStack(pScene->GetEvaluator()->GetContext())
    {
    }
    ~KQexTakeGuard()
    {
        if (mKeep)
        {
            return;
        }
        while (mScene->GetAnimStackCount() > mCount)
        {
            mScene->GetAnimStack(mScene->GetAnimStackCount() - 1)->Destroy(true, false);
        }
        mScene->GetEvaluator()->SetContext(mStack);
    }
    KQexTakeGuard(const KQexTakeGuard&) = delete;
    KQexTakeGuard& operator=(const KQexTakeGuard&) = delete;

    /// The new takes stay.
    void Keep() { mKeep = true; }

private:
    KQexScene*     mScene;
    int            mCount;
    KQexAnimStack* mStack;
    bool           mKeep = false;
};

} // namespace qexsdk

#endif
