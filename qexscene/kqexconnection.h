#ifndef QEXSCENE_KQEXCONNECTION_H
#define QEXSCENE_KQEXCONNECTION_H

#include <qexscene/kqexlist.h>

namespace qexsdk
{

class KQexObject;
class KQexPropertyData;

/// One connection: an object that drives a property (a curve a channel, a curve node a node's property). It is known to
/// both ends, so that either can end and take it along in O(1).
class KQexConnection
{
public:
    /// Connects \p pSrc to \p pDst, after the connections that \p pDst has. Null when memory runs out.
    static KQexConnection* Make(KQexObject* pSrc, KQexPropertyData* pDst) noexcept;

    /// Takes the connection out of both ends and frees it.
    void Remove() noexcept;

    KQexObject*                  mSrc = nullptr;     ///< The object that drives.
    KQexPropertyData*            mDst = nullptr;     ///< The property that is driven.
    KQexConnection*              mPrevDst = nullptr; ///< Neighbours among the connections of the same source.
    KQexConnection*              mNextDst = nullptr; ///< The same, behind this one.
    KQexListHook<KQexConnection> mSrcHook;           ///< Place among the connections of the same property.

private:
    void TouchScene() const noexcept;
};

} // namespace qexsdk

#endif
