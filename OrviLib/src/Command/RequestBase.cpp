#include "Command/RequestBase.h"

#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "Command/Query/ExpandParameter.h"
#include "Command/Query/FilterParameter.h"
#include "Command/Query/QueryParser.h"

#include <utility>

namespace Orvi::Command
{

namespace
{

template <class T, class B>
bool hasEntry(const QueryCollectionMap<B>& map)
{
    const auto entry = map.find(queryCollectionKey<T>());
    return entry != map.end() && !entry->second.empty();
}

} // namespace

RequestBase::RequestBase() = default;

RequestBase::RequestBase(const UrlPath& urlPath)
    : m_urlPath(urlPath)
{
    QueryParser::parse(m_urlPath.getQueryParameters(), renderCriteria, searchCriteria);
}

RequestBase::~RequestBase() = default;

void RequestBase::setUrlPath(const UrlPath& urlPath)
{
    RenderCriteriaMap newRenderCriteria;
    SearchCriteriaMap newSearchCriteria;
    QueryParser::parse(urlPath.getQueryParameters(), newRenderCriteria, newSearchCriteria);
    m_urlPath = urlPath;
    renderCriteria.swap(newRenderCriteria);
    searchCriteria.swap(newSearchCriteria);
}

bool RequestBase::hasFieldsCriteria() const
{
    return hasEntry<FilterParameter>(renderCriteria);
}

bool RequestBase::hasPropertyExpandCriteria() const
{
    std::vector<Poco::SharedPtr<ExpandParameter>> expansions;
    extractCriteria(expansions, renderCriteria);
    for (const Poco::SharedPtr<ExpandParameter>& expansion : expansions)
    {
        if (!expansion.isNull() && expansion->hasPropertyNames())
        {
            return true;
        }
    }
    return false;
}

bool RequestBase::hasFreetextCriteria() const
{
    return hasEntry<AnyValueSearch>(searchCriteria);
}

bool RequestBase::hasAttributeCriteria() const
{
    return hasEntry<AttributeValueSearch>(searchCriteria);
}

unsigned int RequestBase::getExpansionLevel() const
{
    std::vector<Poco::SharedPtr<ExpandParameter>> expansions;
    extractCriteria(expansions, renderCriteria);
    for (const Poco::SharedPtr<ExpandParameter>& expansion : expansions)
    {
        if (!expansion.isNull())
        {
            return expansion->getLevel();
        }
    }
    return 0;
}

} // namespace Orvi::Command
