#include "DataMessages/RSIDataMessage.h"

#include "HttpRequestHandlerBase.h"
#include "Message/MessageSync.h"
#include "TestSupport/FakeServerRequest.h"
#include "TestSupport/FakeServerResponse.h"

#include <Poco/AutoPtr.h>
#include <Poco/Net/HTTPRequest.h>

#include <gtest/gtest.h>

#include <vector>

namespace
{

using Orvi::Command::HttpRequest;
using Orvi::Command::HttpResponse;
using Status = Poco::Net::HTTPResponse::HTTPStatus;

/// Answers every GET with 202 and counts the calls.
class CountingHandler : public Orvi::HttpRequestHandlerBase
{
public:
    using Orvi::HttpRequestHandlerBase::HttpRequestHandlerBase;

    int gets = 0;

protected:
    Status processGetRequest(const HttpRequest&, HttpResponse&, const Poco::URI&,
                             const std::vector<std::string>&) override
    {
        ++gets;
        return Poco::Net::HTTPResponse::HTTP_ACCEPTED;
    }
    Status processHeadRequest(const HttpRequest&, HttpResponse&, const Poco::URI&,
                              const std::vector<std::string>&) override
    {
        return Poco::Net::HTTPResponse::HTTP_OK;
    }
    Status processPostRequest(const HttpRequest&, HttpResponse&, const Poco::URI&,
                              const std::vector<std::string>&) override
    {
        return Poco::Net::HTTPResponse::HTTP_OK;
    }
    Status processDeleteRequest(const HttpRequest&, HttpResponse&, const Poco::URI&,
                                const std::vector<std::string>&) override
    {
        return Poco::Net::HTTPResponse::HTTP_OK;
    }
};

class RSIDataMessageTest : public ::testing::Test
{
protected:
    Orvi::Util::MessageSync worker{4};
    CountingHandler handler{worker};
    ServiceDB::Test::FakeServerRequest request{Poco::Net::HTTPRequest::HTTP_GET, "/"};
    ServiceDB::Test::FakeServerResponse response;
};

TEST_F(RSIDataMessageTest, LetsTheHandlerAnswerTheRequest)
{
    Poco::AutoPtr<Orvi::RSIDataMessage> sut(new Orvi::RSIDataMessage(&handler, request, response));

    sut->processData();

    EXPECT_EQ(handler.gets, 1);
    EXPECT_EQ(response.getStatus(), Poco::Net::HTTPResponse::HTTP_ACCEPTED);
    EXPECT_EQ(response.sendCount(), 1);
}

TEST_F(RSIDataMessageTest, WakesTheWaitingThreadOnDestroyData)
{
    Poco::SharedPtr<Poco::SynchronizedObject> event(new Poco::SynchronizedObject);
    Poco::AutoPtr<Orvi::RSIDataMessage> sut(new Orvi::RSIDataMessage(&handler, request, response, event));

    sut->destroyData();

    EXPECT_TRUE(event->tryWait(0));
    EXPECT_EQ(handler.gets, 0);
}

TEST_F(RSIDataMessageTest, SignalsNobodyWithoutAnEvent)
{
    Poco::AutoPtr<Orvi::RSIDataMessage> sut(new Orvi::RSIDataMessage(&handler, request, response));

    EXPECT_NO_THROW(sut->destroyData());
}

} // namespace
