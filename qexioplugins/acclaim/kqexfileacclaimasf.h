#ifndef QEXIOPLUGINS_ACCLAIM_KQEXFILEACCLAIMASF_H
#define QEXIOPLUGINS_ACCLAIM_KQEXFILEACCLAIMASF_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexioplugins/acclaim/kqexasfnode.h>
#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/motion/kqextextfile.h>
#include <qexscene/kqexscene.h>

#include <string>
#include <vector>

namespace qexsdk
{

class KQexAsfNameIndex;

/// An "l" on a bone's dof line. The bone has no DOF for it, but its motion lines have a value at that index.
struct QEX_API KQexAsfLengthDof
{
    std::string mBone;      ///< Name of the bone.
    int         mIndex = 0; ///< Index of the word among all DOF words of the line.
};

/// An Acclaim skeleton file (ASF), version 1.10: reads it into a KQexAsfScene, writes it from one. Open it with the
/// operations of KQexTextFile, then call Read() or Write().
///
/// The keyword tables are shared by all objects and their counts change while reading: only one Read() may run at a time in a
/// process; nothing is locked here.
class QEX_API KQexFileAcclaimAsf : public KQexTextFile
{
public:
    /// With \p pVerb messages also go to standard error.
    explicit KQexFileAcclaimAsf(bool pVerb);

    /// Closes. A file being written is completed if all prints succeeded.
    ~KQexFileAcclaimAsf() override;

    /// Reads the whole file into \p pQexAsfScene, computes the frames of the bones (SetupPosition with
    /// \p pSetRotatePivotOffet and \p pSetPreRotation) and, with \p pRemoveDummyNodes, removes dummy bones (RemoveDummy with
    /// the same two flags). False when the file cannot be read as a skeleton; the scene then keeps what was read so far. A root
    /// that the scene had before is released with its bones when the file has a root of its own, and stays otherwise.
    ///
    /// No other Read() or section of the reader may run at the same time in the process, on any object: they count in the shared
    /// keyword tables. Everything else may, Write() included. KQexImporterAcclaim::ReadSkeleton reads under a lock and may be
    /// called from any number of threads.
    bool Read(HKQexAsfScene pQexAsfScene, bool pRemoveDummyNodes, bool pSetRotatePivotOffet, bool pSetPreRotation);

    /// Writes \p pQexAsfScene, which must have a root: without one an Error is reported and no file appears. Values are written as
    /// the model holds them, except for the mass unit, the angle unit, the axis words and the root's position and orientation,
    /// which are always those of a default skeleton. Close() returns whether everything was written.
    void Write(HKQexAsfScene pQexAsfScene);

    /// \name Sections of the reader
    /// Each is entered with the section's keyword consumed and mQexAsfScene set, and leaves the next section's keyword
    /// line current when it returns true. False ends the read.
    ///@{
    bool ReadVersion();       ///< The version; any but 1.10 is a warning.
    bool ReadName();          ///< The name, and units after it. False without a name.
    bool ReadUnits();         ///< Units, one per line; an invalid one is a warning and changes nothing.
    bool ReadDocumentation(); ///< Skipped.
    bool ReadRoot();          ///< The root; a second one takes over the bones of the first.
    bool ReadBoneData();      ///< Bone groups. False without a root.
    bool ReadBone();          ///< One bone group, entered with "begin" consumed; the new bone becomes a child of the root.
    bool ReadHierarchy();     ///< Families: reparents the bones. False without a root.
    bool ReadSkin();          ///< Skipped. Always true.
    ///@}

    /// \name Sections of the writer
    /// mQexAsfScene must be set.
    ///@{
    void WriteRoot();                                 ///< The root's section; its position and orientation are zeros.
    void WriteBoneData();                             ///< Every bone below the root, in pre-order, with ids from 1.
    void WriteBone(HKQexAsfNode pNode, int& pIndex);  ///< The bone with the id \p pIndex, then its descendants; increments the id for each.
    void WriteHierarchy();                            ///< The families of the whole tree.
    void WriteHierarchyRecursive(HKQexAsfNode pNode); ///< The families of \p pNode and its descendants; not recursive despite the name.
    void WriteFamily(HKQexAsfNode pParent);           ///< One line: \p pParent and its children.
    ///@}

    /// Keyword tables; an entry's index is its meaning.
    static KToken smMain[10];
    static KToken smUnits[4];     ///< Words of the units section.
    static KToken smRoot[5];      ///< Words of the root section.
    static KToken smGroup[3];     ///< The words that begin and end a group.
    static KToken smBoneData[10]; ///< Words of a bone group.
    static KToken smAngle[3];     ///< Units of angles.
    static KToken smAxis[7];      ///< Axis words; the index selects the order code.
    static KToken smOrder[7];     ///< The index is the DOF code.
    static KToken smDof[8];       ///< As smOrder, and "l".

    static const char smType[4]; ///< The file type's name, for messages.
    static const char smDel[9];  ///< What separates tokens.
    static const char smCom[2];  ///< What begins a comment.

    /// The scene being read or written; null outside Read() and Write().
    HKQexAsfScene mQexAsfScene;

    /// The "l" words of the last Read(), in file order: a motion reader needs them and the model has no field for them.
    const std::vector<KQexAsfLengthDof>& GetLengthDofs() const { return mLengthDofs; }

    /// Leaf bones whose ends are no joints: a writer gave the bones a length because a file cannot hold them otherwise. Their names are
    /// in the file's documentation, one line "added-end BONE" each. After Read(): those of the file, in its order.
    const std::vector<std::string>& GetAddedEnds() const { return mAddedEnds; }

    /// The bones for Write(), names that are single tokens. None by default.
    void SetAddedEnds(const std::vector<std::string>& pBones) { mAddedEnds = pBones; }

private:
    bool ReadSections();
    bool ReadSection(int pKeyword);
    void SkipSection();
    bool CheckRoot(const char* pMessage);
    bool ReadAddedEnd();
    bool ReadAxisWord(int& pOrder);
    bool ReadNameWord(char* pName);

    void ReadAngleUnit();
    bool ReadRootLines(HKQexAsfNode pNode);
    bool ReadRootLine(HKQexAsfNode pNode);
    void ReadRootOrder(HKQexAsfNode pNode);
    void StoreRoot(HKQexAsfNode pNode);

    bool ReadBoneLines(HKQexAsfNode pNode);
    bool ReadBoneLine(HKQexAsfNode pNode, int pKeyword);
    bool ReadBoneName(HKQexAsfNode pNode);
    bool ReadBoneDirection(HKQexAsfNode pNode);
    bool ReadBoneLength(HKQexAsfNode pNode);
    bool ReadBoneAxis(HKQexAsfNode pNode);
    bool ReadBoneDof(HKQexAsfNode pNode);
    bool ReadBoneLimits(HKQexAsfNode pNode);
    bool AttachBone(HKQexAsfNode pNode);
    bool AddLengthDof(int pIndex);
    bool NameLengthDofs(const char* pName);

    bool ReadFamilies(KQexAsfNameIndex& pIndex);
    bool ReadFamilyLines(KQexAsfNameIndex& pIndex);
    bool ReadFamily(KQexAsfNameIndex& pIndex);
    bool ReadChildren(KQexAsfNameIndex& pIndex, int pParent);

    void WriteHeader();
    void WriteOneBone(HKQexAsfNode pNode, int pIndex);
    void WriteDofs(HKQexAsfNode pNode);
    void WriteDofWord(const KToken* pWords, int pCode);

    std::vector<KQexAsfLengthDof> mLengthDofs;
    std::vector<std::string>      mAddedEnds;
    size_t                        mFirstLengthDof; ///< Index in mLengthDofs of the first entry of the bone being read.
    KQexAsfNameIndex*             mNameIndex;      ///< The bones of the current Read() by name; null outside.
};

} // namespace qexsdk

#endif
