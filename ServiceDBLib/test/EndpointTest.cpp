#include "JSONDataCache/DBData/Endpoint.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::Endpoint;

TEST(Endpoint, AllowsNothingAndIsGlobalAfterConstruction)
{
    const Endpoint sut;

    EXPECT_FALSE(sut.isGet());
    EXPECT_FALSE(sut.isPost());
    EXPECT_FALSE(sut.isDelete());
    EXPECT_FALSE(sut.isRequired());
    EXPECT_TRUE(sut.isGlobal());
    EXPECT_TRUE(sut.getAttribute().isNull());
}

TEST(Endpoint, SetsEachFlagOnItsOwn)
{
    Endpoint sut;

    sut.setGet(true);
    EXPECT_TRUE(sut.isGet());
    EXPECT_FALSE(sut.isPost() || sut.isDelete() || sut.isRequired());

    sut.setPost(true);
    EXPECT_TRUE(sut.isPost());
    EXPECT_FALSE(sut.isDelete() || sut.isRequired());

    sut.setDelete(true);
    EXPECT_TRUE(sut.isDelete());
    EXPECT_FALSE(sut.isRequired());

    sut.setRequired(true);
    EXPECT_TRUE(sut.isRequired());

    sut.setGet(false);
    EXPECT_FALSE(sut.isGet());
    EXPECT_TRUE(sut.isPost() && sut.isDelete() && sut.isRequired());
}

TEST(Endpoint, IsBoundOnceItHasAnAttribute)
{
    Endpoint sut;
    const Attribute::Ptr attribute(new Attribute("speed"));

    sut.setAttribute(attribute);

    EXPECT_FALSE(sut.isGlobal());
    EXPECT_EQ(sut.getAttribute().get(), attribute.get());
}

TEST(Endpoint, CopiesShareTheAttribute)
{
    Endpoint original;
    original.setRequired(true);
    original.setAttribute(new Attribute("speed"));

    const Endpoint sut(original);

    EXPECT_TRUE(sut.isRequired());
    EXPECT_EQ(sut.getAttribute().get(), original.getAttribute().get());
}

TEST(Endpoint, GivesWritableAccessToItsAttributePointer)
{
    Endpoint sut;

    sut.getAttribute() = new Attribute("rpm");

    EXPECT_EQ(sut.getAttribute()->getName(), "rpm");
    EXPECT_FALSE(sut.isGlobal());
}

} // namespace
