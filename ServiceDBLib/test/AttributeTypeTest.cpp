#include "JSONDataCache/DBData/AttributeType.h"

#include <gtest/gtest.h>

namespace
{

using namespace Orvi::DBData;

TEST(AttributeType, NumbersTheTypesAsLoggedAndStored)
{
    EXPECT_EQ(static_cast<int>(AttrType_String), 0);
    EXPECT_EQ(static_cast<int>(AttrType_Integer), 1);
    EXPECT_EQ(static_cast<int>(AttrType_Number), 2);
    EXPECT_EQ(static_cast<int>(AttrType_Boolean), 3);
    EXPECT_EQ(static_cast<int>(AttrType_Object), 4);
    EXPECT_EQ(static_cast<int>(AttrType_IntegerUnsigned), 5);
}

} // namespace
