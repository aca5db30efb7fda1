#include <qexfigure/table/kqextable.h>

namespace qexsdk
{

std::vector<std::string> KQexTable::GetNames() const
{
    std::vector<std::string> lNames;
    for (const KQexTableItem& lItem : mItems)
    {
        lNames.push_back(lItem.mName);
    }
    return lNames;
}

} // namespace qexsdk
