#pragma once

#include "JSONDataCache/DBData/Service.h"

#include <Poco/JSON/Object.h>

#include <string>
#include <vector>

namespace Orvi::JSONDataCache
{

/// Turns rows of the service database into the JSON of answers. Stateless.
class DBDataToJSONTransformator
{
public:
    static bool transformServicesToJSONObject(const std::vector<DBData::Service::Ptr>& services,
                                              Poco::JSON::Object::Ptr& out_pObject,
                                              const std::string& baseUrl);
    /// Fills the root answer: "status" and under "data" one record per service, privileges left out.
    /// A null out_pObject raises Poco::NullPointerException.

    static bool transformToServiceQueryAnswer(const DBData::Service& service,
                                              Poco::JSON::Object::Ptr& out_pObject, bool addServiceObject,
                                              const std::string& baseUrl);
    /// Fills the answer of a service: "status", "timestamp", the resource records under "data" and,
    /// with addServiceObject, the full service record under "service".
};

} // namespace Orvi::JSONDataCache
