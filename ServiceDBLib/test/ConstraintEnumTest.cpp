#include "JSONDataCache/DBData/ConstraintEnum.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

namespace
{

using Orvi::DBData::ConstraintEnum;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ConstraintEnum, IsAnEnumConstraintWithoutValuesAtFirst)
{
    const ConstraintEnum sut;

    EXPECT_EQ(sut.getType(), Orvi::DBData::ConstraintType_Enum);
    EXPECT_THAT(sut.getEnumValues(), IsEmpty());
}

TEST(ConstraintEnum, CopiesTheGivenValues)
{
    ConstraintEnum sut;
    const std::set<std::string> values{"open", "closed"};

    sut.setEnumValues(values);

    EXPECT_THAT(sut.getEnumValues(), ElementsAre("closed", "open"));
    EXPECT_EQ(values.size(), 2u);
}

TEST(ConstraintEnum, TakesOverMovedValuesAndReplacesTheFormerOnes)
{
    ConstraintEnum sut;
    sut.setEnumValues({"a"});
    std::set<std::string> values{"eco", "sport"};

    sut.setEnumValues(std::move(values));

    EXPECT_THAT(sut.getEnumValues(), ElementsAre("eco", "sport"));
}

TEST(ConstraintEnum, LetsTheValuesBeEditedInPlace)
{
    ConstraintEnum sut;

    sut.getEnumValues().insert("on");

    EXPECT_THAT(sut.getEnumValues(), ElementsAre("on"));
}

} // namespace
