#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCBONES_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCBONES_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qexsdk
{

/// Adds the place of an `l` to those of a bone. Places of one bone rise: one that does not belongs to another bone of the same name,
/// which has no line of its own. \return whether it was added
inline bool AddLengthPlace(std::vector<int>& pPlaces, int pPlace)
{
    if (!pPlaces.empty() && pPlace <= pPlaces.back())
    {
        return false;
    }
    pPlaces.push_back(pPlace);
    return true;
}

/// What a motion's lines about one name look like, and what was said about them so far.
struct KQexAmcLine
{
    std::string_view mName;                  ///< Name of the bone. The text is the bone's own, or that of the skeleton's notes.
    int              mBone = -1;             ///< Index of the bone in KQexAmcBones::mBones; -1 for a bone without a DOF.
    int              mValueCount = 0;        ///< Values that a line has, those of `l` included.
    bool             mTakesAnyCount = false; ///< Not in the tree any more: how many values its lines have is not known.
    std::vector<int> mLengthPlaces;          ///< Places of `l` among the values, ascending.
    int              mNext = 0;              ///< The line that came after this one last time: the first guess for the next one.
    long long        mFrame = -1;            ///< Index of the frame in which it was read last, -1 for none.
    bool             mSaidTooMany = false;   ///< The warning about values beyond mValueCount was given.
    bool             mSaidTwice = false;     ///< The warning about two lines in one frame was given.
};

/// The bones of a skeleton as a motion names them.
///
/// A name is looked up exactly first, then without regard to the case of ASCII letters. Of several bones with one name the first
/// in pre-order is meant, as everywhere in the model.
class KQexAmcBones
{
public:
    /// Lists the bones below and including \p pRoot. The tree and the notes have to outlive this object.
    void Build(HKQexAsfNode pRoot, const KQexAmcSkeletonNotes& pNotes);

    /// Index into mLines of the line that \p pName begins, -1 for none. O(log n).
    int Find(std::string_view pName) const;

    /// The DOF words that a line has values for, separated by blanks, for messages.
    std::string Words(const KQexAmcLine& pLine) const;

    /// The DOF word of value \p pPlace of a line.
    const char* Word(const KQexAmcLine& pLine, int pPlace) const;

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

    std::vector<KEntry> mNames; ///< By folded name, then by name; one entry a name.
};

} // namespace qexsdk

#endif
