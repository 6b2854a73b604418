#pragma once

#include <Poco/URI.h>

#include <map>
#include <string>

namespace Orvi::Command
{

/// The parsed address of a request: its levels (service, resource, object), its kind and its query.
class UrlPath
{
public:
    using QueryParameterMap = std::multimap<std::string, std::string>;

    enum Characteristic
    {
        INVALID = 0,
        ROOT = 1,
        ROOT_ID = 2,
        SERVICE = 3,
        SERVICE_ID = 4,
        SERVICE_SPEC = 5,
        SERVICE_RIGHTS = 6,
        SERVICE_RESOURCE = 7,
        SERVICE_RESOURCE_ID = 8,
        SERVICE_RESOURCE_SPEC = 9,
        SERVICE_RESOURCE_OBJECT = 268435455,
        SERVICE_RESOURCE_ELEMENT = SERVICE_RESOURCE_OBJECT
    };

    static const std::string URI_ROOT;
    static const std::string URI_ROOT_API;
    static const std::string RESERVED_KEY_ID;
    static const std::string RESERVED_KEY_SPEC;
    static const std::string RESERVED_KEY_RIGHTS;
    static const std::string QUERY_WILDCARD;
    static const std::string QUERY_WILDCARD_HTML;
    static const std::string QUERY_FREETEXT_SEARCH;
    static const std::string QUERY_FIELDS;
    static const std::string QUERY_SORTBY;
    static const std::string QUERY_PAGING_OFFSET;
    static const std::string QUERY_PAGING_LIMIT;
    static const std::string QUERY_EXPAND;

    UrlPath();
    /// An empty, invalid path.

    explicit UrlPath(const Poco::URI& uri);
    /// Splits the address into its levels and decodes its query; never throws. An address of no
    /// known kind, or with a query that does not decode, is INVALID.

    const Poco::URI& getUri() const { return uri; }

    const std::string& getService() const { return service; }
    /// The first level; empty for the root and its keywords.

    const std::string& getResource() const { return resource; }
    /// The second level; empty where the address has no resource.

    const std::string& getElement() const { return element; }
    /// The third level, the key of an object; empty where the address has none.

    Characteristic getCharacteristic() const { return characteristic; }

    bool isValid() const { return characteristic != INVALID; }

    void setCharacteristicInvalid() { characteristic = INVALID; }

    static bool isReservedKeyword(Characteristic characteristic);
    /// True for the kinds that name a reserved keyword (ROOT_ID to SERVICE_RESOURCE_SPEC, but not
    /// SERVICE_RESOURCE).

    Poco::URI::QueryParameters getQueryParameters() const;
    /// All query parameters, decoded, in the order of the address.

    const QueryParameterMap& getQueryParameterMap() const { return queryParameter; }
    /// The decoded query parameters by name.

    bool operator==(const UrlPath& other) const;
    /// Equal when the addresses are equal.

    bool operator!=(const UrlPath& other) const { return !(*this == other); }

    bool operator<(const UrlPath& other) const;
    /// Orders by the address: scheme, user, host, port, path, query, fragment.

private:
    void parseLevels();
    bool parseQuery();

    Poco::URI uri;
    std::string service;
    std::string resource;
    std::string element;
    Characteristic characteristic;
    QueryParameterMap queryParameter;
};

} // namespace Orvi::Command
