#include "DataHandler/Array/ServiceArrayListBase.h"
#include "MappingTypes.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace
{

using Orvi::Mapping::DataHandler::Array::ServiceArrayListBase;

TEST(ServiceArrayListBase, CountsPositionsWith32BitUnsignedNumbers)
{
    EXPECT_TRUE((std::is_same_v<ServiceArrayListBase::ServiceArrayIndexType_t, Poco::UInt32>));
    EXPECT_TRUE((std::is_same_v<Orvi::Mapping::Array::ArrayIndexType_t, Poco::UInt32>));
    EXPECT_TRUE((std::is_same_v<Orvi::Mapping::ServiceArrayIndexType_t, Poco::UInt32>));
}

} // namespace
