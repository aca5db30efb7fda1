#ifndef QEXFIGURE_KQEXARRAYSINK_H
#define QEXFIGURE_KQEXARRAYSINK_H

#include <qexfigure/kqexdofcolumns.h>
#include <qexfigure/kqexmotionarrays.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A motion as arrays that have a row for each frame: what all sets of arrays share. May throw std::bad_alloc.
class KQexArraySink : public KQexFrameSink
{
public:
    /// For a take of \p pFigure; arrays are added to \p pFile. Both must outlive it.
    KQexArraySink(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions, KQexNpzFile& pFile);

    void         Begin(const KQexFrameNodes& pNodes, int pThreads) override;
    unsigned int GetParts() const override { return eFRAME_ALL; }
    size_t       GetValueCount() const override { return mValueCount; }
    void         MakeContinuous(double* pValues) override;
    bool         Write(const KQexFrameBlock& pBlock) override;

protected:
    /// Adds an array with a row of shape \p pShape for each frame. \return where its numbers are among a frame's values.
    size_t AddRows(const std::string& pName, const std::vector<uint64_t>& pShape);

    /// The same for the rotations of \p pJoints joints.
    size_t AddRotations(const std::string& pName, size_t pJoints);

    /// Adds "fps".
    void AddRate();

    /// Adds the names of degrees of freedom, and their values as \p pArray. \return as AddRows()
    size_t AddDofs(const std::vector<KQexDofColumn>& pDofs, const std::string& pArray);

    /// The joints in frame \p pFrame, for thread \p pThread.
    const KQexFigurePose& JointsIn(int pThread, const KQexFrame& pFrame);

    const KQexFigure&            mFigure;  ///< The figure.
    const KQexMotionArrayOptions mOptions; ///< What to write.
    KQexNpzFile&                 mFile;    ///< Where to.

private:
    struct KRows
    {
        int    mArray; ///< In the file.
        size_t mStart; ///< Index of its first number among a frame's values.
        size_t mCount; ///< Number of its values in a frame.
    };

    struct KRotations
    {
        size_t             mStart;
        KQexRotationWriter mWriter;
    };

    std::vector<KRows>          mRows;
    std::vector<KRotations>     mRotations;
    size_t                      mValueCount = 0;
    std::vector<KQexFigurePose> mFrames; ///< One for each thread.
};

/// The sink of KQexArraySet::eIMITATION.
std::unique_ptr<KQexFrameSink> KMakeImitationSink(const KQexFigure& pFigure, const KQexMotionArrayOptions& pOptions, KQexNpzFile& pFile);

} // namespace qexsdk

#endif
