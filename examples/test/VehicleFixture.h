#pragma once

#include "ExampleDataHandler.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "RecordingTrigger.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "VehicleLink.h"

#include <gtest/gtest.h>

#include <string>

namespace ServiceDB::Example::Test
{

/// The example's store with its sample data, the data handler and a vehicle link that reports to a
/// recording trigger. The worker is not started.
class VehicleFixture : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 8;
    static constexpr std::size_t TRACKS = 12;

    VehicleFixture()
        : worker(CRITICAL_QUEUE_SIZE)
        , dataHandler(worker)
        , cache(services, &dataHandler)
        , vehicle(cache, &trigger)
    {
        const std::string definitions = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;
        Orvi::Loader::SchemaLoader().loadFiles({definitions + "/cabin.json", definitions + "/audio.json"},
                                               services);
        dataHandler.attach(cache, vehicle);
        Orvi::Example::SampleData data(cache);
        data.fillCabin();
        data.fillAudio(TRACKS);
    }

    ~VehicleFixture() override { worker.stop(); }

    std::string textOf(const std::string& uuid, const std::string& attribute)
    {
        const Orvi::DBData::XObject::Ptr object = cache.selectXObject(uuid, 0);
        return object.isNull() ? "no object" : text(object->getValue(attribute)->getValue());
    }

    // A selection resolves references into objects; they read here as their UUIDs.
    static std::string text(const Poco::Dynamic::Var& value)
    {
        if (value.isEmpty())
        {
            return "empty";
        }
        if (value.type() == typeid(Orvi::DBData::XObject::Ptr))
        {
            return value.extract<Orvi::DBData::XObject::Ptr>()->getUUID();
        }
        return value.toString();
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Example::ExampleDataHandler dataHandler;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    RecordingTrigger trigger;
    Orvi::Example::VehicleLink vehicle;
};

} // namespace ServiceDB::Example::Test
