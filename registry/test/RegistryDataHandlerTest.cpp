#include "RegistryDataHandler.h"

#include "DataAccess/ElementAccess.h"
#include "DataLayer/JSONProcessingContext.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "SchemaLoader/SchemaLoader.h"
#include "TestSupport/LogCapture.h"

#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Mapping::OperationResult;
using ServiceDB::Test::LogCapture;

const std::string REGISTRY = "registry";
const std::string SERVICES = "services";

class RegistryDataHandlerCalls : public ::testing::Test
{
protected:
    RegistryDataHandlerCalls()
        : cache(services, &sut)
    {
        Orvi::Loader::SchemaLoader().loadFile(
            std::string(SERVICEDB_REGISTRY_DEFINITIONS_DIR) + "/registry.json", services);
        sut.attach(cache);
        Poco::JSON::Object values;
        values.set("name", "cabin");
        values.set("host", "127.0.0.1");
        values.set("port", 8080);
        values.set("description", "Climate zones");
        Orvi::DBData::XObject registration{Orvi::DBData::Element::Ptr()};
        cache.insertCacheXObjectWithJSON(Orvi::DataLayer::JSONProcessingContext::InputContext_IPC, REGISTRY,
                                         SERVICES, registration, values);
        uuid = registration.getId().toString();
    }

    // The handler is given a view on a copy of the stored object, as the cache gives it.
    Orvi::Service::DataAccess::ElementAccess registration()
    {
        return Orvi::Service::DataAccess::ElementAccess(cache.selectXObject(uuid, 0), REGISTRY, SERVICES,
                                                        &cache);
    }

    std::string textOf(const std::string& attribute)
    {
        const Orvi::DBData::XObject::Ptr object = cache.selectXObject(uuid, 0);
        return object.isNull() ? "no object" : object->getValue(attribute)->getValue().toString();
    }

    static Orvi::Mapping::ProcessingData dataOf(const Poco::JSON::Object& json)
    {
        Orvi::Mapping::ProcessingData data;
        data.orgJsonObj = &json;
        return data;
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Registry::RegistryDataHandler sut;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    std::string uuid;
};

TEST_F(RegistryDataHandlerCalls, AcceptsANewRegistrationWhoseValuesAreStoredAlready)
{
    Poco::JSON::Object json;
    Orvi::Mapping::ProcessingData data = dataOf(json);

    const OperationResult::Enum result = sut.updateToDb(REGISTRY, SERVICES, registration(), data);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
}

TEST_F(RegistryDataHandlerCalls, StoresPostedValuesAtOnce)
{
    Poco::JSON::Object json;
    json.set("description", "Climate zones and seats");
    json.set("port", 8081);
    Orvi::Mapping::ProcessingData data = dataOf(json);

    const OperationResult::Enum result = sut.updateToMapper(REGISTRY, SERVICES, registration(), data);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(textOf("description"), "Climate zones and seats");
    EXPECT_EQ(textOf("port"), "8081");
}

TEST_F(RegistryDataHandlerCalls, RefusesAValueThatTheStoreDoesNotTakeAndSaysSo)
{
    Poco::JSON::Object json;
    json.set("port", 0);
    Orvi::Mapping::ProcessingData data = dataOf(json);
    LogCapture log(Poco::Message::PRIO_WARNING);

    const OperationResult::Enum result = sut.updateToMapper(REGISTRY, SERVICES, registration(), data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(textOf("port"), "8080");
    EXPECT_EQ(log.lines().back(),
              "Warning: Registration /registry/services/" + uuid + " could not be stored");
}

TEST_F(RegistryDataHandlerCalls, RefusesPostedValuesBeforeItHasACache)
{
    Orvi::Registry::RegistryDataHandler detached;
    Poco::JSON::Object json;
    json.set("description", "Climate zones and seats");
    Orvi::Mapping::ProcessingData data = dataOf(json);

    const OperationResult::Enum result = detached.updateToMapper(REGISTRY, SERVICES, registration(), data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(textOf("description"), "Climate zones");
}

TEST_F(RegistryDataHandlerCalls, RefusesAChangeWithoutItsJSONObject)
{
    Orvi::Mapping::ProcessingData data;

    const OperationResult::Enum result = sut.updateToMapper(REGISTRY, SERVICES, registration(), data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
}

TEST_F(RegistryDataHandlerCalls, LetsARegistrationBeDeleted)
{
    const OperationResult::Enum result = sut.beforeDeleteObject(REGISTRY, SERVICES, registration());

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
}

TEST_F(RegistryDataHandlerCalls, RefusesToClearAnAttributeOfARegistrationAndSaysSo)
{
    LogCapture log(Poco::Message::PRIO_WARNING);

    const OperationResult::Enum result =
        sut.beforeDeleteAttributes(REGISTRY, SERVICES, registration(), {"description"});

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Warning: Cannot clear attributes of the registration "
                                                    "/registry/services/" +
                                                    uuid});
}

} // namespace
