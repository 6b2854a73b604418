#include "JSONDataCache/DBData/IAttributeIndex.h"

#include "JSONDataCache/DBData/AttributeIndex.h"
#include "TestSupport/LogCapture.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeIndex;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::IAttributeIndex;
using Orvi::DBData::Index::IndexEntry;
using Orvi::DBData::Index::IndexGroup;
using Orvi::DBData::Index::SimpleValue;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using Lines = std::vector<std::string>;
using Ids = std::vector<std::pair<Orvi::DBData::DbId, Orvi::DBData::DbId>>;

Ids ids(const IndexGroup& group)
{
    Ids result;
    for (const IndexEntry& entry : group)
    {
        result.emplace_back(entry.idXObj, entry.idAttrValue);
    }
    return result;
}

TEST(IAttributeIndex, LogsAnErrorForOthers)
{
    LogCapture capture;

    IAttributeIndex::printLogError("index out of step");

    EXPECT_EQ(capture.lines(), Lines{"Error: index out of step"});
}

TEST(IAttributeIndex, ServesAnIndexThroughItsInterface)
{
    const Attribute::Ptr attribute(new Attribute("gear", Orvi::DBData::AttrType_String, false));
    IAttributeIndex::Ptr sut(new AttributeIndex<SimpleValue>(*attribute));
    const AttributeValue cell(3, attribute, 30);

    ASSERT_TRUE(sut->update(cell, Var("D")));

    EXPECT_EQ(ids(sut->find(Var("D"))), (Ids{{3, 30}}));
    EXPECT_EQ(ids(sut->find(Poco::RegularExpression("[A-Z]"))), (Ids{{3, 30}}));
    EXPECT_TRUE(sut->remove(cell));
    EXPECT_EQ(ids(sut->find(Var("D"))), Ids());
}

} // namespace
