#include "Command/Query/FilterField.h"

#include <gtest/gtest.h>

using Orvi::Command::FilterField;
using Orvi::Command::Paging;

TEST(FilterField, HasANameAndNoPageByDefault)
{
    const FilterField sut("color");

    EXPECT_EQ(sut.getName(), "color");
    EXPECT_TRUE(sut.getPaging().isNull());
}

TEST(FilterField, KeepsTheGivenPage)
{
    const Poco::SharedPtr<Paging> paging = new Paging(2, 5, Paging::OFFSET_LIMIT);

    const FilterField sut("parts", paging);

    EXPECT_EQ(sut.getPaging().get(), paging.get());
}
