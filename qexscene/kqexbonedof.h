#ifndef QEXSCENE_KQEXBONEDOF_H
#define QEXSCENE_KQEXBONEDOF_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cmath>
#include <limits>
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

    /// The lower limit; -infinity if there is none.
    double GetMin() const { return mHasMin ? mMin : -std::numeric_limits<double>::infinity(); }
    /// The upper limit; infinity if there is none.
    double GetMax() const { return mHasMax ? mMax : std::numeric_limits<double>::infinity(); }

    /// How far a value is beyond a limit, negative below the lower one; 0 within both. A value that exceeds a limit by no more than 1e-6
    /// degrees or centimetres, or a ten-millionth of it, is at the limit: files have about six digits, keys single precision.
    /// \param pValue degrees or centimetres
    /// \param pUnit units of the value and the limits per degree or centimetre, if they are others
    double GetExcess(double pValue, double pUnit = 1.0) const
    {
        const auto lTolerance = [pUnit](double pLimit)
        {
            return 1e-6 * pUnit + 1e-7 * std::fabs(pLimit);
        };
        return mHasMin && pValue < mMin - lTolerance(mMin)   ? pValue - mMin
               : mHasMax && pValue > mMax + lTolerance(mMax) ? pValue - mMax
                                                             : 0.0;
    }
};

/// Degrees of freedom by bone name, which the scene does not store; in the order in which the bone's rotations are applied.
using KQexBoneDofs = std::unordered_map<std::string, std::vector<KQexBoneDof>>;

} // namespace qexsdk

#endif
