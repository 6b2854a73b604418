#include "JSONDataCache/DBDataToJSONTransformator.h"

#include "Command/ResponseObject.h"
#include "Command/StatusObject.h"
#include "Timestamp.h"

#include <Poco/Bugcheck.h>
#include <Poco/JSON/Array.h>

#include <set>

namespace Orvi::JSONDataCache
{

namespace
{

const std::string FIELD_NAME = "name";
const std::string FIELD_ID = "id";
const std::string FIELD_URI = "uri";
const std::string FIELD_DESCRIPTION = "description";
const std::string FIELD_PORT = "port";
const std::string FIELD_SERVICE_CATEGORIES = "serviceCategories";
const std::string FIELD_PRIVILEGES = "privileges";
const std::string FIELD_VERSIONS = "versions";
const std::string URI_SEPARATOR = "/";

// Options 0 everywhere: keys print sorted, whatever the order of the set calls.
Poco::JSON::Object::Ptr newObject()
{
    return new Poco::JSON::Object(0);
}

Poco::JSON::Array::Ptr toArray(const DBData::Service::StringList& list)
{
    Poco::JSON::Array::Ptr array(new Poco::JSON::Array);
    for (const auto& text : list)
    {
        array->add(*text);
    }
    return array;
}

std::string serviceUri(const std::string& baseUrl, const DBData::Service& service)
{
    return baseUrl + URI_SEPARATOR + service.getName() + URI_SEPARATOR;
}

void setServiceHeader(Poco::JSON::Object& record, const DBData::Service& service, const std::string& baseUrl)
{
    record.set(FIELD_NAME, service.getName());
    record.set(FIELD_ID, service.getId().toString());
    record.set(FIELD_URI, serviceUri(baseUrl, service));
    record.set(FIELD_DESCRIPTION, service.getDescription());
    record.set(FIELD_PORT, service.getPort());
    record.set(FIELD_SERVICE_CATEGORIES, toArray(service.getServiceCategories()));
    record.set(FIELD_VERSIONS, toArray(service.getVersions()));
}

const std::string KEY_ID = "id";

} // namespace

bool isXObjAttribute(const std::string& attrName)
{
    static const std::set<std::string> names{"id", "uri", "name"};
    return names.count(attrName) != 0;
}

bool DBDataToJSONTransformator::transformServicesToJSONObject(
    const std::vector<DBData::Service::Ptr>& services, Poco::JSON::Object::Ptr& out_pObject,
    const std::string& baseUrl)
{
    out_pObject->set(Command::StatusObject::FIELD_STATUS, Command::StatusObject::STATUS_OK);

    Poco::JSON::Array::Ptr records(new Poco::JSON::Array);
    for (const DBData::Service::Ptr& service : services)
    {
        Poco::JSON::Object::Ptr record = newObject();
        setServiceHeader(*record, *service, baseUrl);
        records->add(record);
    }
    out_pObject->set(Command::ResponseObject::FIELD_DATA, records);
    return true;
}

bool DBDataToJSONTransformator::transformToServiceQueryAnswer(const DBData::Service& service,
                                                              Poco::JSON::Object::Ptr& out_pObject,
                                                              bool addServiceObject,
                                                              const std::string& baseUrl)
{
    out_pObject->set(Command::StatusObject::FIELD_STATUS, Command::StatusObject::STATUS_OK);
    out_pObject->set(Command::ResponseObject::FIELD_TIMESTAMP, Timestamp::createTimestamp().asMilliseconds());

    const std::string uri = serviceUri(baseUrl, service);
    Poco::JSON::Array::Ptr records(new Poco::JSON::Array);
    for (const auto& entry : service.getResources())
    {
        const DBData::ResourcePtr& resource = entry.second;
        if (resource.isNull())
        {
            continue;
        }
        Poco::JSON::Object::Ptr record = newObject();
        record->set(FIELD_NAME, resource->getName());
        record->set(FIELD_ID, resource->getId().toString());
        record->set(FIELD_URI, uri + resource->getName() + URI_SEPARATOR);
        record->set(FIELD_DESCRIPTION, resource->getDescription());
        records->add(record);
    }
    out_pObject->set(Command::ResponseObject::FIELD_DATA, records);

    if (!addServiceObject)
    {
        return true;
    }

    Poco::JSON::Object::Ptr record = newObject();
    setServiceHeader(*record, service, baseUrl);
    record->set(FIELD_PRIVILEGES, toArray(service.getPrivileges()));
    out_pObject->set(Command::ResponseObject::FIELD_SERVICE, record);
    return true;
}

bool DBDataToJSONTransformator::handleAttributeValue(DBData::AttributeType type, const std::string& attrName,
                                                     bool isArray, const Poco::Dynamic::Var& attrValue,
                                                     int expand, Poco::Dynamic::Var& out_value)
{
    out_value.clear();
    if (attrValue.isEmpty())
    {
        return false;
    }
    if (expand < 0 && !isXObjAttribute(attrName))
    {
        return false;
    }

    if (!isArray)
    {
        if (type != DBData::AttrType_Object)
        {
            out_value = attrValue;
            return true;
        }
        const DBData::XObject::Ptr& referenced = attrValue.extract<DBData::XObject::Ptr>();
        if (referenced.isNull())
        {
            return false;
        }
        Poco::JSON::Object::Ptr rendered = newObject();
        if (!transformXObjectToJSONObject(*referenced, *rendered, expand - 1))
        {
            return false;
        }
        out_value = rendered;
        return true;
    }

    const DBData::AttributeValue::ValueArrayPtr& elements =
        attrValue.extract<DBData::AttributeValue::ValueArrayPtr>();
    if (elements.isNull())
    {
        return false;
    }
    Poco::JSON::Array::Ptr rendered(new Poco::JSON::Array);
    Poco::Dynamic::Var renderedElement;
    for (const Poco::Dynamic::Var& element : *elements)
    {
        // The level stays: only a reference takes the rendering one level down.
        if (handleAttributeValue(type, attrName, false, element, expand, renderedElement))
        {
            rendered->add(renderedElement);
        }
    }
    // An array without surviving elements is still reported, as null, unlike an empty value.
    if (rendered->size() > 0)
    {
        out_value = rendered;
    }
    return true;
}

bool DBDataToJSONTransformator::transformXObjectToJSONObject(const DBData::XObject& xObject,
                                                             Poco::JSON::Object& retObject, int expand)
{
    const DBData::AttributeValueList& values = xObject.getAttributeValues();
    if (values.empty())
    {
        return false;
    }
    retObject.clear();

    Poco::Dynamic::Var rendered;
    for (const DBData::AttributeValuePtr& value : values)
    {
        if (value.isNull() || value->getAttribute().isNull())
        {
            continue;
        }
        const DBData::Attribute& attribute = *value->getAttribute();
        if (handleAttributeValue(attribute.getType(), attribute.getName(), attribute.isArray(),
                                 value->getValue(), expand, rendered))
        {
            retObject.set(attribute.getName(), rendered);
        }
    }

    const std::string& uuid = xObject.getId().toString();
    if (!retObject.has(KEY_ID))
    {
        retObject.set(KEY_ID, uuid);
    }
    if (retObject.get(KEY_ID).convert<std::string>() != uuid)
    {
        poco_bugcheck_msg("Corrupt XObject in Database. UUID mismatch!");
    }
    return true;
}

bool DBDataToJSONTransformator::transformXObjectsToJSONArray(
    const std::vector<DBData::XObject::Ptr>& xobjects, Poco::JSON::Array& dataArray, int expansion)
{
    for (const DBData::XObject::Ptr& xobject : xobjects)
    {
        if (xobject.isNull())
        {
            continue;
        }
        Poco::JSON::Object::Ptr rendered = newObject();
        if (!transformXObjectToJSONObject(*xobject, *rendered, expansion))
        {
            dataArray.clear();
            return false;
        }
        dataArray.add(rendered);
    }
    return true;
}

} // namespace Orvi::JSONDataCache
