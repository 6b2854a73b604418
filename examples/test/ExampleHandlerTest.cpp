#include "ExampleHandler.h"

#include "ExampleDataHandler.h"
#include "ExampleHandlerFactory.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "TestSupport/LocalHttpServer.h"
#include "VersionCheck.h"
#include "WorkerBarrier.h"

#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/RegularExpression.h>
#include <Poco/StreamCopier.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::Example::SampleData;
using Poco::Net::HTTPRequest;
using ServiceDB::Example::Test::WorkerBarrier;

const std::string DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;

const std::string OK_BODY = "{ \"status\" : \"ok\" }";

struct Answer
{
    int status = 0;
    std::string body;
    std::string location;
};

class ExampleHandlerOverHttp : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 8;
    static constexpr std::size_t TRACKS = 12;

    ExampleHandlerOverHttp()
        : worker(CRITICAL_QUEUE_SIZE)
        , dataHandler(worker)
        , cache(services, &dataHandler)
        , server(new Orvi::Example::ExampleHandlerFactory(worker, cache))
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
        for (auto& entry : services)
        {
            entry.second->setPort(server.port());
        }
        dataHandler.attach(cache);
        SampleData data(cache);
        data.fillCabin();
        data.fillAudio(TRACKS);
        worker.start();
    }

    ~ExampleHandlerOverHttp() override { worker.stop(); }

    Answer exchange(const std::string& method, const std::string& uri, const std::string& accept = "")
    {
        return send(method, uri, "", accept);
    }

    Answer post(const std::string& uri, const std::string& body)
    {
        return send(HTTPRequest::HTTP_POST, uri, body, "");
    }

    Answer send(const std::string& method, const std::string& uri, const std::string& body,
                const std::string& accept)
    {
        Poco::Net::HTTPClientSession session("127.0.0.1", server.port());
        session.setTimeout(Poco::Timespan(10, 0));
        HTTPRequest request(method, uri, HTTPRequest::HTTP_1_1);
        if (!accept.empty())
        {
            request.set("Accept", accept);
        }
        if (!body.empty())
        {
            request.setContentType("application/json");
            request.setContentLength(static_cast<std::streamsize>(body.size()));
        }
        session.sendRequest(request) << body;
        Poco::Net::HTTPResponse response;
        std::istream& in = session.receiveResponse(response);
        Answer answer;
        answer.status = response.getStatus();
        answer.location = response.get("Location", "");
        Poco::StreamCopier::copyToString(in, answer.body);
        return answer;
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Example::ExampleDataHandler dataHandler;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    ServiceDB::Test::LocalHttpServer server;
};

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string reduced(const std::string& resource, const std::string& uuid, const std::string& name)
{
    return "{\"id\":" + quoted(uuid) + ",\"name\":" + quoted(name) +
           ",\"uri\":" + quoted("/audio/" + resource + "/" + uuid) + "}";
}

TEST_F(ExampleHandlerOverHttp, AnswersAGeneratedTrackWithItsAlbumAndArtist)
{
    const std::string track = SampleData::trackUuid(11);

    const Answer answer = exchange(HTTPRequest::HTTP_GET, "/audio/tracks/" + track);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"data\":{\"album\":" + reduced("albums", SampleData::albumUuid(1), "Album 2") +
                               ",\"artist\":" + reduced("artists", SampleData::artistUuid(0), "Artist 1") +
                               ",\"duration\":227,\"genre\":\"electronic\",\"id\":" + quoted(track) +
                               ",\"name\":\"Track 12\",\"title\":\"Track 12\",\"uri\":" +
                               quoted("/audio/tracks/" + track) + ",\"year\":1961},\"status\":\"ok\"}");
}

TEST_F(ExampleHandlerOverHttp, AnswersAHeadWithoutABody)
{
    const Answer answer = exchange(HTTPRequest::HTTP_HEAD, "/audio/tracks/" + SampleData::trackUuid(0));

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "");
}

TEST_F(ExampleHandlerOverHttp, AnswersAVersionItDoesNotImplementWithAText)
{
    const Answer answer =
        exchange(HTTPRequest::HTTP_GET, "/audio/tracks", "application/vnd.servicedb.v2.0.0+json");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, Orvi::Service::VersionCheck::msgVersionNotImplemented);
}

std::string zone(std::size_t index)
{
    return "/cabin/zones/" + SampleData::cabinUuid(index);
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
           "\",\"uri\":" + quoted("/audio/tracks/" + uuid) + ",\"year\":" + year + "},\"status\":\"ok\"}";
}

TEST_F(ExampleHandlerOverHttp, AcceptsASetPointForLaterAndStoresItOnceTheControllerConfirms)
{
    const Answer answer = post(zone(0), "{\"setPoint\":23.5}");

    EXPECT_EQ(answer.status, 202);
    EXPECT_EQ(answer.body, OK_BODY);
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, zone(0) + "?$fields=setPoint").body,
              zoneWithSetPoint(0, "Driver", "23.5"));
}

TEST_F(ExampleHandlerOverHttp, CreatesAPlaylistAndAnswersItsLocation)
{
    const Answer answer = post("/audio/playlists", "{\"name\":\"Road trip\",\"tracks\":[\"/audio/tracks/" +
                                                       SampleData::trackUuid(2) + "\"]}");

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
}

TEST_F(ExampleHandlerOverHttp, ChangesEveryTrackThatAQuerySelects)
{
    const Answer answer = post("/audio/tracks?genre=rock", "{\"year\":2001}");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(
        exchange(HTTPRequest::HTTP_GET, "/audio/tracks/" + SampleData::trackUuid(0) + "?$fields=year").body,
        trackWithYear(0, "2001"));
    EXPECT_EQ(
        exchange(HTTPRequest::HTTP_GET, "/audio/tracks/" + SampleData::trackUuid(7) + "?$fields=year").body,
        trackWithYear(7, "2001"));
    EXPECT_EQ(
        exchange(HTTPRequest::HTTP_GET, "/audio/tracks/" + SampleData::trackUuid(1) + "?$fields=year").body,
        trackWithYear(1, "1960"));
}

TEST_F(ExampleHandlerOverHttp, RenamesAPlaylistAtOnce)
{
    const std::string playlist = "/audio/playlists/" + SampleData::playlistUuid(0);

    const Answer answer = post(playlist, "{\"name\":\"Evening\"}");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, playlist + "?$fields=name").body,
              "{\"data\":" + reduced("playlists", SampleData::playlistUuid(0), "Evening") +
                  ",\"status\":\"ok\"}");
}

TEST_F(ExampleHandlerOverHttp, DeletesAPlaylist)
{
    const std::string playlist = "/audio/playlists/" + SampleData::playlistUuid(0);

    const Answer answer = exchange(HTTPRequest::HTTP_DELETE, playlist);

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, OK_BODY);
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, playlist).status, 404);
}

TEST_F(ExampleHandlerOverHttp, RefusesToDeleteATrack)
{
    const std::string track = "/audio/tracks/" + SampleData::trackUuid(0);

    const Answer answer = exchange(HTTPRequest::HTTP_DELETE, track);

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, "{\"code\":400,\"message\":\"\",\"status\":\"error\"}");
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, track).status, 200);
}

TEST_F(ExampleHandlerOverHttp, RefusesToDeleteAnAlbumByItsAccessRules)
{
    const Answer answer = exchange(HTTPRequest::HTTP_DELETE, "/audio/albums/" + SampleData::albumUuid(0));

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, "{\"code\":403,\"message\":\"\",\"status\":\"error\"}");
}

TEST_F(ExampleHandlerOverHttp, RefusesASetPointOutOfRange)
{
    const Answer answer = post(zone(0), "{\"setPoint\":40}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, "{\"code\":400,\"message\":\"\",\"status\":\"error\"}");
    ASSERT_TRUE(WorkerBarrier::passed(worker));
    EXPECT_EQ(exchange(HTTPRequest::HTTP_GET, zone(0) + "?$fields=setPoint").body,
              zoneWithSetPoint(0, "Driver", "21.5"));
}

TEST_F(ExampleHandlerOverHttp, RefusesAnAttributeTheTrackDoesNotHave)
{
    const Answer answer = post("/audio/tracks/" + SampleData::trackUuid(0), "{\"mood\":\"calm\"}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, "{\"code\":400,\"message\":\"\",\"status\":\"error\"}");
}

TEST_F(ExampleHandlerOverHttp, RefusesAPostOnTheRoot)
{
    const Answer answer = post("/", "{\"name\":\"x\"}");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, "{\"code\":403,\"message\":\"\",\"status\":\"error\"}");
}

TEST_F(ExampleHandlerOverHttp, RefusesAPlaylistWithoutAName)
{
    const Answer answer = post("/audio/playlists", "{\"tracks\":[]}");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body,
              "{\"code\":400,\"message\":\"POST is invalid (missing attribute)\",\"status\":\"error\"}");
}

TEST_F(ExampleHandlerOverHttp, RefusesABodyThatIsNotJSON)
{
    const Answer answer = post(zone(0), "setPoint=23.5");

    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, "{\"code\":400,\"message\":\"\",\"status\":\"error\"}");
}

} // namespace
