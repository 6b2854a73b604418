#pragma once

#include "MappingTypes.h"

#include <string>

namespace Orvi::Mapping::DataHandler
{

/// The handlers' reading side of the database: the stored values of one object as typed attributes.
class ServiceDataHandlerInputBaseImpl
{
public:
    virtual ~ServiceDataHandlerInputBaseImpl() = default;

    virtual AttributeMapPtr getAttributesToUpdateFromDB(const XObjectId xObjectId) const = 0;
    /// Null for an unknown object.

    virtual AttributeMapPtr getAttributesToUpdateFromDB(const std::string& service,
                                                        const std::string& resource,
                                                        const std::string& element) const = 0;
    /// The object named by its element id in the resource; null if there is none.
};

} // namespace Orvi::Mapping::DataHandler
