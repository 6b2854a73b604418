#include "VersionCheck.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/SharedPtr.h>

#include "TestSupport/FakeServerRequest.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace
{

using Orvi::Service::VersionCheck;
using VersionTuple = Orvi::Service::VersionCheck::VersionTuple;
using VersionList = std::vector<Poco::SharedPtr<std::string>>;

/// A GET that accepts the given media types, or any without them.
class FakeServerRequest : public ServiceDB::Test::FakeServerRequest
{
public:
    FakeServerRequest()
        : ServiceDB::Test::FakeServerRequest(Poco::Net::HTTPRequest::HTTP_GET, "/")
    {
    }
    explicit FakeServerRequest(const std::string& accept)
        : FakeServerRequest()
    {
        set("Accept", accept);
    }
};

VersionList versions(const std::vector<std::string>& texts)
{
    VersionList result;
    for (const std::string& text : texts)
    {
        result.emplace_back(new std::string(text));
    }
    return result;
}

const std::string V1_2_3 = "application/vnd.servicedb.v1.2.3+json";

TEST(VersionCheck, AcceptsEveryVersionWithoutAcceptHeader)
{
    const FakeServerRequest request;

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"7.0.0"})));
}

TEST(VersionCheck, AcceptsEveryVersionWhenOnlyOtherMediaTypesAreAsked)
{
    const FakeServerRequest request("application/json, text/html;q=0.9, */*;q=0.1");

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"7.0.0"})));
}

TEST(VersionCheck, MatchesTheSameVersion)
{
    const FakeServerRequest request(V1_2_3);

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"1.2.3"})));
}

TEST(VersionCheck, MatchesAHigherPatch)
{
    const FakeServerRequest request(V1_2_3);

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"1.2.9"})));
}

TEST(VersionCheck, RefusesALowerPatch)
{
    const FakeServerRequest request(V1_2_3);

    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"1.2.2"})));
}

TEST(VersionCheck, RefusesAnotherMinorOrMajor)
{
    const FakeServerRequest request(V1_2_3);

    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"1.3.3"})));
    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"1.1.3"})));
    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"2.2.3"})));
    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"0.2.3"})));
}

TEST(VersionCheck, MatchesWhenOneOfSeveralVersionsFits)
{
    const FakeServerRequest request(V1_2_3);

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"0.9.0", "1.2.4", "2.0.0"})));
    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"0.9.0", "1.2.1", "2.0.0"})));
}

TEST(VersionCheck, RefusesWhenTheServiceHasNoVersion)
{
    const FakeServerRequest request(V1_2_3);

    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, VersionList()));
}

TEST(VersionCheck, NeverMatchesVersionTextsThatCannotBeRead)
{
    const FakeServerRequest request(V1_2_3);
    VersionList garbage = versions({"", "abc", "1.2", "1.2.3.4", "v1.2.3", "1.2.3 ", "-1.2.3", "1.2.x"});
    garbage.emplace_back();

    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, garbage));
    garbage.emplace_back(new std::string("1.2.3"));
    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, garbage));
}

TEST(VersionCheck, FindsTheVersionedMediaTypeAmongOthersWithParameters)
{
    const FakeServerRequest request(
        "text/html, application/vnd.servicedb.v1.2.0+json; charset=utf-8; q=0.8, */*;q=0.1");

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"1.2.0"})));
    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"1.3.0"})));
}

TEST(VersionCheck, ReadsTheMediaTypeWithoutRegardToCase)
{
    const FakeServerRequest request("Application/VND.ServiceDB.V1.2.0+JSON");

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"1.2.0"})));
    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"1.1.0"})));
}

TEST(VersionCheck, MatchesAnyOfSeveralRequestedVersions)
{
    const FakeServerRequest request(
        "application/vnd.servicedb.v1.0.0+json, application/vnd.servicedb.v2.1.0+json");

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"2.1.4"})));
    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"2.0.4"})));
}

TEST(VersionCheck, SearchesEveryAcceptLine)
{
    FakeServerRequest request("application/json");
    request.add("accept", V1_2_3);

    EXPECT_TRUE(VersionCheck::acceptedVersionMatches(request, versions({"1.2.3"})));
    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"1.3.0"})));
}

TEST(VersionCheck, MatchesNothingForARequestedVersionThatCannotBeRead)
{
    const FakeServerRequest request("application/vnd.servicedb.vlatest+json");

    EXPECT_FALSE(VersionCheck::acceptedVersionMatches(request, versions({"1.2.3"})));
}

TEST(VersionCheck, ParsesThreeNumbers)
{
    VersionTuple sut;

    const bool parsed = VersionCheck::parseVersion("10.0.4294967295", sut);

    EXPECT_TRUE(parsed);
    EXPECT_EQ(sut.majorNo, 10U);
    EXPECT_EQ(sut.minorNo, 0U);
    EXPECT_EQ(sut.patchNo, 4294967295U);
}

TEST(VersionCheck, RefusesMalformedTextsAndKeepsTheTuple)
{
    for (const char* text : {"", "1", "1.2", "1.2.3.4", "1..3", ".1.2", "1.2.", " 1.2.3", "1.2.3 ", "+1.2.3",
                             "1.-2.3", "1.2.x", "4294967296.0.0", "v1.2.3"})
    {
        SCOPED_TRACE(text);
        VersionTuple sut{7, 8, 9};

        const bool parsed = VersionCheck::parseVersion(text, sut);

        EXPECT_FALSE(parsed);
        EXPECT_EQ(sut.majorNo, 7U);
        EXPECT_EQ(sut.minorNo, 8U);
        EXPECT_EQ(sut.patchNo, 9U);
    }
}

TEST(VersionCheck, CallsAnEqualOrLaterPatchOfTheSameMinorCompatible)
{
    const VersionTuple sut{1, 2, 3};

    EXPECT_TRUE(sut.isPatchCompatibleTo({1, 2, 3}));
    EXPECT_TRUE(sut.isPatchCompatibleTo({1, 2, 0}));
    EXPECT_FALSE(sut.isPatchCompatibleTo({1, 2, 4}));
    EXPECT_FALSE(sut.isPatchCompatibleTo({1, 1, 3}));
    EXPECT_FALSE(sut.isPatchCompatibleTo({0, 2, 3}));
}

TEST(VersionCheck, HasOneFixedAnswerText)
{
    EXPECT_EQ(VersionCheck::msgVersionNotImplemented,
              "The requested version of this service is not implemented.");
}

} // namespace
