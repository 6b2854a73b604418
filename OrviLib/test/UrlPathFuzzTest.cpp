#include "Command/UrlPath.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

using Orvi::Command::UrlPath;

namespace
{

struct Tally
{
    int unparsable = 0;
    int invalid = 0;
    int valid = 0;
};

std::size_t expectedLevels(UrlPath::Characteristic characteristic)
{
    switch (characteristic)
    {
    case UrlPath::ROOT:
        return 0;
    case UrlPath::ROOT_ID:
    case UrlPath::SERVICE:
        return 1;
    case UrlPath::SERVICE_ID:
    case UrlPath::SERVICE_SPEC:
    case UrlPath::SERVICE_RIGHTS:
    case UrlPath::SERVICE_RESOURCE:
        return 2;
    default:
        return 3;
    }
}

// Levels that carry a name rather than a keyword.
std::size_t namedLevels(UrlPath::Characteristic characteristic)
{
    switch (characteristic)
    {
    case UrlPath::SERVICE:
    case UrlPath::SERVICE_ID:
    case UrlPath::SERVICE_SPEC:
    case UrlPath::SERVICE_RIGHTS:
        return 1;
    case UrlPath::SERVICE_RESOURCE:
    case UrlPath::SERVICE_RESOURCE_ID:
    case UrlPath::SERVICE_RESOURCE_SPEC:
        return 2;
    case UrlPath::SERVICE_RESOURCE_OBJECT:
        return 3;
    default:
        return 0;
    }
}

bool startsWithDollar(const std::string& level)
{
    return !level.empty() && level.front() == '$';
}

// The kind must agree with the levels that the address really has.
::testing::AssertionResult isConsistent(const UrlPath& sut)
{
    const UrlPath::Characteristic kind = sut.getCharacteristic();
    if (sut.isValid() != (kind != UrlPath::INVALID))
    {
        return ::testing::AssertionFailure() << "validity disagrees with kind " << kind;
    }
    if (sut.getQueryParameters().size() != sut.getQueryParameterMap().size())
    {
        return ::testing::AssertionFailure() << "query list and map differ";
    }
    if (kind == UrlPath::INVALID)
    {
        if (!sut.getService().empty() || !sut.getResource().empty() || !sut.getElement().empty())
        {
            return ::testing::AssertionFailure() << "invalid path keeps levels";
        }
        return ::testing::AssertionSuccess();
    }

    std::vector<std::string> segments;
    sut.getUri().getPathSegments(segments);
    if (segments.size() != expectedLevels(kind))
    {
        return ::testing::AssertionFailure() << "kind " << kind << " with " << segments.size() << " levels";
    }
    const std::size_t named = namedLevels(kind);
    if (sut.getService() != (named >= 1 ? segments[0] : std::string()) ||
        sut.getResource() != (named >= 2 ? segments[1] : std::string()) ||
        sut.getElement() != (named >= 3 ? segments[2] : std::string()))
    {
        return ::testing::AssertionFailure() << "levels differ from the path segments";
    }
    if (startsWithDollar(sut.getService()) || startsWithDollar(sut.getResource()) ||
        startsWithDollar(sut.getElement()))
    {
        return ::testing::AssertionFailure() << "a name starts with $";
    }
    if (UrlPath::isReservedKeyword(kind) != (segments.size() > 0 && startsWithDollar(segments.back())))
    {
        return ::testing::AssertionFailure() << "keyword kind " << kind << " for last level "
                                             << (segments.empty() ? std::string() : segments.back());
    }
    return ::testing::AssertionSuccess();
}

void feed(const std::string& text, Tally& tally)
{
    Poco::URI uri;
    try
    {
        uri = Poco::URI(text);
    }
    catch (const Poco::Exception&)
    {
        ++tally.unparsable;
        return;
    }
    const UrlPath sut(uri);
    EXPECT_TRUE(isConsistent(sut)) << "address: " << text;
    ++(sut.isValid() ? tally.valid : tally.invalid);
}

} // namespace

TEST(UrlPathFuzz, StaysConsistentForRandomBytes)
{
    // Mostly characters that matter to the grammar, now and then any byte at all.
    const std::string alphabet = "/$%?#&=+:@.-_ abrs0129FfidspecrightsDKZ";
    std::mt19937 random(20240531u);
    std::uniform_int_distribution<std::size_t> length(0, 32);
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::uniform_int_distribution<int> anyByte(0, 255);
    std::uniform_int_distribution<int> choice(0, 9);
    Tally tally;

    for (int i = 0; i < 4000; ++i)
    {
        std::string text;
        const std::size_t size = length(random);
        for (std::size_t j = 0; j < size; ++j)
        {
            text += choice(random) == 0 ? static_cast<char>(anyByte(random)) : alphabet[pick(random)];
        }
        feed(text, tally);
    }

    EXPECT_GT(tally.unparsable, 0);
    EXPECT_GT(tally.invalid, 0);
    EXPECT_GT(tally.valid, 0);
}

TEST(UrlPathFuzz, StaysConsistentForEveryPrefixOfKnownAddresses)
{
    const std::vector<std::string> addresses{
        "/",
        "/$id?$fields=name,uri",
        "/service/$spec",
        "/service/$rights?x=1",
        "/service/resource/$id#tag",
        "/service/resource/$spec",
        "/service/resource/0f8fad5b-d9cb-469f-a165-70867728950e?$expand=2&$fields=a,b",
        "/service/resource?$q=ab%25&$offset=-1&$limit=10&$sortby=a,-b&name=v1,v2#t1",
        "http://host:8080/service/resource/element/?a=%20b",
        "ws://user@[::1]:9000/service/resource/$id",
        "/service/resource/element/extra",
        "/$service/resource",
        "/service/$resource/element",
        "/service/resource/$rights",
        "/service/resource/$unknown?$limit=abc",
        "/service?name=%zz",
        "/se%72vice/%24id",
        "//service//resource//",
    };
    Tally tally;

    for (const std::string& address : addresses)
    {
        for (std::size_t size = 0; size <= address.size(); ++size)
        {
            feed(address.substr(0, size), tally);
        }
    }

    EXPECT_GT(tally.unparsable, 0);
    EXPECT_GT(tally.invalid, 0);
    EXPECT_GT(tally.valid, 0);
}
