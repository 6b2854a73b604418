#pragma once

#include "DataHandler/ServiceDataHandlerInputBaseImpl.h"
#include "Mapping/JSONAccessor.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "MappingTypes.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <string>

namespace Orvi::Mapping::DataHandler
{

/// The reading side of a data handler on this database: the stored values of an object as typed
/// attributes.
class ServiceDataHandlerInputBaseImplDBData : public ServiceDataHandlerInputBaseImpl
{
public:
    ServiceDataHandlerInputBaseImplDBData(MappingServiceJSONDataCache* JSONDataCache,
                                          Service::SubscriptionTrigger* changeListener);
    /// Both are borrowed and handed to the accessor.

    ~ServiceDataHandlerInputBaseImplDBData() override;

    AttributeMapPtr getAttributesToUpdateFromDB(const XObjectId xObjectId) const override;
    /// The values of the object by attribute name; values that hold nothing are left out. Null for an
    /// unknown object.

    AttributeMapPtr getAttributesToUpdateFromDB(const std::string& service, const std::string& resource,
                                                const std::string& element) const override;
    /// The same for the object of that UUID in the resource.

protected:
    JSONAccessor m_JSONAccessor;
};

} // namespace Orvi::Mapping::DataHandler
