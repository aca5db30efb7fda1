#ifndef APPS_ASF_REPORT_DIFFREPORT_H
#define APPS_ASF_REPORT_DIFFREPORT_H

#include <apps/asf/report/figurecompare.h>

#include <string>
#include <vector>

namespace asfapp
{

/// What `asf diff` reports. Refers to its arguments.
struct KDiffReport
{
    const KFigureComparison&        mComparison;
    double                          mTolerance;
    const std::vector<std::string>& mIgnored; ///< Words of AspectWord().
    const std::string (&mTitles)[2];          ///< The files of each figure.

    bool IsIgnored(int pAspect) const;

    /// Whether nothing that was compared differs, apart from ignored aspects.
    bool IsSame() const;
};

/// Prints the report as text, or as a JSON object on one line.
void WriteDiffTable(const KDiffReport& pReport, KConsole& pConsole);
void WriteDiffJson(const KDiffReport& pReport, KConsole& pConsole);

} // namespace asfapp

#endif
