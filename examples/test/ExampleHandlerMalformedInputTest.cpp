#include "ExampleDataHandler.h"
#include "ExampleHandlerFactory.h"
#include "HttpClient.h"
#include "HttpRequestHandlerBase.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "RawHttpClient.h"
#include "RecordingTrigger.h"
#include "SampleData.h"
#include "SchemaLoader/SchemaLoader.h"
#include "TestSupport/LocalHttpServer.h"
#include "WorkerBarrier.h"

#include <Poco/Timespan.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using Orvi::Example::SampleData;
using ServiceDB::Example::Test::ClientEnding;
using ServiceDB::Example::Test::RawAnswer;
using ServiceDB::Example::Test::RawConnection;
using ServiceDB::Example::Test::WorkerBarrier;

const std::string DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;
constexpr std::chrono::milliseconds TIME_LIMIT(5000);
const std::string CRLF = "\r\n";

/// Every collection of the example: their answers together are the whole store.
const std::vector<std::string> COLLECTIONS{"/cabin/zones",   "/cabin/seats",    "/cabin/doors",
                                           "/cabin/windows", "/audio/artists",  "/audio/albums",
                                           "/audio/tracks",  "/audio/playlists"};

// ---- what a client sends ----

std::string requestOf(const std::string& requestLine, const std::vector<std::string>& headers = {},
                      const std::string& body = "")
{
    std::string bytes = requestLine + CRLF + "Host: 127.0.0.1" + CRLF;
    for (const std::string& header : headers)
    {
        bytes += header + CRLF;
    }
    return bytes + CRLF + body;
}

std::string get(const std::string& target, const std::vector<std::string>& headers = {})
{
    return requestOf("GET " + target + " HTTP/1.1", headers);
}

/// A request whose body goes with its true length.
std::string withBody(const std::string& method, const std::string& target, const std::string& body,
                     std::vector<std::string> headers = {})
{
    headers.emplace_back("Content-Type: application/json");
    headers.emplace_back("Content-Length: " + std::to_string(body.size()));
    return requestOf(method + " " + target + " HTTP/1.1", headers, body);
}

std::string post(const std::string& target, const std::string& body,
                 const std::vector<std::string>& headers = {})
{
    return withBody("POST", target, body, headers);
}

/// A POST whose head is given whole, with the body bytes as they are.
std::string postFramedBy(const std::string& target, const std::vector<std::string>& headers,
                         const std::string& body)
{
    return requestOf("POST " + target + " HTTP/1.1", headers, body);
}

std::string remove(const std::string& target, const std::vector<std::string>& headers = {})
{
    return requestOf("DELETE " + target + " HTTP/1.1", headers);
}

std::string chunk(const std::string& data)
{
    std::ostringstream size;
    size << std::hex << data.size();
    return size.str() + CRLF + data + CRLF;
}

const std::string LAST_CHUNK = "0" + CRLF + CRLF;

std::string track(std::size_t index)
{
    return "/audio/tracks/" + SampleData::trackUuid(index);
}

std::string playlist(std::size_t index)
{
    return "/audio/playlists/" + SampleData::playlistUuid(index);
}

/// A number far beyond the generated sample objects.
constexpr std::size_t UNKNOWN = 900;

const std::string RENAME = "{\"name\":\"Renamed\"}";

/// A whole request that deletes the first playlist, to be hidden where only a body belongs.
std::string hiddenDelete()
{
    return remove(playlist(0), {"Connection: close"});
}

std::string nestedArrays(std::size_t depth)
{
    return "{\"name\":" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

std::string nestedObjects(std::size_t depth)
{
    std::string body = "{\"name\":";
    for (std::size_t level = 0; level < depth; ++level)
    {
        body += "{\"a\":";
    }
    body += "1";
    return body + std::string(depth, '}') + "}";
}

/// The start of a TLS handshake, as a client sends it that takes the port for HTTPS: no blank, no line end.
std::string tlsClientHello()
{
    return std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11) + std::string(64, '\xab');
}

std::string manyHeaders(std::size_t count)
{
    std::vector<std::string> headers;
    for (std::size_t index = 0; index < count; ++index)
    {
        headers.push_back("X-Header-" + std::to_string(index) + ": " + std::to_string(index));
    }
    return requestOf("GET " + track(0) + " HTTP/1.1", headers);
}

// ---- what the server answers ----

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string errorBody(int code, const std::string& message = "")
{
    return "{\"code\":" + std::to_string(code) + ",\"message\":" + quoted(message) + ",\"status\":\"error\"}";
}

const std::string WRONG_URI_SYNTAX = errorBody(400, "wrong URI syntax");
const std::string MALFORMED_VERSION = errorBody(400, "malformed HTTP version");
const std::string VERSION_NOT_SUPPORTED = errorBody(505, "HTTP version not supported");
const std::string MALFORMED_CONTENT_LENGTH = errorBody(400, "malformed Content-Length");
const std::string CONFLICTING_LENGTHS = errorBody(400, "conflicting body lengths");
const std::string BODY_TOO_LARGE = errorBody(400, "request body too large");
const std::string BODY_INCOMPLETE = errorBody(400, "request body incomplete");
const std::string MALFORMED_CHUNKS = errorBody(400, "malformed chunked body");
const std::string MALFORMED_HEAD = errorBody(400, "malformed request head");
const std::string MALFORMED_HEADER_NAME = errorBody(400, "malformed header name");
const std::string HEAD_TIMED_OUT = errorBody(408, "request head timed out");

/// The first track with its title alone, as a plain GET of `trackWithTitle()` answers it.
std::string trackWithTitleBody()
{
    const std::string uuid = SampleData::trackUuid(0);
    return "{\"data\":{\"id\":" + quoted(uuid) +
           ",\"name\":\"Track 1\",\"title\":\"Track 1\",\"uri\":" + quoted(track(0)) + "},\"status\":\"ok\"}";
}

std::string trackWithTitle()
{
    return track(0) + "?$fields=title";
}

/// What becomes of the connection of a broken request once it is answered.
enum class Afterwards
{
    MayStayOpen,
    /// The rules leave it to the server.
    Closes,
    /// "Connection: close", and the server closes: nobody can tell where such a request ends.
    CarriesNothingMore
    /// Nothing else is answered on it, since nothing else was sent: no byte of the request is read as
    /// another request.
};

/// One broken request and the answer it must get. The server must afterwards answer others as before.
struct BrokenRequest
{
    std::string name;
    std::string bytes;
    int status = 0;
    /// 0: no answer is awaited. The client then closes at once (ClientEnding::Closes), or keeps the
    /// connection open, unread, while the server is asked for something else (ClientEnding::StaysOpen).
    std::optional<std::string> body;
    /// The exact body where the rules fix it.
    ClientEnding ending = ClientEnding::StaysOpen;
    Afterwards afterwards = Afterwards::MayStayOpen;
};

// Shown by GoogleTest when a case fails: the name and the start of the bytes, with the unprintable ones
// escaped.
void PrintTo(const BrokenRequest& request, std::ostream* out)
{
    constexpr std::size_t SHOWN = 160;
    *out << request.name << ": \"";
    for (std::size_t index = 0; index < request.bytes.size() && index < SHOWN; ++index)
    {
        const auto byte = static_cast<unsigned char>(request.bytes[index]);
        if (byte == '\r')
        {
            *out << "\\r";
        }
        else if (byte == '\n')
        {
            *out << "\\n";
        }
        else if (byte < 0x20 || byte >= 0x7f)
        {
            static const char* const HEX = "0123456789abcdef";
            *out << "\\x" << HEX[byte >> 4U] << HEX[byte & 0xfU];
        }
        else
        {
            *out << static_cast<char>(byte);
        }
    }
    *out << (request.bytes.size() > SHOWN ? "...\" (" + std::to_string(request.bytes.size()) + " bytes)"
                                          : "\"");
}

std::string nameOf(const ::testing::TestParamInfo<BrokenRequest>& info)
{
    return info.param.name;
}

/// The example's services and sample data behind a real HTTP server on 127.0.0.1, as the example's other
/// tests have them.
class BrokenRequestFixture : public ::testing::TestWithParam<BrokenRequest>
{
protected:
    static constexpr std::size_t CRITICAL_QUEUE_SIZE = 8;
    static constexpr std::size_t TRACKS = 12;
    // Short, so that a head that never ends is answered well within the client's time limit.
    static inline const Poco::Timespan SERVER_TIMEOUT{1, 0};

    BrokenRequestFixture()
        : worker(CRITICAL_QUEUE_SIZE)
        , dataHandler(worker)
        , cache(services, &dataHandler)
        , vehicle(cache, &trigger)
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
        server = std::make_unique<ServiceDB::Test::LocalHttpServer>(
            new Orvi::Example::ExampleHandlerFactory(worker, cache, trigger), SERVER_TIMEOUT);
        for (auto& entry : services)
        {
            entry.second->setPort(server->port());
        }
        dataHandler.attach(cache, vehicle);
        SampleData data(cache);
        data.fillCabin();
        data.fillAudio(TRACKS);
        worker.start();
    }

    ~BrokenRequestFixture() override
    {
        // The server first: a connection still served may wait for the worker.
        server.reset();
        worker.stop();
    }

    RawAnswer exchange(const std::string& bytes, ClientEnding ending = ClientEnding::StaysOpen)
    {
        return ServiceDB::Example::Test::exchangeRaw(server->port(), bytes, ending, TIME_LIMIT);
    }

    RawAnswer plainGet(const std::string& target) { return exchange(get(target, {"Connection: close"})); }

    /// The whole store as clients see it, one collection a line; empty when the server does not answer.
    std::string storeContents()
    {
        std::string contents;
        for (const std::string& collection : COLLECTIONS)
        {
            const RawAnswer answer = plainGet(collection);
            if (!answer.answered)
            {
                return {};
            }
            contents += collection + " " + std::to_string(answer.status) + " " + answer.body + "\n";
        }
        return contents;
    }

    void sendAndCheck(const BrokenRequest& request)
    {
        const std::string before = storeContents();
        ASSERT_FALSE(before.empty()) << "the server does not answer before the case";

        RawConnection connection(server->port(), TIME_LIMIT);
        ASSERT_TRUE(connection.connected());
        connection.write(request.bytes);
        if (request.ending == ClientEnding::HalfCloses)
        {
            connection.halfClose();
        }
        if (request.status != 0)
        {
            const RawAnswer answer = connection.readAnswer();
            ASSERT_TRUE(answer.answered) << answer.summary();
            EXPECT_EQ(answer.status, request.status) << answer.summary();
            if (request.body)
            {
                EXPECT_EQ(answer.body, *request.body) << answer.summary();
            }
            if (request.afterwards == Afterwards::Closes)
            {
                EXPECT_TRUE(answer.closesConnection()) << "Connection: " << answer.header("Connection");
            }
            if (request.afterwards != Afterwards::MayStayOpen)
            {
                EXPECT_TRUE(connection.closedByServer()) << "more came on the connection, or it stays open";
            }
        }
        if (request.ending == ClientEnding::Closes)
        {
            connection.close();
        }

        // Meanwhile another client is served as if nothing had happened, also while the broken request
        // lingers on its connection.
        const RawAnswer plain = plainGet(trackWithTitle());
        EXPECT_TRUE(plain.answered && plain.status == 200 && plain.body == trackWithTitleBody())
            << "a plain GET got " << plain.summary();
        connection.close();
        if (!plain.answered)
        {
            return;
        }
        ASSERT_TRUE(WorkerBarrier::passed(worker));
        EXPECT_EQ(storeContents(), before);
        EXPECT_TRUE(trigger.changes().empty());
    }

    Orvi::DBData::ServiceMap services;
    Orvi::Util::MessageSync worker;
    Orvi::Example::ExampleDataHandler dataHandler;
    Orvi::Mapping::MappingServiceJSONDataCache cache;
    ServiceDB::Example::Test::RecordingTrigger trigger;
    Orvi::Example::VehicleLink vehicle;
    std::unique_ptr<ServiceDB::Test::LocalHttpServer> server;
};

// ---- the requests that are answered as the rules say ----

class AnswerToABrokenRequest : public BrokenRequestFixture
{
};

const std::optional<std::string> ANY_BODY;

std::vector<BrokenRequest> answeredAsTheRulesSay()
{
    const std::string uuid = SampleData::trackUuid(0);
    const std::string playlistUuid = SampleData::playlistUuid(0);
    const std::string gzipBomb = ServiceDB::Example::Test::gzipped(
        "{\"name\":\"" + std::string(2 * Orvi::HttpRequestHandlerBase::DEFAULT_MAX_BODY_SIZE, 'a') + "\"}");
    const std::string overLimit(Orvi::HttpRequestHandlerBase::DEFAULT_MAX_BODY_SIZE + 1, ' ');
    return {
        // Addresses and escapes.
        {"PercentEscapeOfLettersThatAreNotHex", get("/audio/tracks/%zz"), 400, WRONG_URI_SYNTAX},
        {"PercentSignAtTheEndOfThePath", get("/audio/tracks%"), 400, WRONG_URI_SYNTAX},
        {"PercentEscapeWithOneDigit", get("/audio/tracks/%4"), 400, WRONG_URI_SYNTAX},
        {"BadPercentEscapeInTheQuery", get("/audio/tracks?genre=%zz"), 400, WRONG_URI_SYNTAX},
        {"BadPercentEscapeInAPost", post("/audio/playlists/%zz", RENAME), 400, WRONG_URI_SYNTAX},
        {"BadPercentEscapeInADelete", remove("/audio/playlists/%4"), 400, WRONG_URI_SYNTAX},
        {"PathBeyondWhatTheServerReads", get("/audio/" + std::string(20000, 'a')), 400, ANY_BODY},
        {"LongPathOfAnUnknownService", get("/" + std::string(8000, 'a')), 404, errorBody(404)},
        {"FourLevelsOnAGet", get(track(0) + "/title"), 400, errorBody(400)},
        {"FourLevelsOnAPost", post(playlist(0) + "/name", RENAME), 400, errorBody(400)},
        {"FourLevelsOnADelete", remove(playlist(0) + "/tracks"), 400, errorBody(400)},
        {"DefinitionKeywordBelowAnObject", get(track(0) + "/$spec"), 400, errorBody(400)},
        {"RightsKeywordOfAResource", get("/audio/tracks/$rights"), 400, errorBody(400)},
        {"IdKeywordOfTheRootWithALevelBehindIt", get("/$id/audio"), 400, errorBody(400)},
        {"IdKeywordOfTheRootWithTextBehindIt", get("/$idx"), 400, errorBody(400)},
        {"ServiceNameStartingWithDollar", get("/$audio/tracks"), 400, errorBody(400)},
        {"ResourceNameStartingWithDollar", get("/audio/$tracks"), 400, errorBody(400)},
        {"ObjectNameStartingWithDollar", get("/audio/tracks/$track"), 400, errorBody(400)},
        {"EmptySegmentsCountForNothing", get("/audio//tracks//" + uuid + "?$fields=title"), 200,
         trackWithTitleBody()},
        {"NulByteInTheServiceName", get("/audio%00/tracks"), 404, errorBody(404)},
        {"ObjectIdThatIsNoUuidOnAGet", get("/audio/tracks/not-a-uuid"), 404, errorBody(404)},
        // A POST on an object that is not found is refused, not missed.
        {"ObjectIdThatIsNoUuidOnAPost", post("/audio/playlists/not-a-uuid", RENAME), 403, errorBody(403)},
        {"ObjectIdThatIsNoUuidOnADelete", remove("/audio/playlists/not-a-uuid"), 404, errorBody(404)},
        {"UnknownService", get("/video/tracks"), 404, errorBody(404)},
        {"UnknownResourceOnAGet", get("/audio/podcasts"), 404, errorBody(404)},
        // The look-up of an unknown resource behind a POST is unguarded by design and ends as a fault.
        {"UnknownResourceOnAPost", post("/audio/podcasts", RENAME), 500, errorBody(500)},
        {"UnknownObject", get(track(UNKNOWN)), 404, errorBody(404)},

        // Query parameters.
        {"LimitThatIsAWord", get("/audio/tracks?$limit=abc"), 400, WRONG_URI_SYNTAX},
        {"NegativeLimit", get("/audio/tracks?$limit=-5"), 400, WRONG_URI_SYNTAX},
        {"ExpansionLevelBeyondThree", get("/audio/tracks?$expand=9"), 400, WRONG_URI_SYNTAX},
        {"UnknownReservedParameter", get("/audio/tracks?$colour=red"), 400, WRONG_URI_SYNTAX},
        {"OffsetThatIsNoUuid", get("/audio/tracks?$offset=not-a-uuid"), 400, WRONG_URI_SYNTAX},
        {"RepeatedLimit", get("/audio/tracks?$limit=1&$limit=2"), 400, WRONG_URI_SYNTAX},
        {"EmptyLimit", get("/audio/tracks?$limit="), 400, WRONG_URI_SYNTAX},
        {"EmptyFieldList", get("/audio/tracks?$fields="), 400, WRONG_URI_SYNTAX},
        {"EmptyFreeTextSearch", get("/audio/tracks?$q="), 400, WRONG_URI_SYNTAX},
        {"ValueWithoutAName", get("/audio/tracks?=rock"), 400, WRONG_URI_SYNTAX},
        {"LimitBeyondSixtyFourBits", get("/audio/tracks?$limit=99999999999999999999"), 400, WRONG_URI_SYNTAX},
        {"OffsetBeyondSixtyFourBits", get("/audio/tracks?$offset=99999999999999999999"), 400,
         WRONG_URI_SYNTAX},
        {"ExpansionLevelBeyondThirtyTwoBits", get("/audio/tracks?$expand=4294967296"), 400, WRONG_URI_SYNTAX},
        {"RepeatedLimitOnADelete", remove("/audio/playlists?id=" + playlistUuid + "&$limit=1&$limit=2"), 400,
         WRONG_URI_SYNTAX},
        {"SortByAnUnknownAttribute", get("/audio/tracks?$sortby=mood"), 200, ANY_BODY},
        {"SortByAMinusAlone", get("/audio/tracks?$sortby=-"), 400, WRONG_URI_SYNTAX},
        // Only the names that every object has are left.
        {"FieldsOfUnknownNames", get(track(0) + "?$fields=mood,colour"), 200,
         "{\"data\":{\"id\":" + quoted(uuid) + ",\"name\":\"Track 1\",\"uri\":" + quoted(track(0)) +
             "},\"status\":\"ok\"}"},
        // An empty value is searched for like any other.
        {"EmptySearchValue", get("/audio/tracks?genre="), 200, "{\"data\":[],\"status\":\"ok\"}"},

        // Headers and request lines.
        {"HeaderOfAHundredKilobytes", get(track(0), {"X-Padding: " + std::string(100 * 1024, 'p')}), 400,
         ANY_BODY},
        {"ThousandsOfHeaders", manyHeaders(5000), 400, ANY_BODY},
        {"TlsHandshakeInsteadOfARequest", tlsClientHello(), 400, ANY_BODY, ClientEnding::HalfCloses},
        {"WordsInsteadOfARequestLine", "THIS IS NOT HTTP" + CRLF + CRLF, 400, MALFORMED_VERSION},
        {"RequestLineWithoutAVersion", requestOf("GET " + track(0)), 400, MALFORMED_VERSION,
         ClientEnding::StaysOpen, Afterwards::Closes},
        {"ProtocolThatIsNotHttp", requestOf("GET " + track(0) + " FOO/1.1"), 400, MALFORMED_VERSION,
         ClientEnding::StaysOpen, Afterwards::Closes},
        {"VersionOfLetters", requestOf("GET " + track(0) + " HTTP/x.y"), 400, MALFORMED_VERSION,
         ClientEnding::StaysOpen, Afterwards::Closes},
        {"HttpTwo", requestOf("GET " + track(0) + " HTTP/2.0"), 505, VERSION_NOT_SUPPORTED,
         ClientEnding::StaysOpen, Afterwards::Closes},
        {"MethodLongerThanTheServerReads", requestOf(std::string(40, 'G') + " " + track(0) + " HTTP/1.1"),
         400, ANY_BODY},
        {"MethodInSmallLetters", requestOf("get " + track(0) + " HTTP/1.1"), 405, errorBody(405)},

        // Lengths and chunks.
        {"NegativeContentLength", postFramedBy(playlist(0), {"Content-Length: -5"}, ""), 400,
         MALFORMED_CONTENT_LENGTH, ClientEnding::StaysOpen, Afterwards::Closes},
        {"ContentLengthWithAPlusSign", postFramedBy(playlist(0), {"Content-Length: +17"}, RENAME), 400,
         MALFORMED_CONTENT_LENGTH, ClientEnding::StaysOpen, Afterwards::Closes},
        {"ContentLengthOfTwoToTheSixtyThree",
         postFramedBy(playlist(0), {"Content-Length: 9223372036854775808"}, RENAME), 400,
         MALFORMED_CONTENT_LENGTH, ClientEnding::StaysOpen, Afterwards::Closes},
        {"TwoDifferentContentLengths",
         postFramedBy(playlist(0), {"Content-Length: 18", "Content-Length: 5"}, RENAME), 400,
         CONFLICTING_LENGTHS, ClientEnding::StaysOpen, Afterwards::Closes},
        {"ContentLengthBesideChunks",
         postFramedBy(playlist(0), {"Content-Length: 18", "Transfer-Encoding: chunked"},
                      chunk(RENAME) + LAST_CHUNK),
         400, CONFLICTING_LENGTHS, ClientEnding::StaysOpen, Afterwards::Closes},
        {"ChunkSizeThatIsNotHex",
         postFramedBy(playlist(0), {"Transfer-Encoding: chunked"}, "zz" + CRLF + RENAME + CRLF + LAST_CHUNK),
         400, ANY_BODY},
        {"ChunkSizeBeyondSixtyFourBits",
         postFramedBy(playlist(0), {"Transfer-Encoding: chunked"},
                      "1ffffffffffffffff0" + CRLF + RENAME + CRLF + LAST_CHUNK),
         400, ANY_BODY},
        {"FinalChunkNeverSentAndTheClientGone",
         postFramedBy(playlist(0), {"Transfer-Encoding: chunked"}, chunk("{\"name\":\"Ren")), 0, ANY_BODY,
         ClientEnding::Closes},
        {"BodyShorterThanAnnouncedAndHalfClosed",
         postFramedBy(playlist(0), {"Content-Length: 100"}, "{\"name\":\"Ren"), 400, ANY_BODY,
         ClientEnding::HalfCloses},

        // Bodies.
        {"BodyThatIsNotJson", post(playlist(0), "name=Renamed"), 400, errorBody(400)},
        {"TruncatedJson", post(playlist(0), "{\"name\":\"Ren"), 400, errorBody(400)},
        {"JsonArrayInsteadOfAnObject", post(playlist(0), "[" + RENAME + "]"), 400, errorBody(400)},
        {"JsonFollowedByGarbage", post(playlist(0), RENAME + " trailing"), 400, errorBody(400)},
        {"EmptyBody", post(playlist(0), ""), 400, errorBody(400)},
        {"ArraysNestedTenThousandDeep", post(playlist(0), nestedArrays(10000)), 400, errorBody(400)},
        {"ObjectsNestedTenThousandDeep", post(playlist(0), nestedObjects(10000)), 400, errorBody(400)},
        // Nothing of such a body is read.
        {"BodyAnnouncedBeyondTheLimit",
         postFramedBy(
             playlist(0),
             {"Content-Length: " + std::to_string(Orvi::HttpRequestHandlerBase::DEFAULT_MAX_BODY_SIZE + 1)},
             ""),
         400, BODY_TOO_LARGE, ClientEnding::StaysOpen, Afterwards::Closes},
        {"ChunkedBodyBeyondTheLimit",
         postFramedBy(playlist(0), {"Transfer-Encoding: chunked"}, chunk(overLimit) + LAST_CHUNK), 400,
         BODY_TOO_LARGE, ClientEnding::StaysOpen, Afterwards::Closes},
        {"GzipBodyThatUnpacksBeyondTheLimit",
         postFramedBy(playlist(0),
                      {"Content-Encoding: gzip", "Content-Length: " + std::to_string(gzipBomb.size())},
                      gzipBomb),
         400, BODY_TOO_LARGE, ClientEnding::StaysOpen, Afterwards::Closes},
        {"InvalidUtf8InAString", post(playlist(0), "{\"name\":\"\xff\xfe\xc3\x28\"}"), 400, errorBody(400)},
        {"TextWhereAnIntegerBelongs", post(track(0), "{\"year\":\"soon\"}"), 400, errorBody(400)},
        {"ArrayWhereAScalarBelongs", post(track(0), "{\"year\":[2001]}"), 400, errorBody(400)},
        {"ObjectWhereAScalarBelongs", post(track(0), "{\"year\":{\"value\":2001}}"), 400, errorBody(400)},
        {"YearBeforeItsRange", post(track(0), "{\"year\":1800}"), 400, errorBody(400)},
        {"DurationBeyondSixtyFourBits", post(track(0), "{\"duration\":99999999999999999999999}"), 400,
         errorBody(400)},
        {"GenreOutsideItsList", post(track(0), "{\"genre\":\"opera\"}"), 400, errorBody(400)},
        {"AttributeTheTrackDoesNotHave", post(track(0), "{\"mood\":\"calm\"}"), 400, errorBody(400)},
        {"AttributeANewPlaylistDoesNotHave", post("/audio/playlists", "{\"name\":\"New\",\"mood\":\"calm\"}"),
         403, errorBody(403, "POST is not allowed (forbidden attribute)")},
        // A body that claims a coding it does not have cannot be read, which ends as a fault.
        {"PlainBodyClaimingGzip", post(playlist(0), RENAME, {"Content-Encoding: gzip"}), 500, errorBody(500)},
        {"GarbageClaimingDeflate", post(playlist(0), "not deflated at all", {"Content-Encoding: deflate"}),
         500, errorBody(500)},
        {"BodyInAnUnknownCoding",
         post(playlist(0), std::string("\x1b\x0e\x00\xf8\x25\x14\x82\x8c", 8), {"Content-Encoding: br"}), 400,
         errorBody(400)},

        // Methods.
        {"Patch", withBody("PATCH", playlist(0), RENAME), 405, errorBody(405)},
        {"Put", withBody("PUT", playlist(0), RENAME), 405, errorBody(405)},
        {"UnknownMethodToken", requestOf("BREW " + track(0) + " HTTP/1.1"), 405, errorBody(405)},
        {"Trace", requestOf("TRACE " + track(0) + " HTTP/1.1"), 405, errorBody(405)},
        {"OptionsWithoutCorsHeaders", requestOf("OPTIONS " + track(0) + " HTTP/1.1"), 405, errorBody(405)},
        {"OptionsWithAnOriginAlone",
         requestOf("OPTIONS " + track(0) + " HTTP/1.1", {"Origin: http://a.test"}), 405, errorBody(405)},
        {"IfMatchOnAPost", post(playlist(0), RENAME, {"If-Match: \"0123456789abcdef\""}), 412, ""},
        {"IfMatchOnADelete", remove(playlist(0), {"If-Match: *"}), 412, ""},
        {"IfNoneMatchOnAPost", post(playlist(0), RENAME, {"If-None-Match: *"}), 412, ""},
        {"IfUnmodifiedSinceOnADelete",
         remove(playlist(0), {"If-Unmodified-Since: Sat, 01 Jan 2000 00:00:00 GMT"}), 412, ""},

        // Requests inside the body of another: the body is read whole, whatever the answer.
        {"RequestHiddenInTheBodyOfAGet", withBody("GET", trackWithTitle(), hiddenDelete()), 200,
         trackWithTitleBody(), ClientEnding::StaysOpen, Afterwards::CarriesNothingMore},
        {"RequestHiddenInTheBodyOfAPatch", withBody("PATCH", playlist(0), hiddenDelete()), 405,
         errorBody(405), ClientEnding::StaysOpen, Afterwards::CarriesNothingMore},
        {"RequestHiddenInTheBodyOfAPreflight",
         withBody("OPTIONS", playlist(0), hiddenDelete(),
                  {"Origin: http://a.test", "Access-Control-Request-Method: DELETE"}),
         200, "", ClientEnding::StaysOpen, Afterwards::CarriesNothingMore},
    };
}

TEST_P(AnswerToABrokenRequest, IsTheOneTheRulesGiveAndTheServerServesOn)
{
    sendAndCheck(GetParam());
}

INSTANTIATE_TEST_SUITE_P(ExampleHandlerMalformedInput, AnswerToABrokenRequest,
                         ::testing::ValuesIn(answeredAsTheRulesSay()), nameOf);

// ---- framing, bodies and heads ----

std::vector<BrokenRequest> framedAsTheRulesSay()
{
    return {
        // Where a body ends that has no length in numbers, nobody can tell.
        {"ContentLengthThatIsAWord", postFramedBy(playlist(0), {"Content-Length: five"}, RENAME), 400,
         MALFORMED_CONTENT_LENGTH, ClientEnding::StaysOpen, Afterwards::Closes},
        {"ContentLengthWithTrailingLetters", postFramedBy(playlist(0), {"Content-Length: 12abc"}, RENAME),
         400, MALFORMED_CONTENT_LENGTH, ClientEnding::StaysOpen, Afterwards::Closes},
        {"EmptyContentLength", postFramedBy(playlist(0), {"Content-Length: "}, RENAME), 400,
         MALFORMED_CONTENT_LENGTH, ClientEnding::StaysOpen, Afterwards::Closes},
        {"ContentLengthBeyondSixtyFourBits",
         postFramedBy(playlist(0), {"Content-Length: 99999999999999999999999"}, RENAME), 400,
         MALFORMED_CONTENT_LENGTH, ClientEnding::StaysOpen, Afterwards::Closes},

        // A body counts once it has come in full, and one that is slow to come holds up nobody else.
        {"CompleteJsonWithoutTheFinalChunkAndTheClientGone",
         postFramedBy(playlist(0), {"Transfer-Encoding: chunked"}, chunk(RENAME)), 0, ANY_BODY,
         ClientEnding::Closes},
        {"CompleteJsonShorterThanAnnouncedAndHalfClosed",
         postFramedBy(playlist(0), {"Content-Length: 100"}, RENAME), 400, BODY_INCOMPLETE,
         ClientEnding::HalfCloses, Afterwards::Closes},
        {"BodyThatNeverArrivesInFull", postFramedBy(playlist(0), {"Content-Length: 100"}, "{\"name\":"), 0,
         ANY_BODY, ClientEnding::StaysOpen},

        // Bytes sent as a body are never read as a request.
        {"RequestHiddenInTheBodyOfAConditionalPost", post(playlist(0), hiddenDelete(), {"If-Match: *"}), 412,
         "", ClientEnding::StaysOpen, Afterwards::CarriesNothingMore},
        {"RequestSmuggledBehindABadChunkSize",
         postFramedBy(playlist(0), {"Transfer-Encoding: chunked"}, "X" + hiddenDelete()), 400,
         MALFORMED_CHUNKS, ClientEnding::StaysOpen, Afterwards::Closes},

        // A head is read whole, up to its empty line: one that never ends is refused at the time-out.
        {"Http09RequestLineHalfClosed", "GET " + track(0) + CRLF, 400, MALFORMED_HEAD,
         ClientEnding::HalfCloses, Afterwards::Closes},
        {"Http09RequestLine", "GET " + track(0) + CRLF, 408, HEAD_TIMED_OUT, ClientEnding::StaysOpen,
         Afterwards::Closes},
        {"TlsHandshakeKeptOpen", tlsClientHello(), 408, HEAD_TIMED_OUT, ClientEnding::StaysOpen,
         Afterwards::Closes},

        // A header line without a colon carries no header and is passed over; a name that is no token is
        // refused.
        {"HeaderLineWithoutColon", get(track(0), {"X-No-Colon-Here"}), 200, ANY_BODY},
        {"NonAsciiInAHeaderName", get(track(0), {std::string("X-F\xc3\xbc\xc3\x9f") + "e: 1"}), 400,
         MALFORMED_HEADER_NAME, ClientEnding::StaysOpen, Afterwards::Closes},

        // An object is named by its UUID and nothing more.
        {"NulByteAfterTheObjectId", get(track(0) + "%00"), 404, errorBody(404)},
        {"TextAfterTheObjectId", get(track(0) + "zzz"), 404, errorBody(404)},
    };
}

INSTANTIATE_TEST_SUITE_P(ExampleHandlerFraming, AnswerToABrokenRequest,
                         ::testing::ValuesIn(framedAsTheRulesSay()), nameOf);

} // namespace
