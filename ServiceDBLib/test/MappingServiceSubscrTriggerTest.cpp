#include "Mapping/MappingServiceSubscrTrigger.h"

#include "Command/RequestBase.h"
#include "Command/UrlPath.h"
#include "Command/WebSocketResponseObject.h"
#include "FleetServiceMap.h"
#include "Message/MessageSync.h"
#include "SubscriptionHandling/SubscriptionError.h"
#include "SubscriptionHandling/SubscriptionRequest.h"
#include "SubscriptionHandling/SubscriptionSubscribingEventPayload.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"
#include "WorkerProbe.h"

#include <Poco/Event.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/Message.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Thread.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace
{

using Orvi::Command::UrlPath;
using Orvi::Command::WebSocketResponseObject;
using Orvi::Mapping::MappingServiceSubscrTrigger;
using Orvi::Service::SubscriptionError;
using Orvi::Service::SubscriptionRequest;
using Orvi::Service::SubscriptionSubscribingEventPayload;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::toJson;
using ServiceDB::Test::WorkerProbe;
using ServiceDB::Test::Fleet::FLEET_PORT;
using ServiceDB::Test::Fleet::GARAGE_PORT;
using Lines = std::vector<std::string>;

const std::string CAR = "ca000000-0000-4000-8000-0000000000c1";
const std::string ADA = "a0000000-0000-4000-8000-0000000000a1";
const std::string UNKNOWN = "99999999-9999-4999-8999-999999999999";
const std::string OTHER_UNKNOWN = "88888888-8888-4888-8888-888888888888";
const std::string GONE = R"({"code":410,"message":"element has gone","status":"error"})";

SubscriptionRequest subscription(const std::string& address, Poco::UInt16 localPort = FLEET_PORT)
{
    return SubscriptionRequest(R"({"type":"subscribe","event":")" + address + "\"}",
                               Poco::Net::SocketAddress("127.0.0.1", localPort),
                               Poco::Net::SocketAddress("127.0.0.1", 50123));
}

std::ptrdiff_t positionOf(const Lines& lines, const std::string& line)
{
    return std::find(lines.begin(), lines.end(), line) - lines.begin();
}

// A cache that notes on which thread and for which port each subscription query runs.
class WatchedCache : public Orvi::JSONDataCache::JSONDataCache
{
public:
    using Orvi::JSONDataCache::JSONDataCache::JSONDataCache;
    using Orvi::JSONDataCache::JSONDataCache::queryCache;

    Orvi::Command::HTTPStatus queryCache(const Orvi::Command::RequestBase& request,
                                         WebSocketResponseObject& out_response,
                                         Poco::UInt16 requestPort) override
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_threads.push_back(Poco::Thread::currentTid());
            m_ports.push_back(requestPort);
        }
        return Orvi::JSONDataCache::JSONDataCache::queryCache(request, out_response, requestPort);
    }

    std::vector<Poco::Thread::TID> threads() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_threads;
    }

    std::vector<Poco::UInt16> ports() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_ports;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Poco::Thread::TID> m_threads;
    std::vector<Poco::UInt16> m_ports;
};

// A trigger that answers from a cache of its own choice instead of the one it was given.
class RedirectedTrigger : public MappingServiceSubscrTrigger
{
public:
    RedirectedTrigger(Orvi::Util::MessageSync& worker, Orvi::JSONDataCache::JSONDataCache* given,
                      Orvi::JSONDataCache::JSONDataCache* used)
        : MappingServiceSubscrTrigger(worker, given)
        , m_used(used)
    {
    }

    Orvi::JSONDataCache::JSONDataCache* getDataCache() const override { return m_used; }

private:
    Orvi::JSONDataCache::JSONDataCache* m_used;
};

// The fleet with one car (brand "saab") and one person, and a running worker queue.
class FleetWorkerFixture : public ::testing::Test
{
protected:
    FleetWorkerFixture()
    {
        insert(cache, "cars", CAR);
        insert(cache, "people", ADA);
        Orvi::DBData::XObject::Ptr car = cache.selectXObject(CAR, 0);
        car->getValue("brand")->setValue(std::string("saab"), false);
        EXPECT_TRUE(cache.updateCacheAttributeValueById(*car->getValue("brand"), true));
        worker.start();
    }

    static void insert(Orvi::JSONDataCache::JSONDataCache& target, const std::string& resource,
                       const std::string& uuid)
    {
        std::string newUuid = uuid;
        Orvi::DBData::DbId id = -1;
        EXPECT_TRUE(target.insertXObject("fleet", resource, newUuid, id));
    }

    // The cancel code and text of a new subscription after the check, "none" when it was accepted.
    std::string check(MappingServiceSubscrTrigger& trigger, const std::string& address)
    {
        SubscriptionRequest request = subscription(address);
        SubscriptionSubscribingEventPayload payload{request};
        trigger.checkNewSubscription(payload);
        return describe(request);
    }

    static std::string describe(const SubscriptionRequest& request)
    {
        return request.isCanceled() ? std::to_string(static_cast<int>(request.result().errorCode)) + " " +
                                          request.result().errorMsg
                                    : "none";
    }

    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    WatchedCache cache{services};
    Orvi::Util::MessageSync worker{16};
};

class MappingServiceSubscrTriggerTest : public FleetWorkerFixture
{
protected:
    MappingServiceSubscrTrigger sut{worker, &cache};
};

class MappingServiceSubscrTriggerWithoutCacheTest : public FleetWorkerFixture
{
protected:
    MappingServiceSubscrTrigger sut{worker, nullptr};
};

// A trigger given the fleet's cache whose getDataCache() gives another one, holding only a person.
class MappingServiceSubscrTriggerRedirectedTest : public FleetWorkerFixture
{
protected:
    MappingServiceSubscrTriggerRedirectedTest() { insert(other, "people", UNKNOWN); }

    Orvi::DBData::ServiceMap otherServices = ServiceDB::Test::Fleet::makeFleet();
    WatchedCache other{otherServices};
    RedirectedTrigger sut{worker, &cache, &other};
};

// A trigger given the fleet's cache whose getDataCache() gives none.
class MappingServiceSubscrTriggerRedirectedToNothingTest : public FleetWorkerFixture
{
protected:
    RedirectedTrigger sut{worker, &cache, nullptr};
};

// ---- fetchData ----

TEST_F(MappingServiceSubscrTriggerTest, FetchDataFromAnotherThreadRunsTheQueryOnTheWorker)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    WebSocketResponseObject response;
    LogCapture capture;

    const bool result = sut.fetchData(request, response);

    EXPECT_TRUE(result);
    EXPECT_EQ(cache.threads(), std::vector<Poco::Thread::TID>{worker.getWorkerTID()});
    EXPECT_NE(worker.getWorkerTID(), Poco::Thread::currentTid());
    EXPECT_EQ(capture.linesStartingWith("Trace: fetchData"), Lines{"Trace: fetchData using EventQueue"});
    const Poco::JSON::Object::Ptr data = response.JSONObject->getObject("data");
    ASSERT_FALSE(data.isNull());
    EXPECT_EQ(data->getValue<std::string>("brand"), "saab");
    EXPECT_EQ(response.JSONObject->getValue<std::string>("status"), "ok");
}

TEST_F(MappingServiceSubscrTriggerTest, FetchDataAsksForTheLocalPortOfTheSubscribersConnection)
{
    const SubscriptionRequest request = subscription("/fleet/cars", GARAGE_PORT);
    WebSocketResponseObject response;
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.fetchData(request, response);

    EXPECT_FALSE(result);
    EXPECT_EQ(cache.ports(), std::vector<Poco::UInt16>{GARAGE_PORT});
    EXPECT_EQ(capture.lines(), Lines{"Error: Cache query returned: Not Found"});
}

TEST_F(MappingServiceSubscrTriggerTest, FetchDataOfAResourceGivesItsObjects)
{
    const SubscriptionRequest request = subscription("/fleet/cars");
    WebSocketResponseObject response;

    const bool result = sut.fetchData(request, response);

    EXPECT_TRUE(result);
    const Poco::JSON::Array::Ptr data = response.JSONObject->getArray("data");
    ASSERT_FALSE(data.isNull());
    ASSERT_EQ(data->size(), 1U);
    EXPECT_EQ(data->getObject(0)->getValue<std::string>("id"), CAR);
}

TEST_F(MappingServiceSubscrTriggerTest, QuestionsOnTheWorkerAreAnsweredWhileTheQueueRefusesMessages)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    SubscriptionRequest accepted = subscription("/fleet/cars/" + CAR);
    SubscriptionRequest refused = subscription("/fleet/cars/" + UNKNOWN);
    WebSocketResponseObject response;
    bool fetched = false;
    Poco::Event entered;
    Poco::Event refusing;
    LogCapture capture;
    worker.enqueueDataMessage(new WorkerProbe(
                                  [&]
                                  {
                                      entered.set();
                                      ASSERT_TRUE(refusing.tryWait(10000));
                                      fetched = sut.fetchData(request, response);
                                      SubscriptionSubscribingEventPayload acceptedPayload{accepted};
                                      sut.checkNewSubscription(acceptedPayload);
                                      SubscriptionSubscribingEventPayload refusedPayload{refused};
                                      sut.checkNewSubscription(refusedPayload);
                                  }),
                              Orvi::Util::MESSAGE_PRIO_NORMAL);
    ASSERT_TRUE(entered.tryWait(10000));
    const Poco::Thread::TID workerTid = worker.getWorkerTID();
    std::thread stopper([this] { worker.stop(); });
    const bool queueRefuses = WorkerProbe::waitUntil(
        [this]
        { return !worker.enqueueDataMessage(new WorkerProbe([] {}), Orvi::Util::MESSAGE_PRIO_NORMAL); });

    refusing.set();
    stopper.join();

    ASSERT_TRUE(queueRefuses);
    EXPECT_TRUE(fetched);
    EXPECT_EQ(cache.threads(), std::vector<Poco::Thread::TID>{workerTid});
    EXPECT_EQ(response.JSONObject->getObject("data")->getValue<std::string>("brand"), "saab");
    EXPECT_EQ(describe(accepted), "none");
    EXPECT_EQ(describe(refused), "404 No such target for this port.");
    EXPECT_EQ(capture.linesStartingWith("Trace: fetchData"), Lines{"Trace: fetchData with direct access"});
    EXPECT_EQ(capture.linesStartingWith("Trace: verifyObjectExists"),
              (Lines{"Trace: verifyObjectExists with direct access",
                     "Trace: verifyObjectExists with direct access"}));
    EXPECT_EQ(capture.linesStartingWith("Warning: fetchData"), Lines{});
    EXPECT_EQ(capture.linesStartingWith("Warning: verifySubscriptionDest"), Lines{});
}

TEST_F(MappingServiceSubscrTriggerTest, FetchDataFromAnotherThreadWithARefusingQueueWarnsAndAnswersFalse)
{
    worker.stop();
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    WebSocketResponseObject response;
    LogCapture capture;

    const bool result = sut.fetchData(request, response);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(),
              (Lines{"Trace: fetchData using EventQueue", "Warning: fetchData Could not enqueue message!"}));
    EXPECT_EQ(cache.threads(), std::vector<Poco::Thread::TID>{});
    EXPECT_EQ(toJson(response.JSONObject), R"({"status":"ok"})");
}

TEST_F(MappingServiceSubscrTriggerWithoutCacheTest, FetchDataLogsErrorAndAnswersFalse)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    WebSocketResponseObject response;
    LogCapture capture;

    const bool result = sut.fetchData(request, response);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: JSONDataCache subsystem not found."});
    EXPECT_EQ(toJson(response.JSONObject), R"({"status":"ok"})");
}

TEST_F(MappingServiceSubscrTriggerTest, DeletedObjectGivesAnUpdateWithGoneAndTrue)
{
    ASSERT_TRUE(cache.deleteXObject(CAR));
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    WebSocketResponseObject response;
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.fetchData(request, response);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(response.JSONObject), GONE);
    EXPECT_EQ(capture.lines(), Lines{});
}

TEST_F(MappingServiceSubscrTriggerTest, ObjectOfAnotherResourceCountsAsGone)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + ADA);
    WebSocketResponseObject response;

    const bool result = sut.fetchData(request, response);

    EXPECT_TRUE(result);
    EXPECT_EQ(toJson(response.JSONObject), GONE);
}

TEST_F(MappingServiceSubscrTriggerTest, ResourceGoneWithItsServiceGivesFalseAndAnErrorLine)
{
    const SubscriptionRequest request = subscription("/fleet/cars");
    cache.deleteAllServicesWithName("fleet");
    WebSocketResponseObject response;
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.fetchData(request, response);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: Cache query returned: Not Found"});
    EXPECT_EQ(toJson(response.JSONObject), R"({"status":"ok"})");
}

TEST_F(MappingServiceSubscrTriggerTest, ResourceWithoutElementGivesFalseAndAnErrorLine)
{
    const SubscriptionRequest request = subscription("/fleet/noelement");
    WebSocketResponseObject response;
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.fetchData(request, response);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: Cache query returned: Not Found"});
}

TEST_F(MappingServiceSubscrTriggerTest, ReservedKeywordGivesFalseWithTheReasonOfTheStatus)
{
    const SubscriptionRequest request = subscription("/fleet/" + UrlPath::RESERVED_KEY_ID);
    WebSocketResponseObject response;
    LogCapture capture(Poco::Message::PRIO_ERROR);

    const bool result = sut.fetchData(request, response);

    EXPECT_FALSE(result);
    EXPECT_EQ(capture.lines(), Lines{"Error: Cache query returned: Internal Server Error"});
}

TEST_F(MappingServiceSubscrTriggerRedirectedTest, FetchDataAndChecksUseTheCacheThatGetDataCacheGives)
{
    const SubscriptionRequest request = subscription("/fleet/people");
    WebSocketResponseObject response;

    const bool result = sut.fetchData(request, response);
    const std::string knownThere = check(sut, "/fleet/people/" + UNKNOWN);
    const std::string knownHere = check(sut, "/fleet/people/" + ADA);

    EXPECT_TRUE(result);
    EXPECT_EQ(other.threads().size(), 1U);
    EXPECT_EQ(cache.threads().size(), 0U);
    EXPECT_EQ(response.JSONObject->getArray("data")->getObject(0)->getValue<std::string>("id"), UNKNOWN);
    EXPECT_EQ(knownThere, "none");
    EXPECT_EQ(knownHere, "404 No such target for this port.");
}

TEST_F(MappingServiceSubscrTriggerRedirectedToNothingTest, GetDataCacheThatGivesNothingCountsAsNoCache)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    WebSocketResponseObject response;
    LogCapture capture;

    const bool result = sut.fetchData(request, response);
    const std::string checked = check(sut, "/fleet/cars/" + CAR);

    EXPECT_FALSE(result);
    EXPECT_EQ(checked, "503 internal server error");
    EXPECT_EQ(capture.lines(), (Lines{"Error: JSONDataCache subsystem not found.",
                                      "Error: JSONDataCache subsystem not found."}));
}

TEST_F(MappingServiceSubscrTriggerTest, GetDataCacheGivesTheCacheItWasGiven)
{
    EXPECT_EQ(sut.getDataCache(), &cache);
}

TEST_F(MappingServiceSubscrTriggerWithoutCacheTest, GetDataCacheGivesNothing)
{
    EXPECT_EQ(sut.getDataCache(), nullptr);
}

TEST_F(MappingServiceSubscrTriggerTest, FetchDataSyncAnswersOnTheCallingThread)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    WebSocketResponseObject response;

    const bool result = MappingServiceSubscrTrigger::fetchDataSync(cache, request, response);

    EXPECT_TRUE(result);
    EXPECT_EQ(cache.threads(), std::vector<Poco::Thread::TID>{Poco::Thread::currentTid()});
    EXPECT_EQ(cache.ports(), std::vector<Poco::UInt16>{FLEET_PORT});
}

// ---- checkNewSubscription ----

TEST_F(MappingServiceSubscrTriggerTest, CheckFromAnotherThreadGoesThroughTheQueue)
{
    LogCapture capture;

    const std::string result = check(sut, "/fleet/cars/" + CAR);

    EXPECT_EQ(result, "none");
    EXPECT_EQ(capture.linesStartingWith("Trace: verifyObjectExists"),
              Lines{"Trace: verifyObjectExists using EventQueue"});
}

TEST_F(MappingServiceSubscrTriggerTest, CheckWithARefusingQueueWarnsAndCancelsAsUnknown)
{
    worker.stop();
    LogCapture capture;

    const std::string result = check(sut, "/fleet/cars/" + CAR);

    EXPECT_EQ(result, "404 No such target for this port.");
    EXPECT_EQ(capture.lines(), (Lines{"Trace: verifyObjectExists using EventQueue",
                                      "Warning: verifySubscriptionDest Could not enqueue message!"}));
}

TEST_F(MappingServiceSubscrTriggerWithoutCacheTest, CheckLogsErrorAndCancelsAsInternalServerError)
{
    SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    SubscriptionSubscribingEventPayload payload{request};
    LogCapture capture;

    sut.checkNewSubscription(payload);

    EXPECT_EQ(request.result().errorCode, SubscriptionError::maximum_number_of_event_subscriptions_reached);
    EXPECT_EQ(request.result().errorMsg, "internal server error");
    EXPECT_EQ(capture.lines(), Lines{"Error: JSONDataCache subsystem not found."});
}

TEST_F(MappingServiceSubscrTriggerTest, CheckOfAnUnknownTargetCancelsWithEventNameUnknown)
{
    SubscriptionRequest request = subscription("/fleet/cars/" + UNKNOWN);
    SubscriptionSubscribingEventPayload payload{request};

    sut.checkNewSubscription(payload);

    EXPECT_EQ(request.result().errorCode, SubscriptionError::event_name_unknown);
    EXPECT_EQ(request.result().errorMsg, "No such target for this port.");
}

TEST_F(MappingServiceSubscrTriggerTest, CheckRunsAheadOfFetchesThatWaitInTheQueue)
{
    Poco::Event entered;
    Poco::Event release;
    worker.enqueueDataMessage(new WorkerProbe(
                                  [&]
                                  {
                                      entered.set();
                                      release.tryWait(10000);
                                  }),
                              Orvi::Util::MESSAGE_PRIO_NORMAL);
    ASSERT_TRUE(entered.tryWait(10000));
    LogCapture capture;
    const SubscriptionRequest fetched = subscription("/fleet/cars/" + UNKNOWN);
    WebSocketResponseObject response;
    std::thread fetcher([&] { sut.fetchData(fetched, response); });
    const bool fetchQueued = WorkerProbe::waitUntil([this] { return worker.queueSize() == 1; });
    std::string checkResult;
    std::thread checker([&] { checkResult = check(sut, "/fleet/cars/" + OTHER_UNKNOWN); });
    const bool checkQueued = WorkerProbe::waitUntil([this] { return worker.queueSize() == 2; });

    release.set();
    fetcher.join();
    checker.join();

    ASSERT_TRUE(fetchQueued);
    ASSERT_TRUE(checkQueued);
    EXPECT_EQ(checkResult, "404 No such target for this port.");
    const Lines lines = capture.lines();
    const std::ptrdiff_t checkedAt =
        positionOf(lines, "Warning: Can not find XObject with UUID " + OTHER_UNKNOWN);
    const std::ptrdiff_t fetchedAt = positionOf(lines, "Warning: Can not find XObject with UUID " + UNKNOWN);
    ASSERT_LT(fetchedAt, static_cast<std::ptrdiff_t>(lines.size()));
    EXPECT_LT(checkedAt, fetchedAt);
}

class MappingServiceSubscrTriggerAddressTest
    : public MappingServiceSubscrTriggerTest,
      public ::testing::WithParamInterface<std::pair<std::string, bool>>
{
};

TEST_P(MappingServiceSubscrTriggerAddressTest, AcceptsOnlyExistingServicesResourcesAndObjects)
{
    const std::string address = GetParam().first;
    const bool exists = GetParam().second;

    const std::string result = check(sut, address);
    const bool verified =
        MappingServiceSubscrTrigger::verifySubscriptionDestSync(cache, UrlPath(Poco::URI(address)));

    EXPECT_EQ(result, exists ? "none" : "404 No such target for this port.");
    EXPECT_EQ(verified, exists);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, MappingServiceSubscrTriggerAddressTest,
    ::testing::Values(
        std::make_pair(std::string("/fleet"), true), std::make_pair(std::string("/fleet/"), true),
        std::make_pair(std::string("/fleet/cars"), true),
        std::make_pair(std::string("/fleet/noelement"), true), std::make_pair("/fleet/cars/" + CAR, true),
        std::make_pair("/fleet/people/" + ADA, true), std::make_pair(std::string("/"), false),
        std::make_pair("/" + UrlPath::RESERVED_KEY_ID, false),
        std::make_pair("/fleet/" + UrlPath::RESERVED_KEY_ID, false),
        std::make_pair("/fleet/" + UrlPath::RESERVED_KEY_SPEC, false),
        std::make_pair("/fleet/cars/" + UrlPath::RESERVED_KEY_ID, false),
        std::make_pair("/fleet/cars/" + UrlPath::RESERVED_KEY_SPEC, false),
        std::make_pair(std::string("/nowhere"), false), std::make_pair(std::string("/nowhere/cars"), false),
        std::make_pair(std::string("/fleet/trucks"), false), std::make_pair("/fleet/cars/" + UNKNOWN, false),
        std::make_pair("/fleet/cars/" + ADA, false), std::make_pair("/fleet/trucks/" + CAR, false)));

} // namespace
