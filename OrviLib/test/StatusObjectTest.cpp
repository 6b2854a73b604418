#include "Command/StatusObject.h"

#include <Poco/JSON/Object.h>

#include "TestSupport/JsonText.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using Orvi::Command::StatusObject;

namespace
{

using ServiceDB::Test::toJson;

} // namespace

TEST(StatusObject, HasTheAgreedConstantTexts)
{
    EXPECT_EQ(StatusObject::FIELD_STATUS, "status");
    EXPECT_EQ(StatusObject::FIELD_MESSAGE, "message");
    EXPECT_EQ(StatusObject::FIELD_ERROR_CODE, "code");
    EXPECT_EQ(StatusObject::STATUS_OK, "ok");
    EXPECT_EQ(StatusObject::STATUS_ERROR, "error");
    EXPECT_EQ(StatusObject::STATUS_NONE, "none");
}

TEST(StatusObject, NumbersTheAdditionalErrorCodes)
{
    EXPECT_EQ(StatusObject::syntax_error, 400);
    EXPECT_EQ(StatusObject::access_denied, 403);
    EXPECT_EQ(StatusObject::subscription_uri_invalid, 404);
    EXPECT_EQ(StatusObject::gone, 410);
    EXPECT_EQ(StatusObject::maximum_number_of_event_subscriptions_reached, 503);
}

TEST(StatusObject, StartsWithAnEmptyBody)
{
    const StatusObject sut;

    ASSERT_FALSE(sut.JSONObject.isNull());
    EXPECT_EQ(toJson(sut.JSONObject), "{}");
}

TEST(StatusObject, PrintsItsFieldsSorted)
{
    StatusObject sut;

    sut.setStatus(StatusObject::STATUS_ERROR);
    sut.setMessage("element has gone");
    sut.setErrorCode(StatusObject::gone);

    EXPECT_EQ(toJson(sut.JSONObject), R"({"code":410,"message":"element has gone","status":"error"})");
}

TEST(StatusObject, ReplacesAFieldThatIsSetAgain)
{
    StatusObject sut;
    sut.setStatus(StatusObject::STATUS_OK);

    sut.setStatus(StatusObject::STATUS_NONE);

    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"none"})");
}

TEST(StatusObject, SharesItsBodyWithACopy)
{
    StatusObject original;
    const StatusObject sut = original;

    original.setStatus(StatusObject::STATUS_OK);

    EXPECT_EQ(sut.JSONObject.get(), original.JSONObject.get());
    EXPECT_EQ(toJson(sut.JSONObject), R"({"status":"ok"})");
}
