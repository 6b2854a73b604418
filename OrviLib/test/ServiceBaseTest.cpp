#include "Data/ServiceBase.h"

#include "Data/MicroServiceInfo.h"

#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

using namespace Orvi::Data;

TEST(ServiceBase, NamesTheKeysOfItsFields)
{
    EXPECT_EQ(ServiceBase::KEY_DESCRIPTION, "description");
    EXPECT_EQ(ServiceBase::KEY_PORT, "port");
    EXPECT_EQ(ServiceBase::KEY_PRIVILEGES, "privileges");
    EXPECT_EQ(ServiceBase::KEY_CATEGORIES, "categories");
    EXPECT_EQ(ServiceBase::KEY_VERSIONS, "versions");
}

TEST(ServiceBase, UpdatesTheServiceIdThroughTheInterface)
{
    Orvi::MicroServiceInfo info(Poco::UUID(), Poco::URI(), "cabin", 8080, "Cabin");
    ServiceBase& sut = info;

    sut.updateServiceId(Poco::UUID("0c1d2e3f-4a5b-4c6d-8e7f-901a2b3c4d5e"));

    EXPECT_EQ(sut.getId(), Poco::UUID("0c1d2e3f-4a5b-4c6d-8e7f-901a2b3c4d5e"));
    EXPECT_EQ(sut.getPort(), 8080U);
    EXPECT_EQ(sut.getDescription(), "Cabin");
}
