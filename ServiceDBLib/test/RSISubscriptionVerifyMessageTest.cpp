#include "DataMessages/RSISubscriptionVerifyMessage.h"

#include "Command/UrlPath.h"
#include "FleetServiceMap.h"
#include "JSONDataCache/JSONDataCache.h"
#include "Message/MessageSync.h"

#include <Poco/AutoPtr.h>
#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::RSISubscriptionVerifyMessage;
using Orvi::Command::UrlPath;

const std::string CAR = "ca000000-0000-4000-8000-0000000000c1";
const std::string UNKNOWN = "99999999-9999-4999-8999-999999999999";

// The fleet with one car.
class RSISubscriptionVerifyMessageTest : public ::testing::Test
{
protected:
    RSISubscriptionVerifyMessageTest()
    {
        std::string uuid = CAR;
        Orvi::DBData::DbId id = -1;
        EXPECT_TRUE(cache.insertXObject("fleet", "cars", uuid, id));
    }

    Orvi::DBData::ServiceMap services = ServiceDB::Test::Fleet::makeFleet();
    Orvi::JSONDataCache::JSONDataCache cache{services};
    Poco::SharedPtr<Poco::SynchronizedObject> event{new Poco::SynchronizedObject};
};

TEST_F(RSISubscriptionVerifyMessageTest, ProcessDataWritesTrueForAnExistingObject)
{
    const UrlPath urlPath(Poco::URI("/fleet/cars/" + CAR));
    bool result = false;
    Poco::AutoPtr<RSISubscriptionVerifyMessage> sut(
        new RSISubscriptionVerifyMessage(cache, urlPath, event, result));

    sut->processData();

    EXPECT_TRUE(result);
    EXPECT_FALSE(event->tryWait(0));
}

TEST_F(RSISubscriptionVerifyMessageTest, ProcessDataWritesFalseForAnUnknownObject)
{
    const UrlPath urlPath(Poco::URI("/fleet/cars/" + UNKNOWN));
    bool result = true;
    Poco::AutoPtr<RSISubscriptionVerifyMessage> sut(
        new RSISubscriptionVerifyMessage(cache, urlPath, event, result));

    sut->processData();

    EXPECT_FALSE(result);
}

TEST_F(RSISubscriptionVerifyMessageTest, DestroyDataWakesTheWaitingCaller)
{
    const UrlPath urlPath(Poco::URI("/fleet/cars/" + CAR));
    bool result = false;
    Poco::AutoPtr<RSISubscriptionVerifyMessage> sut(
        new RSISubscriptionVerifyMessage(cache, urlPath, event, result));

    sut->destroyData();

    EXPECT_TRUE(event->tryWait(0));
    EXPECT_FALSE(result);
}

TEST_F(RSISubscriptionVerifyMessageTest, WorkerRunsTheCheckAndWakesTheCaller)
{
    Orvi::Util::MessageSync worker(4);
    worker.start();
    const UrlPath urlPath(Poco::URI("/fleet/cars"));
    bool result = false;

    const bool queued = worker.enqueueDataMessage(
        new RSISubscriptionVerifyMessage(cache, urlPath, event, result), Orvi::Util::MESSAGE_PRIO_HIGH);
    const bool woken = event->tryWait(10000);

    ASSERT_TRUE(queued);
    ASSERT_TRUE(woken);
    EXPECT_TRUE(result);
}

} // namespace
