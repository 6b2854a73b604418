#pragma once

#include "Command/Query/RenderCriterion.h"

#include <Poco/Dynamic/Var.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Orvi::Command
{

/// The order of "$sortby=a,-b": by a ascending, then by b descending.
///
/// The sort is stable. Values of one key compare numbers numerically, strings by their bytes and
/// booleans false before true. Different kinds of values order as numbers, strings, booleans, then
/// arrays and objects (equal among themselves); null and missing keys come last in either direction,
/// and so do elements that are not objects.
class SortingParameter : public RenderCriterion
{
public:
    /// One key of the order.
    struct SortKey
    {
        std::string name;
        bool descending;
    };

    static const char KEY_SEPARATOR;
    /// ',' between the keys of "$sortby".

    static const char DESCENDING_PREFIX;
    /// '-' in front of a key that sorts descending.

    explicit SortingParameter(const std::string& queryValue);
    /// Reads "a,-b"; invalid when the text or any key name in it is empty.

    explicit SortingParameter(std::vector<SortKey> sortKeys);
    /// Invalid when there is no key or a key without a name.

    ~SortingParameter() override;

    const std::vector<SortKey>& getSortKeys() const { return m_sortKeys; }

    using KeyReader = std::function<Poco::Dynamic::Var(std::size_t row, const std::string& key)>;
    /// The value of a key in a row; empty when the row has none or is not an object.

    void sort(std::vector<Poco::Dynamic::Var>& elements) const;
    /// Orders the elements by the keys.

    void sort(std::vector<std::size_t>& rows, const KeyReader& valueOf) const;
    /// Orders the rows by the keys as sort() orders their elements; each key is read once a row.

    int compareRows(std::size_t left, std::size_t right, const KeyReader& valueOf) const;
    /// Negative when the keys put row left first, positive when row right, 0 when they tie.

private:
    std::vector<SortKey> m_sortKeys;
};

} // namespace Orvi::Command
