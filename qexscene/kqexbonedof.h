#ifndef QEXSCENE_KQEXBONEDOF_H
#define QEXSCENE_KQEXBONEDOF_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace qexsdk
{

/// A degree of freedom of a bone, as skeleton files list it, with its limits.
struct QEX_API KQexBoneDof
{
    std::string mWord;           ///< "tx", "ty", "tz", "rx", "ry" or "rz".
    bool        mHasMin = false; ///< Whether mMin limits it.
    bool        mHasMax = false; ///< Whether mMax limits it.
    double      mMin = 0.0;      ///< Degrees or centimetres.
    double      mMax = 0.0;      ///< Degrees or centimetres.
};

/// Degrees of freedom by bone name, which the scene does not store; in the order in which the bone's rotations are applied.
using KQexBoneDofs = std::unordered_map<std::string, std::vector<KQexBoneDof>>;

} // namespace qexsdk

#endif
