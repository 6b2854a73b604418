#include "Command/QueryRows.h"

#include <Poco/Bugcheck.h>

#include <algorithm>

namespace Orvi::Command
{

QueryRows::~QueryRows() = default;

Poco::Dynamic::Var QueryRows::renderWhole(std::size_t row)
{
    return render(row);
}

const std::vector<std::size_t>* QueryRows::orderOfAll(const Sortings&)
{
    return nullptr;
}

void QueryRows::sort(std::vector<std::size_t>& selected, const Sortings& sortings)
{
    const SortingParameter::KeyReader valueOf = keyReader();
    // Stable sorts from the last criterion to the first leave the first one deciding.
    for (auto sorting = sortings.rbegin(); sorting != sortings.rend(); ++sorting)
    {
        (*sorting)->sort(selected, valueOf);
    }
}

void QueryRows::reposition(std::vector<std::size_t>& order, std::vector<std::size_t> rows,
                           const Sortings& sortings)
{
    if (rows.empty())
    {
        return;
    }
    // Taken out all at once, so that the rows left stand in sorted order for each search of a place.
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    const auto end = std::remove_if(order.begin(), order.end(),
                                    [&rows](std::size_t row)
                                    { return std::binary_search(rows.begin(), rows.end(), row); });
    if (static_cast<std::size_t>(order.end() - end) != rows.size())
    {
        poco_bugcheck_msg("A row to move is not in the order");
    }
    order.erase(end, order.end());

    // The stable sorts of sort() order by the first criterion, then the next, and at last by the row.
    const SortingParameter::KeyReader valueOf = keyReader();
    const auto isBefore = [&](std::size_t left, std::size_t right)
    {
        for (const auto& sorting : sortings)
        {
            const int result = sorting->compareRows(left, right, valueOf);
            if (result != 0)
            {
                return result < 0;
            }
        }
        return left < right;
    };
    for (const std::size_t row : rows)
    {
        order.insert(std::lower_bound(order.begin(), order.end(), row, isBefore), row);
    }
}

SortingParameter::KeyReader QueryRows::keyReader()
{
    return [this](std::size_t row, const std::string& key)
    { return isObject(row) ? member(row, key) : Poco::Dynamic::Var(); };
}

} // namespace Orvi::Command
