#ifndef APPS_ASF_BATCH_RATES_H
#define APPS_ASF_BATCH_RATES_H

#include <apps/asf/console.h>

#include <string>
#include <utility>
#include <vector>

namespace asfapp
{

/// Rates of AMC files that do not say their own, by name: a table with the columns file and source_fps.
class KRateTable
{
public:
    /// Reads a CSV file. Its first line names the columns; further ones are ignored. Names may have wildcards, see MatchesPattern().
    /// False after an error, which names the line.
    bool Read(const std::string& pPath, KConsole& pConsole);

    /// The rate of the motion \p pName, as given; the last line that matches wins. Empty without one.
    std::string Find(const std::string& pName) const;

private:
    bool AddLine(const std::vector<std::string>& pCells, size_t pFile, size_t pRate, std::string& pReason);

    std::vector<std::pair<std::string, std::string>> mLines;
};

} // namespace asfapp

#endif
