#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCBONES_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCBONES_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qexsdk
{

/// Appends the index of an `l` value to those of a bone. Indices of one bone ascend; a lower or equal one belongs to another bone of
/// the same name, which has no line of its own. \return whether it was added
inline bool AddLengthIndex(std::vector<int>& pIndices, int pIndex)
{
    if (!pIndices.empty() && pIndex <= pIndices.back())
    {
        return false;
    }
    pIndices.push_back(pIndex);
    return true;
}

/// Layout of the motion's lines for one bone name, and the state of reading them.
struct KQexAmcLine
{
    std::string_view mName;                    ///< Name of the bone. Refers to the text in the bone or in the skeleton's notes.
    int              mBone = -1;               ///< Index of the bone in KQexAmcBones::mBones; -1 for a bone without a DOF.
    int              mValueCount = 0;          ///< Values per line, `l` included.
    bool             mIsRemoved = false;       ///< The clean-up removed the bone: its lines may have any number of values.
    std::vector<int> mLengthIndices;           ///< Indices of the `l` values on a line, ascending.
    int              mNext = 0;                ///< Index of the line that followed this one last time: first guess for the next look-up.
    long long        mFrame = -1;              ///< Index of the last frame that had it, -1 for none.
    bool             mIsInMotion = false;      ///< The motion has a line for it.
    bool             mWarnedTooMany = false;   ///< Warned about more than mValueCount values.
    bool             mWarnedDuplicate = false; ///< Warned about two lines in one frame.
};

/// Looks up the bones of a skeleton by the names on a motion's lines.
///
/// An exact match wins over one that ignores the case of ASCII letters. Of several bones with the same name the first in pre-order
/// wins, as everywhere in the model.
class KQexAmcBones
{
public:
    /// Lists \p pRoot and all bones below it. The tree and the notes must outlive this object.
    void Build(HKQexAsfNode pRoot, const KQexAmcSkeletonNotes& pNotes);

    /// Index into mLines of the bone \p pName, -1 for none. O(log n).
    int Find(std::string_view pName) const;

    /// The DOF words of a line's values, separated by blanks, for messages.
    std::string Words(const KQexAmcLine& pLine) const;

    /// The DOF word of the value at index \p pIndex of a line.
    const char* Word(const KQexAmcLine& pLine, int pIndex) const;

    std::vector<KQexAmcBone> mBones; ///< Bones that have a DOF, in pre-order.
    std::vector<KQexAmcLine> mLines; ///< All names, in pre-order, then those of removed bones.

private:
    struct KEntry
    {
        std::string_view mName;
        int              mLine;
    };

    void AddTree(HKQexAsfNode pRoot);
    void AddRemoved(const KQexAmcSkeletonNotes& pNotes);
    void AddLengths(const KQexAmcSkeletonNotes& pNotes);
    void SortNames();

    std::vector<KEntry> mNames; ///< Sorted by case-folded name, then by name; one entry per name.
};

} // namespace qexsdk

#endif
