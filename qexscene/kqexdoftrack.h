#ifndef QEXSCENE_KQEXDOFTRACK_H
#define QEXSCENE_KQEXDOFTRACK_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/ktime.h>
#include <qexscene/kqexbonedof.h>
#include <qexscene/kqexkeystore.h>

#include <string>
#include <vector>

namespace qexsdk
{

class KQexNode;

/// The values of a degree of freedom over a take, as its file has them: turns beyond 180 degrees included.
struct QEX_API KQexDofTrack
{
    std::string         mJoint;          ///< Name of the joint.
    const KQexNode*     mNode = nullptr; ///< Its node, owned by the scene; null as long as a motion has no scene.
    KQexBoneDof         mDof;            ///< Word and limits.
    const KQexKeyStore* mKeys = nullptr; ///< Degrees or centimetres; null: always mValue. Owned by the take's file or scene.
    double              mValue = 0.0;    ///< The value without keys.

    /// The value at \p pTime: linear between keys, the first or last key's before and after them. \p pCursor caches the position of that
    /// time among key times.
    double Evaluate(KTime pTime, KQexKeyTimes::KCursor& pCursor) const
    {
        return mKeys != nullptr && mKeys->GetCount() > 0 ? mKeys->Evaluate(pTime.Get(), pCursor) : mValue;
    }
};

/// The degrees of freedom of a take with the keys that they refer to. 4 bytes for each value.
struct QEX_API KQexDofValues
{
    KQexDofValues() = default;
    KQexDofValues(const KQexDofValues&) = delete;
    KQexDofValues& operator=(const KQexDofValues&) = delete;

    std::vector<KQexDofTrack> mTracks; ///< Joint by joint.
    std::vector<KQexKeyStore> mKeys;   ///< Their keys, one each.
};

} // namespace qexsdk

#endif
