#pragma once

#include "DataLayer/JSONExtractionMap_t.h"
#include "DataLayer/JSONProcessingContext.h"
#include "DataLayer/JSONProcessingData.h"
#include "JSONDataCache/DBData/XObject.h"
#include "OperationResult.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>
#include <Poco/SharedPtr.h>

#include <string>

namespace Orvi::DataLayer
{

/// The gate through which JSON values enter an object: each member is matched to an attribute by
/// name, converted and checked against the schema and written into the object's cell; the cells that
/// really changed go to processAttributeValues, which a derived class gives its meaning.
class JSONInputProcessor
{
public:
    virtual Mapping::OperationResult::Enum
    processAttributeValues(JSONProcessingContext::Enum ctx, const std::string& servicename,
                           const std::string& resourcename, DBData::XObject& xObject,
                           Poco::SharedPtr<JSONExtractionMap_t> extractionMap) = 0;
    /// Takes over the changed cells of xObject.

    virtual Mapping::OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum ctx,
                                                                  const std::string& servicename,
                                                                  const std::string& resourcename,
                                                                  DBData::XObject& xObject,
                                                                  JSONProcessingData& processingData) = 0;
    /// Takes over the changed cells of xObject, with the input they came from.

    virtual ~JSONInputProcessor();

    virtual DBData::XObject::Ptr resolveObjectReferenceByDbId(const DBData::XObjectId& id) = 0;
    /// The stored object of that id, or an empty pointer.

    Mapping::OperationResult::Enum processJSONValues(JSONProcessingContext::Enum ctx,
                                                     const std::string& servicename,
                                                     const std::string& resourcename,
                                                     DBData::XObject& xObject, const Poco::JSON::Object* obj);
    /// Processes obj with an empty extraction map.

    Mapping::OperationResult::Enum processJSONValues(JSONProcessingContext::Enum ctx,
                                                     const std::string& servicename,
                                                     const std::string& resourcename,
                                                     DBData::XObject& xObject,
                                                     JSONProcessingData& processingData);
    /// Writes the members of processingData.pObj into the cells of xObject, a complete object with a
    /// cell for each attribute of its element, and hands the changed cells on. The first invalid member
    /// ends the call with ErrorOnUpdate; members handled before it keep their new values in xObject.
    /// Gives ObjectUnchanged when nothing changed, else what processAttributeValues gives.

    bool resolveObjectRef(Poco::Dynamic::Var& value);
    /// Replaces an object id (a long) by the stored object; false when there is none. Any other
    /// value is left as it is.
};

} // namespace Orvi::DataLayer
