#include <apps/asf/batch/rates.h>

#include <apps/asf/batch/pathpattern.h>
#include <apps/asf/figure/motionoptions.h>
#include <kbaselib/kbase/kinputfile.h>

#include <algorithm>
#include <sstream>

namespace asfapp
{

namespace
{

constexpr size_t kMaxTable = size_t(1) << 30;

/// The cells of a line: separated by commas, in quotes if they have one; two quotes stand for one.
std::vector<std::string> CellsOf(const std::string& pLine)
{
    std::vector<std::string> lCells(1);
    bool                     lIsQuoted = false;
    for (size_t i = 0; i < pLine.size(); ++i)
    {
        const bool lIsDouble = lIsQuoted && pLine[i] == '"' && i + 1 < pLine.size() && pLine[i + 1] == '"';
        if (pLine[i] == '"' && !lIsDouble)
        {
            lIsQuoted = !lIsQuoted;
        }
        else if (pLine[i] == ',' && !lIsQuoted)
        {
            lCells.emplace_back();
        }
        else if (pLine[i] != '\r')
        {
            lCells.back() += pLine[i];
            i += lIsDouble ? 1 : 0;
        }
    }
    return lCells;
}

size_t IndexOf(const std::vector<std::string>& pCells, const char* pName)
{
    return static_cast<size_t>(std::find(pCells.begin(), pCells.end(), pName) - pCells.begin());
}

} // namespace

bool KRateTable::Read(const std::string& pPath, KConsole& pConsole)
{
    std::string lBytes;
    std::string lReason;
    if (!qexsdk::KReadWholeFile(pPath.c_str(), kMaxTable, false, lBytes, lReason))
    {
        pConsole.Message(eERROR, pPath, 0, "cannot be read: " + lReason);
        pConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    std::istringstream lText(lBytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? lBytes.substr(3) : lBytes);
    std::string        lLine;
    size_t             lFile = 0;
    size_t             lRate = 0;
    for (int lNumber = 1; std::getline(lText, lLine); ++lNumber)
    {
        const std::vector<std::string> lCells = CellsOf(lLine);
        lReason.clear();
        if (lNumber == 1)
        {
            lFile = IndexOf(lCells, "file");
            lRate = IndexOf(lCells, "source_fps");
            lReason = std::max(lFile, lRate) < lCells.size() ? "" : "expected the columns file and source_fps, not " + lLine;
        }
        else if (lCells.size() > 1 || !lCells.front().empty())
        {
            AddLine(lCells, lFile, lRate, lReason);
        }
        if (!lReason.empty())
        {
            pConsole.Message(eERROR, pPath, lNumber, lReason);
            pConsole.Raise(eEXIT_INPUT);
            return false;
        }
    }
    if (lBytes.empty())
    {
        pConsole.Message(eERROR, pPath, 0, "is empty: expected the columns file and source_fps");
        pConsole.Raise(eEXIT_INPUT);
    }
    return !lBytes.empty();
}

bool KRateTable::AddLine(const std::vector<std::string>& pCells, size_t pFile, size_t pRate, std::string& pReason)
{
    double lRate = 0;
    if (std::max(pFile, pRate) >= pCells.size())
    {
        pReason = "has too few columns";
    }
    else if (!ParseRate(pCells[pRate], lRate))
    {
        pReason = "source_fps: expected a rate such as 120, 23.976 or 30000/1001, not " + pCells[pRate];
    }
    else
    {
        mLines.emplace_back(pCells[pFile], pCells[pRate]);
    }
    return pReason.empty();
}

std::string KRateTable::Find(const std::string& pName) const
{
    const auto lFits = [&pName](const auto& pLine)
    {
        return pLine.first == pName || MatchesPattern(pName, pLine.first);
    };
    const auto lFound = std::find_if(mLines.rbegin(), mLines.rend(), lFits);
    return lFound != mLines.rend() ? lFound->second : std::string();
}

} // namespace asfapp
