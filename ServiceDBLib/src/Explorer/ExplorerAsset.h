#pragma once

#include <string_view>
#include <vector>

namespace Orvi::Explorer
{

/// One file of the explorer as built into the library from ServiceDBLib/explorer/.
struct ExplorerAsset
{
    std::string_view name;
    std::string_view mediaType;
    std::string_view bytes;

    static const std::vector<ExplorerAsset>& all();
    /// Every file, in the order of their names.
    static const ExplorerAsset* find(std::string_view name);
    /// The file of that name, or nullptr.
};

} // namespace Orvi::Explorer
