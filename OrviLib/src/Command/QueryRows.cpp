#include "Command/QueryRows.h"

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
    const SortingParameter::KeyReader valueOf = [this](std::size_t row, const std::string& key)
    { return isObject(row) ? member(row, key) : Poco::Dynamic::Var(); };
    // Stable sorts from the last criterion to the first leave the first one deciding.
    for (auto sorting = sortings.rbegin(); sorting != sortings.rend(); ++sorting)
    {
        (*sorting)->sort(selected, valueOf);
    }
}

} // namespace Orvi::Command
