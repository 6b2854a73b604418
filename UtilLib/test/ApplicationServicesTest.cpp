#include "ApplicationServices.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Util::ServiceLocator;

TEST(ApplicationServices, HasNoLocatorUntilOneIsInstalled)
{
    ServiceLocator locator;
    Orvi::Util::ServiceLocator* const before = Orvi::Util::ApplicationServices::getLocator();

    Orvi::Util::ApplicationServices::setLocator(&locator);
    Orvi::Util::ServiceLocator* const installed = Orvi::Util::ApplicationServices::getLocator();
    Orvi::Util::ApplicationServices::setLocator(nullptr);

    EXPECT_EQ(before, nullptr);
    EXPECT_EQ(installed, &locator);
    EXPECT_EQ(Orvi::Util::ApplicationServices::getLocator(), nullptr);
}

} // namespace
