#include "Command/QueryRows.h"

#include "Command/Query/SortingParameter.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace
{

using Orvi::Command::QueryRows;
using Orvi::Command::SortingParameter;
using Poco::Dynamic::Var;

// Rows of JSON objects with the members "n" and "s"; a row that holds no object stands for an element
// that is none.
class TableRows : public QueryRows
{
public:
    std::size_t size() const override { return m_rows.size(); }
    bool isObject(std::size_t row) override { return !m_rows[row].isNull(); }

    Var member(std::size_t row, const std::string& key) override
    {
        return m_rows[row]->has(key) ? m_rows[row]->get(key) : Var();
    }

    bool anyMember(std::size_t, const MemberTest&) override { return false; }
    Var render(std::size_t row) override { return m_rows[row]; }

    void add(const Var& n, const Var& s)
    {
        Poco::JSON::Object::Ptr row(new Poco::JSON::Object);
        if (!n.isEmpty())
        {
            row->set("n", n);
        }
        if (!s.isEmpty())
        {
            row->set("s", s);
        }
        m_rows.push_back(row);
    }

    void addNumbers(const std::vector<int>& numbers)
    {
        for (const int n : numbers)
        {
            add(n, Var());
        }
    }

    void addNoObject() { m_rows.emplace_back(); }

    void set(std::size_t row, const std::string& key, const Var& value) { m_rows[row]->set(key, value); }

    std::vector<std::size_t> sortedAll(const Sortings& sortings)
    {
        std::vector<std::size_t> order(size());
        std::iota(order.begin(), order.end(), 0);
        sort(order, sortings);
        return order;
    }

private:
    std::vector<Poco::JSON::Object::Ptr> m_rows;
};

QueryRows::Sortings sortingsOf(const std::string& sortby)
{
    return {new SortingParameter(sortby)};
}

// Sorts all rows, then changes the member "n" of one row and moves that row.
std::vector<std::size_t> orderAfterChange(TableRows& rows, const std::string& sortby, std::size_t row,
                                          const Var& n)
{
    const QueryRows::Sortings sortings = sortingsOf(sortby);
    std::vector<std::size_t> order = rows.sortedAll(sortings);
    rows.set(row, "n", n);
    rows.reposition(order, {row}, sortings);
    return order;
}

TEST(QueryRows, MovesAChangedRowToWhereSortingAgainPutsIt)
{
    TableRows sut;
    sut.addNumbers({5, 1, 3, 9});

    EXPECT_EQ(orderAfterChange(sut, "n", 3, 2), (std::vector<std::size_t>{1, 3, 2, 0}));
}

TEST(QueryRows, PutsAChangedRowThatTiesAmongItsEqualsByItsPlaceInTheRows)
{
    TableRows sut;
    sut.addNumbers({1, 2, 1, 1});

    EXPECT_EQ(orderAfterChange(sut, "-n", 1, 1), (std::vector<std::size_t>{0, 1, 2, 3}));
}

TEST(QueryRows, LeavesAnOrderAsItIsWithoutChangedRows)
{
    TableRows sut;
    sut.addNumbers({1, 2, 3});
    std::vector<std::size_t> order{2, 0, 1};

    sut.reposition(order, {}, sortingsOf("n"));

    EXPECT_EQ(order, (std::vector<std::size_t>{2, 0, 1}));
}

TEST(QueryRows, MovesSeveralChangedRowsAtOnceAsSortingAgainDoes)
{
    TableRows sut;
    for (int i = 0; i < 6; ++i)
    {
        sut.add(i, std::string(1, static_cast<char>('a' + i)));
    }
    sut.addNoObject();
    const QueryRows::Sortings sortings = sortingsOf("n");
    std::vector<std::size_t> order = sut.sortedAll(sortings);

    sut.set(0, "n", 4);
    sut.set(5, "n", "text");
    sut.set(2, "n", -1);
    sut.reposition(order, {5, 0, 2, 0}, sortings);

    EXPECT_EQ(order, sut.sortedAll(sortings));
    EXPECT_EQ(order, (std::vector<std::size_t>{2, 1, 3, 0, 4, 5, 6}));
}

TEST(QueryRows, MovesRandomlyChangedRowsToTheOrderThatSortingAgainGives)
{
    std::mt19937 engine(7);
    const std::vector<Var> values{Var(), 1, 2, 2.5, -3, "x", "a", "B", true, false};
    const std::vector<std::string> sortbys{"n", "-n", "s,-n", "-s,n"};
    for (const std::string& sortby : sortbys)
    {
        TableRows sut;
        for (int i = 0; i < 60; ++i)
        {
            sut.add(values[engine() % values.size()], values[engine() % values.size()]);
        }
        const QueryRows::Sortings sortings = sortingsOf(sortby);
        std::vector<std::size_t> order = sut.sortedAll(sortings);

        for (int round = 0; round < 50; ++round)
        {
            std::vector<std::size_t> changed;
            for (std::size_t i = engine() % 4; i > 0; --i)
            {
                const std::size_t row = engine() % sut.size();
                sut.set(row, engine() % 2 == 0 ? "n" : "s", values[1 + engine() % (values.size() - 1)]);
                changed.push_back(row);
            }
            sut.reposition(order, changed, sortings);

            ASSERT_EQ(order, sut.sortedAll(sortings)) << sortby << " round " << round;
        }
    }
}

} // namespace
