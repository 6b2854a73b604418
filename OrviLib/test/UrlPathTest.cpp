#include "Command/UrlPath.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using Orvi::Command::UrlPath;

namespace
{

UrlPath parse(const std::string& address)
{
    return UrlPath(Poco::URI(address));
}

struct AddressRow
{
    std::string address;
    UrlPath::Characteristic characteristic;
    std::string service;
    std::string resource;
    std::string element;
};

void expectRows(const std::vector<AddressRow>& rows)
{
    for (const AddressRow& row : rows)
    {
        const UrlPath sut = parse(row.address);

        EXPECT_EQ(sut.getCharacteristic(), row.characteristic) << row.address;
        EXPECT_EQ(sut.getService(), row.service) << row.address;
        EXPECT_EQ(sut.getResource(), row.resource) << row.address;
        EXPECT_EQ(sut.getElement(), row.element) << row.address;
        EXPECT_EQ(sut.isValid(), row.characteristic != UrlPath::INVALID) << row.address;
    }
}

} // namespace

TEST(UrlPath, HasTheAgreedConstantTexts)
{
    EXPECT_EQ(UrlPath::URI_ROOT, "/");
    EXPECT_EQ(UrlPath::URI_ROOT_API, "/api");
    EXPECT_EQ(UrlPath::RESERVED_KEY_ID, "$id");
    EXPECT_EQ(UrlPath::RESERVED_KEY_SPEC, "$spec");
    EXPECT_EQ(UrlPath::RESERVED_KEY_RIGHTS, "$rights");
    EXPECT_EQ(UrlPath::QUERY_WILDCARD, "%");
    EXPECT_EQ(UrlPath::QUERY_WILDCARD_HTML, "%25");
    EXPECT_EQ(UrlPath::QUERY_FREETEXT_SEARCH, "$q");
    EXPECT_EQ(UrlPath::QUERY_FIELDS, "$fields");
    EXPECT_EQ(UrlPath::QUERY_SORTBY, "$sortby");
    EXPECT_EQ(UrlPath::QUERY_PAGING_OFFSET, "$offset");
    EXPECT_EQ(UrlPath::QUERY_PAGING_LIMIT, "$limit");
    EXPECT_EQ(UrlPath::QUERY_EXPAND, "$expand");
}

TEST(UrlPath, NumbersTheKindsAsCallersExpect)
{
    EXPECT_EQ(UrlPath::INVALID, 0);
    EXPECT_EQ(UrlPath::ROOT, 1);
    EXPECT_EQ(UrlPath::ROOT_ID, 2);
    EXPECT_EQ(UrlPath::SERVICE, 3);
    EXPECT_EQ(UrlPath::SERVICE_ID, 4);
    EXPECT_EQ(UrlPath::SERVICE_SPEC, 5);
    EXPECT_EQ(UrlPath::SERVICE_RIGHTS, 6);
    EXPECT_EQ(UrlPath::SERVICE_RESOURCE, 7);
    EXPECT_EQ(UrlPath::SERVICE_RESOURCE_ID, 8);
    EXPECT_EQ(UrlPath::SERVICE_RESOURCE_SPEC, 9);
    EXPECT_EQ(UrlPath::SERVICE_RESOURCE_OBJECT, 268435455);
}

TEST(UrlPath, GivesObjectAndElementAsOneKind)
{
    const UrlPath sut = parse("/s/r/e");

    EXPECT_EQ(UrlPath::SERVICE_RESOURCE_ELEMENT, UrlPath::SERVICE_RESOURCE_OBJECT);
    EXPECT_EQ(sut.getCharacteristic(), UrlPath::SERVICE_RESOURCE_ELEMENT);
    EXPECT_EQ(sut.getCharacteristic(), UrlPath::SERVICE_RESOURCE_OBJECT);
}

TEST(UrlPath, IsEmptyAndInvalidWhenDefaultConstructed)
{
    const UrlPath sut;

    EXPECT_FALSE(sut.isValid());
    EXPECT_EQ(sut.getCharacteristic(), UrlPath::INVALID);
    EXPECT_EQ(sut.getUri().toString(), "");
    EXPECT_EQ(sut.getService(), "");
    EXPECT_EQ(sut.getResource(), "");
    EXPECT_EQ(sut.getElement(), "");
    EXPECT_TRUE(sut.getQueryParameters().empty());
    EXPECT_TRUE(sut.getQueryParameterMap().empty());
}

TEST(UrlPath, GivesEveryKindOfTheAddressTable)
{
    expectRows({
        {"/", UrlPath::ROOT, "", "", ""},
        {"/$id", UrlPath::ROOT_ID, "", "", ""},
        {"/s", UrlPath::SERVICE, "s", "", ""},
        {"/s/$id", UrlPath::SERVICE_ID, "s", "", ""},
        {"/s/$spec", UrlPath::SERVICE_SPEC, "s", "", ""},
        {"/s/$rights", UrlPath::SERVICE_RIGHTS, "s", "", ""},
        {"/s/r", UrlPath::SERVICE_RESOURCE, "s", "r", ""},
        {"/s/r/$id", UrlPath::SERVICE_RESOURCE_ID, "s", "r", ""},
        {"/s/r/$spec", UrlPath::SERVICE_RESOURCE_SPEC, "s", "r", ""},
        {"/s/r/e", UrlPath::SERVICE_RESOURCE_OBJECT, "s", "r", "e"},
    });
}

TEST(UrlPath, GivesTheSameKindsWithAClosingSlash)
{
    expectRows({
        {"/$id/", UrlPath::ROOT_ID, "", "", ""},
        {"/s/", UrlPath::SERVICE, "s", "", ""},
        {"/s/$id/", UrlPath::SERVICE_ID, "s", "", ""},
        {"/s/$spec/", UrlPath::SERVICE_SPEC, "s", "", ""},
        {"/s/$rights/", UrlPath::SERVICE_RIGHTS, "s", "", ""},
        {"/s/r/", UrlPath::SERVICE_RESOURCE, "s", "r", ""},
        {"/s/r/$id/", UrlPath::SERVICE_RESOURCE_ID, "s", "r", ""},
        {"/s/r/$spec/", UrlPath::SERVICE_RESOURCE_SPEC, "s", "r", ""},
        {"/s/r/e/", UrlPath::SERVICE_RESOURCE_OBJECT, "s", "r", "e"},
    });
}

TEST(UrlPath, KeepsTheClosingSlashInTheUri)
{
    const UrlPath withSlash = parse("/s/");
    const UrlPath withoutSlash = parse("/s");

    EXPECT_EQ(withSlash.getUri().getPath(), "/s/");
    EXPECT_EQ(withoutSlash.getUri().getPath(), "/s");
    EXPECT_NE(withSlash, withoutSlash);
}

TEST(UrlPath, GivesRootOrRootIdForAnAddressWithoutService)
{
    expectRows({
        {"", UrlPath::ROOT, "", "", ""},
        {"/?$fields=a", UrlPath::ROOT, "", "", ""},
        {"//", UrlPath::ROOT, "", "", ""},
        {"http://host:8080", UrlPath::ROOT, "", "", ""},
        {"http://host:8080/", UrlPath::ROOT, "", "", ""},
        {"/$id?$q=x", UrlPath::ROOT_ID, "", "", ""},
        {"http://host/$id", UrlPath::ROOT_ID, "", "", ""},
    });
}

TEST(UrlPath, RejectsMoreThanThreeLevels)
{
    expectRows({
        {"/s/r/e/x", UrlPath::INVALID, "", "", ""},
        {"/s/r/e/x/", UrlPath::INVALID, "", "", ""},
        {"/s/r/$id/x", UrlPath::INVALID, "", "", ""},
        {"/a/b/c/d/e/f/g", UrlPath::INVALID, "", "", ""},
    });
}

TEST(UrlPath, RejectsAKeywordWhereNoneIsDefined)
{
    expectRows({
        {"/$spec", UrlPath::INVALID, "", "", ""},
        {"/$rights", UrlPath::INVALID, "", "", ""},
        {"/s/r/$rights", UrlPath::INVALID, "", "", ""},
        {"/s/r/$rights/", UrlPath::INVALID, "", "", ""},
    });
}

TEST(UrlPath, RejectsAnUnknownKeyword)
{
    expectRows({
        {"/$x", UrlPath::INVALID, "", "", ""},
        {"/s/$x", UrlPath::INVALID, "", "", ""},
        {"/s/r/$x", UrlPath::INVALID, "", "", ""},
        {"/s/r/$", UrlPath::INVALID, "", "", ""},
        {"/s/r/$ID", UrlPath::INVALID, "", "", ""},
    });
}

TEST(UrlPath, RejectsAServiceNameThatStartsWithDollar)
{
    expectRows({
        {"/$s/r", UrlPath::INVALID, "", "", ""},
        {"/$id/r", UrlPath::INVALID, "", "", ""},
        {"/$id/r/e", UrlPath::INVALID, "", "", ""},
        {"/$s/r/e/", UrlPath::INVALID, "", "", ""},
    });
}

TEST(UrlPath, RejectsAResourceNameThatStartsWithDollar)
{
    expectRows({
        {"/s/$r/e", UrlPath::INVALID, "", "", ""},
        {"/s/$id/e", UrlPath::INVALID, "", "", ""},
        {"/s/$spec/$id", UrlPath::INVALID, "", "", ""},
    });
}

TEST(UrlPath, AcceptsAnObjectKeyThatIsNoUuid)
{
    expectRows({
        {"/s/r/not-a-uuid", UrlPath::SERVICE_RESOURCE_OBJECT, "s", "r", "not-a-uuid"},
        {"/s/r/0f8fad5b-d9cb-469f-a165-70867728950e", UrlPath::SERVICE_RESOURCE_OBJECT, "s", "r",
         "0f8fad5b-d9cb-469f-a165-70867728950e"},
        {"/s/r/a$b", UrlPath::SERVICE_RESOURCE_OBJECT, "s", "r", "a$b"},
    });
}

TEST(UrlPath, IgnoresEmptySegments)
{
    expectRows({
        {"//s//r/", UrlPath::SERVICE_RESOURCE, "s", "r", ""},
        {"/s///$spec", UrlPath::SERVICE_SPEC, "s", "", ""},
        {"///s/r//e//", UrlPath::SERVICE_RESOURCE_OBJECT, "s", "r", "e"},
    });
}

TEST(UrlPath, RejectsARelativePath)
{
    expectRows({
        {"s", UrlPath::INVALID, "", "", ""},
        {"s/r", UrlPath::INVALID, "", "", ""},
    });
}

TEST(UrlPath, ReadsTheLevelsDecoded)
{
    expectRows({
        {"/s/r/%24id", UrlPath::SERVICE_RESOURCE_ID, "s", "r", ""},
        {"/my%20service/r%C3%A4d/e", UrlPath::SERVICE_RESOURCE_OBJECT, "my service",
         "r\xC3\xA4"
         "d",
         "e"},
        {"/%24s", UrlPath::INVALID, "", "", ""},
    });
}

TEST(UrlPath, ReadsTheLevelsOfAFullAddress)
{
    expectRows({
        {"http://host:8080/s/r/e?$fields=a#tag", UrlPath::SERVICE_RESOURCE_OBJECT, "s", "r", "e"},
        {"ws://user@host/s/$rights", UrlPath::SERVICE_RIGHTS, "s", "", ""},
    });
}

TEST(UrlPath, KeepsTheFragmentOutOfTheLevels)
{
    const UrlPath sut = parse("/s/r#tag");

    EXPECT_EQ(sut.getCharacteristic(), UrlPath::SERVICE_RESOURCE);
    EXPECT_EQ(sut.getResource(), "r");
    EXPECT_EQ(sut.getUri().getFragment(), "tag");
}

TEST(UrlPath, GivesTheQueryParametersDecodedInTheirOrder)
{
    const UrlPath sut = parse("/s/r?$q=a%20b&name=x&$limit=5&name=y+z&flag");

    const Poco::URI::QueryParameters expected{
        {"$q", "a b"}, {"name", "x"}, {"$limit", "5"}, {"name", "y z"}, {"flag", ""}};
    EXPECT_EQ(sut.getQueryParameters(), expected);
}

TEST(UrlPath, GivesTheQueryParametersByName)
{
    const UrlPath sut = parse("/s/r?$q=a%20b&name=x&$limit=5&name=y+z&flag");

    const UrlPath::QueryParameterMap expected{
        {"$limit", "5"}, {"$q", "a b"}, {"flag", ""}, {"name", "x"}, {"name", "y z"}};
    EXPECT_EQ(sut.getQueryParameterMap(), expected);
}

TEST(UrlPath, DecodesTheWildcard)
{
    const UrlPath sut = parse("/s/r?name=ab%25");

    const UrlPath::QueryParameterMap expected{{"name", "ab" + UrlPath::QUERY_WILDCARD}};
    EXPECT_EQ(sut.getQueryParameterMap(), expected);
}

TEST(UrlPath, IsInvalidWhenTheQueryDoesNotDecode)
{
    const UrlPath sut = parse("/s/r?name=%zz&x=1");

    EXPECT_EQ(sut.getCharacteristic(), UrlPath::INVALID);
    EXPECT_EQ(sut.getService(), "");
    EXPECT_EQ(sut.getResource(), "");
    EXPECT_TRUE(sut.getQueryParameterMap().empty());
    EXPECT_TRUE(sut.getQueryParameters().empty());
    EXPECT_EQ(sut.getUri().toString(), "/s/r?name=%zz&x=1");
}

TEST(UrlPath, KeepsTheQueryOfAnInvalidPath)
{
    const UrlPath sut = parse("/s/r/e/x?a=1");

    const UrlPath::QueryParameterMap expected{{"a", "1"}};
    EXPECT_EQ(sut.getCharacteristic(), UrlPath::INVALID);
    EXPECT_EQ(sut.getQueryParameterMap(), expected);
}

TEST(UrlPath, BecomesInvalidOnRequest)
{
    UrlPath sut = parse("/s/r/e");

    sut.setCharacteristicInvalid();

    EXPECT_FALSE(sut.isValid());
    EXPECT_EQ(sut.getCharacteristic(), UrlPath::INVALID);
}

TEST(UrlPath, TellsWhichKindsAreKeywords)
{
    EXPECT_FALSE(UrlPath::isReservedKeyword(UrlPath::INVALID));
    EXPECT_FALSE(UrlPath::isReservedKeyword(UrlPath::ROOT));
    EXPECT_TRUE(UrlPath::isReservedKeyword(UrlPath::ROOT_ID));
    EXPECT_FALSE(UrlPath::isReservedKeyword(UrlPath::SERVICE));
    EXPECT_TRUE(UrlPath::isReservedKeyword(UrlPath::SERVICE_ID));
    EXPECT_TRUE(UrlPath::isReservedKeyword(UrlPath::SERVICE_SPEC));
    EXPECT_TRUE(UrlPath::isReservedKeyword(UrlPath::SERVICE_RIGHTS));
    EXPECT_FALSE(UrlPath::isReservedKeyword(UrlPath::SERVICE_RESOURCE));
    EXPECT_TRUE(UrlPath::isReservedKeyword(UrlPath::SERVICE_RESOURCE_ID));
    EXPECT_TRUE(UrlPath::isReservedKeyword(UrlPath::SERVICE_RESOURCE_SPEC));
    EXPECT_FALSE(UrlPath::isReservedKeyword(UrlPath::SERVICE_RESOURCE_OBJECT));
}

TEST(UrlPath, EqualsACopy)
{
    const UrlPath original = parse("/s/r/e?a=1#t");

    const UrlPath sut = original;

    EXPECT_EQ(sut, original);
    EXPECT_FALSE(sut < original);
    EXPECT_FALSE(original < sut);
    EXPECT_EQ(sut.getCharacteristic(), UrlPath::SERVICE_RESOURCE_OBJECT);
    EXPECT_EQ(sut.getElement(), "e");
    EXPECT_EQ(sut.getQueryParameterMap(), original.getQueryParameterMap());
}

TEST(UrlPath, DiffersByQueryAndFragment)
{
    EXPECT_NE(parse("/s/r?a=1"), parse("/s/r?a=2"));
    EXPECT_NE(parse("/s/r#a"), parse("/s/r#b"));
    EXPECT_NE(parse("/s/r"), parse("http://host/s/r"));
}

TEST(UrlPath, OrdersByTheAddress)
{
    EXPECT_TRUE(parse("/a") < parse("/b"));
    EXPECT_FALSE(parse("/b") < parse("/a"));
    EXPECT_TRUE(parse("/s") < parse("/s/"));
    EXPECT_TRUE(parse("/s/r?a=1") < parse("/s/r?a=2"));
}

TEST(UrlPath, KeysAnOrderedMap)
{
    std::map<UrlPath, int> sut;

    sut[parse("/s/r")] = 1;
    sut[parse("/s")] = 2;
    sut[parse("/s/")] = 3;
    sut[parse("/s/r")] = 4;

    ASSERT_EQ(sut.size(), 3u);
    auto it = sut.begin();
    EXPECT_EQ(it->first.getUri().toString(), "/s");
    EXPECT_EQ(it->second, 2);
    ++it;
    EXPECT_EQ(it->first.getUri().toString(), "/s/");
    EXPECT_EQ(it->second, 3);
    ++it;
    EXPECT_EQ(it->first.getUri().toString(), "/s/r");
    EXPECT_EQ(it->second, 4);
}
