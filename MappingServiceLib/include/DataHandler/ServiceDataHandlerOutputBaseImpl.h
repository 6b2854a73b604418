#pragma once

#include "IMappingServiceManager.h"
#include "IUncopyable.h"
#include "MappingTypes.h"
#include "OperationResult.h"

#include <Poco/JSON/Object.h>
#include <Poco/Types.h>

#include <string>

namespace Orvi::Mapping::DataHandler
{

/// The handlers' writing side of the database: what a handler delivers goes in here, named by the
/// handler's object id and array index.
class ServiceDataHandlerOutputBaseImpl : public Orvi::Util::IUncopyable
{
public:
    ServiceDataHandlerOutputBaseImpl() = default;
    /// Without a manager; set one by setMappingServiceManager() before anything is mapped.

    explicit ServiceDataHandlerOutputBaseImpl(IMappingServiceManager* manager);
    /// The manager is not owned and must outlive this object.

    IMappingServiceManager* getMappingServiceManager() const;

    void setMappingServiceManager(IMappingServiceManager* manager);
    /// Not owned; null detaches.

    virtual XObjectId getDBIdForObject(const std::string& service, const std::string& resource,
                                       const std::string& objectName) const = 0;
    /// The database id of the object of that name, or -1.

    virtual OperationResult::Enum executeMappingToDb(Poco::Int32 objId, const std::string& service,
                                                     const std::string& resource,
                                                     ServiceArrayIndexType_t serviceItemIndex,
                                                     Poco::JSON::Object::Ptr jsonObj,
                                                     std::string& out_uuid) const = 0;
    /// Creates or updates the mapped object with the JSON values; out_uuid names it in the database.

    virtual bool executeMappingResultDeleteObject(const std::string& service, const std::string& resource,
                                                  Poco::Int32 objId,
                                                  ServiceArrayIndexType_t serviceItemIndex) const = 0;
    /// Deletes the mapped object; false if it is unknown or the delete failed.

    XObjectId getXObjectId(Poco::Int32 objId, ServiceArrayIndexType_t serviceItemIndex) const;
    /// The database id of the mapped object, or -1 when it is not mapped or no id mapper is at hand.

protected:
    IMappingServiceManager* mappingMgr = nullptr;
    /// Not owned.
};

} // namespace Orvi::Mapping::DataHandler
