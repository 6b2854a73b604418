#include "JSONDataCache/DBData/AttributeIndex.h"

#include <Poco/RegularExpression.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeIndex;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::Index::SimpleValue;
using Poco::Dynamic::Var;

/// An integer index over as many cells as distinct keys, cell i holding the value i.
class FilledIndex
{
public:
    explicit FilledIndex(std::int64_t keys)
        : m_attribute(new Attribute("odometer", Orvi::DBData::AttrType_Integer, false))
        , m_index(*m_attribute)
    {
        m_cells.reserve(static_cast<std::size_t>(keys));
        for (std::int64_t i = 0; i < keys; ++i)
        {
            m_cells.emplace_back(new AttributeValue(i + 1, m_attribute, i + 1));
            m_index.update(*m_cells.back(), Var(Attribute::Integer(i)));
        }
    }

    Attribute::Ptr m_attribute;
    AttributeIndex<SimpleValue> m_index;
    std::vector<Poco::SharedPtr<AttributeValue>> m_cells;
};

void BM_IndexUpdateOfAChangingValue(benchmark::State& state)
{
    const std::int64_t keys = state.range(0);
    FilledIndex filled(keys);
    std::int64_t next = 0;
    std::int64_t round = 1;

    for (auto _ : state)
    {
        // Each cell moves to a value that no other cell holds, so the number of keys stays the same.
        const Var value(Attribute::Integer(next + round * keys));
        benchmark::DoNotOptimize(
            filled.m_index.update(*filled.m_cells[static_cast<std::size_t>(next)], value));
        if (++next == keys)
        {
            next = 0;
            ++round;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_IndexFindByValue(benchmark::State& state)
{
    const std::int64_t keys = state.range(0);
    FilledIndex filled(keys);
    const Var wanted(Attribute::Integer(keys / 2));

    for (auto _ : state)
    {
        benchmark::DoNotOptimize(filled.m_index.find(wanted));
    }
    state.SetItemsProcessed(state.iterations() * keys);
}

void BM_IndexFindByRegularExpression(benchmark::State& state)
{
    const std::int64_t keys = state.range(0);
    FilledIndex filled(keys);
    const Poco::RegularExpression wanted("12[0-9]*5");

    for (auto _ : state)
    {
        benchmark::DoNotOptimize(filled.m_index.find(wanted));
    }
    state.SetItemsProcessed(state.iterations() * keys);
}

} // namespace

BENCHMARK(BM_IndexUpdateOfAChangingValue)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(BM_IndexFindByValue)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(BM_IndexFindByRegularExpression)->Arg(1000)->Arg(10000)->Arg(100000);
