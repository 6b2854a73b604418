#include "Command/Query/SortingParameter.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace Orvi::Command
{

const char SortingParameter::KEY_SEPARATOR = ',';
const char SortingParameter::DESCENDING_PREFIX = '-';

namespace
{

// The order of the kinds of values; only values of one kind are compared by content.
enum Kind
{
    KIND_NUMBER,
    KIND_STRING,
    KIND_BOOLEAN,
    KIND_OTHER,
    KIND_MISSING
};

Kind kindOf(const Poco::Dynamic::Var& value)
{
    if (value.isEmpty())
    {
        return KIND_MISSING;
    }
    if (value.isBoolean())
    {
        return KIND_BOOLEAN;
    }
    if (value.isString())
    {
        return KIND_STRING;
    }
    if (value.isNumeric())
    {
        // NaN has no place among numbers; it would break the order.
        return value.isInteger() || !std::isnan(value.convert<double>()) ? KIND_NUMBER : KIND_OTHER;
    }
    return KIND_OTHER;
}

// A sort key of one element, read once before sorting.
struct KeyValue
{
    Kind kind;
    long double number; // exact for every 64-bit integer on the targets we build for
    std::string text;
    bool flag;
};

KeyValue readKey(const Poco::Dynamic::Var& value)
{
    KeyValue key{kindOf(value), 0, {}, false};
    switch (key.kind)
    {
    case KIND_NUMBER:
        if (value.isInteger() && value.isSigned())
        {
            key.number = static_cast<long double>(value.convert<Poco::Int64>());
        }
        else if (value.isInteger())
        {
            key.number = static_cast<long double>(value.convert<Poco::UInt64>());
        }
        else
        {
            key.number = static_cast<long double>(value.convert<double>());
        }
        break;
    case KIND_STRING:
        key.text = value.convert<std::string>();
        break;
    case KIND_BOOLEAN:
        key.flag = value.convert<bool>();
        break;
    default:
        break;
    }
    return key;
}

// Negative, zero or positive, in ascending order.
int compareContent(const KeyValue& a, const KeyValue& b)
{
    switch (a.kind)
    {
    case KIND_NUMBER:
        return a.number < b.number ? -1 : (b.number < a.number ? 1 : 0);
    case KIND_STRING:
        return a.text.compare(b.text);
    case KIND_BOOLEAN:
        return static_cast<int>(a.flag) - static_cast<int>(b.flag);
    default:
        return 0;
    }
}

std::vector<SortingParameter::SortKey> splitKeys(const std::string& queryValue)
{
    std::vector<SortingParameter::SortKey> keys;
    std::size_t begin = 0;
    for (;;)
    {
        std::size_t end = queryValue.find(SortingParameter::KEY_SEPARATOR, begin);
        const bool last = end == std::string::npos;
        if (last)
        {
            end = queryValue.size();
        }
        const bool descending = end > begin && queryValue[begin] == SortingParameter::DESCENDING_PREFIX;
        const std::size_t nameBegin = descending ? begin + 1 : begin;
        keys.push_back({queryValue.substr(nameBegin, end - nameBegin), descending});
        if (last)
        {
            return keys;
        }
        begin = end + 1;
    }
}

// The order of one key's values: kinds first, in either direction; within a kind as the key says.
int compareKeys(const KeyValue& a, const KeyValue& b, const SortingParameter::SortKey& key)
{
    if (a.kind != b.kind)
    {
        return a.kind < b.kind ? -1 : 1;
    }
    const int result = compareContent(a, b);
    const int sign = (result > 0) - (result < 0);
    return key.descending ? -sign : sign;
}

} // namespace

SortingParameter::SortingParameter(const std::string& queryValue)
    : SortingParameter(splitKeys(queryValue))
{
}

SortingParameter::SortingParameter(std::vector<SortKey> sortKeys)
    : m_sortKeys(std::move(sortKeys))
{
    m_valid = !m_sortKeys.empty() && std::none_of(m_sortKeys.begin(), m_sortKeys.end(),
                                                  [](const SortKey& key) { return key.name.empty(); });
}

SortingParameter::~SortingParameter() = default;

void SortingParameter::sort(std::vector<Poco::Dynamic::Var>& elements) const
{
    if (m_sortKeys.empty() || elements.size() < 2)
    {
        return;
    }
    std::vector<std::size_t> order(elements.size());
    std::iota(order.begin(), order.end(), 0);
    sort(order,
         [&elements](std::size_t row, const std::string& key) { return memberOf(elements[row], key); });

    std::vector<Poco::Dynamic::Var> sorted;
    sorted.reserve(elements.size());
    for (const std::size_t index : order)
    {
        sorted.push_back(elements[index]);
    }
    elements.swap(sorted);
}

void SortingParameter::sort(std::vector<std::size_t>& rows, const KeyReader& valueOf) const
{
    const std::size_t keyCount = m_sortKeys.size();
    if (keyCount == 0 || rows.size() < 2)
    {
        return;
    }

    // All keys of all rows are read once, row by row, so that comparing costs no lookups.
    std::vector<KeyValue> keys;
    keys.reserve(rows.size() * keyCount);
    for (const std::size_t row : rows)
    {
        for (const SortKey& sortKey : m_sortKeys)
        {
            keys.push_back(readKey(valueOf(row, sortKey.name)));
        }
    }

    std::vector<std::size_t> order(rows.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t left, std::size_t right)
                     {
                         for (std::size_t k = 0; k < keyCount; ++k)
                         {
                             const int result = compareKeys(keys[left * keyCount + k],
                                                            keys[right * keyCount + k], m_sortKeys[k]);
                             if (result != 0)
                             {
                                 return result < 0;
                             }
                         }
                         return false;
                     });

    std::vector<std::size_t> sorted;
    sorted.reserve(rows.size());
    for (const std::size_t index : order)
    {
        sorted.push_back(rows[index]);
    }
    rows.swap(sorted);
}

int SortingParameter::compareRows(std::size_t left, std::size_t right, const KeyReader& valueOf) const
{
    for (const SortKey& sortKey : m_sortKeys)
    {
        const int result =
            compareKeys(readKey(valueOf(left, sortKey.name)), readKey(valueOf(right, sortKey.name)), sortKey);
        if (result != 0)
        {
            return result;
        }
    }
    return 0;
}

} // namespace Orvi::Command
