#pragma once

#include "Command/HttpRequest.h"
#include "Command/HttpResponse.h"
#include "FleetServiceMap.h"
#include "Http/HTTPEncoderDecoder.h"
#include "JSONDataCache/DBData/Endpoint.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "RecordingDataHandler.h"
#include "TestSupport/FakeServerRequest.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Types.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ServiceDB::Test
{

// The fleet with two cars (saab with 4 seats, ford with 2) and a person, served over HTTP requests that
// are built in memory. The cars' element allows GET, POST and DELETE unless a test says otherwise.
class MappingServiceJSONDataCacheHttpFixture : public ::testing::Test
{
protected:
    static inline const std::string CAR = "ca000000-0000-4000-8000-0000000000c1";
    static inline const std::string VAN = "ca000000-0000-4000-8000-0000000000c2";
    static inline const std::string BUS = "ca000000-0000-4000-8000-0000000000c3";
    static inline const std::string ADA = "a0000000-0000-4000-8000-0000000000a1";
    static inline const std::string UNKNOWN = "99999999-9999-4999-8999-999999999999";
    static inline const std::string JSON_MIMETYPE = "application/json; charset=utf-8";

    MappingServiceJSONDataCacheHttpFixture()
        : services(Fleet::makeFleet())
        , sut(services, &handler)
    {
        carId = insert("cars", CAR);
        vanId = insert("cars", VAN);
        insert("people", ADA);
        store(CAR, "brand", std::string("saab"));
        store(CAR, "seats", Poco::Int64(4));
        store(VAN, "brand", std::string("ford"));
        store(VAN, "seats", Poco::Int64(2));
        setCarRules({rule(true, true, true)});
    }

    static Orvi::DBData::Endpoint rule(bool get, bool post, bool del)
    {
        Orvi::DBData::Endpoint endpoint;
        endpoint.setGet(get);
        endpoint.setPost(post);
        endpoint.setDelete(del);
        return endpoint;
    }

    // A rule bound to one attribute of the cars.
    Orvi::DBData::Endpoint carAttributeRule(const std::string& name, bool post, bool del,
                                            bool required = false)
    {
        Orvi::DBData::Endpoint endpoint = rule(false, post, del);
        endpoint.setAttribute(sut.selectElement("fleet", "cars")->getAttributes().at(name));
        endpoint.setRequired(required);
        return endpoint;
    }

    void setCarRules(const std::vector<Orvi::DBData::Endpoint>& rules)
    {
        sut.selectElement("fleet", "cars")->setEndpoints(rules);
    }

    void setCarsResourceRules(const std::vector<Orvi::DBData::Endpoint>& rules)
    {
        sut.selectResource("fleet", "cars")->setEndpoints(rules);
    }

    void setFleetVersion(const std::string& version)
    {
        services.at("fleet")->setVersions({new std::string(version)});
    }

    static std::string acceptVersion(const std::string& version)
    {
        return "application/vnd.servicedb.v" + version + "+json";
    }

    Orvi::DBData::DbId insert(const std::string& resource, const std::string& uuid)
    {
        std::string newUuid = uuid;
        Orvi::DBData::DbId id = -1;
        EXPECT_TRUE(sut.insertXObject("fleet", resource, newUuid, id));
        return id;
    }

    void store(const std::string& uuid, const std::string& name, const Poco::Dynamic::Var& value)
    {
        Orvi::DBData::XObject::Ptr copy = sut.selectXObject(uuid, 0);
        Orvi::DBData::AttributeValue& cell = *copy->getValue(name);
        cell.setValue(value, false);
        EXPECT_TRUE(cell.isArray() ? sut.updateCacheArrayAttributeValueById(cell, true)
                                   : sut.updateCacheAttributeValueById(cell, true));
    }

    // The stored object as name=value pairs, or "none".
    std::string stored(const std::string& uuid)
    {
        const Orvi::DBData::XObject::Ptr object = sut.selectXObject(uuid, 0);
        return object.isNull() ? "none" : Fleet::describe(*object);
    }

    // The UUIDs of the stored objects of a resource, in UUID order.
    std::vector<std::string> storedUuids(const std::string& resource)
    {
        std::vector<long> ids;
        sut.selectXObjectIDsOfResource("fleet", resource, ids);
        std::vector<std::string> uuids;
        for (const long id : ids)
        {
            uuids.push_back(sut.selectXObject(id, 0)->getId().toString());
        }
        return uuids;
    }

    static std::string carText(const std::string& uuid, const std::string& brand, const std::string& seats,
                               const std::string& tags = "null")
    {
        return "brand=" + brand + " driver=null id=\"" + uuid +
               "\" loads=null mileage=null name=\"\" passengers=null seats=" + seats + " tags=" + tags +
               " uri=\"/fleet/cars/" + uuid + "\"";
    }

    // Sends a request through the given operation of the cache, as the front end does.
    template <typename Operation>
    Poco::Net::HTTPResponse::HTTPStatus send(Operation operation, const std::string& method,
                                             const std::string& uri, const std::string& body,
                                             Poco::UInt16 port, const std::string& accept)
    {
        FakeServerRequest request(method, uri, body);
        request.setServerAddress(Poco::Net::SocketAddress("127.0.0.1", port));
        if (!accept.empty())
        {
            request.set("Accept", accept);
        }
        Poco::Net::HTTPResponse codingAnswer;
        Orvi::Net::HTTPEncoderDecoder coder(request, codingAnswer);
        const Orvi::Command::HttpRequest httpRequest(request, coder);
        return (sut.*operation)(httpRequest, response);
    }

    Orvi::DBData::ServiceMap services;
    RecordingDataHandler handler;
    Orvi::Mapping::MappingServiceJSONDataCache sut;
    Orvi::DBData::DbId carId = -1;
    Orvi::DBData::DbId vanId = -1;
    Orvi::Command::HttpResponse response;
};

} // namespace ServiceDB::Test
