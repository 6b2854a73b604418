#pragma once

#include "MappingTypes.h"

#include <Poco/Types.h>

namespace Orvi::Mapping
{

/// Joins the database id of a mapped object to the handler's name of it, a 32-bit object id and an
/// array index.
class IDbObjectIdMapper
{
public:
    virtual ~IDbObjectIdMapper() = default;

    virtual bool getObjIdItemByXObjId(XObjectId xObjId, Poco::Int32& objId,
                                      ServiceArrayIndexType_t& index) const = 0;
    /// False for an unknown database id.

    virtual bool getXObjIdItemByObjId(Poco::Int32 objId, ServiceArrayIndexType_t index,
                                      XObjectId& xObjId) const = 0;
    /// False for an unknown pair of object id and index.

    virtual void addXObjId(Poco::Int32 objId, XObjectId xObjId, ServiceArrayIndexType_t index) = 0;

    virtual void delXObjId(XObjectId xObjId) = 0;
};

} // namespace Orvi::Mapping
