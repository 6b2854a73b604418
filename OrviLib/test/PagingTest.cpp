#include "Command/Query/Paging.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Parser.h>
#include <Poco/String.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

using Orvi::Command::Paging;

namespace
{

const std::string FIRST_ID = "6f1c5d2e-8a4b-4c3d-9e2f-1a2b3c4d5e6f";
const std::string FOURTH_ID = "0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d";

// Five elements; the second and the fourth carry ids, the last one is no object.
std::vector<Poco::Dynamic::Var> fiveElements()
{
    Poco::JSON::Parser parser;
    const Poco::JSON::Array::Ptr array =
        parser
            .parse(R"([{"id": ")" + FIRST_ID + R"("}, {"id": "b"}, {"id": "c"}, {"id": ")" + FOURTH_ID +
                   R"("}, 5])")
            .extract<Poco::JSON::Array::Ptr>();
    return std::vector<Poco::Dynamic::Var>(array->begin(), array->end());
}

void expectWindow(const Paging::Window& window, bool located, std::size_t offset, std::size_t begin,
                  std::size_t end)
{
    EXPECT_EQ(window.located, located);
    EXPECT_EQ(window.offset, offset);
    EXPECT_EQ(window.begin, begin);
    EXPECT_EQ(window.end, end);
}

} // namespace

TEST(Paging, HasADefaultAndAMaximalLimit)
{
    EXPECT_EQ(Paging::PAGING_LIMIT_DEFAULT, 100);
    EXPECT_EQ(Paging::PAGING_LIMIT_MAX, 1000);
}

TEST(Paging, StartsAtTheFirstElementWithTheDefaultLimitWhenNotRequested)
{
    const Paging sut;

    EXPECT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getNumberOffset(), 0);
    EXPECT_EQ(sut.getLimit(), 100);
    EXPECT_EQ(sut.getUuidOffset(), "");
    EXPECT_EQ(sut.getType(), Paging::TYPE_INDEX);
    EXPECT_EQ(sut.getPagingRequestType(), Paging::NONE);
}

TEST(Paging, PagesByIndex)
{
    const Paging sut(3, 10, Paging::OFFSET_LIMIT);

    EXPECT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getNumberOffset(), 3);
    EXPECT_EQ(sut.getLimit(), 10);
    EXPECT_EQ(sut.getType(), Paging::TYPE_INDEX);
    EXPECT_EQ(sut.getPagingRequestType(), Paging::OFFSET_LIMIT);
    EXPECT_FALSE(sut.isUuidOffset());
}

TEST(Paging, AsksForTheTotalsAloneWithLimitZero)
{
    const Paging sut(0, 0, Paging::LIMIT);

    EXPECT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getType(), Paging::TYPE_TOTAL);
}

TEST(Paging, PagesById)
{
    const Paging sut(FIRST_ID, 2, Paging::OFFSET);

    EXPECT_TRUE(sut.isValid());
    EXPECT_EQ(sut.getUuidOffset(), FIRST_ID);
    EXPECT_EQ(sut.getNumberOffset(), 0);
    EXPECT_EQ(sut.getType(), Paging::TYPE_UUID);
    EXPECT_TRUE(sut.isUuidOffset());
}

TEST(Paging, IsInvalidOutsideItsRanges)
{
    EXPECT_FALSE(Paging(-2, 10, Paging::OFFSET_LIMIT).isValid());
    EXPECT_FALSE(Paging(0, -1, Paging::OFFSET_LIMIT).isValid());
    EXPECT_FALSE(Paging(0, 1001, Paging::OFFSET_LIMIT).isValid());
    EXPECT_FALSE(Paging(std::string(), 10, Paging::OFFSET_LIMIT).isValid());
    EXPECT_TRUE(Paging(-1, 1000, Paging::OFFSET_LIMIT).isValid());
}

TEST(Paging, ReadsAnIndexOffset)
{
    int number = 99;
    std::string uuid = "untouched";

    EXPECT_TRUE(Paging::parseOffset("-1", number, uuid));
    EXPECT_EQ(number, -1);
    EXPECT_TRUE(Paging::parseOffset("007", number, uuid));
    EXPECT_EQ(number, 7);
    EXPECT_EQ(uuid, "untouched");
}

TEST(Paging, ReadsAnIdOffsetInItsCanonicalForm)
{
    int number = 99;
    std::string uuid;

    EXPECT_TRUE(Paging::parseOffset("6F1C5D2E-8A4B-4C3D-9E2F-1A2B3C4D5E6F", number, uuid));
    EXPECT_EQ(uuid, FIRST_ID);
    EXPECT_EQ(number, 99);
}

TEST(Paging, RefusesMalformedOffsets)
{
    for (const std::string text : {"", "-2", "-", "+3", "abc", "1,000", " 1", "99999999999", "6f1c5d2e-8a4b"})
    {
        int number = 99;
        std::string uuid = "untouched";

        EXPECT_FALSE(Paging::parseOffset(text, number, uuid)) << text;
        EXPECT_EQ(number, 99) << text;
        EXPECT_EQ(uuid, "untouched") << text;
    }
}

TEST(Paging, ReadsLimitsUpToTheMaximum)
{
    int limit = 99;

    EXPECT_TRUE(Paging::parseLimit("0", limit));
    EXPECT_EQ(limit, 0);
    EXPECT_TRUE(Paging::parseLimit("1000", limit));
    EXPECT_EQ(limit, 1000);
}

TEST(Paging, RefusesMalformedLimits)
{
    for (const std::string text : {"", "1001", "-1", "abc", "+5", "5 ", "1,0", "99999999999"})
    {
        int limit = 99;

        EXPECT_FALSE(Paging::parseLimit(text, limit)) << text;
        EXPECT_EQ(limit, 99) << text;
    }
}

TEST(Paging, LocatesAPageByIndex)
{
    const std::vector<Poco::Dynamic::Var> elements = fiveElements();
    const Paging sut(1, 2, Paging::OFFSET_LIMIT);

    expectWindow(sut.locate(elements.begin(), elements.end()), true, 1, 1, 3);
}

TEST(Paging, CutsThePageAtTheEndOfTheList)
{
    const std::vector<Poco::Dynamic::Var> elements = fiveElements();
    const Paging sut(3, 10, Paging::OFFSET_LIMIT);

    expectWindow(sut.locate(elements.begin(), elements.end()), true, 3, 3, 5);
}

TEST(Paging, LocatesAnEmptyPagePastTheEnd)
{
    const std::vector<Poco::Dynamic::Var> elements = fiveElements();
    const Paging sut(7, 2, Paging::OFFSET_LIMIT);

    expectWindow(sut.locate(elements.begin(), elements.end()), true, 7, 5, 5);
}

TEST(Paging, LocatesTheLastElementWithOffsetMinusOne)
{
    const std::vector<Poco::Dynamic::Var> elements = fiveElements();
    const Paging sut(-1, 2, Paging::OFFSET_LIMIT);

    expectWindow(sut.locate(elements.begin(), elements.end()), true, 4, 4, 5);
}

TEST(Paging, LocatesOffsetMinusOneInAnEmptyListAtZero)
{
    const std::vector<Poco::Dynamic::Var> elements;
    const Paging sut(-1, 2, Paging::OFFSET_LIMIT);

    expectWindow(sut.locate(elements.begin(), elements.end()), true, 0, 0, 0);
}

TEST(Paging, LocatesAnEmptyPageWithLimitZero)
{
    const std::vector<Poco::Dynamic::Var> elements = fiveElements();
    const Paging sut(2, 0, Paging::OFFSET_LIMIT);

    expectWindow(sut.locate(elements.begin(), elements.end()), true, 2, 2, 2);
}

TEST(Paging, LocatesAPageByIdWithoutRegardToCase)
{
    const std::vector<Poco::Dynamic::Var> elements = fiveElements();
    const Paging sut("0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D", 5, Paging::OFFSET);

    expectWindow(sut.locate(elements.begin(), elements.end()), true, 3, 3, 5);
}

TEST(Paging, LocatesNoPageForAnIdThatIsNotInTheList)
{
    const std::vector<Poco::Dynamic::Var> elements = fiveElements();
    const Paging sut("11111111-2222-4333-8444-555555555555", 5, Paging::OFFSET);

    expectWindow(sut.locate(elements.begin(), elements.end()), false, 0, 0, 0);
}

TEST(Paging, ReadsTheIdsOfAListOnlyUpToTheElementThatOpensThePage)
{
    const Paging sut(FOURTH_ID, 2, Paging::OFFSET);
    const std::vector<Poco::Dynamic::Var> ids{"a", "b", "c", Poco::UUID(FOURTH_ID).toString(), "e", "f"};
    std::vector<std::size_t> read;

    const Paging::Window window = sut.locate(ids.size(),
                                             [&](std::size_t index)
                                             {
                                                 read.push_back(index);
                                                 return ids[index];
                                             });

    expectWindow(window, true, 3, 3, 5);
    EXPECT_EQ(read, (std::vector<std::size_t>{0, 1, 2, 3}));
}

TEST(Paging, OpensAPageOnlyAtATextIdEqualToItsOwnWithoutRegardToCase)
{
    const Paging sut(FOURTH_ID, 2, Paging::OFFSET);

    EXPECT_TRUE(sut.opensPage(Poco::toUpper(FOURTH_ID)));
    EXPECT_FALSE(sut.opensPage(FIRST_ID));
    EXPECT_FALSE(sut.opensPage(Poco::Dynamic::Var()));
    EXPECT_FALSE(sut.opensPage(42));
}
