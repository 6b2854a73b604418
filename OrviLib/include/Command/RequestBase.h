#pragma once

#include "Command/Query/QueryCollection.h"
#include "Command/UrlPath.h"

#include <Poco/SharedPtr.h>
#include <Poco/URI.h>

#include <string>
#include <vector>

namespace Orvi::Command
{

/// A request as the service database sees it: its address and the criteria of its query.
class RequestBase
{
public:
    RequestBase();
    /// A request for an empty, invalid address, without criteria.

    explicit RequestBase(const UrlPath& urlPath);
    /// Takes the address and parses its query into criteria; throws Poco::URISyntaxException for a query
    /// that does not follow the grammar of QueryParser.

    virtual ~RequestBase();

    RequestBase(const RequestBase&) = default;
    RequestBase(RequestBase&&) = default;
    RequestBase& operator=(const RequestBase&) = default;
    RequestBase& operator=(RequestBase&&) = default;

    const Poco::URI& getUri() const { return m_urlPath.getUri(); }

    const UrlPath& getUrlPath() const { return m_urlPath; }

    const RenderCriteriaMap& getRenderCriteria() const { return renderCriteria; }
    /// Fields, expansion, paging and sorting.

    const SearchCriteriaMap& getSearchCriteria() const { return searchCriteria; }
    /// Free text and attribute values.

    bool hasAnyCriteria() const { return hasRenderCriteria() || hasSearchCriteria(); }

    bool hasRenderCriteria() const { return !renderCriteria.empty(); }

    bool hasFieldsCriteria() const;
    /// True with "$fields".

    bool hasPropertyExpandCriteria() const;
    /// True with "$expand" in the form with names.

    bool hasSearchCriteria() const { return !searchCriteria.empty(); }

    bool hasFreetextCriteria() const;
    /// True with "$q".

    bool hasAttributeCriteria() const;
    /// True with at least one "name=value".

    unsigned int getExpansionLevel() const;
    /// The N of "$expand=N"; ExpandParameter::EXPANSION_LEVEL_NAMED (1) for "$expand" with names; 0 without
    /// "$expand".

    template <class T, class B>
    static void extractCriteria(std::vector<Poco::SharedPtr<T>>& out, const QueryCollectionMap<B>& map);
    /// Appends the criteria of class T from the map, in order. An entry that is empty or not a T appends
    /// an empty pointer, so that the output grows by the length of the entry. Nothing is cleared.

protected:
    void setUrlPath(const UrlPath& urlPath);
    /// Replaces the address and its criteria, as the constructor does; on an exception the request stays
    /// as it was.

private:
    UrlPath m_urlPath;
    RenderCriteriaMap renderCriteria;
    SearchCriteriaMap searchCriteria;
};

template <class T, class B>
void RequestBase::extractCriteria(std::vector<Poco::SharedPtr<T>>& out, const QueryCollectionMap<B>& map)
{
    const auto entry = map.find(queryCollectionKey<T>());
    if (entry == map.end())
    {
        return;
    }
    out.reserve(out.size() + entry->second.size());
    for (const Poco::SharedPtr<B>& criterion : entry->second)
    {
        out.push_back(criterion.template cast<T>());
    }
}

} // namespace Orvi::Command
