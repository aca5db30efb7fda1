#ifndef QEXFIGURE_TABLE_KQEXTABLETEXT_H
#define QEXFIGURE_TABLE_KQEXTABLETEXT_H

#include <qexfigure/kqexfigure.h>
#include <qexfigure/table/kqextable.h>

#include <memory>
#include <string>

/// \file
/// Tables as text. These functions may throw std::bad_alloc.

namespace qexsdk
{

/// Digits after the point down to the limit of single precision, for positions in \p pPerCentimetre units per centimetre.
QEX_API int DecimalsOf(double pPerCentimetre);

/// The number of the frame of \p pTake at \p pTime, with three decimals between two frames.
QEX_API std::string FrameNumberText(const KQexFigureTake& pTake, KTime pTime);

/// A table as the bytes of a file. It does not change: any number of threads may use it at once.
class QEX_API KQexTableText
{
public:
    /// \p pTable must outlive it.
    explicit KQexTableText(const KQexTable& pTable) : mTable(pTable) {}
    virtual ~KQexTableText();

    /// What comes before the frames.
    virtual std::string Head() const = 0;

    /// Appends frame \p pFrame, from 0. \p pNumber is its number, with decimals between two frames.
    virtual void Append(long long pFrame, const std::string& pNumber, double pSeconds, const double* pValues, std::string& pText) const = 0;

    /// What comes after the frames.
    virtual std::string Tail() const { return ""; }

protected:
    /// Appends the numbers of an item of a frame, with commas between.
    void AppendNumbers(size_t pItem, const double* pValues, std::string& pText) const;

    /// A time as tables write it.
    static std::string SecondsText(double pSeconds);

    const KQexTable& mTable; ///< What is written.
};

/// CSV of \p pTable, which must outlive it: a row for each frame if \p pIsWide, else for each item and frame.
QEX_API std::unique_ptr<KQexTableText> MakeCsvText(const KQexTable& pTable, bool pIsWide);

} // namespace qexsdk

#endif
