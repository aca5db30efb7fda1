#ifndef APPS_ASF_REPORT_TABLETEXT_H
#define APPS_ASF_REPORT_TABLETEXT_H

#include <qexfigure/table/kqextabletext.h>

#include <memory>

namespace asfapp
{

/// How a table is written.
enum ETableFormat
{
    eTABLE_CSV,      ///< A row for each item and frame.
    eTABLE_CSV_WIDE, ///< A row for each frame.
    eTABLE_JSON,
    eTABLE_NPY, ///< 32-bit floats of shape (frames, items) + mShape.
    eTABLE_NPZ  ///< The same among other arrays.
};

/// The text for \p pTable, which must outlive it, in any format but eTABLE_NPZ.
std::unique_ptr<qexsdk::KQexTableText> MakeTableText(ETableFormat pFormat, const qexsdk::KQexTable& pTable);

} // namespace asfapp

#endif
