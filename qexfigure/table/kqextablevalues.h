#ifndef QEXFIGURE_TABLE_KQEXTABLEVALUES_H
#define QEXFIGURE_TABLE_KQEXTABLEVALUES_H

#include <qexfigure/kqexdofcolumns.h>
#include <qexfigure/kqexfigurepose.h>
#include <qexscene/kqexframe.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace qexsdk
{

/// Computes the numbers of a table, frame by frame. As for KQexFrameSink, Compute() is called on several threads.
class QEX_API KQexTableValues
{
public:
    virtual ~KQexTableValues() = default;

    /// KQexFrameSink::Begin().
    virtual void Begin(const KQexFrameNodes& pNodes, int pThreads) = 0;
    /// KQexFrameSink::GetParts().
    virtual unsigned int GetParts() const = 0;
    /// KQexFrameSink::Compute().
    virtual void Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept = 0;
    /// KQexFrameSink::MakeContinuous().
    virtual void MakeContinuous(double*) {}
};

/// Numbers of joints: computed for each of some joints by itself.
class QEX_API KQexJointValues : public KQexTableValues
{
public:
    /// \p pAll: the figure's joints, which must outlive it. \p pPicked: indices of those of the table.
    KQexJointValues(const std::vector<KQexFigureJoint>& pAll, std::vector<size_t> pPicked, const KQexOutputSpace& pSpace);

    void Begin(const KQexFrameNodes& pNodes, int pThreads) override;
    void Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept override;

protected:
    /// Writes a joint's numbers.
    virtual void Put(const KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const = 0;

    /// How many these are.
    virtual size_t GetSize() const = 0;

    /// Number of joints that the table has.
    size_t GetJointCount() const { return mPicked.size(); }

private:
    const std::vector<KQexFigureJoint>& mAll;
    std::vector<size_t>                 mPicked;
    KQexOutputSpace                     mSpace;
    std::vector<KQexFigurePose>         mFrames; ///< One for each thread.
};

/// The positions of joints in the world.
class QEX_API KQexPositionValues : public KQexJointValues
{
public:
    using KQexJointValues::KQexJointValues;

    unsigned int GetParts() const override { return eFRAME_WORLD; }

protected:
    void   Put(const KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const override;
    size_t GetSize() const override { return 3; }
};

/// The rotations of joints, in one form.
class QEX_API KQexRotationValues : public KQexJointValues
{
public:
    /// The rotations of the joints \p pPicked of \p pAll, in \p pForm and, for Euler angles, the order code \p pOrder.
    KQexRotationValues(const std::vector<KQexFigureJoint>& pAll, std::vector<size_t> pPicked, const KQexOutputSpace& pSpace,
                       KQexSpace pRelativeTo, KQexRotationForm pForm, int pOrder);

    unsigned int GetParts() const override { return eFRAME_ALL; }
    void         MakeContinuous(double* pValues) override { mWriter.MakeContinuous(pValues); }

protected:
    void   Put(const KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const override;
    size_t GetSize() const override { return static_cast<size_t>(KQexRotationSize(mForm)); }

private:
    KQexSpace          mRelativeTo;
    KQexRotationForm   mForm;
    KQexRotationWriter mWriter;
};

/// The values of degrees of freedom.
class QEX_API KQexDofTableValues : public KQexTableValues
{
public:
    /// The values of \p pColumns.
    explicit KQexDofTableValues(std::vector<KQexDofColumn> pColumns) : mColumns(std::move(pColumns)) {}

    void         Begin(const KQexFrameNodes&, int) override {}
    unsigned int GetParts() const override { return eFRAME_CHANNELS; }
    void Compute(int, const KQexFrame& pFrame, double* pValues) noexcept override { KQexEvaluateDofs(mColumns, pFrame.GetTime(), pValues); }

private:
    std::vector<KQexDofColumn> mColumns;
};

} // namespace qexsdk

#endif
