#include "Data/AttributeValueStringableBase.h"

#include "Data/AttributeValueStringable.h"

#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>

using namespace Orvi::Data;

TEST(AttributeValueStringableBase, GivesTheTextOfEachStringableValue)
{
    const AttributeValueString text(std::string("seats"));
    const AttributeValueURI uri(Poco::URI("/cabin/seats"));
    const AttributeValueUUID uuid(Poco::UUID("3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c01"));

    const AttributeValueStringableBase* sut[] = {&text, &uri, &uuid};

    EXPECT_EQ(sut[0]->toString(), "seats");
    EXPECT_EQ(sut[1]->toString(), "/cabin/seats");
    EXPECT_EQ(sut[2]->toString(), "3f2a6c1e-8b4d-4c7a-9e21-5d6f7a8b9c01");
    EXPECT_FALSE(sut[0]->isArray());
    EXPECT_FALSE(sut[0]->isXObjReference());
}
