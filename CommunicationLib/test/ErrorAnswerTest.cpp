#include "Http/ErrorAnswer.h"

#include <Poco/Net/HTTPResponse.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace
{

using Orvi::Net::ErrorAnswer;
using Poco::Net::HTTPResponse;

TEST(ErrorAnswerTest, WritesTheErrorBodyWithCodeMessageAndStatus)
{
    EXPECT_EQ(ErrorAnswer::body(HTTPResponse::HTTP_SERVICE_UNAVAILABLE, "connection queue overflow"),
              "{\"code\":503,\"message\":\"connection queue overflow\",\"status\":\"error\"}");
}

TEST(ErrorAnswerTest, PreparesAClosingJsonAnswerInVersionOneOneWhateverTheResponseHeldBefore)
{
    HTTPResponse sut(HTTPResponse::HTTP_1_0, HTTPResponse::HTTP_OK);
    sut.setKeepAlive(true);

    const std::string body =
        ErrorAnswer::prepare(sut, HTTPResponse::HTTP_BAD_REQUEST, "malformed request head");
    std::ostringstream written;
    sut.write(written);

    EXPECT_EQ(body, "{\"code\":400,\"message\":\"malformed request head\",\"status\":\"error\"}");
    EXPECT_EQ(written.str(), "HTTP/1.1 400 Bad Request\r\n"
                             "Connection: Close\r\n"
                             "Content-Type: application/json; charset=utf-8\r\n"
                             "Content-Length: 64\r\n"
                             "\r\n");
}

} // namespace
