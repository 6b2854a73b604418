#include "DataMessages/RSISubscriptionUpdateMessage.h"

#include "Command/WebSocketResponseObject.h"
#include "FleetServiceMap.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Message/MessageSync.h"
#include "SubscriptionHandling/SubscriptionRequest.h"
#include "TestSupport/JsonText.h"

#include <Poco/AutoPtr.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::RSISubscriptionUpdateMessage;
using Orvi::Command::WebSocketResponseObject;
using Orvi::Service::SubscriptionRequest;
using ServiceDB::Test::toJson;

const std::string CAR = "ca000000-0000-4000-8000-0000000000c1";

SubscriptionRequest subscription(const std::string& address)
{
    return SubscriptionRequest(R"({"type":"subscribe","event":")" + address + "\"}",
                               Poco::Net::SocketAddress("127.0.0.1", ServiceDB::Test::Fleet::FLEET_PORT),
                               Poco::Net::SocketAddress("127.0.0.1", 50123));
}

// The fleet with one car.
class RSISubscriptionUpdateMessageTest : public ::testing::Test
{
protected:
    RSISubscriptionUpdateMessageTest()
    {
        std::string uuid = CAR;
        Orvi::DBData::DbId id = -1;
        EXPECT_TRUE(cache.insertXObject("fleet", "cars", uuid, id));
    }

    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    Orvi::JSONDataCache::JSONDataCache cache{services};
    WebSocketResponseObject response;
    Poco::SharedPtr<Poco::SynchronizedObject> event{new Poco::SynchronizedObject};
};

TEST_F(RSISubscriptionUpdateMessageTest, ParameterStartsWithoutResult)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);

    const RSISubscriptionUpdateMessage::Parameter params(cache, request, response);

    EXPECT_FALSE(params.result);
    EXPECT_EQ(&params.cache, &cache);
    EXPECT_EQ(&params.request, &request);
    EXPECT_EQ(&params.responseObj, &response);
}

TEST_F(RSISubscriptionUpdateMessageTest, ProcessDataFetchesTheContentIntoTheCallersResponse)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    RSISubscriptionUpdateMessage::Parameter params(cache, request, response);
    Poco::AutoPtr<RSISubscriptionUpdateMessage> sut(new RSISubscriptionUpdateMessage(params, event));

    sut->processData();

    EXPECT_TRUE(params.result);
    EXPECT_EQ(response.JSONObject->getObject("data")->getValue<std::string>("id"), CAR);
    EXPECT_FALSE(event->tryWait(0));
}

TEST_F(RSISubscriptionUpdateMessageTest, ProcessDataOfAFailingFetchWritesFalse)
{
    const SubscriptionRequest request = subscription("/fleet/noelement");
    RSISubscriptionUpdateMessage::Parameter params(cache, request, response);
    params.result = true;
    Poco::AutoPtr<RSISubscriptionUpdateMessage> sut(new RSISubscriptionUpdateMessage(params, event));

    sut->processData();

    EXPECT_FALSE(params.result);
    EXPECT_EQ(toJson(response.JSONObject), R"({"status":"ok"})");
}

TEST_F(RSISubscriptionUpdateMessageTest, DestroyDataWakesTheWaitingCaller)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    RSISubscriptionUpdateMessage::Parameter params(cache, request, response);
    Poco::AutoPtr<RSISubscriptionUpdateMessage> sut(new RSISubscriptionUpdateMessage(params, event));

    sut->destroyData();

    EXPECT_TRUE(event->tryWait(0));
    EXPECT_FALSE(params.result);
}

TEST_F(RSISubscriptionUpdateMessageTest, WithoutEventDestroyDataSignalsNobody)
{
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    RSISubscriptionUpdateMessage::Parameter params(cache, request, response);
    Poco::AutoPtr<RSISubscriptionUpdateMessage> sut(
        new RSISubscriptionUpdateMessage(params, Poco::SharedPtr<Poco::SynchronizedObject>()));

    EXPECT_NO_THROW(sut->destroyData());
}

TEST_F(RSISubscriptionUpdateMessageTest, WorkerRunsTheFetchAndWakesTheCaller)
{
    Orvi::Util::MessageSync worker(4);
    worker.start();
    const SubscriptionRequest request = subscription("/fleet/cars/" + CAR);
    RSISubscriptionUpdateMessage::Parameter params(cache, request, response);

    const bool queued = worker.enqueueDataMessage(new RSISubscriptionUpdateMessage(params, event),
                                                  Orvi::Util::MESSAGE_PRIO_NORMAL);
    const bool woken = event->tryWait(10000);

    ASSERT_TRUE(queued);
    ASSERT_TRUE(woken);
    EXPECT_TRUE(params.result);
    EXPECT_EQ(response.JSONObject->getObject("data")->getValue<std::string>("id"), CAR);
}

} // namespace
