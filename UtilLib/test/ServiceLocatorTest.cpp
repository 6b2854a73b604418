#include "ServiceLocator.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::Util::ServiceLocator;

struct Engine
{
    std::string name;
};

TEST(ServiceLocator, FindsARegisteredServiceByItsType)
{
    ServiceLocator sut;
    Poco::SharedPtr<Engine> engine(new Engine{"diesel"});
    sut.registerService(engine);
    Poco::Any found;

    ASSERT_TRUE(sut.find(&typeid(Engine), found));

    EXPECT_EQ(Poco::AnyCast<Poco::SharedPtr<Engine>>(found).get(), engine.get());
    EXPECT_EQ(sut.getService<Engine>()->name, "diesel");
}

TEST(ServiceLocator, FindsNothingForAnUnknownTypeAndLeavesTheOutputAlone)
{
    ServiceLocator sut;
    Poco::Any found(7);

    EXPECT_FALSE(sut.find(&typeid(Engine), found));
    EXPECT_FALSE(sut.find(nullptr, found));

    EXPECT_EQ(Poco::AnyCast<int>(found), 7);
    EXPECT_TRUE(sut.getService<Engine>().isNull());
}

TEST(ServiceLocator, ForgetsAnUnregisteredService)
{
    ServiceLocator sut;
    sut.registerService(Poco::SharedPtr<Engine>(new Engine{"petrol"}));

    sut.unregisterService<Engine>();

    EXPECT_TRUE(sut.getService<Engine>().isNull());
}

} // namespace
