#pragma once

#include "ServiceLocator.h"

namespace Orvi::Util
{

/// The process-wide access to the service locator that the embedding process installs.
class ApplicationServices
{
public:
    static ServiceLocator* getLocator();
    /// The installed locator, or null.

    static void setLocator(ServiceLocator* locator);
    /// Installs the locator (not owned; it must outlive its users), or removes it with null.
};

} // namespace Orvi::Util
