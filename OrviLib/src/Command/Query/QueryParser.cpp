#include "Command/Query/QueryParser.h"

#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "Command/Query/ExpandParameter.h"
#include "Command/Query/FilterParameter.h"
#include "Command/Query/Paging.h"
#include "Command/Query/SortingParameter.h"
#include "Command/UrlPath.h"

#include <Poco/Exception.h>

#include <set>
#include <utility>

namespace Orvi::Command
{

const char QueryParser::RESERVED_PREFIX = '$';

namespace
{

const std::string MSG_INVALID_VALUE = "invalid value of ";
const std::string MSG_EMPTY_VALUE = "empty value of ";
const std::string MSG_UNKNOWN_PARAMETER = "unknown query parameter: ";
const std::string MSG_REPEATED_PARAMETER = "query parameter given twice: ";
const std::string MSG_MISSING_NAME = "query parameter without a name: =";

[[noreturn]] void fail(const std::string& message)
{
    throw Poco::URISyntaxException(message);
}

[[noreturn]] void failInvalidValue(const std::string& name, const std::string& value)
{
    fail(MSG_INVALID_VALUE + name + ": " + value);
}

template <class B, class T>
void addCriterion(QueryCollectionMap<B>& map, Poco::SharedPtr<T> criterion, const std::string& name,
                  const std::string& value)
{
    if (!criterion->isValid())
    {
        failInvalidValue(name, value);
    }
    const T& instance = *criterion;
    map[queryCollectionKey(typeid(instance))].emplace_back(std::move(criterion));
}

template <class B>
void mergeInto(QueryCollectionMap<B>& source, QueryCollectionMap<B>& target)
{
    for (auto& entry : source)
    {
        auto& criteria = target[entry.first];
        criteria.insert(criteria.end(), std::make_move_iterator(entry.second.begin()),
                        std::make_move_iterator(entry.second.end()));
    }
}

Poco::SharedPtr<Paging> makePaging(const std::string* offsetText, const std::string* limitText)
{
    int numberOffset = 0;
    std::string uuidOffset;
    if (offsetText != nullptr && !Paging::parseOffset(*offsetText, numberOffset, uuidOffset))
    {
        failInvalidValue(UrlPath::QUERY_PAGING_OFFSET, *offsetText);
    }
    int limit = Paging::PAGING_LIMIT_DEFAULT;
    if (limitText != nullptr && !Paging::parseLimit(*limitText, limit))
    {
        failInvalidValue(UrlPath::QUERY_PAGING_LIMIT, *limitText);
    }
    Paging::PagingRequestType requestType = Paging::OFFSET_LIMIT;
    if (limitText == nullptr)
    {
        requestType = Paging::OFFSET;
    }
    else if (offsetText == nullptr)
    {
        requestType = Paging::LIMIT;
    }
    if (!uuidOffset.empty())
    {
        return new Paging(uuidOffset, limit, requestType);
    }
    return new Paging(numberOffset, limit, requestType);
}

} // namespace

void QueryParser::parse(const Poco::URI::QueryParameters& parameters, RenderCriteriaMap& out_renderCriteria,
                        SearchCriteriaMap& out_searchCriteria)
{
    RenderCriteriaMap render;
    SearchCriteriaMap search;
    std::set<std::string> reservedSeen;
    const std::string* offsetText = nullptr;
    const std::string* limitText = nullptr;

    for (const auto& [name, value] : parameters)
    {
        if (name.empty())
        {
            if (value.empty())
            {
                continue;
            }
            fail(MSG_MISSING_NAME + value);
        }
        if (name.front() != RESERVED_PREFIX)
        {
            addCriterion(search, Poco::SharedPtr<AttributeValueSearch>(new AttributeValueSearch(name, value)),
                         name, value);
            continue;
        }

        const bool known = name == UrlPath::QUERY_FIELDS || name == UrlPath::QUERY_EXPAND ||
                           name == UrlPath::QUERY_FREETEXT_SEARCH || name == UrlPath::QUERY_PAGING_OFFSET ||
                           name == UrlPath::QUERY_PAGING_LIMIT || name == UrlPath::QUERY_SORTBY;
        if (!known)
        {
            fail(MSG_UNKNOWN_PARAMETER + name);
        }
        if (!reservedSeen.insert(name).second)
        {
            fail(MSG_REPEATED_PARAMETER + name);
        }
        if (value.empty())
        {
            fail(MSG_EMPTY_VALUE + name);
        }

        if (name == UrlPath::QUERY_FIELDS)
        {
            addCriterion(render, Poco::SharedPtr<FilterParameter>(new FilterParameter(value)), name, value);
        }
        else if (name == UrlPath::QUERY_EXPAND)
        {
            addCriterion(render, Poco::SharedPtr<ExpandParameter>(new ExpandParameter(value)), name, value);
        }
        else if (name == UrlPath::QUERY_FREETEXT_SEARCH)
        {
            addCriterion(search, Poco::SharedPtr<AnyValueSearch>(new AnyValueSearch(value)), name, value);
        }
        else if (name == UrlPath::QUERY_SORTBY)
        {
            addCriterion(render, Poco::SharedPtr<SortingParameter>(new SortingParameter(value)), name, value);
        }
        else if (name == UrlPath::QUERY_PAGING_OFFSET)
        {
            offsetText = &value;
        }
        else
        {
            limitText = &value;
        }
    }

    if (offsetText != nullptr || limitText != nullptr)
    {
        Poco::SharedPtr<Paging> paging = makePaging(offsetText, limitText);
        const Paging& instance = *paging;
        render[queryCollectionKey(typeid(instance))].emplace_back(std::move(paging));
    }

    mergeInto(render, out_renderCriteria);
    mergeInto(search, out_searchCriteria);
}

} // namespace Orvi::Command
