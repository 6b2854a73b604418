#include "InMemoryTrigger.h"

#include "JSONTools.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>

#include <chrono>

namespace ServiceDB::Test
{

const std::string InMemoryTrigger::NO_SUCH_TARGET = "No such target for this port.";
const std::string InMemoryTrigger::ACCESS_DENIED = "access denied";
const std::string InMemoryTrigger::ELEMENT_GONE = "element has gone";

namespace
{

using Orvi::Command::UrlPath;

std::string collectionOf(const UrlPath& urlPath)
{
    return "/" + urlPath.getService() + "/" + urlPath.getResource();
}

} // namespace

void InMemoryTrigger::put(const std::string& address, const std::string& json)
{
    Poco::JSON::Object::Ptr object;
    if (!Orvi::Util::JSONTools::parseJSONString(json, object))
    {
        throw Poco::InvalidArgumentException("test object is no JSON object", json);
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_objects[address] = object;
}

void InMemoryTrigger::erase(const std::string& address)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_objects.erase(address);
}

void InMemoryTrigger::denyToken(const std::string& token)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_deniedTokens.insert(token);
}

void InMemoryTrigger::holdFetches()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_holding = true;
}

void InMemoryTrigger::releaseFetches()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_holding = false;
    }
    m_held.notify_all();
}

bool InMemoryTrigger::waitForHeldFetch()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_held.wait_for(lock, std::chrono::seconds(10), [this] { return m_waiting > 0; });
}

bool InMemoryTrigger::fetchData(const Orvi::Service::SubscriptionRequest& request,
                                Orvi::Command::WebSocketResponseObject& response) const
{
    ++m_fetches;
    const UrlPath& urlPath = request.getUrlPath();
    std::unique_lock<std::mutex> lock(m_mutex);
    bool found = true;
    if (urlPath.getCharacteristic() == UrlPath::SERVICE_RESOURCE_OBJECT)
    {
        const auto object = m_objects.find(urlPath.getUri().getPath());
        if (object == m_objects.end())
        {
            response.setError(Poco::Net::HTTPResponse::HTTP_GONE, ELEMENT_GONE);
        }
        else
        {
            response.setData(object->second);
        }
    }
    else if (urlPath.getCharacteristic() == UrlPath::SERVICE_RESOURCE)
    {
        const std::string prefix = urlPath.getUri().getPath() + "/";
        Poco::JSON::Array::Ptr objects = new Poco::JSON::Array;
        for (const auto& entry : m_objects)
        {
            if (entry.first.compare(0, prefix.size(), prefix) == 0)
            {
                objects->add(entry.second);
            }
        }
        Poco::JSON::Object::Ptr paging = new Poco::JSON::Object;
        paging->set(Orvi::Command::ResponseObject::FIELD_PAGING_TOTAL, objects->size());
        response.setData(objects);
        response.setPaging(paging);
    }
    else
    {
        found = false;
    }
    if (m_holding)
    {
        ++m_waiting;
        m_held.notify_all();
        m_held.wait(lock, [this] { return !m_holding; });
        --m_waiting;
    }
    return found;
}

void InMemoryTrigger::checkNewSubscription(Orvi::Service::SubscriptionSubscribingEventPayload& payload)
{
    const UrlPath& urlPath = payload.request.getUrlPath();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_deniedTokens.count(payload.request.getAuthorization()) != 0)
    {
        payload.cancelSubscribing(Orvi::Service::SubscriptionError::access_denied_or_token_invalid_or_expired,
                                  ACCESS_DENIED);
        return;
    }
    const bool known =
        (urlPath.getCharacteristic() == UrlPath::SERVICE_RESOURCE_OBJECT &&
         m_objects.count(urlPath.getUri().getPath()) != 0) ||
        (urlPath.getCharacteristic() == UrlPath::SERVICE_RESOURCE && holdsCollection(collectionOf(urlPath)));
    if (!known)
    {
        payload.cancelSubscribing(Orvi::Service::SubscriptionError::event_name_unknown, NO_SUCH_TARGET);
    }
}

bool InMemoryTrigger::holdsCollection(const std::string& address) const
{
    const std::string prefix = address + "/";
    const auto next = m_objects.lower_bound(prefix);
    return next != m_objects.end() && next->first.compare(0, prefix.size(), prefix) == 0;
}

} // namespace ServiceDB::Test
