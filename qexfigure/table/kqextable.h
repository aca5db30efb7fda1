#ifndef QEXFIGURE_TABLE_KQEXTABLE_H
#define QEXFIGURE_TABLE_KQEXTABLE_H

#include <qexscene/kqexbonedof.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace qexsdk
{

/// A column group of a table: a joint, or a degree of freedom.
struct QEX_API KQexTableItem
{
    std::string mName;         ///< "lfemur", "lfemur.rx".
    std::string mBone;         ///< Its joint's name.
    int         mParent = -1;  ///< Index of the nearest ancestor of a joint that is an item; -1 for none.
    int         mDecimals = 5; ///< Digits of its numbers after the point.
    KQexBoneDof mDof;          ///< Of a degree of freedom, limits in the table's unit.
    double      mPerUnit = 1;  ///< The table's units per degree or centimetre.
    std::string mUnit;         ///< Of a degree of freedom.
};

/// Head of a table: in each frame the same numbers of each item.
struct QEX_API KQexTable
{
    std::string                                      mKind;            ///< "positions", "rotations" or "angles".
    std::string                                      mArray;           ///< Name of the numbers in an .npz file.
    std::string                                      mSkeleton;        ///< Path.
    std::string                                      mMotion;          ///< Path.
    std::vector<std::pair<std::string, std::string>> mWords;           ///< Further keys and words of a JSON object.
    double                                           mRate = 0;        ///< Frames per second.
    size_t                                           mFrameCount = 0;  ///< Rows, or rows of each item.
    bool                                             mHasDofs = false; ///< The items are degrees of freedom, with one number each.
    std::vector<std::string>                         mComponents;      ///< Names of an item's numbers: "x", "y", "z".
    std::vector<uint64_t>                            mShape;           ///< Of an item's numbers in an array: {3}, {3, 3}, {}.
    std::vector<KQexTableItem>                       mItems;           ///< Its column groups.

    /// Numbers in a frame.
    size_t GetNumberCount() const { return mItems.size() * mComponents.size(); }

    /// The names of the items.
    std::vector<std::string> GetNames() const;
};

} // namespace qexsdk

#endif
