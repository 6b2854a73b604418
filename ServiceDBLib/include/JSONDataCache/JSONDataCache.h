#pragma once

#include "Command/HttpResponse.h"
#include "Command/RequestBase.h"
#include "Command/UrlPath.h"
#include "Command/WebSocketResponseObject.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/InitialCacheData.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/Types.h>
#include <Poco/UUID.h>

#include <string>
#include <vector>

namespace Orvi::JSONDataCache
{

/// The in-memory database of one microservice and its query engine. Holds the service rows by
/// reference; entered by one thread at a time.
class JSONDataCache
{
public:
    static const std::string MIMETYPE_TEXT_PLAIN;
    /// "text/plain", the media type of id keywords.

    explicit JSONDataCache(DBData::ServiceMap& serviceCache);
    /// Binds the map, which must outlive the cache; its later changes are seen at once.

    JSONDataCache(const JSONDataCache&) = delete;
    JSONDataCache& operator=(const JSONDataCache&) = delete;

    virtual ~JSONDataCache();

    virtual Command::HTTPStatus queryCache(const Command::RequestBase& request,
                                           Command::HttpResponse& out_response, Poco::UInt16 requestPort);
    /// Answers a GET; out_response is filled only on success. A service is seen only on its own port,
    /// the root and the keywords on any. An unknown resource raises Poco::NullPointerException.

    virtual Command::HTTPStatus queryCache(const Command::RequestBase& request,
                                           Command::WebSocketResponseObject& out_response,
                                           Poco::UInt16 requestPort);
    /// The same for a subscription, which may not address a reserved keyword (500).

    virtual bool updateServiceUUID(const std::string& serviceName, const std::string& newuuid);
    /// Gives the named service a new UUID; an empty text clears it. False for an unknown service or a
    /// text that is not a UUID, which leaves the service as it was.

    InitialCacheData queryCacheInitial(const Command::UrlPath::Characteristic& characteristic,
                                       const std::string& servicename, const std::string& resourcename);
    /// Resolves an address against the rows. A resource without element is INVALID; an unknown resource
    /// raises Poco::NullPointerException after its warning.

    bool selectServices(std::vector<DBData::Service::Ptr>& retServices);
    /// Appends all services in name order; true when retServices is not empty.

    DBData::Service::Ptr selectService(const std::string& name);
    /// Null for an unknown name.

    bool selectService(const std::string& name, DBData::Service& retService);
    /// Copies the named service into retService; false for an unknown name.

    DBData::Resource::Ptr selectResource(const std::string& servicename, const std::string& resourcename);
    /// Null when the service or the resource is unknown.

    bool selectResource(const std::string& servicename, const std::string& name,
                        DBData::Resource& retResource, bool);
    /// Assigns the named resource to retResource, which fills the service behind its parent too; false
    /// when absent. The flag has no effect.

    bool selectResources(const std::string& servicename, std::vector<DBData::Resource::Ptr>& retResources);
    /// Appends the service's resources in name order; true when retResources is not empty.

    DBData::Element::Ptr selectElement(const std::string& servicename, const std::string& resourcename);
    /// The resource's element; null when the resource is unknown or has none.

    std::string selectResourceElementName(const std::string& servicename, const std::string& resourcename);
    /// Empty when the resource or its element is unknown.

protected:
    virtual Command::HTTPStatus queryCacheRoot(const Command::RequestBase& requestCommand,
                                               Command::WebSocketResponseObject& retResponse);
    /// Subscriptions to the root are not supported: 404.

    virtual Command::HTTPStatus queryCacheRoot(const Command::RequestBase& requestCommand,
                                               Command::HttpResponse& retResponse);
    /// Lists every service of the map, filtered but never paged; 404 when there are none.

    template <typename ResponseT>
    Command::HTTPStatus getResponseData(const Command::RequestBase& request, Poco::UInt16 requestPort,
                                        const InitialCacheData& data, ResponseT& out_response);
    /// Checks the port of the service and dispatches by the kind of address.

    template <typename ResponseT>
    Command::HTTPStatus queryCacheService(const Command::RequestBase& request, const DBData::Service& service,
                                          ResponseT& out_response);
    /// Lists the resources of a service; without a closing slash in the path, also the service record.

    template <typename ResponseT>
    Command::HTTPStatus queryCacheResource(const Command::RequestBase& request, ResponseT& out_response);
    /// Lists the objects of a resource.

    template <typename ResponseT>
    Command::HTTPStatus queryCacheElement(const Command::RequestBase& request, ResponseT& out_response);
    /// Answers one object of a resource.

    void constructArrayResponse(const Poco::JSON::Object::Ptr& baseObj,
                                const Poco::JSON::Array::Ptr& pDataArray,
                                const Poco::JSON::Object::Ptr& pPagingObject,
                                Command::HttpResponse& out_response);
    /// Wraps the array as "data" into baseObj (or a new envelope) with status and paging.

    void constructArrayResponse(const Poco::JSON::Object::Ptr& baseObj,
                                const Poco::JSON::Array::Ptr& pDataArray,
                                const Poco::JSON::Object::Ptr& pPagingObject,
                                Command::WebSocketResponseObject& out_response);
    /// Hands array and paging to the subscription answer; baseObj is not transmitted.

private:
    DBData::ServiceMap& m_serviceCache;
    const Poco::UUID m_systemUUID;
};

} // namespace Orvi::JSONDataCache
