#include "ExampleHandler.h"

#include "ExampleHandlerFactory.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Message/MessageSync.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "TestSupport/LocalHttpServer.h"
#include "VersionCheck.h"

#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/StreamCopier.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::Example::SampleData;
using Poco::Net::HTTPRequest;

const std::string DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;

struct Answer
{
    int status = 0;
    std::string body;
};

class ExampleHandlerOverHttp : public ::testing::Test
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 8;
    static constexpr std::size_t TRACKS = 12;

    ExampleHandlerOverHttp()
        : worker(CRITICAL_QUEUE_SIZE)
        , cache(services)
        , server(new Orvi::Example::ExampleHandlerFactory(worker, cache))
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
        for (auto& entry : services)
        {
            entry.second->setPort(server.port());
        }
        SampleData(cache).fillAudio(TRACKS);
        worker.start();
    }

    ~ExampleHandlerOverHttp() override { worker.stop(); }

    Answer exchange(const std::string& method, const std::string& uri, const std::string& accept = "")
    {
        Poco::Net::HTTPClientSession session("127.0.0.1", server.port());
        session.setTimeout(Poco::Timespan(10, 0));
        HTTPRequest request(method, uri, HTTPRequest::HTTP_1_1);
        if (!accept.empty())
        {
            request.set("Accept", accept);
        }
        session.sendRequest(request);
        Poco::Net::HTTPResponse response;
        std::istream& in = session.receiveResponse(response);
        Answer answer;
        answer.status = response.getStatus();
        Poco::StreamCopier::copyToString(in, answer.body);
        return answer;
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::JSONDataCache::JSONDataCache cache;
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

TEST_F(ExampleHandlerOverHttp, RefusesAPostAsNotSupported)
{
    const Answer answer = exchange(HTTPRequest::HTTP_POST, "/audio/tracks");

    EXPECT_EQ(answer.status, 405);
    EXPECT_EQ(answer.body, "{\"code\":405,\"message\":\"\",\"status\":\"error\"}");
}

TEST_F(ExampleHandlerOverHttp, RefusesADeleteAsNotSupported)
{
    const Answer answer = exchange(HTTPRequest::HTTP_DELETE, "/audio/tracks/" + SampleData::trackUuid(0));

    EXPECT_EQ(answer.status, 405);
    EXPECT_EQ(answer.body, "{\"code\":405,\"message\":\"\",\"status\":\"error\"}");
}

} // namespace
