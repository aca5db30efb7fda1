#include <apps/asf/report/table.h>

namespace asfapp
{

std::vector<std::string> KTable::GetNames() const
{
    std::vector<std::string> lNames;
    for (const KTableItem& lItem : mItems)
    {
        lNames.push_back(lItem.mName);
    }
    return lNames;
}

} // namespace asfapp
