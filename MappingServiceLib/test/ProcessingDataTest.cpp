#include "ProcessingData.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace
{

using Orvi::Mapping::ProcessingData;

TEST(ProcessingData, StartsWithoutObjectValuesAndJson)
{
    const ProcessingData sut;

    EXPECT_EQ(sut.xObjId, -1);
    EXPECT_TRUE(sut.values.isNull());
    EXPECT_EQ(sut.orgJsonObj, nullptr);
}

TEST(ProcessingData, CarriesTheDatabaseIdAsSigned64Bit)
{
    EXPECT_TRUE((std::is_same_v<decltype(ProcessingData::xObjId), Poco::Int64>));
}

TEST(ProcessingData, IsFilledInFieldOrder)
{
    Orvi::Mapping::AttributeMapPtr values = new Orvi::Data::AttributeMap;
    const Poco::JSON::Object json;

    const ProcessingData sut{42, values, &json};

    EXPECT_EQ(sut.xObjId, 42);
    EXPECT_EQ(sut.values.get(), values.get());
    EXPECT_EQ(sut.orgJsonObj, &json);
}

} // namespace
