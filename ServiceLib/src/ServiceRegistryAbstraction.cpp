#include "ServiceRegistryAbstraction.h"

#include "Data/AttributeValueArray.h"
#include "Logging/LogStream.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/SharedPtr.h>
#include <Poco/StreamCopier.h>
#include <Poco/String.h>
#include <Poco/UUID.h>

#include <cstddef>
#include <sstream>

namespace Orvi::Service
{

const std::string ServiceRegistryAbstraction::REGISTRY_PATH = "/registry/services";
const Poco::Timespan ServiceRegistryAbstraction::DEFAULT_CONNECT_TIMEOUT(2, 0);
const Poco::Timespan ServiceRegistryAbstraction::DEFAULT_RECEIVE_TIMEOUT(5, 0);

namespace
{

using Poco::Net::HTTPRequest;
using Poco::Net::HTTPResponse;
using Poco::Net::StreamSocket;

const std::string REGISTERING = "Registering";
const std::string UNREGISTERING = "Unregistering";

// What went wrong, the end of a failure's log line.
const std::string NOT_HTTP = "the answer is not HTTP";
const std::string NO_LOCATION = "answered 201 without a Location";
const std::string NO_NAME = "the service has no name";
const std::string NO_ID = "the service has no id";

std::string noConnection(const Poco::Exception& error)
{
    return "no connection (" + error.displayText() + ")";
}

std::string noAnswer(const Poco::Timespan& receiveTimeout)
{
    return "no answer within " + std::to_string(receiveTimeout.totalMilliseconds()) + " ms";
}

std::string exchangeFailed(const Poco::Exception& error)
{
    return "the exchange failed (" + error.displayText() + ")";
}

std::string malformedLocation(const std::string& location)
{
    return "answered 201 with the malformed Location '" + location + "'";
}

// The registry's error answers carry {"code":..., "message":..., "status":"error"}; other bodies say
// nothing we could log.
std::string errorMessage(const std::string& body)
{
    try
    {
        const Poco::JSON::Object::Ptr answer =
            Poco::JSON::Parser().parse(body).extract<Poco::JSON::Object::Ptr>();
        const Poco::Dynamic::Var message = answer->get("message");
        if (answer->optValue<std::string>("status", "") == "error" && message.isString())
        {
            return message.extract<std::string>();
        }
    }
    catch (const Poco::Exception&)
    {
    }
    return {};
}

std::string answered(const HTTPResponse& response, const std::string& body)
{
    std::string text = "answered " + std::to_string(static_cast<int>(response.getStatus()));
    if (!response.getReason().empty())
    {
        text += " " + response.getReason();
    }
    const std::string message = errorMessage(body);
    if (!message.empty())
    {
        text += ": " + message;
    }
    return text;
}

std::string registryName()
{
    return ServiceRegistryConnection::ADDRESS + ":" + std::to_string(ServiceRegistryConnection::PORT);
}

void logFailure(const std::string& action, const std::string& name, const std::string& reason)
{
    LOG_ERROR(action << " service '" << name << "' at service registry " << registryName()
                     << " failed: " << reason);
}

void logUnknownId(const std::string& name, const std::string& id)
{
    LOG_WARNING(UNREGISTERING << " service '" << name << "' at service registry " << registryName()
                              << ": the registry does not know id " << id << "; counted as unregistered");
}

std::string nameOf(const MicroServiceInfo& info)
{
    try
    {
        return info.getName();
    }
    catch (const Poco::Exception&)
    {
        return {};
    }
}

Poco::JSON::Array::Ptr toArray(const Data::AttributeValueStringArray& texts)
{
    Poco::JSON::Array::Ptr array = new Poco::JSON::Array;
    for (const Data::AttributeValueString& text : texts)
    {
        array->add(text.get());
    }
    return array;
}

// The body of a registration; host is the address at which the registry reaches this process.
std::string describe(const MicroServiceInfo& info, const std::string& name, const std::string& host)
{
    Poco::JSON::Object service(Poco::JSON_PRESERVE_KEY_ORDER);
    service.set("name", name);
    service.set("host", host);
    service.set("port", info.getPort());
    service.set("description", info.getDescription());
    service.set("versions", toArray(info.getVersions()));
    service.set("privileges", toArray(info.getPrivileges()));
    service.set("categories", toArray(info.getServiceCategories()));
    std::ostringstream text;
    service.stringify(text);
    return text.str();
}

// A fresh connection to the registry whose reads and writes wait at most receiveTimeout; null with the
// reason in failure when there is none.
Poco::SharedPtr<StreamSocket> open(const Poco::Timespan& connectTimeout, const Poco::Timespan& receiveTimeout,
                                   std::string& failure)
{
    try
    {
        Poco::SharedPtr<StreamSocket> socket = ServiceRegistryConnection::connect(connectTimeout);
        socket->setReceiveTimeout(receiveTimeout);
        socket->setSendTimeout(receiveTimeout);
        return socket;
    }
    catch (const Poco::Exception& error)
    {
        failure = noConnection(error);
        return {};
    }
}

bool isHttpVersion(const std::string& version)
{
    return version.rfind("HTTP/", 0) == 0;
}

// The body only adds the registry's message to a failure; one that does not arrive leaves the status.
void readBody(std::istream& answer, std::string& body)
{
    try
    {
        Poco::StreamCopier::copyToString(answer, body);
    }
    catch (const Poco::Exception&)
    {
        body.clear();
    }
}

// Sends the request over the socket and reads the head of the answer, and its body unless the status
// is the expected one. Gives the reason of a failure, or an empty text when an HTTP answer came.
std::string exchange(const StreamSocket& socket, HTTPRequest& request, const std::string& body,
                     const Poco::Timespan& receiveTimeout, HTTPResponse::HTTPStatus expected,
                     HTTPResponse& response, std::string& responseBody)
{
    Poco::Net::HTTPClientSession session(socket);
    session.setTimeout(receiveTimeout);
    request.setHost(ServiceRegistryConnection::ADDRESS, ServiceRegistryConnection::PORT);
    request.setKeepAlive(false);
    if (!body.empty())
    {
        request.setContentType("application/json");
        request.setContentLength(static_cast<std::streamsize>(body.size()));
    }
    try
    {
        session.sendRequest(request) << body;
        std::istream& answer = session.receiveResponse(response);
        // The parser takes any first word for a version; a peer of another protocol may get this far.
        if (!isHttpVersion(response.getVersion()))
        {
            return NOT_HTTP;
        }
        if (response.getStatus() != expected)
        {
            readBody(answer, responseBody);
        }
        return {};
    }
    catch (const Poco::TimeoutException&)
    {
        return noAnswer(receiveTimeout);
    }
    catch (const Poco::Net::MessageException&)
    {
        return NOT_HTTP;
    }
    catch (const Poco::SyntaxException&)
    {
        // Raised for a status line whose code is not a number.
        return NOT_HTTP;
    }
    catch (const Poco::Exception& error)
    {
        return exchangeFailed(error);
    }
}

// The id in the Location of a 201, written into info; gives the reason when the answer holds none.
std::string takeId(const HTTPResponse& response, const std::string& body, MicroServiceInfo& info)
{
    if (response.getStatus() != HTTPResponse::HTTP_CREATED)
    {
        return answered(response, body);
    }
    if (!response.has("Location"))
    {
        return NO_LOCATION;
    }
    const std::string& location = response.get("Location");
    const std::string prefix = ServiceRegistryAbstraction::REGISTRY_PATH + "/";
    const std::string id = location.rfind(prefix, 0) == 0 ? location.substr(prefix.size()) : std::string();
    Poco::UUID uuid;
    // tryParse() also takes a UUID followed by anything, or one without hyphens.
    if (!uuid.tryParse(id) || uuid.toString() != Poco::toLower(id))
    {
        return malformedLocation(location);
    }
    info.updateServiceId(uuid);
    return {};
}

bool registerOne(MicroServiceInfo& info, const Poco::Timespan& connectTimeout,
                 const Poco::Timespan& receiveTimeout)
{
    const std::string name = nameOf(info);
    if (name.empty())
    {
        logFailure(REGISTERING, name, NO_NAME);
        return false;
    }
    std::string failure;
    const Poco::SharedPtr<StreamSocket> socket = open(connectTimeout, receiveTimeout, failure);
    if (socket.isNull())
    {
        logFailure(REGISTERING, name, failure);
        return false;
    }
    const std::string body = describe(info, name, socket->address().host().toString());
    HTTPRequest request(HTTPRequest::HTTP_POST, ServiceRegistryAbstraction::REGISTRY_PATH,
                        HTTPRequest::HTTP_1_1);
    HTTPResponse response;
    std::string answer;
    failure = exchange(*socket, request, body, receiveTimeout, HTTPResponse::HTTP_CREATED, response, answer);
    if (failure.empty())
    {
        failure = takeId(response, answer, info);
    }
    if (!failure.empty())
    {
        logFailure(REGISTERING, name, failure);
        return false;
    }
    return true;
}

} // namespace

ServiceRegistryAbstraction::ServiceRegistryAbstraction()
    : m_connectTimeout(DEFAULT_CONNECT_TIMEOUT)
    , m_receiveTimeout(DEFAULT_RECEIVE_TIMEOUT)
{
}

ServiceRegistryAbstraction::~ServiceRegistryAbstraction() = default;

void ServiceRegistryAbstraction::setTimeouts(const Poco::Timespan& connect, const Poco::Timespan& receive)
{
    m_connectTimeout = connect;
    m_receiveTimeout = receive;
}

bool ServiceRegistryAbstraction::registerServices(std::vector<MicroServiceInfo>& list)
{
    for (std::size_t index = 0; index < list.size(); ++index)
    {
        if (!registerOne(list[index], m_connectTimeout, m_receiveTimeout))
        {
            for (std::size_t registered = 0; registered < index; ++registered)
            {
                unregisterService(list[registered]);
            }
            return false;
        }
    }
    return true;
}

bool ServiceRegistryAbstraction::unregisterService(const MicroServiceInfo& info)
{
    const std::string name = nameOf(info);
    std::string id;
    try
    {
        id = info.getIdString();
    }
    catch (const Poco::Exception&)
    {
        logFailure(UNREGISTERING, name, NO_ID);
        return false;
    }
    std::string failure;
    const Poco::SharedPtr<StreamSocket> socket = open(m_connectTimeout, m_receiveTimeout, failure);
    if (socket.isNull())
    {
        logFailure(UNREGISTERING, name, failure);
        return false;
    }
    HTTPRequest request(HTTPRequest::HTTP_DELETE, REGISTRY_PATH + "/" + id, HTTPRequest::HTTP_1_1);
    HTTPResponse response;
    std::string answer;
    failure = exchange(*socket, request, "", m_receiveTimeout, HTTPResponse::HTTP_OK, response, answer);
    if (!failure.empty())
    {
        logFailure(UNREGISTERING, name, failure);
        return false;
    }
    if (response.getStatus() == HTTPResponse::HTTP_NOT_FOUND)
    {
        logUnknownId(name, id);
        return true;
    }
    if (response.getStatus() != HTTPResponse::HTTP_OK)
    {
        logFailure(UNREGISTERING, name, answered(response, answer));
        return false;
    }
    return true;
}

} // namespace Orvi::Service
