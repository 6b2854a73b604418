#pragma once

#include "MappingTypes.h"
#include "OperationResult.h"
#include "ProcessingData.h"

#include <string>
#include <vector>

namespace Orvi::Mapping
{

/// The application's bridge from the service database to the rest of the vehicle. The object passed
/// to each operation is a view on the stored object, valid for the call only.
class IServiceDataHandler
{
public:
    virtual ~IServiceDataHandler() = default;

    virtual OperationResult::Enum updateToDb(const std::string& service, const std::string& resource,
                                             const XObject& xobject, ProcessingData& data) = 0;
    /// A user's write of a new object, told after the values were stored.

    virtual OperationResult::Enum updateToMapper(const std::string& service, const std::string& resource,
                                                 const XObject& xobject, ProcessingData& data) = 0;
    /// A user's write of an existing object; the handler decides, and the store is not written.

    virtual OperationResult::Enum beforeDeleteObject(const std::string& service, const std::string& resource,
                                                     const XObject& xobject) = 0;
    /// ObjectUpdated lets the delete go on, ObjectProcessed means the handler took it over; anything else
    /// stops it.

    virtual void afterDeleteObject(const std::string& service, const std::string& resource,
                                   const XObject& xobject) = 0;

    virtual OperationResult::Enum beforeDeleteAttributes(const std::string& service,
                                                         const std::string& resource, const XObject& xobject,
                                                         const std::vector<std::string>& attributes) = 0;
    /// Read like the result of beforeDeleteObject.

    virtual void afterDeleteAttributes(const std::string& service, const std::string& resource,
                                       const XObject& xobject,
                                       const std::vector<std::string>& attributes) = 0;

    virtual bool addToMapperCache(const std::string& service, const XObject& xobject,
                                  const AttributeMapPtr& values);
    /// Collects the changes of one object of a batch before they are written; handlers without a cache
    /// keep the default, which accepts everything.

    virtual bool clearMapperCache(const std::string& service);
    /// Forgets what addToMapperCache collected; the default has nothing to forget.
};

} // namespace Orvi::Mapping
