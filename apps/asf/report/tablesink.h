#ifndef APPS_ASF_REPORT_TABLESINK_H
#define APPS_ASF_REPORT_TABLESINK_H

#include <apps/asf/figure/loading.h>
#include <apps/asf/report/tabletext.h>
#include <kbaselib/kbase/koutputfile.h>
#include <qexfigure/kqexnpzfile.h>
#include <qexfigure/table/kqextablevalues.h>
#include <qexscene/kqexframesink.h>

#include <memory>

namespace asfapp
{

/// A table that is filled as frames are evaluated. What it is made of must outlive it.
class KTableSink : public qexsdk::KQexFrameSink
{
public:
    KTableSink(const qexsdk::KQexTable& pTable, const KLoadedMotion& pMotion, const qexsdk::KQexFrameTimes& pTimes,
               qexsdk::KQexTableValues& pValues)
        : mTable(pTable), mMotion(pMotion), mTimes(pTimes), mValues(pValues)
    {
    }

    void         Begin(const qexsdk::KQexFrameNodes& pNodes, int pThreads) override { mValues.Begin(pNodes, pThreads); }
    unsigned int GetParts() const override { return mValues.GetParts(); }
    size_t       GetValueCount() const override { return mTable.GetNumberCount(); }
    void         Compute(int pThread, const qexsdk::KQexFrame& pFrame, double* pValues) noexcept override
    {
        mValues.Compute(pThread, pFrame, pValues);
    }
    void MakeContinuous(double* pValues) override { mValues.MakeContinuous(pValues); }

    /// Writes what comes after the frames. A write error is reported by closing the output.
    virtual void Finish() = 0;

protected:
    const qexsdk::KQexTable&      mTable;
    const KLoadedMotion&          mMotion;
    const qexsdk::KQexFrameTimes& mTimes;

private:
    qexsdk::KQexTableValues& mValues;
};

/// The sink that writes to \p pOut, which is open.
std::unique_ptr<KTableSink> MakeTableSink(ETableFormat pFormat, const qexsdk::KQexTable& pTable, const KLoadedMotion& pMotion,
                                          const qexsdk::KQexFrameTimes& pTimes, qexsdk::KQexTableValues& pValues,
                                          qexsdk::KOutputFile& pOut);

} // namespace asfapp

#endif
