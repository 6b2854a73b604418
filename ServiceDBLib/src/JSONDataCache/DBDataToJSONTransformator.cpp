#include "JSONDataCache/DBDataToJSONTransformator.h"

#include "Command/ResponseObject.h"
#include "Command/StatusObject.h"
#include "Timestamp.h"

#include <Poco/JSON/Array.h>

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

} // namespace

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

} // namespace Orvi::JSONDataCache
