#ifndef APPS_ASF_REPORT_TABLETEXT_H
#define APPS_ASF_REPORT_TABLETEXT_H

#include <apps/asf/report/table.h>

#include <memory>
#include <string>

namespace asfapp
{

/// Digits after the point down to the limit of single precision, for positions in \p pPerCentimetre units per centimetre.
int DecimalsOf(double pPerCentimetre);

/// A table as the bytes of a file. It does not change: any number of threads may use it at once.
class KTableText
{
public:
    explicit KTableText(const KTable& pTable) : mTable(pTable) {}
    virtual ~KTableText() = default;

    /// What comes before the frames.
    virtual std::string Head() const = 0;

    /// Appends frame \p pFrame, from 0. \p pNumber is its number, with decimals between two frames.
    virtual void Append(long long pFrame, const std::string& pNumber, double pSeconds, const double* pValues, std::string& pText) const = 0;

    /// What comes after the frames.
    virtual std::string Tail() const { return ""; }

protected:
    const KTable& mTable;
};

/// The text for \p pTable, which must outlive it, in any format but eTABLE_NPZ.
std::unique_ptr<KTableText> MakeTableText(ETableFormat pFormat, const KTable& pTable);

} // namespace asfapp

#endif
