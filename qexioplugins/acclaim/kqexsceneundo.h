#ifndef QEXIOPLUGINS_ACCLAIM_KQEXSCENEUNDO_H
#define QEXIOPLUGINS_ACCLAIM_KQEXSCENEUNDO_H

#include <qexscene/kqexscene.h>

namespace qexsdk
{

/// Takes back what was made in a scene, unless it is told to keep it: at its end it destroys every object younger than itself and
/// makes the animation stack current again that was. Values and curves of older objects are not looked at.
class KQexSceneUndo
{
public:
    /// Null: nothing to take back.
    explicit KQexSceneUndo(KQexScene* pScene);
    ~KQexSceneUndo();
    KQexSceneUndo(const KQexSceneUndo&) = delete;
    KQexSceneUndo& operator=(const KQexSceneUndo&) = delete;

    /// What was made stays.
    void Keep() { mScene = nullptr; }

    /// Whether Keep() was not called yet.
    bool IsArmed() const { return mScene != nullptr; }

private:
    KQexScene*        mScene;
    const KQexObject* mLast = nullptr; ///< The youngest object there was.
    KQexAnimStack*    mContext = nullptr;
};

} // namespace qexsdk

#endif
