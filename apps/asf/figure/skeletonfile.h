#ifndef APPS_ASF_FIGURE_SKELETONFILE_H
#define APPS_ASF_FIGURE_SKELETONFILE_H

#include <apps/asf/console.h>
#include <apps/asf/inputfile.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <vector>

namespace asfapp
{

/// A point or a vector in centimetres: x to the figure's left, y up, z ahead.
struct KPoint
{
    double mX = 0;
    double mY = 0;
    double mZ = 0;
};

/// The messages about one file, in the order of its lines, and how many there were of each kind.
struct KMessages
{
    std::vector<qexsdk::KQexTextMessage> mList; ///< At least every error; of very many warnings the first ones.
    int                                  mErrors = 0;
    int                                  mWarnings = 0;

    void Add(qexsdk::KQexTextMessage::ESeverity pSeverity, int pLine, const std::string& pText);
    void SortByLine();

    /// Prints all, and how many were left out.
    void Print(const std::string& pPath, KConsole& pConsole) const;
};

/// One bone of the skeleton at rest, in world space.
struct KRestBone
{
    qexsdk::HKQexAsfNode mNode = nullptr;
    int                  mParent = -1; ///< Index in the list, which goes parents first; -1 at the root.
    int                  mDepth = 0;   ///< 0 at the root.
    KPoint               mStart;       ///< For the root, start and end are its position.
    KPoint               mEnd;
};

/// A skeleton read from a file, and what was said about it.
class KSkeletonFile
{
public:
    /// Reads \p pFile. With \p pLint the findings of KAsfLint are among the messages. Nothing is printed; the exit status of a
    /// failed read is raised. False when there is no skeleton to work with.
    bool Read(const KInputFile& pFile, bool pLint, KConsole& pConsole);

    const KMessages& GetMessages() const { return mMessages; }

    bool IsOk() const { return mOk; }

    /// The skeleton, also of a failed read what there is of it; never null after Read().
    qexsdk::KQexAsfScene& GetScene() const { return *mScene; }

    /// All bones in pre-order, the root first, at rest: bone vectors as the file states them, the root at its position. Empty
    /// without a root.
    const std::vector<KRestBone>& GetBones() const { return mBones; }

    /// Centimetres for one unit of length in the file; 1 when the file's unit is not usable.
    double GetCentimetresPerUnit() const;

    /// Least and greatest coordinates of all bones at rest. False without bones.
    bool GetBounds(KPoint& pLeast, KPoint& pMost) const;

private:
    void CollectBones();

    qexsdk::KQexAsfSceneOwner mScene;
    KMessages                 mMessages;
    bool                      mOk = false;
    std::vector<KRestBone>    mBones;
};

} // namespace asfapp

#endif
