#ifndef QEXIOPLUGINS_ACCLAIM_KQEXSKELETONMATCH_H
#define QEXIOPLUGINS_ACCLAIM_KQEXSKELETONMATCH_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>
#include <vector>

namespace qexsdk
{

/// How many of the joints of a skeleton and of a motion have the same names, the root apart: whether the two belong together.
struct QEX_API KQexSkeletonMatch
{
    std::size_t              mMatched = 0;    ///< Moving joints of the side that has fewer of them which the other has, too.
    std::size_t              mInSkeleton = 0; ///< Bones with DOFs.
    std::size_t              mInMotion = 0;   ///< Joints that the motion moves; in a motion file, those that it has values for.
    std::vector<std::string> mOnlyInSkeleton; ///< The first kNamed of those that do not match.
    std::vector<std::string> mOnlyInMotion;   ///< The first kNamed of those that do not match.

    static constexpr std::size_t kNamed = 3; ///< Names kept of each side.

    /// False when fewer than half of the moving joints of the side that has fewer of them match.
    bool IsPlausible() const;

    /// Adds a joint without a match to one side's names.
    static void AddName(std::vector<std::string>& pNames, const std::string& pName);

    /// An error text: how many match, and what the joints of each side are called.
    std::string Describe() const;
};

} // namespace qexsdk

#endif
