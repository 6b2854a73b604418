#pragma once

#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Array.h>
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

    static bool handleAttributeValue(DBData::AttributeType type, const std::string& attrName, bool isArray,
                                     const Poco::Dynamic::Var& attrValue, int expand,
                                     Poco::Dynamic::Var& out_value);
    /// Renders one value; true means out_value is to be set under the attribute's name. A reference
    /// renders its object one level down; below level 0 only "id", "uri" and "name" pass. An array
    /// gives true even when no element survives, leaving out_value empty, which prints as null.
    /// A reference or array Var of another held type raises Poco::BadCastException.

    static bool transformXObjectToJSONObject(const DBData::XObject& xObject, Poco::JSON::Object& retObject,
                                             int expand);
    /// Renders one object with its valued attributes and always an "id". False, with retObject
    /// untouched, for an object without values. A stored "id" that differs from the object's UUID
    /// text is a bugcheck.

    static bool transformXObjectsToJSONArray(const std::vector<DBData::XObject::Ptr>& xobjects,
                                             Poco::JSON::Array& dataArray, int expansion);
    /// Renders the objects in order, skipping null pointers. All or nothing: one object that fails
    /// leaves dataArray empty and gives false.
};

bool isXObjAttribute(const std::string& attrName);
/// True for "id", "uri" and "name", the attributes that survive past the expansion level.

} // namespace Orvi::JSONDataCache
