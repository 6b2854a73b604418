#include "ExampleDataHandler.h"

#include "DataAccess/ElementAccess.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/XObject.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "TestSupport/LogCapture.h"
#include "WorkerBarrier.h"

#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Example::SampleData;
using Orvi::Mapping::OperationResult;
using ServiceDB::Example::Test::WorkerBarrier;
using ServiceDB::Test::LogCapture;

const std::string DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;

class ExampleDataHandlerCalls : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 8;
    static constexpr std::size_t TRACKS = 12;

    ExampleDataHandlerCalls()
        : worker(CRITICAL_QUEUE_SIZE)
        , sut(worker)
        , cache(services, &sut)
        , vehicle(cache, nullptr)
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
        SampleData data(cache);
        data.fillCabin();
        data.fillAudio(TRACKS);
        sut.attach(cache, vehicle);
    }

    ~ExampleDataHandlerCalls() override { worker.stop(); }

    // The handler is given a view on a copy of the stored object, as the cache gives it.
    Orvi::Service::DataAccess::ElementAccess viewOf(const std::string& service, const std::string& resource,
                                                    const std::string& uuid)
    {
        return Orvi::Service::DataAccess::ElementAccess(cache.selectXObject(uuid, 0), service, resource,
                                                        &cache);
    }

    std::string textOf(const std::string& uuid, const std::string& attribute)
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

    static std::string zoneAddress() { return "/cabin/zones/" + SampleData::cabinUuid(0); }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Example::ExampleDataHandler sut;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    Orvi::Example::VehicleLink vehicle;
};

TEST_F(ExampleDataHandlerCalls, StoresAChangeOfATrackAtOnceAndAnswersUpdated)
{
    const std::string track = SampleData::trackUuid(0);
    Poco::JSON::Object json;
    json.set("title", "Opening");
    Orvi::Mapping::ProcessingData data = dataOf(json);

    const OperationResult::Enum result =
        sut.updateToMapper("audio", "tracks", viewOf("audio", "tracks", track), data);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(textOf(track, "title"), "Opening");
    EXPECT_EQ(worker.queueSize(), 0U);
}

TEST_F(ExampleDataHandlerCalls, StoresTheNewTracksOfAPlaylistAtOnce)
{
    const std::string playlist = SampleData::playlistUuid(0);
    Poco::JSON::Object json;
    Poco::JSON::Array::Ptr tracks(new Poco::JSON::Array);
    tracks->add("/audio/tracks/" + SampleData::trackUuid(3));
    json.set("tracks", tracks);
    json.set("name", "Short list");
    Orvi::Mapping::ProcessingData data = dataOf(json);

    const OperationResult::Enum result =
        sut.updateToMapper("audio", "playlists", viewOf("audio", "playlists", playlist), data);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(textOf(playlist, "name"), "Short list");
    const Orvi::DBData::XObject::Ptr stored = cache.selectXObject(playlist, 0);
    const auto& values =
        stored->getValue("tracks")->getValue().extract<Orvi::DBData::AttributeValue::ValueArrayPtr>();
    EXPECT_EQ(values->size(), 1U);
}

TEST_F(ExampleDataHandlerCalls, RefusesAChangeOfATrackThatTheStoreDoesNotTake)
{
    const std::string track = SampleData::trackUuid(0);
    Poco::JSON::Object json;
    json.set("year", 1800);
    Orvi::Mapping::ProcessingData data = dataOf(json);
    LogCapture log(Poco::Message::PRIO_WARNING);

    const OperationResult::Enum result =
        sut.updateToMapper("audio", "tracks", viewOf("audio", "tracks", track), data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(textOf(track, "year"), "1960");
    ASSERT_FALSE(log.lines().empty());
    EXPECT_EQ(log.lines().back(), "Warning: Audio library could not store /audio/tracks/" + track);
}

TEST_F(ExampleDataHandlerCalls, TakesOverASetPointAndLeavesTheStoreAsItIsUntilTheWorkerRuns)
{
    Poco::JSON::Object json;
    json.set("setPoint", 23.5);
    Orvi::Mapping::ProcessingData data = dataOf(json);

    const OperationResult::Enum result =
        sut.updateToMapper("cabin", "zones", viewOf("cabin", "zones", SampleData::cabinUuid(0)), data);

    EXPECT_EQ(result, OperationResult::ObjectProcessed);
    EXPECT_EQ(textOf(SampleData::cabinUuid(0), "setPoint"), "21.5");
    EXPECT_EQ(worker.queueSize(), 1U);
}

TEST_F(ExampleDataHandlerCalls, AppliesATakenOverSetPointThroughTheVehicleOnTheWorkerAfterTheRequestIsGone)
{
    {
        Poco::JSON::Object json;
        json.set("setPoint", 23.5);
        json.set("fanLevel", 5);
        Orvi::Mapping::ProcessingData data = dataOf(json);
        ASSERT_EQ(
            sut.updateToMapper("cabin", "zones", viewOf("cabin", "zones", SampleData::cabinUuid(0)), data),
            OperationResult::ObjectProcessed);
    }
    LogCapture log(Poco::Message::PRIO_INFORMATION);

    worker.start();
    ASSERT_TRUE(WorkerBarrier::passed(worker));

    EXPECT_EQ(textOf(SampleData::cabinUuid(0), "setPoint"), "23.5");
    EXPECT_EQ(textOf(SampleData::cabinUuid(0), "fanLevel"), "5");
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{"Info: result of mapping of object 0x100 with uuid: " +
                                            SampleData::cabinUuid(0) + " in cabin.zones : ObjectUpdated",
                                        "Info: Controller confirmed " + zoneAddress()}));
}

TEST_F(ExampleDataHandlerCalls, ReportsATakenOverValueThatTheStoreRefuses)
{
    Poco::JSON::Object json;
    json.set("setPoint", 40);
    Orvi::Mapping::ProcessingData data = dataOf(json);
    ASSERT_EQ(sut.updateToMapper("cabin", "zones", viewOf("cabin", "zones", SampleData::cabinUuid(0)), data),
              OperationResult::ObjectProcessed);
    LogCapture log(Poco::Message::PRIO_WARNING);

    worker.start();
    ASSERT_TRUE(WorkerBarrier::passed(worker));

    EXPECT_EQ(textOf(SampleData::cabinUuid(0), "setPoint"), "21.5");
    ASSERT_FALSE(log.lines().empty());
    EXPECT_EQ(log.lines().back(), "Warning: Controller could not apply " + zoneAddress());
}

TEST_F(ExampleDataHandlerCalls, AnswersAServiceErrorWhenTheWorkerNoLongerTakesMessages)
{
    worker.stop();
    Poco::JSON::Object json;
    json.set("fanLevel", 1);
    Orvi::Mapping::ProcessingData data = dataOf(json);
    LogCapture log(Poco::Message::PRIO_WARNING);

    const OperationResult::Enum result =
        sut.updateToMapper("cabin", "zones", viewOf("cabin", "zones", SampleData::cabinUuid(0)), data);

    EXPECT_EQ(result, OperationResult::ServiceErrorOnUpdate);
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{"Warning: Controller cannot be reached for " + zoneAddress()});
}

TEST_F(ExampleDataHandlerCalls, RefusesAChangeThatComesWithoutItsJSONObject)
{
    Orvi::Mapping::ProcessingData data;
    LogCapture log(Poco::Message::PRIO_WARNING);

    const OperationResult::Enum result =
        sut.updateToMapper("cabin", "zones", viewOf("cabin", "zones", SampleData::cabinUuid(0)), data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(worker.queueSize(), 0U);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Warning: Cannot take the change of " + zoneAddress() +
                                                    " without a cache and its values"});
}

TEST_F(ExampleDataHandlerCalls, RefusesAChangeBeforeACacheIsAttached)
{
    Orvi::Example::ExampleDataHandler detached(worker);
    Poco::JSON::Object json;
    json.set("title", "Opening");
    Orvi::Mapping::ProcessingData data = dataOf(json);

    const OperationResult::Enum result =
        detached.updateToMapper("audio", "tracks", viewOf("audio", "tracks", SampleData::trackUuid(0)), data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(textOf(SampleData::trackUuid(0), "title"), "Track 1");
}

TEST_F(ExampleDataHandlerCalls, AcceptsANewPlaylistAndNoOtherNewObject)
{
    Poco::JSON::Object json;
    Orvi::Mapping::ProcessingData data = dataOf(json);
    LogCapture log(Poco::Message::PRIO_WARNING);

    const OperationResult::Enum playlist =
        sut.updateToDb("audio", "playlists", viewOf("audio", "playlists", SampleData::playlistUuid(0)), data);
    const OperationResult::Enum track =
        sut.updateToDb("audio", "tracks", viewOf("audio", "tracks", SampleData::trackUuid(0)), data);

    EXPECT_EQ(playlist, OperationResult::ObjectUpdated);
    EXPECT_EQ(track, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{"Warning: Cannot create /audio/tracks/" + SampleData::trackUuid(0) +
                                       ": only playlists are created"});
}

TEST_F(ExampleDataHandlerCalls, LetsAPlaylistBeDeleted)
{
    const OperationResult::Enum result = sut.beforeDeleteObject(
        "audio", "playlists", viewOf("audio", "playlists", SampleData::playlistUuid(0)));

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
}

TEST_F(ExampleDataHandlerCalls, RefusesToDeleteTracksAlbumsArtistsAndCabinObjects)
{
    LogCapture log(Poco::Message::PRIO_WARNING);

    const std::vector<OperationResult::Enum> results{
        sut.beforeDeleteObject("audio", "tracks", viewOf("audio", "tracks", SampleData::trackUuid(0))),
        sut.beforeDeleteObject("audio", "albums", viewOf("audio", "albums", SampleData::albumUuid(0))),
        sut.beforeDeleteObject("audio", "artists", viewOf("audio", "artists", SampleData::artistUuid(0))),
        sut.beforeDeleteObject("cabin", "zones", viewOf("cabin", "zones", SampleData::cabinUuid(0)))};

    EXPECT_EQ(results, std::vector<OperationResult::Enum>(4, OperationResult::ErrorOnUpdate));
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "Warning: Cannot delete /audio/tracks/" + SampleData::trackUuid(0) +
                                   ": only playlists are deleted",
                               "Warning: Cannot delete /audio/albums/" + SampleData::albumUuid(0) +
                                   ": only playlists are deleted",
                               "Warning: Cannot delete /audio/artists/" + SampleData::artistUuid(0) +
                                   ": only playlists are deleted",
                               "Warning: Cannot delete " + zoneAddress() + ": only playlists are deleted"}));
}

TEST_F(ExampleDataHandlerCalls, RefusesToClearAttributes)
{
    LogCapture log(Poco::Message::PRIO_WARNING);

    const OperationResult::Enum result = sut.beforeDeleteAttributes(
        "audio", "playlists", viewOf("audio", "playlists", SampleData::playlistUuid(0)), {"tracks"});

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Warning: Cannot clear attributes of /audio/playlists/" +
                                                    SampleData::playlistUuid(0)});
}

} // namespace
