#include "ApplicationServices.h"

#include <atomic>

namespace Orvi::Util
{

namespace
{

std::atomic<ServiceLocator*> installedLocator{nullptr};

} // namespace

ServiceLocator* ApplicationServices::getLocator()
{
    return installedLocator.load(std::memory_order_acquire);
}

void ApplicationServices::setLocator(ServiceLocator* locator)
{
    installedLocator.store(locator, std::memory_order_release);
}

} // namespace Orvi::Util
