#include "JSONDataCache/DBData/OrviDataConverter.h"

#include "Command/UrlPath.h"
#include "Data/AttributeValue.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/XObjectBase.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "Logging/LogStream.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>

#include <string>

namespace Orvi::DBData
{

namespace
{

std::string textOf(const AttributeValue& value)
{
    return value.getValue().convert<std::string>();
}

} // namespace

Data::XObjectGeneric OrviDataConverter::createXObjectGeneric(const XObject& object)
{
    // The empty URI skips the constructor's check; the identity is checked once all cells are read.
    Data::XObjectGeneric result(std::string(), object.getId().get(), Poco::URI(), object.getDBID());

    for (const AttributeValuePtr& value : object.getAttributeValues())
    {
        if (value.isNull() || value->getAttribute().isNull() || !value->hasValue())
        {
            continue;
        }

        const std::string& name = value->getName();
        if (name == Data::XObjectBase::KEY_NAME)
        {
            result.setName(textOf(*value));
            continue;
        }
        if (name == Data::XObjectBase::KEY_ID)
        {
            result.setId(Poco::UUID(textOf(*value)));
            continue;
        }
        if (name == Data::XObjectBase::KEY_URI)
        {
            result.setUri(Poco::URI(textOf(*value)));
            continue;
        }

        Data::AttributeBase::Ptr attribute;
        bool added = false;
        try
        {
            attribute = createAttribute(object.getDBID(), *value);
            if (!attribute.isNull() && attribute->getValueBase() == nullptr)
            {
                result.removeValue(name);
                continue;
            }
            added = result.setAttribute(Data::AttributeBase::Ptr(attribute));
        }
        catch (const Poco::Exception& e)
        {
            LOG_ERROR("Failed to convert XObject attribute " << name << ": " << e.displayText());
            attribute = nullptr;
        }
        if (attribute.isNull() || !added)
        {
            throw Poco::DataException("Failed to convert XObject attribute " + name);
        }
    }

    const Poco::URI uri = result.getUri();
    const Poco::UUID uuid = result.getId();
    if (uri.getPath().find(uuid.toString()) == std::string::npos)
    {
        throw Poco::DataException("Invalid XObject - URI and UUID mismatch");
    }
    return result;
}

Data::AttributeBase* OrviDataConverter::createAttribute(Data::XObjectId parentId, const AttributeValue& value)
{
    if (value.getAttribute().isNull())
    {
        return nullptr;
    }

    switch (value.getType())
    {
    case AttrType_String:
        if (value.getName() == Data::XObjectBase::KEY_ID)
        {
            return createAttribute<Data::AttributeValueUUID>(parentId, value);
        }
        if (value.getName() == Data::XObjectBase::KEY_URI)
        {
            return createAttribute<Data::AttributeValueURI>(parentId, value);
        }
        return createAttribute<Data::AttributeValueString>(parentId, value);
    case AttrType_Integer:
        return createAttribute<Data::AttributeValueInteger>(parentId, value);
    case AttrType_Number:
        return createAttribute<Data::AttributeValueNumber>(parentId, value);
    case AttrType_Boolean:
        return createAttribute<Data::AttributeValueBoolean>(parentId, value);
    case AttrType_Object:
        return createAttribute<Data::AttributeValueObject<Data::XObjectGeneric>>(parentId, value);
    case AttrType_IntegerUnsigned:
        return createAttribute<Data::AttributeValueIntegerUnsigned>(parentId, value);
    }
    return nullptr;
}

template <>
Poco::UUID OrviDataConverter::extractValue<Poco::UUID>(const Poco::Dynamic::Var& var)
{
    return Poco::UUID(var.convert<std::string>());
}

template <>
Poco::URI OrviDataConverter::extractValue<Poco::URI>(const Poco::Dynamic::Var& var)
{
    if (var.type() == typeid(Poco::URI))
    {
        return var.extract<Poco::URI>();
    }
    return Poco::URI(var.convert<std::string>());
}

template <>
Data::XObjectGeneric OrviDataConverter::extractValue<Data::XObjectGeneric>(const Poco::Dynamic::Var& var)
{
    if (var.isEmpty())
    {
        throw Poco::InvalidArgumentException("Unable to create XObject from empty object reference");
    }

    if (var.type() == typeid(XObject::Ptr))
    {
        const XObject::Ptr& object = var.extract<XObject::Ptr>();
        if (object.isNull())
        {
            throw Poco::NullPointerException("Invalid value for object reference");
        }
        return createXObjectGeneric(*object);
    }

    Poco::Dynamic::Var reference = var;
    Attribute::convertToObjectRef(reference);
    const Poco::URI uri = reference.extract<Poco::URI>();
    const Command::UrlPath path(uri);

    std::string name;
    if (var.type() == typeid(Poco::JSON::Object::Ptr))
    {
        const Poco::JSON::Object::Ptr& json = var.extract<Poco::JSON::Object::Ptr>();
        if (json.isNull())
        {
            throw Poco::NullPointerException("Invalid value for object reference");
        }
        if (json->has(Data::XObjectBase::KEY_NAME))
        {
            name = json->get(Data::XObjectBase::KEY_NAME).convert<std::string>();
        }
    }

    return Data::XObjectGeneric(name, Poco::UUID(path.getElement()), uri, -1);
}

Data::AttributeValueStringArray OrviDataConverter::createStringArray(const Service::StringList& texts)
{
    Data::AttributeValueStringArray result;
    for (const Poco::SharedPtr<std::string>& text : texts)
    {
        if (!text.isNull())
        {
            result.addElement(Data::AttributeValueString(*text));
        }
    }
    return result;
}

} // namespace Orvi::DBData
