#include "Mapping/DataHandler/ServiceDataHandlerInputBaseImplDBData.h"

#include "Data/AttributeBase.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/OrviDataConverter.h"
#include "JSONDataCache/DBData/XObject.h"

#include <Poco/SharedPtr.h>

namespace Orvi::Mapping::DataHandler
{

namespace
{

// The typed attributes of the object's values; the first value of a name wins.
AttributeMapPtr convertValues(const DBData::XObject& object, XObjectId parentId)
{
    AttributeMapPtr result(new Data::AttributeMap);
    for (const DBData::AttributeValuePtr& value : object.getAttributeValues())
    {
        if (value.isNull())
        {
            continue;
        }
        Poco::SharedPtr<Data::AttributeBase> attribute(
            DBData::OrviDataConverter::createAttribute(parentId, *value));
        if (!attribute.isNull())
        {
            result->emplace(value->getName(), attribute);
        }
    }
    return result;
}

} // namespace

ServiceDataHandlerInputBaseImplDBData::ServiceDataHandlerInputBaseImplDBData(
    MappingServiceJSONDataCache* JSONDataCache, Service::SubscriptionTrigger* changeListener)
    : m_JSONAccessor(JSONDataCache, changeListener)
{
}

ServiceDataHandlerInputBaseImplDBData::~ServiceDataHandlerInputBaseImplDBData() = default;

AttributeMapPtr
ServiceDataHandlerInputBaseImplDBData::getAttributesToUpdateFromDB(const XObjectId xObjectId) const
{
    DBData::XObject xXObject{DBData::Element::Ptr()};
    if (m_JSONAccessor.selectXObject(xObjectId, xXObject) == OperationResult::ErrorOnUpdate)
    {
        return {};
    }
    return convertValues(xXObject, xObjectId);
}

AttributeMapPtr ServiceDataHandlerInputBaseImplDBData::getAttributesToUpdateFromDB(
    const std::string& service, const std::string& resource, const std::string& element) const
{
    DBData::XObject object{DBData::Element::Ptr()};
    if (!m_JSONAccessor.selectXObject(service, resource, element, object))
    {
        return {};
    }
    return convertValues(object, object.getDBID());
}

} // namespace Orvi::Mapping::DataHandler
