#ifndef QEXFIGURE_KQEXFIGUREFILES_H
#define QEXFIGURE_KQEXFIGUREFILES_H

#include <qexfigure/kqexfigurefile.h>

#include <string>
#include <vector>

/// \file
/// The files of one figure: which belong together, and where the skeleton of a motion is.

namespace qexsdk
{

/// How to put files together.
struct QEX_API KQexFigureFilesOptions
{
    std::string mSkeleton;              ///< ASF file for AMC files that are given alone; empty: searched for.
    std::string mFormat;                ///< Format of a single file: "asf", "amc", "bvh", "glb" or "gltf"; empty: detected.
    bool        mSearchesAbove = false; ///< A skeleton that is not in the motion's folder is searched for in the folder above, too.
    std::string mSkeletonOption;        ///< How a user of the program names mSkeleton ("--asf"), for hints in messages; empty: no hints.
};

/// The files of a figure: a skeleton and its motions, or one file of another format with both.
struct QEX_API KQexFigureFiles
{
    KQexFigureFile              mFigure;  ///< ASF, BVH or glTF.
    std::vector<KQexFigureFile> mMotions; ///< AMC files; empty unless mFigure is ASF.

    /// Opens \p pPaths and sorts them. For motions alone, the skeleton is the options' or searched for: all of them must have the same.
    /// False, with an error in \p pReport, if a file cannot be opened or they are not one figure.
    bool Open(const std::vector<std::string>& pPaths, const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport) noexcept;

    /// The same for files that are already open.
    bool Assign(const std::vector<KQexFigureFile>& pFiles, const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport) noexcept;

    /// Puts a motion and its skeleton together: the options' skeleton if it is set; else the one of \p pSkeletons, ASF files given together
    /// with the motion, that fits best. A single one fits; of several, the one named in the motion's header, else the one whose name is
    /// the longest prefix of the motion's, those in its folder first. If none fits, it is searched for in the folder. False, with an
    /// error, as for Open().
    bool Pair(const KQexFigureFile& pMotion, const std::vector<KQexFigureFile>& pSkeletons, const KQexFigureFilesOptions& pOptions,
              KQexFigureReport& pReport) noexcept;

    /// Appends the paths of all files that loading reads, and of the buffer that a .gltf file usually has. False out of memory.
    bool CollectPaths(std::vector<std::string>& pPaths) const noexcept;

    /// True if reading one of the files fails with an I/O error.
    bool FailsToRead() const;

private:
    bool Sort(const std::vector<KQexFigureFile>& pFiles, const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport);
    bool FindSharedSkeleton(const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport);
};

/// Opens all of \p pPaths into \p pFiles. False, with an error, at the first that cannot be opened.
QEX_API bool OpenFigureFiles(const std::vector<std::string>& pPaths, const KQexFigureFilesOptions& pOptions,
                             std::vector<KQexFigureFile>& pFiles, KQexFigureReport& pReport) noexcept;

/// Finds the skeleton of a motion among the ASF files in its folder, then, if the options ask for it, in the folder above: the one named in its header; else the one whose name is the longest
/// prefix of the motion's (01.asf for 01_01.amc); else the only one. Case is ignored.
/// \param pMotion an AMC file, open
/// \param pOptions mSearchesAbove and mSkeletonOption are used
/// \param pReport receives a note with the choice, or an error
/// \return its path; "" after an error that lists the candidates
QEX_API std::string FindFigureSkeleton(const KQexFigureFile& pMotion, const KQexFigureFilesOptions& pOptions,
                                       KQexFigureReport& pReport) noexcept;

} // namespace qexsdk

#endif
