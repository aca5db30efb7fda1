#ifndef QEXFIGURE_CHECK_KQEXSKELETONFILE_H
#define QEXFIGURE_CHECK_KQEXSKELETONFILE_H

#include <qexfigure/check/kqexfilemessages.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurefile.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <vector>

/// \file
/// A skeleton file as it is, without a scene.

namespace qexsdk
{

/// One bone of the skeleton at rest, in world space.
struct QEX_API KQexRestBone
{
    HKQexAsfNode    mNode = nullptr; ///< Owned by the skeleton.
    int             mParent = -1;    ///< Index in the list, less than the bone's own; -1 for the root.
    int             mDepth = 0;      ///< 0 for the root.
    KQexFigurePoint mStart;          ///< For the root, start and end are its position.
    KQexFigurePoint mEnd;            ///< Where the bones below it start.
};

/// A skeleton read from a file, and the messages about it.
class QEX_API KQexSkeletonFile
{
public:
    /// Reads \p pFile, an ASF file. With \p pLint, also looks for problems that reading accepts silently: bones missing from the
    /// hierarchy, lower limits above the upper ones, extra text on a line. Skeletons are read one at a time, also by
    /// several threads. False, and the status of \p pReport raised, if the read fails; what is wrong with the file is in GetMessages().
    bool Read(const KQexFigureFile& pFile, bool pLint, KQexFigureReport& pReport) noexcept;

    /// Errors and warnings, by line.
    const KQexFileMessages& GetMessages() const { return mMessages; }

    /// Whether the file was read.
    bool IsOk() const { return mOk; }

    /// The skeleton, after a failed read the part that was read; owned by this object. Null before Read().
    const KQexAsfScene* GetScene() const { return mScene.get(); }

    /// All bones at rest, in pre-order: bone vectors as in the file, the root at its position. Empty without a root.
    const std::vector<KQexRestBone>& GetBones() const { return mBones; }

    /// Centimetres per unit of length in the file; 1 if the file's length unit is not positive.
    double GetCentimetresPerUnit() const;

    /// Bounding box of the bones at rest. False without bones.
    bool GetBounds(KQexFigurePoint& pMin, KQexFigurePoint& pMax) const;

private:
    bool ReadFile(const KQexFigureFile& pFile, bool pLint, KQexFigureReport& pReport);
    void Lint(const KQexFigureFile& pFile, bool pAll);
    void CollectBones();

    KQexAsfSceneOwner         mScene;
    KQexFileMessages          mMessages;
    bool                      mOk = false;
    std::vector<KQexRestBone> mBones;
};

} // namespace qexsdk

#endif
