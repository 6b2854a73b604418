#include "Command/QueryFilterJSON.h"

#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "Command/Query/ExpandParameter.h"
#include "Command/Query/FilterParameter.h"
#include "Command/Query/Paging.h"
#include "Command/Query/SortingParameter.h"
#include "Command/ResponseObject.h"
#include "Command/UrlPath.h"

#include <Poco/Exception.h>
#include <Poco/Types.h>
#include <Poco/URI.h>

#include <algorithm>
#include <string>
#include <utility>

namespace Orvi::Command
{

namespace
{

const char QUERY_BEGIN = '?';
const char QUERY_SEPARATOR = '&';
const char VALUE_BEGIN = '=';
const char* const PATH_END = "?#";

// The criteria of a request that take effect; empty and invalid entries are dropped.
struct Criteria
{
    std::vector<Poco::SharedPtr<AttributeValueSearch>> attributeSearches;
    std::vector<Poco::SharedPtr<AnyValueSearch>> freeTextSearches;
    std::vector<Poco::SharedPtr<SortingParameter>> sortings;
    std::vector<Poco::SharedPtr<Paging>> pagings;
    std::vector<Poco::SharedPtr<FilterParameter>> filters;
    std::vector<Poco::SharedPtr<ExpandParameter>> expansions;

    bool rendersObjects() const { return !filters.empty() || !expansions.empty(); }
};

template <class T, class B>
std::vector<Poco::SharedPtr<T>> applicable(const QueryCollectionMap<B>& map)
{
    std::vector<Poco::SharedPtr<T>> criteria;
    RequestBase::extractCriteria(criteria, map);
    criteria.erase(std::remove_if(criteria.begin(), criteria.end(),
                                  [](const Poco::SharedPtr<T>& criterion)
                                  { return criterion.isNull() || !criterion->isValid(); }),
                   criteria.end());
    return criteria;
}

Criteria renderCriteriaOf(const RequestBase& request)
{
    Criteria criteria;
    const RenderCriteriaMap& render = request.getRenderCriteria();
    criteria.filters = applicable<FilterParameter>(render);
    criteria.expansions = applicable<ExpandParameter>(render);
    // Only named expansion changes rendered objects; a level has taken effect when they were made.
    criteria.expansions.erase(std::remove_if(criteria.expansions.begin(), criteria.expansions.end(),
                                             [](const Poco::SharedPtr<ExpandParameter>& expansion)
                                             { return !expansion->hasPropertyNames(); }),
                              criteria.expansions.end());
    return criteria;
}

Criteria criteriaOf(const RequestBase& request)
{
    Criteria criteria = renderCriteriaOf(request);
    const RenderCriteriaMap& render = request.getRenderCriteria();
    const SearchCriteriaMap& search = request.getSearchCriteria();
    criteria.attributeSearches = applicable<AttributeValueSearch>(search);
    criteria.freeTextSearches = applicable<AnyValueSearch>(search);
    criteria.sortings = applicable<SortingParameter>(render);
    criteria.pagings = applicable<Paging>(render);
    return criteria;
}

bool passesSearch(QueryRows& rows, std::size_t row, const Criteria& criteria)
{
    if (!rows.isObject(row))
    {
        return true;
    }
    for (const Poco::SharedPtr<AttributeValueSearch>& search : criteria.attributeSearches)
    {
        if (!search->match(rows.member(row, search->getAttributeName())))
        {
            return false;
        }
    }
    for (const Poco::SharedPtr<AnyValueSearch>& search : criteria.freeTextSearches)
    {
        if (!rows.anyMember(row, [&search](const Poco::Dynamic::Var& value) { return search->match(value); }))
        {
            return false;
        }
    }
    return true;
}

// The elements of a JSON array as rows; it holds its own references, so that the array may be replaced.
class JsonArrayRows : public QueryRows
{
public:
    explicit JsonArrayRows(const Poco::JSON::Array& in)
        : m_elements(in.begin(), in.end())
    {
    }

    std::size_t size() const override { return m_elements.size(); }

    bool isObject(std::size_t row) override
    {
        return QueryParameter::jsonObjectOf(m_elements[row]) != nullptr;
    }

    Poco::Dynamic::Var member(std::size_t row, const std::string& key) override
    {
        return QueryParameter::memberOf(m_elements[row], key);
    }

    bool anyMember(std::size_t row, const MemberTest& test) override
    {
        const Poco::JSON::Object* object = QueryParameter::jsonObjectOf(m_elements[row]);
        return object != nullptr && std::any_of(object->begin(), object->end(),
                                                [&test](const Poco::JSON::Object::ValueType& entry)
                                                { return test(entry.second); });
    }

    Poco::Dynamic::Var render(std::size_t row) override { return m_elements[row]; }

private:
    std::vector<Poco::Dynamic::Var> m_elements;
};

void renderObject(const Poco::JSON::Object& in, const Criteria& criteria, Poco::JSON::Object& out)
{
    Poco::JSON::Object result;
    for (const auto& [key, value] : in)
    {
        const bool selected = std::all_of(criteria.filters.begin(), criteria.filters.end(),
                                          [&key = key](const Poco::SharedPtr<FilterParameter>& filter)
                                          { return filter->isSelected(key); });
        if (!selected)
        {
            continue;
        }
        Poco::Dynamic::Var rendered = value;
        for (const Poco::SharedPtr<FilterParameter>& filter : criteria.filters)
        {
            rendered = filter->renderField(key, rendered);
        }
        for (const Poco::SharedPtr<ExpandParameter>& expansion : criteria.expansions)
        {
            rendered = expansion->renderField(key, rendered);
        }
        result.set(key, rendered);
    }
    out = std::move(result);
}

Poco::Dynamic::Var renderElement(const Poco::Dynamic::Var& element, const Criteria& criteria)
{
    const Poco::JSON::Object* object = QueryParameter::jsonObjectOf(element);
    if (object == nullptr || !criteria.rendersObjects())
    {
        return element;
    }
    Poco::JSON::Object::Ptr rendered = new Poco::JSON::Object();
    renderObject(*object, criteria, *rendered);
    return rendered;
}

// The request's address with "$offset" set to the given index; every other parameter stays as it was
// written, and "$offset" is appended when the request had none.
std::string pageAddress(const Poco::URI& uri, std::size_t offset)
{
    std::string address = uri.getPathEtc();
    address.erase(std::min(address.find_first_of(PATH_END), address.size()));
    const std::string offsetParameter = UrlPath::QUERY_PAGING_OFFSET + VALUE_BEGIN + std::to_string(offset);

    std::string query;
    bool replaced = false;
    const std::string& rawQuery = uri.getRawQuery();
    std::size_t begin = 0;
    while (!rawQuery.empty() && begin <= rawQuery.size())
    {
        std::size_t end = rawQuery.find(QUERY_SEPARATOR, begin);
        if (end == std::string::npos)
        {
            end = rawQuery.size();
        }
        const std::string piece = rawQuery.substr(begin, end - begin);
        const std::string rawName = piece.substr(0, piece.find(VALUE_BEGIN));
        std::string name;
        try
        {
            Poco::URI::decode(rawName, name, true);
        }
        catch (const Poco::SyntaxException&)
        {
            name = rawName;
        }
        if (begin > 0)
        {
            query += QUERY_SEPARATOR;
        }
        if (name == UrlPath::QUERY_PAGING_OFFSET)
        {
            query += offsetParameter;
            replaced = true;
        }
        else
        {
            query += piece;
        }
        begin = end + 1;
    }
    if (!replaced)
    {
        if (!query.empty())
        {
            query += QUERY_SEPARATOR;
        }
        query += offsetParameter;
    }
    return address + QUERY_BEGIN + query;
}

Poco::JSON::Object::Ptr pagingObject(const Paging& paging, const Paging::Window& window, std::size_t total,
                                     const RequestBase& request)
{
    const auto limit = static_cast<std::size_t>(paging.getLimit());
    Poco::JSON::Object::Ptr result = new Poco::JSON::Object();
    if (paging.isUuidOffset())
    {
        result->set(ResponseObject::FIELD_PAGING_OFFSET_ID, paging.getUuidOffset());
    }
    result->set(ResponseObject::FIELD_PAGING_LIMIT, static_cast<Poco::UInt64>(limit));
    result->set(ResponseObject::FIELD_PAGING_TOTAL, static_cast<Poco::UInt64>(total));
    result->set(ResponseObject::FIELD_PAGING_TOTAL_PAGES,
                static_cast<Poco::UInt64>(limit == 0 ? 0 : (total + limit - 1) / limit));
    if (!window.located)
    {
        return result;
    }
    result->set(ResponseObject::FIELD_PAGING_OFFSET, static_cast<Poco::UInt64>(window.offset));
    if (limit == 0)
    {
        return result;
    }
    if (window.offset > 0 && total > 0)
    {
        const std::size_t previous = std::min(window.offset, total);
        result->set(ResponseObject::FIELD_PAGING_PREVIOUS,
                    pageAddress(request.getUri(), previous > limit ? previous - limit : 0));
    }
    if (window.offset + limit < total)
    {
        result->set(ResponseObject::FIELD_PAGING_NEXT, pageAddress(request.getUri(), window.offset + limit));
    }
    return result;
}

void filterRows(QueryRows& rows, const RequestBase& request, Poco::JSON::Array& out,
                Poco::JSON::Object::Ptr* out_paging)
{
    const Criteria criteria = criteriaOf(request);
    const bool searches = !criteria.attributeSearches.empty() || !criteria.freeTextSearches.empty();

    // Without search and sort every row stands where it is, and no list of the rows is made; an order of
    // all rows that the rows keep is taken as it is.
    const bool asTheyAre = !searches && criteria.sortings.empty();
    const std::vector<std::size_t>* kept =
        !searches && !criteria.sortings.empty() ? rows.orderOfAll(criteria.sortings) : nullptr;
    std::vector<std::size_t> selected;
    if (!asTheyAre && kept == nullptr)
    {
        selected.reserve(rows.size());
        for (std::size_t row = 0; row < rows.size(); ++row)
        {
            if (!searches || passesSearch(rows, row, criteria))
            {
                selected.push_back(row);
            }
        }
        if (!criteria.sortings.empty())
        {
            rows.sort(selected, criteria.sortings);
        }
    }
    const std::vector<std::size_t>& order = kept != nullptr ? *kept : selected;
    const std::size_t count = asTheyAre ? rows.size() : order.size();
    const auto rowAt = [&](std::size_t index) { return asTheyAre ? index : order[index]; };

    std::size_t first = 0;
    std::size_t last = count;
    if (out_paging != nullptr && !criteria.pagings.empty())
    {
        const Paging& paging = *criteria.pagings.front();
        const Paging::Window window = paging.locate(count,
                                                    [&](std::size_t index)
                                                    {
                                                        const std::size_t row = rowAt(index);
                                                        return rows.isObject(row)
                                                                   ? rows.member(row, QueryParameter::KEY_ID)
                                                                   : Poco::Dynamic::Var();
                                                    });
        first = window.begin;
        last = window.end;
        *out_paging = pagingObject(paging, window, count, request);
    }

    Poco::JSON::Array result;
    for (std::size_t index = first; index < last; ++index)
    {
        const std::size_t row = rowAt(index);
        result.add(criteria.rendersObjects() ? renderElement(rows.render(row), criteria)
                                             : rows.renderWhole(row));
    }
    out = std::move(result);
}

void filterArray(const Poco::JSON::Array& in, const RequestBase& request, Poco::JSON::Array& out,
                 Poco::JSON::Object::Ptr* out_paging)
{
    JsonArrayRows rows(in);
    filterRows(rows, request, out, out_paging);
}

} // namespace

void QueryFilterJSON::filterJSONArrayByQuery(const Poco::JSON::Array& in, const RequestBase& request,
                                             Poco::JSON::Array& out)
{
    filterArray(in, request, out, nullptr);
}

void QueryFilterJSON::filterJSONArrayByQuery(const Poco::JSON::Array& in, const RequestBase& request,
                                             Poco::JSON::Array& out, Poco::JSON::Object::Ptr& out_paging)
{
    filterArray(in, request, out, &out_paging);
}

void QueryFilterJSON::filterRowsByQuery(QueryRows& rows, const RequestBase& request, Poco::JSON::Array& out)
{
    filterRows(rows, request, out, nullptr);
}

void QueryFilterJSON::filterRowsByQuery(QueryRows& rows, const RequestBase& request, Poco::JSON::Array& out,
                                        Poco::JSON::Object::Ptr& out_paging)
{
    filterRows(rows, request, out, &out_paging);
}

bool QueryFilterJSON::rendersObjects(const RequestBase& request)
{
    return renderCriteriaOf(request).rendersObjects();
}

void QueryFilterJSON::filterJSONObjectByQuery(const Poco::JSON::Object& in, const RequestBase& request,
                                              Poco::JSON::Object& out)
{
    const Criteria criteria = renderCriteriaOf(request);
    if (criteria.rendersObjects())
    {
        renderObject(in, criteria, out);
    }
    else if (&in != &out)
    {
        out = in;
    }
}

} // namespace Orvi::Command
