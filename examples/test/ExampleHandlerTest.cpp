#include "ExampleHandler.h"

#include "ExampleDataHandler.h"
#include "ExampleHandlerFactory.h"
#include "HttpClient.h"
#include "HttpRequestHandlerBase.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "RecordingTrigger.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "TestSupport/LocalHttpServer.h"
#include "VersionCheck.h"
#include "WorkerBarrier.h"

#include <Poco/Net/HTTPRequest.h>
#include <Poco/RegularExpression.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::Example::SampleData;
using Poco::Net::HTTPRequest;
using ServiceDB::Example::Test::Answer;
using ServiceDB::Example::Test::Request;
using ServiceDB::Example::Test::WorkerBarrier;
using Headers = std::vector<std::pair<std::string, std::string>>;

const std::string DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;

const std::string OK_BODY = "{ \"status\" : \"ok\" }";
const std::string FUTURE_VERSION = "application/vnd.servicedb.v2.0.0+json";

/// Every collection of the example, in a fixed order: their texts together are the whole store.
const std::vector<std::string> COLLECTIONS{"/cabin/zones",   "/cabin/seats",    "/cabin/doors",
                                           "/cabin/windows", "/audio/artists",  "/audio/albums",
                                           "/audio/tracks",  "/audio/playlists"};

class ExampleHandlerOverHttp : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 8;
    static constexpr std::size_t TRACKS = 12;

    ExampleHandlerOverHttp()
        : worker(CRITICAL_QUEUE_SIZE)
        , dataHandler(worker)
        , cache(services, &dataHandler)
        , vehicle(cache, &trigger)
        , server(new Orvi::Example::ExampleHandlerFactory(worker, cache, trigger))
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
        for (auto& entry : services)
        {
            entry.second->setPort(server.port());
        }
        dataHandler.attach(cache, vehicle);
        SampleData data(cache);
        data.fillCabin();
        data.fillAudio(TRACKS);
        worker.start();
    }

    ~ExampleHandlerOverHttp() override { worker.stop(); }

    Answer exchange(const std::string& method, const std::string& uri, const std::string& accept = "")
    {
        Headers headers;
        if (!accept.empty())
        {
            headers.emplace_back("Accept", accept);
        }
        return send(method, uri, "", headers);
    }

    Answer post(const std::string& uri, const std::string& body, const Headers& headers = {})
    {
        return send(HTTPRequest::HTTP_POST, uri, body, headers);
    }

    Answer remove(const std::string& uri) { return send(HTTPRequest::HTTP_DELETE, uri, "", {}); }

    Answer send(const std::string& method, const std::string& uri, const std::string& body,
                const Headers& headers)
    {
        Request request;
        request.method = method;
        request.uri = uri;
        request.body = body;
        request.headers = headers;
        return send(request);
    }

    Answer send(const Request& request)
    {
        return ServiceDB::Example::Test::exchangeWith(server.port(), request);
    }

    /// The status and the body of a GET, so that a comparison shows both.
    std::string textOf(const std::string& uri)
    {
        const Answer answer = exchange(HTTPRequest::HTTP_GET, uri);
        return std::to_string(answer.status) + " " + answer.body;
    }

    /// The whole store as the clients see it, one collection a line.
    std::string storeContents()
    {
        std::string contents;
        for (const std::string& collection : COLLECTIONS)
        {
            contents += collection + " " + textOf(collection) + "\n";
        }
        return contents;
    }

    /// Creates a playlist of the given name and gives back its address, or an empty text on failure.
    std::string createPlaylist(const std::string& name)
    {
        const Answer answer = post("/audio/playlists", "{\"name\":\"" + name + "\"}");
        return answer.status == 201 ? answer.location : std::string();
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Example::ExampleDataHandler dataHandler;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    ServiceDB::Example::Test::RecordingTrigger trigger;
    Orvi::Example::VehicleLink vehicle;
    ServiceDB::Test::LocalHttpServer server;
};

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string errorBody(int code, const std::string& message = "")
{
    return "{\"code\":" + std::to_string(code) + ",\"message\":" + quoted(message) + ",\"status\":\"error\"}";
}

std::string reduced(const std::string& resource, const std::string& uuid, const std::string& name)
{
    return "{\"id\":" + quoted(uuid) + ",\"name\":" + quoted(name) +
           ",\"uri\":" + quoted("/audio/" + resource + "/" + uuid) + "}";
}

std::string track(std::size_t index)
{
    return "/audio/tracks/" + SampleData::trackUuid(index);
}

std::string playlist(std::size_t index)
{
    return "/audio/playlists/" + SampleData::playlistUuid(index);
}

std::string zone(std::size_t index)
{
    return "/cabin/zones/" + SampleData::cabinUuid(index);
}

/// Numbers far beyond the generated sample objects.
const std::size_t UNKNOWN = 900;
const std::size_t ALSO_UNKNOWN = 901;

/// A JSON object of exactly the given size in bytes: a playlist name of letters.
std::string playlistNameOfSize(std::size_t size)
{
    const std::string head = "{\"name\":\"";
    const std::string tail = "\"}";
    return head + std::string(size - head.size() - tail.size(), 'a') + tail;
}

// ---- GET ----

TEST_F(ExampleHandlerOverHttp, ShowsEveryCollectionOfTheSampleDataInTheStoreContents)
{
    const std::string contents = storeContents();

    std::size_t filled = 0;
    for (const std::string& collection : COLLECTIONS)
    {
        filled += contents.find(collection + " 200 {\"data\":[{") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(filled, COLLECTIONS.size()) << contents;
    EXPECT_NE(contents.find("\"name\":\"Playlist 1\""), std::string::npos) << contents;
}

TEST_F(ExampleHandlerOverHttp, AnswersAGeneratedTrackWithItsAlbumAndArtist)
{
    const std::string uuid = SampleData::trackUuid(11);

    const Answer answer = exchange(HTTPRequest::HTTP_GET, track(11));

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"data\":{\"album\":" + reduced("albums", SampleData::albumUuid(1), "Album 2") +
                               ",\"artist\":" + reduced("artists", SampleData::artistUuid(0), "Artist 1") +
                               ",\"duration\":227,\"genre\":\"electronic\",\"id\":" + quoted(uuid) +
                               ",\"name\":\"Track 12\",\"title\":\"Track 12\",\"uri\":" + quoted(track(11)) +
                               ",\"year\":1961},\"status\":\"ok\"}");
}

TEST_F(ExampleHandlerOverHttp, AnswersAHeadWithoutABody)
{
    const Answer answer = exchange(HTTPRequest::HTTP_HEAD, track(0));

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "");
}

TEST_F(ExampleHandlerOverHttp, AnswersAVersionItDoesNotImplementWithAText)
{
    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/audio/tracks", FUTURE_VERSION);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, Orvi::Service::VersionCheck::msgVersionNotImplemented);
}

std::string zoneWithSetPoint(std::size_t index, const std::string& name, const std::string& setPoint)
{
    const std::string uuid = SampleData::cabinUuid(index);
    return "{\"data\":{\"id\":" + quoted(uuid) + ",\"name\":" + quoted(name) + ",\"setPoint\":" + setPoint +
           ",\"uri\":" + quoted(zone(index)) + "},\"status\":\"ok\"}";
}

std::string trackWithYear(std::size_t index, const std::string& year)
{
    const std::string uuid = SampleData::trackUuid(index);
    return "{\"data\":{\"id\":" + quoted(uuid) + ",\"name\":\"Track " + std::to_string(index + 1) +
           "\",\"uri\":" + quoted(track(index)) + ",\"year\":" + year + "},\"status\":\"ok\"}";
}

std::string seatWithHeatingLevel(std::size_t index, const std::string& name, int level)
{
    const std::string uuid = SampleData::cabinUuid(index);
    return "{\"heatingLevel\":" + std::to_string(level) + ",\"id\":" + quoted(uuid) +
           ",\"name\":" + quoted(name) + ",\"uri\":" + quoted("/cabin/seats/" + uuid) + "}";
}

// ---- POST: changes that are taken ----

TEST_F(ExampleHandlerOverHttp, AcceptsASetPointForLaterAndTellsTheSubscribersOnceTheControllerConfirms)
{
    const Answer answer = post(zone(0), "{\"setPoint\":23.5}");

    EXPECT_EQ(answer.status, 202);
    EXPECT_EQ(answer.body, OK_BODY);
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, zone(0) + "?$fields=setPoint").body,
              zoneWithSetPoint(0, "Driver", "23.5"));
    EXPECT_EQ(trigger.changes(), std::vector<std::string>{"element cabin/zones/" + SampleData::cabinUuid(0)});
}

TEST_F(ExampleHandlerOverHttp, CreatesAPlaylistAndAnswersItsLocation)
{
    const Answer answer =
        post("/audio/playlists", "{\"name\":\"Road trip\",\"tracks\":[" + quoted(track(2)) + "]}");

    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_TRUE(Poco::RegularExpression(
                    "^/audio/playlists/[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}$")
                    .match(answer.location))
        << answer.location;
    const std::string uuid = answer.location.substr(std::string("/audio/playlists/").size());
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, answer.location).body,
              "{\"data\":{\"id\":" + quoted(uuid) + ",\"name\":\"Road trip\",\"tracks\":[" +
                  reduced("tracks", SampleData::trackUuid(2), "Track 3") +
                  "],\"uri\":" + quoted(answer.location) + "},\"status\":\"ok\"}");
    EXPECT_EQ(trigger.changes(), std::vector<std::string>{"request POST /audio/playlists"});
}

TEST_F(ExampleHandlerOverHttp, ChangesEveryTrackThatAQuerySelects)
{
    const Answer answer = post("/audio/tracks?genre=rock", "{\"year\":2001}");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, track(0) + "?$fields=year").body, trackWithYear(0, "2001"));
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, track(7) + "?$fields=year").body, trackWithYear(7, "2001"));
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, track(1) + "?$fields=year").body, trackWithYear(1, "1960"));
}

TEST_F(ExampleHandlerOverHttp,
       AcceptsEverySeatThatAQuerySelectsForLaterAndStoresThemOnceTheControllerConfirms)
{
    const Answer answer = post("/cabin/seats?heatingLevel=0", "{\"heatingLevel\":1}");

    EXPECT_EQ(answer.status, 202);
    EXPECT_EQ(answer.body, OK_BODY);
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, "/cabin/seats?$fields=heatingLevel").body,
              "{\"data\":[" + seatWithHeatingLevel(2, "Driver seat", 2) + "," +
                  seatWithHeatingLevel(3, "Front passenger seat", 1) + "," +
                  seatWithHeatingLevel(4, "Rear left seat", 1) + "," +
                  seatWithHeatingLevel(5, "Rear centre seat", 1) + "," +
                  seatWithHeatingLevel(6, "Rear right seat", 1) + "],\"status\":\"ok\"}");
}

TEST_F(ExampleHandlerOverHttp, RenamesAPlaylistAtOnceAndTellsTheSubscribers)
{
    const Answer answer = post(playlist(0), "{\"name\":\"Evening\"}");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, playlist(0) + "?$fields=name").body,
              "{\"data\":" + reduced("playlists", SampleData::playlistUuid(0), "Evening") +
                  ",\"status\":\"ok\"}");
    EXPECT_EQ(trigger.changes(), std::vector<std::string>{"request POST " + playlist(0)});
}

TEST_F(ExampleHandlerOverHttp, RenamesAPlaylistFromAGzipBody)
{
    const Answer answer = post(playlist(0), ServiceDB::Example::Test::gzipped("{\"name\":\"Zipped\"}"),
                               {{"Content-Encoding", "gzip"}});

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, playlist(0) + "?$fields=name").body,
              "{\"data\":" + reduced("playlists", SampleData::playlistUuid(0), "Zipped") +
                  ",\"status\":\"ok\"}");
}

TEST_F(ExampleHandlerOverHttp, AnswersOkToTheValuesATrackHasAlreadyAndLeavesTheStoreAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "{\"year\":1960,\"genre\":\"rock\"}");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(storeContents(), before);
}

// ---- POST: addresses that are refused ----

TEST_F(ExampleHandlerOverHttp, RefusesAPostOnTheRoot)
{
    const std::string before = storeContents();

    const Answer answer = post("/", "{\"name\":\"x\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAPostOnAServiceAndLeavesTheStoreAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio", "{\"name\":\"x\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAPostOnAnAddressOfMoreThanThreeLevels)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0) + "/title", "{\"title\":\"x\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAPostOnTheIdKeywordOfAResource)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks/$id", "{\"title\":\"x\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersAPostOnAnUnknownServiceWithNotFound)
{
    const std::string before = storeContents();

    const Answer answer = post("/video/tracks", "{\"name\":\"x\"}");

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersAPostOnAnUnknownResourceOfAKnownServiceWithAnInternalError)
{
    // The look-up of an unknown resource is unguarded on purpose and ends the request as a fault.
    const std::string before = storeContents();

    const Answer answer = post("/audio/podcasts", "{\"name\":\"x\"}");

    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, errorBody(500));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersAPostOnAnotherPortThanTheServicesWithNotFoundBeforeTheBodyIsRead)
{
    ServiceDB::Test::LocalHttpServer otherPort(
        new Orvi::Example::ExampleHandlerFactory(worker, cache, trigger));
    Request request;
    request.method = HTTPRequest::HTTP_POST;
    request.uri = playlist(0);
    request.body = "not json";
    const std::string before = storeContents();

    const Answer answer = ServiceDB::Example::Test::exchangeWith(otherPort.port(), request);

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersAPostInAVersionItDoesNotImplementWithATextBeforeTheBodyIsRead)
{
    const std::string before = storeContents();

    const Answer answer = post(playlist(0), "not json", {{"Accept", FUTURE_VERSION}});

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, Orvi::Service::VersionCheck::msgVersionNotImplemented);
    EXPECT_EQ(storeContents(), before);
    EXPECT_TRUE(trigger.changes().empty());
}

TEST_F(ExampleHandlerOverHttp, AnswersABatchInAVersionItDoesNotImplementWithATextAndChangesNoTrack)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks?genre=rock", "{\"year\":2001}", {{"Accept", FUTURE_VERSION}});

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, Orvi::Service::VersionCheck::msgVersionNotImplemented);
    EXPECT_EQ(storeContents(), before);
}

// ---- POST: bodies that are refused ----

TEST_F(ExampleHandlerOverHttp, RefusesAnEmptyBodyAndLeavesTheTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesABodyThatIsNotJSON)
{
    const std::string before = storeContents();

    const Answer answer = post(zone(0), "setPoint=23.5");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAJSONArrayInsteadOfAnObjectAndLeavesTheTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "[{\"year\":2001}]");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesASingleJSONValueInsteadOfAnObjectAndLeavesTheTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "2001");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAYearThatIsNotANumberAndLeavesTheTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "{\"year\":\"soon\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesANegativeDurationAndLeavesTheTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "{\"duration\":-5}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAGenreOutsideItsListAndLeavesTheTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "{\"genre\":\"opera\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesANullTitleAndLeavesTheTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "{\"title\":null}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAValidValueTogetherWithAnInvalidOneAndStoresNeither)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "{\"title\":\"Renamed\",\"year\":1800}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesASetPointOutOfRangeAndTellsNobody)
{
    const Answer answer = post(zone(0), "{\"setPoint\":40}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, zone(0) + "?$fields=setPoint").body,
              zoneWithSetPoint(0, "Driver", "21.5"));
    EXPECT_TRUE(trigger.changes().empty());
}

TEST_F(ExampleHandlerOverHttp, RefusesAnAttributeTheTrackDoesNotHave)
{
    const std::string before = storeContents();

    const Answer answer = post(track(0), "{\"mood\":\"calm\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAClimateModeThatTheZoneDoesNotLetClientsSet)
{
    const std::string before = storeContents();

    const Answer answer = post(zone(0), "{\"mode\":\"heat\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAnAllowedSetPointTogetherWithAForbiddenModeAndStoresNeither)
{
    const std::string before = storeContents();

    const Answer answer = post(zone(0), "{\"setPoint\":23.5,\"mode\":\"heat\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAPostOnADoorWhoseRulesAllowNoChange)
{
    const std::string before = storeContents();

    const Answer answer = post("/cabin/doors/" + SampleData::cabinUuid(7), "{\"state\":\"open\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAPostOnAnUnknownTrackAsForbidden)
{
    const std::string before = storeContents();

    const Answer answer = post(track(UNKNOWN), "{\"title\":\"x\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAPostOnAPlaylistAddressedAsATrackAsForbidden)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks/" + SampleData::playlistUuid(0), "{\"name\":\"x\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(storeContents(), before);
}

// ---- POST: the front end's limits on bodies ----

TEST_F(ExampleHandlerOverHttp, RefusesABodyOfMoreThanOneMegabyteAndLeavesThePlaylistAsItWas)
{
    Request request;
    request.method = HTTPRequest::HTTP_POST;
    request.uri = playlist(0);
    request.body = playlistNameOfSize(Orvi::HttpRequestHandlerBase::DEFAULT_MAX_BODY_SIZE + 1);
    // In chunks, so that the size is found while the body is read, and the connection stays orderly.
    request.chunked = true;
    const std::string before = storeContents();

    const Answer answer = send(request);

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "request body too large"));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersABodyThatIsNotTheGzipItClaimsWithAnInternalErrorAndChangesNothing)
{
    const std::string before = storeContents();

    const Answer answer = post(playlist(0), "{\"name\":\"Plain\"}", {{"Content-Encoding", "gzip"}});

    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, errorBody(500));
    EXPECT_EQ(storeContents(), before);
}

// ---- POST: creations that are refused ----

TEST_F(ExampleHandlerOverHttp, RefusesAPlaylistWithoutANameAndCreatesNothing)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/playlists", "{\"tracks\":[]}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "POST is invalid (missing attribute)"));
    EXPECT_EQ(answer.location, "");
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAnEmptyPlaylistObjectAsMissingItsName)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/playlists", "{}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "POST is invalid (missing attribute)"));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesAPlaylistWithAnAttributeItDoesNotHaveAndCreatesNothing)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/playlists", "{\"name\":\"Road trip\",\"mood\":\"calm\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403, "POST is not allowed (forbidden attribute)"));
    EXPECT_EQ(answer.location, "");
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesToCreateATrackSinceItsCollectionTakesNoPost)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks", "{\"name\":\"Track 13\",\"title\":\"Track 13\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403, "POST is not allowed (forbidden attribute)"));
    EXPECT_EQ(answer.location, "");
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RemovesANewPlaylistWhoseTrackIsAnAlbumAgain)
{
    const std::string before = storeContents();

    const Answer answer =
        post("/audio/playlists", "{\"name\":\"Road trip\",\"tracks\":[" +
                                     quoted("/audio/albums/" + SampleData::albumUuid(0)) + "]}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(answer.location, "");
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RemovesANewPlaylistWhoseTracksAreNotAListAgain)
{
    const std::string before = storeContents();

    const Answer answer =
        post("/audio/playlists", "{\"name\":\"Road trip\",\"tracks\":" + quoted(track(0)) + "}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(answer.location, "");
    EXPECT_EQ(storeContents(), before);
}

// ---- POST: batches that are refused ----

TEST_F(ExampleHandlerOverHttp, RefusesABatchWithAYearOutOfRangeAndLeavesEverySelectedTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks?genre=rock,pop", "{\"year\":1800}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesABatchWithAValidTitleAndAnUnknownAttributeAndLeavesEveryTrackAsItWas)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks?genre=rock", "{\"title\":\"Renamed\",\"mood\":\"calm\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesABatchThatSetsAModeTheZonesDoNotLetClientsSet)
{
    const std::string before = storeContents();

    const Answer answer = post("/cabin/zones?mode=auto,cool", "{\"fanLevel\":5,\"mode\":\"off\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersABatchWhoseQuerySelectsNoTrackWithNotFound)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks?genre=opera", "{\"year\":2001}");

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesABatchWhosePageHoldsNoneOfTheSelectedTracks)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks?genre=rock&$limit=0", "{\"year\":2001}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesABatchWithAMalformedPagingParameterAsWrongSyntax)
{
    const std::string before = storeContents();

    const Answer answer = post("/audio/tracks?genre=rock&$limit=abc", "{\"year\":2001}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "wrong URI syntax"));
    EXPECT_EQ(storeContents(), before);
}

// ---- DELETE: objects ----

TEST_F(ExampleHandlerOverHttp, DeletesAPlaylistAndTellsTheSubscribers)
{
    const Answer answer = remove(playlist(0));

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, playlist(0)).status, 404);
    EXPECT_EQ(trigger.changes(), std::vector<std::string>{"delete " + playlist(0)});
}

TEST_F(ExampleHandlerOverHttp, DeletesAPlaylistByItsAddressAloneAndPassesOverABodySentWithIt)
{
    const Answer answer = send(HTTPRequest::HTTP_DELETE, playlist(0), "{\"name\":\"Kept\"}", {});

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(textOf(playlist(0)), "404 " + errorBody(404));
}

TEST_F(ExampleHandlerOverHttp, RefusesToDeleteATrack)
{
    const std::string before = storeContents();

    const Answer answer = remove(track(0));

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesToDeleteAnAlbumByItsAccessRules)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/albums/" + SampleData::albumUuid(0));

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersADeleteOfAnUnknownPlaylistWithNotFound)
{
    const std::string before = storeContents();

    const Answer answer = remove(playlist(UNKNOWN));

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersADeleteOfATrackAddressedAsAPlaylistWithNotFound)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/playlists/" + SampleData::trackUuid(0));

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersADeleteOnAnotherPortThanTheServicesWithNotFoundAndKeepsThePlaylist)
{
    ServiceDB::Test::LocalHttpServer otherPort(
        new Orvi::Example::ExampleHandlerFactory(worker, cache, trigger));
    Request request;
    request.method = HTTPRequest::HTTP_DELETE;
    request.uri = playlist(0);
    const std::string before = storeContents();

    const Answer answer = ServiceDB::Example::Test::exchangeWith(otherPort.port(), request);

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersADeleteInAVersionItDoesNotImplementWithATextAndKeepsThePlaylist)
{
    const std::string before = storeContents();

    const Answer answer = send(HTTPRequest::HTTP_DELETE, playlist(0), "", {{"Accept", FUTURE_VERSION}});

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, Orvi::Service::VersionCheck::msgVersionNotImplemented);
    EXPECT_EQ(storeContents(), before);
}

// ---- DELETE: named attributes ----

TEST_F(ExampleHandlerOverHttp, RefusesToDeleteTheTracksOfAPlaylistByItsAccessRules)
{
    const std::string before = storeContents();

    const Answer answer = remove(playlist(0) + "?$fields=tracks");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesToDeleteTheNameOfAPlaylistAsADefaultAttribute)
{
    const std::string before = storeContents();

    const Answer answer = remove(playlist(0) + "?$fields=name");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesADefaultAttributeBeforeTheAccessRulesAreLookedAt)
{
    const std::string before = storeContents();

    const Answer answer = remove(playlist(0) + "?$fields=tracks,id");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersADeleteOfAttributesOfAnUnknownPlaylistWithNotFound)
{
    const std::string before = storeContents();

    const Answer answer = remove(playlist(UNKNOWN) + "?$fields=name");

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

// ---- DELETE: lists of ids ----

TEST_F(ExampleHandlerOverHttp, DeletesEveryListedPlaylist)
{
    const std::string second = createPlaylist("Second");
    ASSERT_NE(second, "");
    const std::string secondUuid = second.substr(std::string("/audio/playlists/").size());

    const Answer answer = remove("/audio/playlists?id=" + SampleData::playlistUuid(0) + "," + secondUuid);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(textOf("/audio/playlists"), "200 {\"data\":[],\"status\":\"ok\"}");
}

TEST_F(ExampleHandlerOverHttp, DeletesAListedPlaylistAndAnswersOkAlthoughTheIdAfterItIsUnknown)
{
    const Answer answer = remove("/audio/playlists?id=" + SampleData::playlistUuid(0) + "," +
                                 SampleData::playlistUuid(UNKNOWN));

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(textOf(playlist(0)), "404 " + errorBody(404));
}

TEST_F(ExampleHandlerOverHttp, DeletesAListedPlaylistAndAnswersOkAlthoughTheIdBeforeItIsUnknown)
{
    const Answer answer = remove("/audio/playlists?id=" + SampleData::playlistUuid(UNKNOWN) + "," +
                                 SampleData::playlistUuid(0));

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(textOf(playlist(0)), "404 " + errorBody(404));
}

TEST_F(ExampleHandlerOverHttp, DeletesAListedPlaylistAndPassesOverTheIdOfATrackInTheList)
{
    const std::string tracksBefore = textOf("/audio/tracks");

    const Answer answer =
        remove("/audio/playlists?id=" + SampleData::trackUuid(0) + "," + SampleData::playlistUuid(0));

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(textOf(playlist(0)), "404 " + errorBody(404));
    EXPECT_EQ(textOf("/audio/tracks"), tracksBefore);
}

TEST_F(ExampleHandlerOverHttp, AnswersAListOfUnknownIdsWithNotFound)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/playlists?id=" + SampleData::playlistUuid(UNKNOWN) + "," +
                                 SampleData::playlistUuid(ALSO_UNKNOWN));

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersAListOfARefusedTrackAndThenAnUnknownOneWithTheLastResult)
{
    const std::string before = storeContents();

    const Answer answer =
        remove("/audio/tracks?id=" + SampleData::trackUuid(0) + "," + SampleData::trackUuid(UNKNOWN));

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersAListOfAnUnknownTrackAndThenARefusedOneWithTheRefusal)
{
    const std::string before = storeContents();

    const Answer answer =
        remove("/audio/tracks?id=" + SampleData::trackUuid(UNKNOWN) + "," + SampleData::trackUuid(0));

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesToDeleteListedAlbumsByTheirAccessRules)
{
    const std::string before = storeContents();

    const Answer answer =
        remove("/audio/albums?id=" + SampleData::albumUuid(0) + "," + SampleData::albumUuid(1));

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesADeleteOnACollectionWithoutAListOfIds)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/playlists");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesADeleteThatSelectsByAnotherAttributeThanTheId)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/playlists?name=Playlist%201");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "invalid query parameter"));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesIdsTogetherWithAnotherAttributeSearch)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/playlists?id=" + SampleData::playlistUuid(0) + "&name=Playlist%201");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "invalid query parameter"));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesIdsTogetherWithAFieldSelection)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/playlists?id=" + SampleData::playlistUuid(0) + "&$fields=tracks");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "invalid query parameter"));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesIdsTogetherWithAFreeTextSearch)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/playlists?id=" + SampleData::playlistUuid(0) + "&$q=Playlist");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400, "invalid query parameter"));
    EXPECT_EQ(storeContents(), before);
}

// ---- DELETE: addresses that are refused ----

TEST_F(ExampleHandlerOverHttp, AnswersADeleteOnTheRootWithAnInternalError)
{
    // The root has no service to check the version against; the lookup fails and ends as a fault.
    const std::string before = storeContents();

    const Answer answer = remove("/");

    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, errorBody(500));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesADeleteOnAService)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, errorBody(403));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersADeleteOnAnUnknownServiceWithNotFound)
{
    const std::string before = storeContents();

    const Answer answer = remove("/video/tracks?id=" + SampleData::trackUuid(0));

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, errorBody(404));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, AnswersADeleteOnAnUnknownResourceOfAKnownServiceWithAnInternalError)
{
    // The look-up of an unknown resource is unguarded on purpose and ends the request as a fault.
    const std::string before = storeContents();

    const Answer answer = remove("/audio/podcasts?id=" + SampleData::trackUuid(0));

    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.body, errorBody(500));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesADeleteOnAnAddressOfMoreThanThreeLevels)
{
    const std::string before = storeContents();

    const Answer answer = remove(playlist(0) + "/tracks");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesADeleteOnTheIdKeywordOfAResource)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/playlists/$id");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

TEST_F(ExampleHandlerOverHttp, RefusesADeleteOnTheIdKeywordOfAService)
{
    const std::string before = storeContents();

    const Answer answer = remove("/audio/$id");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, errorBody(400));
    EXPECT_EQ(storeContents(), before);
}

} // namespace
