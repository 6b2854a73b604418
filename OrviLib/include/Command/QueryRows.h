#pragma once

#include "Command/Query/SortingParameter.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/SharedPtr.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Orvi::Command
{

/// A list that QueryFilterJSON searches, sorts and pages without holding it as JSON.
///
/// Each row stands for one element of the JSON array that the list would render to. Search, sort and
/// paging read single members; only the rows of the answer are rendered. An implementation gives the
/// members exactly as the rendered element would hold them, so that the answer is the one that the
/// rendered array gives.
class QueryRows
{
public:
    using MemberTest = std::function<bool(const Poco::Dynamic::Var&)>;
    /// Decides on one member value.

    using Sortings = std::vector<Poco::SharedPtr<SortingParameter>>;
    /// The sort criteria of a query, the first deciding.

    virtual ~QueryRows();

    virtual std::size_t size() const = 0;

    virtual bool isObject(std::size_t row) = 0;
    /// False for an element that is not a JSON object: search keeps it, sorting puts it last and paging by
    /// id passes over it.

    virtual Poco::Dynamic::Var member(std::size_t row, const std::string& key) = 0;
    /// The value under key in the rendered element; empty when it has none or it is null.

    virtual bool anyMember(std::size_t row, const MemberTest& test) = 0;
    /// True when test accepts a member of the rendered element. Null members may be left out.

    virtual Poco::Dynamic::Var render(std::size_t row) = 0;
    /// The rendered element.

    virtual Poco::Dynamic::Var renderWhole(std::size_t row);
    /// The rendered element for an answer that neither leaves members out nor expands them; it may be a
    /// value that stringifies as the element does without being JSON. By default render().

    void sort(std::vector<std::size_t>& selected, const Sortings& sortings);
    /// Orders the selected rows (ascending) by the sortings, rows that compare equal keeping their order.

    virtual const std::vector<std::size_t>* orderOfAll(const Sortings& sortings);
    /// The order that sort() gives all rows, when the rows keep it so that it need not be sorted again;
    /// null (the default) otherwise.

    void reposition(std::vector<std::size_t>& order, std::vector<std::size_t> rows, const Sortings& sortings);
    /// Moves the rows whose members have changed since sort() gave the order to where sort() puts them
    /// now; the members of every other row must be as they were. A row missing from the order is a
    /// bugcheck.

protected:
    QueryRows() = default;
    QueryRows(const QueryRows&) = default;
    QueryRows& operator=(const QueryRows&) = default;

private:
    SortingParameter::KeyReader keyReader();
    /// The members as sorting reads them: every member of a row that is not an object is null.
};

} // namespace Orvi::Command
