#include "Explorer/ExplorerAsset.h"

#include <algorithm>

namespace Orvi::Explorer
{

const ExplorerAsset* ExplorerAsset::find(std::string_view name)
{
    const std::vector<ExplorerAsset>& assets = all();
    const auto found = std::find_if(assets.begin(), assets.end(),
                                    [name](const ExplorerAsset& asset) { return asset.name == name; });
    return found == assets.end() ? nullptr : &*found;
}

} // namespace Orvi::Explorer
