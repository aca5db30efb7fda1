#ifndef QEXFIGURE_OUTPUT_KQEXFIGUREWRITE_H
#define QEXFIGURE_OUTPUT_KQEXFIGUREWRITE_H

#include <kbaselib/kmath/keulertable.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexmotionarrays.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <cstddef>
#include <string>
#include <vector>

/// \file
/// Writing a figure: any number of files in any formats, all of them or none.

namespace qexsdk
{

/// Formats of files.
enum KQexOutputFormat
{
    eOUTPUT_ASF,  ///< A skeleton, with the degrees of freedom that its takes need.
    eOUTPUT_AMC,  ///< One take.
    eOUTPUT_BVH,  ///< One take, or the rest pose.
    eOUTPUT_GLB,  ///< Any number of takes.
    eOUTPUT_GLTF, ///< The same; a buffer with the extension ".bin" is written next to the file.
    eOUTPUT_NPZ,  ///< Arrays of one take, or of the rest pose.
    eOUTPUT_CSV   ///< The positions of one take, in the world.
};

/// The format that the extension of \p pPath stands for, upper or lower case. False, with \p pFormat unchanged, if it is that of none.
QEX_API bool KQexOutputFormatOf(const std::string& pPath, KQexOutputFormat& pFormat);

/// Whether a file of this format holds one take only.
QEX_API bool KQexHoldsOneTake(KQexOutputFormat pFormat);

/// A take, and which frames of it to write.
struct QEX_API KQexTakeToWrite
{
    const KQexFigureTake* mTake = nullptr; ///< One of the figure's; null: the rest pose.
    KQexSamplingRequest   mRequest;        ///< Its frames, see MakeSampling().
};

/// A file to write.
///
/// An AMC file is the motion of the ASF file among the outputs that has its take. Without ASF files, it is a motion for an existing
/// skeleton, see KQexFigureWriteOptions::mSkeleton.
struct QEX_API KQexFigureOutput
{
    std::string         mPath;                 ///< "-" is standard output, for BVH, GLB, CSV and one of ASF and AMC.
    KQexOutputFormat    mFormat = eOUTPUT_BVH; ///< glTF is JSON if mPath ends in ".gltf", else binary.
    std::vector<size_t> mTakes;                ///< Indices of the options' takes, in whose order they are written; empty: all.
};

/// How files are written.
struct QEX_API KQexFigureWriteOptions
{
    std::vector<KQexTakeToWrite> mTakes; ///< Empty: all takes of the figure with all their frames; its rest pose if it has none.

    double mScale = 1;   ///< Factor of all lengths. Above 0.
    double mUnit = 0;    ///< Centimetres per unit of length, not for glTF, which has metres; 0: 1, and in ASF mLengthUnit.
    bool   mZUp = false; ///< Turn the figure from y up to z up; not for glTF, which has y up.

    ERotationOrder mOrder = eEULER_XYZ;             ///< BVH: order of the rotations, one of the six Euler orders.
    bool           mBoneMesh = true;                ///< glTF: a mesh that shows the bones.
    KQexArraySet   mArrays = KQexArraySet::eMOTION; ///< NPZ; eIMITATION is in metres and has z up in any case.

    double              mLengthUnit = 0; ///< ASF, see KQexExportAcclaimOptions; 0: that of mUnit, else of the skeleton read, else 1.
    KQexTranslationDofs mTranslations = eTRANSLATION_DOFS_MOVING; ///< ASF: bones with translation degrees of freedom.
    bool                mBasePoseFirstFrame = false;              ///< ASF: the rest pose is the first take's first frame.
    bool                mAdaptForFile = true;                     ///< ASF, see KQexExportAcclaimOptions.
    bool                mWriteRate = false;                       ///< AMC: as a keyword, which some readers do not accept.
    bool                mAllowUnmatched = false;                  ///< AMC without ASF: also for a skeleton that hardly matches.

    KQexAsfScene*        mSkeleton = nullptr; ///< AMC without ASF: the skeleton it is for; null: the one read with the figure. Not owned.
    KQexAmcSkeletonNotes mSkeletonNotes;      ///< Notes of mSkeleton.

    int          mThreads = 0;  ///< Threads that evaluate frames; 0: as many as the machine has, at most four. No influence on the files.
    KQexProgress mProgress;     ///< Called with the fraction written, 0 to 1; false cancels. May be empty.
    std::string  mOutputOption; ///< How a user of the program names an output ("--output"), for messages; may be empty.
};

/// Writes \p pFigure to \p pOutputs. Each take is evaluated once for all of them. Files are replaced only after all are complete, and all
/// are replaced or none (KOutputFile::CommitAll()); what goes to standard output, pipes and devices is written at once.
///
/// False, with an error and a status in \p pReport, or cancelled: all files are as they were. A pipe that its reader closed is a failure
/// without a message or a status. Files that do not fit the figure or each other are usage errors.
///
/// With mZUp and ASF or AMC files, the figure itself is turned, as by TurnFigureZUp(): it is not to be written again.
QEX_API bool KQexWriteFigure(KQexFigure& pFigure, const std::vector<KQexFigureOutput>& pOutputs, const KQexFigureWriteOptions& pOptions,
                             KQexFigureReport& pReport) noexcept;

} // namespace qexsdk

#endif
