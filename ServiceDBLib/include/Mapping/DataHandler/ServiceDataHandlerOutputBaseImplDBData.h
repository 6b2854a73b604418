#pragma once

#include "DataHandler/ServiceDataHandlerOutputBaseImpl.h"
#include "Mapping/JSONAccessor.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "MappingTypes.h"
#include "OperationResult.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <Poco/JSON/Object.h>
#include <Poco/Types.h>

#include <string>

namespace Orvi::Mapping::DataHandler
{

/// The writing side of a data handler on this database: what the handler delivers is stored under its
/// object id and array index, and deleted on its behalf. The mapping manager must be set before either.
class ServiceDataHandlerOutputBaseImplDBData : public ServiceDataHandlerOutputBaseImpl
{
public:
    ServiceDataHandlerOutputBaseImplDBData(MappingServiceJSONDataCache* JSONDataCache,
                                           Service::SubscriptionTrigger* changeListener);
    /// Both are borrowed and handed to the accessor; a missing cache is logged, not refused.

    ~ServiceDataHandlerOutputBaseImplDBData() override;

    XObjectId getDBIdForObject(const std::string& service, const std::string& resource,
                               const std::string& objectName) const override;
    /// The id of the first object whose "name" is objectName, or -1.

    OperationResult::Enum executeMappingToDb(Poco::Int32 objId, const std::string& service,
                                             const std::string& resource,
                                             ServiceArrayIndexType_t serviceItemIndex,
                                             Poco::JSON::Object::Ptr jsonObj,
                                             std::string& out_uuid) const override;
    /// Creates or updates the mapped object through the accessor and logs the result, whatever it is.

    bool executeMappingResultDeleteObject(const std::string& service, const std::string& resource,
                                          Poco::Int32 objId,
                                          ServiceArrayIndexType_t serviceItemIndex) const override;
    /// Deletes the mapped object, tells the subscribers and removes its id mapping; false for an unmapped
    /// object or a failed delete.

protected:
    JSONAccessor m_JSONAccessor;
};

} // namespace Orvi::Mapping::DataHandler
