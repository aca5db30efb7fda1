#ifndef QEXFIGURE_KQEXDOFCOLUMNS_H
#define QEXFIGURE_KQEXDOFCOLUMNS_H

#include <qexfigure/kqexfigure.h>
#include <qexscene/kqexdoftrack.h>

#include <cstddef>
#include <string>
#include <vector>

namespace qexsdk
{

/// A degree of freedom, as a column of a table.
struct QEX_API KQexDofColumn
{
    std::string  mName;       ///< "lfemur.rx".
    size_t       mJoint = 0;  ///< Index in KQexFigure::GetJoints().
    double       mFactor = 1; ///< Output units per degree or centimetre.
    KQexBoneDof  mDof;        ///< Word, and limits in output units.
    KQexDofTrack mTrack;      ///< Its values in the file.

    /// True for a translation.
    bool IsLength() const { return mDof.mWord[0] == 't'; }
};

/// The degrees of freedom of \p pTake, one of the figure's (null: none), as KQexFigure::GetDofTracks() lists them: joint by joint, in
/// pre-order. \p pPerCentimetre and \p pPerDegree: output units. Valid as long as the take is. May throw std::bad_alloc.
QEX_API std::vector<KQexDofColumn> KQexDofColumnsOf(const KQexFigure& pFigure, const KQexFigureTake* pTake, double pPerCentimetre,
                                                    double pPerDegree = 1.0);

/// Writes the value of each column at \p pTime. Any number of threads may call it at once.
QEX_API void KQexEvaluateDofs(const std::vector<KQexDofColumn>& pColumns, KTime pTime, double* pValues);

/// The limits of each column, the lower one first; -infinity and infinity where there is none. May throw std::bad_alloc.
QEX_API std::vector<double> KQexLimitsOf(const std::vector<KQexDofColumn>& pColumns);

} // namespace qexsdk

#endif
