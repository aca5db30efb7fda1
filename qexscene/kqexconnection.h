#ifndef QEXSCENE_KQEXCONNECTION_H
#define QEXSCENE_KQEXCONNECTION_H

#include <qexscene/kqexlist.h>

namespace qexsdk
{

class KQexObject;
class KQexPropertyData;

/// A connection from an object to the property that it drives (a curve to a channel, a curve node to a node's property). It is in a
/// list of each end, so either can remove it in O(1).
class KQexConnection
{
public:
    /// Connects \p pSrc to \p pDst, after the latter's other connections. Null when memory runs out.
    static KQexConnection* Make(KQexObject* pSrc, KQexPropertyData* pDst) noexcept;

    /// Removes the connection from both ends' lists and frees it.
    void Remove() noexcept;

    KQexObject*                  mSrc = nullptr;     ///< The driving object.
    KQexPropertyData*            mDst = nullptr;     ///< The driven property.
    KQexConnection*              mPrevDst = nullptr; ///< Previous connection of the same source.
    KQexConnection*              mNextDst = nullptr; ///< Next connection of the same source.
    KQexListHook<KQexConnection> mSrcHook;           ///< In the property's list of connections.

private:
    void TouchScene() const noexcept;
};

} // namespace qexsdk

#endif
