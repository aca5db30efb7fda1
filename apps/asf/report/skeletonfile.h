#ifndef APPS_ASF_REPORT_SKELETONFILE_H
#define APPS_ASF_REPORT_SKELETONFILE_H

#include <apps/asf/console.h>
#include <apps/asf/figure/point.h>
#include <qexfigure/kqexfigurefile.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <vector>

namespace asfapp
{

/// The messages about one file, and their total numbers.
struct KMessages
{
    std::vector<qexsdk::KQexTextMessage> mList; ///< Every error, and the first warnings.
    int                                  mErrors = 0;
    int                                  mWarnings = 0;

    void Add(qexsdk::KQexTextMessage::ESeverity pSeverity, int pLine, const std::string& pText);

    /// Adds errors and warnings of opening or loading \p pPath, those about other files with their names. Notes are left out.
    void Add(const qexsdk::KQexFigureReport& pReport, const std::string& pPath);

    void SortByLine();

    /// Replaces the messages by those of \p pReader.
    void Take(const qexsdk::KQexTextFile& pReader);

    /// Removes those of the other severity; the counts stay.
    void KeepOnly(qexsdk::KQexTextMessage::ESeverity pSeverity);

    /// Prints all, and how many warnings were dropped.
    void Print(const std::string& pPath, KConsole& pConsole) const;
};

/// One bone of the skeleton at rest, in world space.
struct KRestBone
{
    qexsdk::HKQexAsfNode mNode = nullptr;
    int                  mParent = -1; ///< Index in the list, less than the bone's own; -1 for the root.
    int                  mDepth = 0;   ///< 0 for the root.
    KPoint               mStart;       ///< For the root, start and end are its position.
    KPoint               mEnd;
};

/// A skeleton read from a file, and the messages about it.
class KSkeletonFile
{
public:
    /// Reads \p pFile. With \p pLint the messages include the findings of KAsfLint. Prints nothing. False, and the exit status
    /// raised, if the read fails.
    bool Read(const qexsdk::KQexFigureFile& pFile, bool pLint, KConsole& pConsole);

    const KMessages& GetMessages() const { return mMessages; }

    bool IsOk() const { return mOk; }

    /// The skeleton, after a failed read the part that was read. Only after Read().
    qexsdk::KQexAsfScene& GetScene() const { return *mScene; }

    /// All bones at rest, in pre-order: bone vectors as in the file, the root at its position. Empty without a root.
    const std::vector<KRestBone>& GetBones() const { return mBones; }

    /// Centimetres per unit of length in the file; 1 if the file's length unit is not positive.
    double GetCentimetresPerUnit() const;

    /// Bounding box of the bones at rest. False without bones.
    bool GetBounds(KPoint& pMin, KPoint& pMax) const;

private:
    void CollectBones();

    qexsdk::KQexAsfSceneOwner mScene;
    KMessages                 mMessages;
    bool                      mOk = false;
    std::vector<KRestBone>    mBones;
};

} // namespace asfapp

#endif
