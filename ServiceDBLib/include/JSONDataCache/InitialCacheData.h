#pragma once

#include "Command/UrlPath.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"

namespace Orvi::JSONDataCache
{

/// The outcome of resolving a request's address against the service rows.
struct InitialCacheData
{
    Command::UrlPath::Characteristic characteristic = Command::UrlPath::INVALID;
    /// What to answer; INVALID when the address does not resolve.

    DBData::Service::Ptr serviceData;
    DBData::Resource::Ptr resourceData;
    DBData::Element::Ptr elementData;
    /// The rows found; null where the address does not reach them.
};

} // namespace Orvi::JSONDataCache
