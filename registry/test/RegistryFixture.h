#pragma once

#include "HttpClient.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "RegistryDataHandler.h"
#include "SchemaLoader/SchemaLoader.h"

#include <Poco/Net/HTTPRequest.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace ServiceDB::Registry::Test
{

using ServiceDB::Example::Test::Answer;

/// The registry's store as main() builds it, from its bundled definition, with the data handler. A
/// derived fixture serves it and calls serveOn() with its port; the worker runs from then on.
class RegistryFixture : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 16;
    static constexpr const char* SERVICES = "/registry/services";
    static constexpr const char* OK_BODY = "{ \"status\" : \"ok\" }";

    RegistryFixture()
        : worker(CRITICAL_QUEUE_SIZE)
        , cache(services, &dataHandler)
    {
        Orvi::Loader::SchemaLoader().loadFile(
            std::string(SERVICEDB_REGISTRY_DEFINITIONS_DIR) + "/registry.json", services);
        dataHandler.attach(cache);
    }

    ~RegistryFixture() override { worker.stop(); }

    /// The registry answers on its own port only.
    void serveOn(Poco::UInt16 port)
    {
        servedPort = port;
        for (auto& entry : services)
        {
            entry.second->setPort(port);
        }
        worker.start();
    }

    Answer send(const std::string& method, const std::string& uri, const std::string& body = "") const
    {
        ServiceDB::Example::Test::Request request;
        request.method = method;
        request.uri = uri;
        request.body = body;
        return ServiceDB::Example::Test::exchangeWith(servedPort, request);
    }

    Answer registerService(const std::string& name, const std::string& host, unsigned port) const
    {
        return send(Poco::Net::HTTPRequest::HTTP_POST, SERVICES, registration(name, host, port));
    }

    /// The status and the body of a GET, so that a comparison shows both.
    std::string textOf(const std::string& uri) const
    {
        const Answer answer = send(Poco::Net::HTTPRequest::HTTP_GET, uri);
        return std::to_string(answer.status) + " " + answer.body;
    }

    std::string listing() const { return textOf(SERVICES); }

    static std::string registration(const std::string& name, const std::string& host, unsigned port)
    {
        return "{\"name\":\"" + name + "\",\"host\":\"" + host + "\",\"port\":" + std::to_string(port) + "}";
    }

    /// The UUID at the end of a Location.
    static std::string uuidOf(const Answer& created)
    {
        return created.location.substr(created.location.rfind('/') + 1);
    }

    static std::string errorBody(int code, const std::string& message = "")
    {
        return "{\"code\":" + std::to_string(code) + ",\"message\":\"" + message + "\",\"status\":\"error\"}";
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Registry::RegistryDataHandler dataHandler;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    Poco::UInt16 servedPort = 0;
};

} // namespace ServiceDB::Registry::Test
