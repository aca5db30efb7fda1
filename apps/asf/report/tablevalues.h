#ifndef APPS_ASF_REPORT_TABLEVALUES_H
#define APPS_ASF_REPORT_TABLEVALUES_H

#include <qexfigure/kqexdofcolumns.h>
#include <qexfigure/kqexfigurepose.h>
#include <qexscene/kqexframe.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace asfapp
{

/// Computes the numbers of a table, frame by frame. As for qexsdk::KQexFrameSink, Compute() is called on several threads.
class KTableValues
{
public:
    virtual ~KTableValues() = default;

    virtual void         Begin(const qexsdk::KQexFrameNodes& pNodes, int pThreads) = 0;
    virtual unsigned int GetParts() const = 0;
    virtual void         Compute(int pThread, const qexsdk::KQexFrame& pFrame, double* pValues) noexcept = 0;
    virtual void         MakeContinuous(double*) {}
};

/// Numbers of joints: computed for each of some joints by itself.
class KJointValues : public KTableValues
{
public:
    /// \p pAll: the figure's joints, which must outlive it. \p pPicked: indices of those of the table.
    KJointValues(const std::vector<qexsdk::KQexFigureJoint>& pAll, std::vector<size_t> pPicked, const qexsdk::KQexOutputSpace& pSpace);

    void Begin(const qexsdk::KQexFrameNodes& pNodes, int pThreads) override;
    void Compute(int pThread, const qexsdk::KQexFrame& pFrame, double* pValues) noexcept override;

protected:
    /// Writes a joint's numbers.
    virtual void Put(const qexsdk::KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const = 0;

    /// How many these are.
    virtual size_t GetSize() const = 0;

    size_t GetJointCount() const { return mPicked.size(); }

private:
    const std::vector<qexsdk::KQexFigureJoint>& mAll;
    std::vector<size_t>                         mPicked;
    qexsdk::KQexOutputSpace                     mSpace;
    std::vector<qexsdk::KQexFigurePose>         mFrames; ///< One for each thread.
};

/// The positions of joints in the world.
class KPositionValues : public KJointValues
{
public:
    using KJointValues::KJointValues;

    unsigned int GetParts() const override { return qexsdk::eFRAME_WORLD; }

protected:
    void   Put(const qexsdk::KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const override;
    size_t GetSize() const override { return 3; }
};

/// The rotations of joints, in one form.
class KRotationValues : public KJointValues
{
public:
    KRotationValues(const std::vector<qexsdk::KQexFigureJoint>& pAll, std::vector<size_t> pPicked, const qexsdk::KQexOutputSpace& pSpace,
                    qexsdk::KQexSpace pRelativeTo, qexsdk::KQexRotationForm pForm, int pOrder);

    unsigned int GetParts() const override { return qexsdk::eFRAME_ALL; }
    void         MakeContinuous(double* pValues) override { mWriter.MakeContinuous(pValues); }

protected:
    void   Put(const qexsdk::KQexFigurePose& pJoints, size_t pJoint, double* pNumbers) const override;
    size_t GetSize() const override { return static_cast<size_t>(qexsdk::KQexRotationSize(mForm)); }

private:
    qexsdk::KQexSpace          mRelativeTo;
    qexsdk::KQexRotationForm   mForm;
    qexsdk::KQexRotationWriter mWriter;
};

/// The values of degrees of freedom.
class KDofTableValues : public KTableValues
{
public:
    explicit KDofTableValues(std::vector<qexsdk::KQexDofColumn> pColumns) : mColumns(std::move(pColumns)) {}

    void         Begin(const qexsdk::KQexFrameNodes&, int) override {}
    unsigned int GetParts() const override { return qexsdk::eFRAME_CHANNELS; }
    void         Compute(int, const qexsdk::KQexFrame& pFrame, double* pValues) noexcept override
    {
        qexsdk::KQexEvaluateDofs(mColumns, pFrame.GetTime(), pValues);
    }

private:
    std::vector<qexsdk::KQexDofColumn> mColumns;
};

} // namespace asfapp

#endif
