#include "JSONDataCache/DBData/Endpoint.h"

#include "Logging/LogStream.h"

#include <Poco/JSON/Object.h>

#include <algorithm>
#include <string_view>

namespace Orvi::DBData
{

namespace
{

/// The names of a request, sorted once so that each rule is looked up in logarithmic time.
class NameLookup
{
public:
    explicit NameLookup(const std::vector<std::string>& names)
        : m_names(names.begin(), names.end())
    {
        std::sort(m_names.begin(), m_names.end());
    }

    bool contains(const std::string& name) const
    {
        return std::binary_search(m_names.begin(), m_names.end(), std::string_view(name));
    }

private:
    std::vector<std::string_view> m_names;
};

} // namespace

bool Endpoint::checkGetAllowed(const std::vector<Endpoint>& endpoints)
{
    return std::any_of(endpoints.begin(), endpoints.end(),
                       [](const Endpoint& endpoint) { return endpoint.isGet() && endpoint.isGlobal(); });
}

bool Endpoint::checkPostAllowed(const std::vector<Endpoint>& endpoints,
                                const std::vector<std::string>& attrList, bool& missingAttribute,
                                bool& forbiddenAttribute)
{
    missingAttribute = false;
    forbiddenAttribute = false;
    if (endpoints.empty())
    {
        return false;
    }

    const NameLookup names(attrList);
    std::size_t matched = 0;
    for (const Endpoint& endpoint : endpoints)
    {
        if (!endpoint.isPost())
        {
            continue;
        }
        if (endpoint.isGlobal())
        {
            return true;
        }
        const std::string& name = endpoint.getAttribute()->getName();
        if (names.contains(name))
        {
            ++matched;
        }
        else if (endpoint.isRequired())
        {
            missingAttribute = true;
            LOG_WARNING("Write operation denied! Missing attribute " << name);
            return false;
        }
    }

    // A count, not a set comparison: a name given twice is counted twice against one rule.
    if (matched == 0 || matched < attrList.size())
    {
        forbiddenAttribute = true;
        LOG_WARNING("Write operation denied! Request contains updates for forbidden attributes");
        return false;
    }
    return true;
}

bool Endpoint::checkPostAllowed(const std::vector<Endpoint>& endpoints, const Poco::JSON::Object& json,
                                bool& missingAttribute, bool& forbiddenAttribute)
{
    return checkPostAllowed(endpoints, json.getNames(), missingAttribute, forbiddenAttribute);
}

bool Endpoint::checkDeleteAllowed(const std::vector<Endpoint>& endpoints,
                                  const std::vector<std::string>& attrList)
{
    if (endpoints.empty())
    {
        return false;
    }

    if (attrList.empty())
    {
        const bool allowed =
            std::any_of(endpoints.begin(), endpoints.end(),
                        [](const Endpoint& endpoint) { return endpoint.isDelete() && endpoint.isGlobal(); });
        if (!allowed)
        {
            LOG_WARNING("Delete operation denied! Element deletion is not allowed");
        }
        return allowed;
    }

    const NameLookup names(attrList);
    const auto matched =
        static_cast<std::size_t>(std::count_if(endpoints.begin(), endpoints.end(),
                                               [&names](const Endpoint& endpoint)
                                               {
                                                   return endpoint.isDelete() && !endpoint.isGlobal() &&
                                                          names.contains(endpoint.getAttribute()->getName());
                                               }));
    if (matched == 0 || matched != attrList.size())
    {
        LOG_WARNING("Delete operation denied! Request tries to remove attributes that must not be deleted");
        return false;
    }
    return true;
}

} // namespace Orvi::DBData
