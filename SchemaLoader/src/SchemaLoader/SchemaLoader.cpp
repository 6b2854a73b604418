#include "SchemaLoader/SchemaLoader.h"

#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/ConstraintEnum.h"
#include "JSONDataCache/DBData/ConstraintFormat.h"
#include "JSONDataCache/DBData/ConstraintOneOf.h"
#include "JSONDataCache/DBData/ConstraintResolution.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Endpoint.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/UUID.h"
#include "SchemaLoader/SchemaError.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/File.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/ParseHandler.h>
#include <Poco/JSON/Parser.h>
#include <Poco/JSON/Stringifier.h>
#include <Poco/RegularExpression.h>
#include <Poco/StringTokenizer.h>

#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <limits>
#include <map>
#include <sstream>
#include <typeinfo>
#include <utility>

namespace Orvi::Loader
{

namespace
{

using Poco::Dynamic::Var;
using Poco::JSON::Array;
using Poco::JSON::Object;
using namespace Orvi::DBData;

std::string join(const std::string& path, const std::string& key)
{
    return path.empty() ? key : path + "." + key;
}

std::string item(const std::string& path, std::size_t index)
{
    return path + "[" + std::to_string(index) + "]";
}

bool isInteger(const Var& value)
{
    return !value.isEmpty() && value.isInteger() && !value.isBoolean();
}

bool isNumber(const Var& value)
{
    return !value.isEmpty() && value.isNumeric() && !value.isBoolean();
}

bool isObject(const Var& value)
{
    return value.type() == typeid(Object::Ptr) && !value.extract<Object::Ptr>().isNull();
}

bool isArray(const Var& value)
{
    return value.type() == typeid(Array::Ptr) && !value.extract<Array::Ptr>().isNull();
}

/// Builds one service from its parsed definition, raising SchemaError at the first fault.
class ServiceBuilder
{
public:
    ServiceBuilder(const std::string& text, const std::string& source, DbId& nextElementId)
        : m_text(text)
        , m_source(source)
        , m_nextElementId(nextElementId)
    {
    }

    Service::Ptr build(const Var& root) const;

private:
    [[noreturn]] void fail(const std::string& location, const std::string& reason) const
    {
        throw SchemaError(m_source + ": " + location, reason);
    }

    void checkKeys(const Object& object, const std::string& path,
                   std::initializer_list<const char*> allowed) const;
    const Object& objectAt(const Var& value, const std::string& path) const;
    std::string stringAt(const Var& value, const std::string& path) const;
    std::string nonEmptyStringAt(const Var& value, const std::string& path) const;
    bool booleanAt(const Var& value, const std::string& path) const;
    std::vector<std::string> stringsAt(const Var& value, const std::string& path) const;
    Service::StringList stringListAt(const Var& value, const std::string& path) const;
    DBData::UUID uuidAt(const Var& value, const std::string& path) const;
    Poco::Int64 signedAt(const Var& value, const std::string& path) const;
    Poco::UInt64 unsignedAt(const Var& value, const std::string& path) const;
    double numberAt(const Var& value, const std::string& path) const;

    Resource::Ptr buildResource(Service& service, const std::string& name, const Var& value,
                                const std::string& path) const;
    Attribute::Ptr buildAttribute(const std::string& name, const Var& value, const std::string& path) const;
    Attribute::ConstraintList buildConstraints(AttributeType type, const Object& object,
                                               const std::string& path) const;
    aConstraint::Ptr buildIntegerRange(const Object& object, const std::string& path) const;
    aConstraint::Ptr buildUnsignedRange(const Object& object, const std::string& path) const;
    aConstraint::Ptr buildNumberRange(const Object& object, const std::string& path) const;
    std::vector<Endpoint> buildEndpoints(const Var& value, const std::string& path,
                                         const AttributeMap& attributes) const;

    const std::string& m_text;
    const std::string& m_source;
    DbId& m_nextElementId;
};

void ServiceBuilder::checkKeys(const Object& object, const std::string& path,
                               std::initializer_list<const char*> allowed) const
{
    for (const auto& entry : object)
    {
        if (std::find_if(allowed.begin(), allowed.end(),
                         [&entry](const char* key) { return entry.first == key; }) == allowed.end())
        {
            fail(join(path, entry.first), "unknown key");
        }
    }
}

const Object& ServiceBuilder::objectAt(const Var& value, const std::string& path) const
{
    if (!isObject(value))
    {
        fail(path, "must be an object");
    }
    return *value.extract<Object::Ptr>();
}

std::string ServiceBuilder::stringAt(const Var& value, const std::string& path) const
{
    if (value.isEmpty() || !value.isString())
    {
        fail(path, "must be a string");
    }
    return value.extract<std::string>();
}

std::string ServiceBuilder::nonEmptyStringAt(const Var& value, const std::string& path) const
{
    std::string text = stringAt(value, path);
    if (text.empty())
    {
        fail(path, "must not be empty");
    }
    return text;
}

bool ServiceBuilder::booleanAt(const Var& value, const std::string& path) const
{
    if (value.isEmpty() || !value.isBoolean())
    {
        fail(path, "must be true or false");
    }
    return value.extract<bool>();
}

std::vector<std::string> ServiceBuilder::stringsAt(const Var& value, const std::string& path) const
{
    if (!isArray(value))
    {
        fail(path, "must be an array of strings");
    }
    const Array& array = *value.extract<Array::Ptr>();
    std::vector<std::string> result;
    result.reserve(array.size());
    for (std::size_t index = 0; index < array.size(); ++index)
    {
        result.push_back(nonEmptyStringAt(array.get(static_cast<unsigned int>(index)), item(path, index)));
    }
    return result;
}

Service::StringList ServiceBuilder::stringListAt(const Var& value, const std::string& path) const
{
    std::vector<std::string> texts = stringsAt(value, path);
    Service::StringList result;
    result.reserve(texts.size());
    for (std::string& text : texts)
    {
        result.emplace_back(new std::string(std::move(text)));
    }
    return result;
}

DBData::UUID ServiceBuilder::uuidAt(const Var& value, const std::string& path) const
{
    DBData::UUID uuid;
    if (!uuid.assign(stringAt(value, path)) || uuid.isEmpty())
    {
        fail(path, "must be a UUID");
    }
    return uuid;
}

Poco::Int64 ServiceBuilder::signedAt(const Var& value, const std::string& path) const
{
    if (!isInteger(value))
    {
        fail(path, "must be an integer");
    }
    try
    {
        return value.convert<Poco::Int64>();
    }
    catch (const Poco::RangeException&)
    {
        fail(path, "is out of range for an integer attribute");
    }
}

Poco::UInt64 ServiceBuilder::unsignedAt(const Var& value, const std::string& path) const
{
    if (!isInteger(value))
    {
        fail(path, "must be an integer");
    }
    try
    {
        return value.convert<Poco::UInt64>();
    }
    catch (const Poco::RangeException&)
    {
        fail(path, "is out of range for an unsigned attribute");
    }
}

double ServiceBuilder::numberAt(const Var& value, const std::string& path) const
{
    if (!isNumber(value))
    {
        fail(path, "must be a number");
    }
    return value.convert<double>();
}

Service::Ptr ServiceBuilder::build(const Var& root) const
{
    if (!isObject(root))
    {
        fail("top level", "must be an object");
    }
    const Object& object = *root.extract<Object::Ptr>();
    checkKeys(object, "",
              {"name", "id", "description", "port", "versions", "categories", "privileges", "resources"});
    if (!object.has("name"))
    {
        fail("name", "is required");
    }

    Service::Ptr service = new Service;
    service->setName(nonEmptyStringAt(object.get("name"), "name"));
    if (object.has("id"))
    {
        service->setId(uuidAt(object.get("id"), "id"));
    }
    else
    {
        service->generateId();
    }
    if (object.has("description"))
    {
        service->setDescription(stringAt(object.get("description"), "description"));
    }
    if (object.has("port"))
    {
        const Var& port = object.get("port");
        // A large positive number arrives unsigned; read each kind in its own type.
        const bool valid = isInteger(port) && (port.isSigned() ? port.convert<Poco::Int64>() >= 0 &&
                                                                     port.convert<Poco::Int64>() <= 65535
                                                               : port.convert<Poco::UInt64>() <= 65535U);
        if (!valid)
        {
            fail("port", "must be an integer between 0 and 65535");
        }
        service->setPort(static_cast<Poco::UInt16>(port.convert<Poco::UInt64>()));
    }
    if (object.has("versions"))
    {
        service->setVersions(stringListAt(object.get("versions"), "versions"));
    }
    if (object.has("categories"))
    {
        service->setServiceCategories(stringListAt(object.get("categories"), "categories"));
    }
    if (object.has("privileges"))
    {
        service->setPrivileges(stringListAt(object.get("privileges"), "privileges"));
    }
    service->setSpec(m_text);

    if (object.has("resources"))
    {
        const Object& resources = objectAt(object.get("resources"), "resources");
        for (const auto& entry : resources)
        {
            if (entry.first.empty())
            {
                fail("resources", "a resource name must not be empty");
            }
            service->addResource(
                buildResource(*service, entry.first, entry.second, join("resources", entry.first)));
        }
    }
    return service;
}

Resource::Ptr ServiceBuilder::buildResource(Service& service, const std::string& name, const Var& value,
                                            const std::string& path) const
{
    const Object& object = objectAt(value, path);
    checkKeys(object, path, {"id", "description", "element", "attributes", "access"});

    Resource::Ptr resource = new Resource(service);
    resource->setName(name);
    if (object.has("id"))
    {
        resource->setId(uuidAt(object.get("id"), join(path, "id")));
    }
    else
    {
        resource->generateId();
    }
    if (object.has("description"))
    {
        resource->setDescription(stringAt(object.get("description"), join(path, "description")));
    }
    std::ostringstream part;
    Poco::JSON::Stringifier::stringify(value, part);
    resource->setSpec(part.str());

    if (!object.has("element"))
    {
        fail(join(path, "element"), "is required");
    }
    Element::Ptr element = new Element(*resource);
    element->setName(nonEmptyStringAt(object.get("element"), join(path, "element")));

    AttributeMap attributes;
    if (object.has("attributes"))
    {
        const std::string attributesPath = join(path, "attributes");
        const Object& definitions = objectAt(object.get("attributes"), attributesPath);
        for (const auto& entry : definitions)
        {
            if (entry.first.empty())
            {
                fail(attributesPath, "an attribute name must not be empty");
            }
            attributes.emplace(entry.first,
                               buildAttribute(entry.first, entry.second, join(attributesPath, entry.first)));
        }
    }
    // Every object has these; a definition need not declare them.
    for (const char* defaultName : {"id", "name", "uri"})
    {
        if (attributes.count(defaultName) == 0)
        {
            attributes.emplace(defaultName, new Attribute(defaultName, AttrType_String, false));
        }
    }
    element->setAttributes(std::move(attributes));

    if (object.has("access"))
    {
        const std::string accessPath = join(path, "access");
        const Object& access = objectAt(object.get("access"), accessPath);
        checkKeys(access, accessPath, {"resource", "objects"});
        if (access.has("resource"))
        {
            resource->setEndpoints(buildEndpoints(access.get("resource"), join(accessPath, "resource"),
                                                  element->getAttributes()));
        }
        if (access.has("objects"))
        {
            element->setEndpoints(
                buildEndpoints(access.get("objects"), join(accessPath, "objects"), element->getAttributes()));
        }
    }

    element->setDBID(m_nextElementId++);
    resource->setElement(element);
    return resource;
}

Attribute::Ptr ServiceBuilder::buildAttribute(const std::string& name, const Var& value,
                                              const std::string& path) const
{
    static const std::map<std::string, AttributeType> types{
        {"string", AttrType_String}, {"integer", AttrType_Integer}, {"unsigned", AttrType_IntegerUnsigned},
        {"number", AttrType_Number}, {"boolean", AttrType_Boolean}, {"reference", AttrType_Object}};

    const Object& object = objectAt(value, path);
    checkKeys(
        object, path,
        {"type", "array", "description", "enum", "format", "minimum", "maximum", "resolution", "targets"});
    if (!object.has("type"))
    {
        fail(join(path, "type"), "is required");
    }
    const std::string typeName = stringAt(object.get("type"), join(path, "type"));
    const auto type = types.find(typeName);
    if (type == types.end())
    {
        fail(join(path, "type"), "unknown type \"" + typeName +
                                     "\"; use string, integer, unsigned, number, boolean or reference");
    }
    const bool array = object.has("array") && booleanAt(object.get("array"), join(path, "array"));
    if (object.has("description"))
    {
        // The model keeps no attribute description; it is checked so that a wrong value does not pass.
        stringAt(object.get("description"), join(path, "description"));
    }
    if (Attribute::isDefaultAttribute(name))
    {
        // The cache fills these itself as plain strings; any other shape would contradict its values.
        if (type->second != AttrType_String)
        {
            fail(join(path, "type"), "a default attribute must be of type string");
        }
        if (array)
        {
            fail(join(path, "array"), "a default attribute cannot be an array");
        }
        for (const char* key : {"enum", "format", "minimum", "maximum", "resolution", "targets"})
        {
            if (object.has(key))
            {
                fail(join(path, key), "a default attribute cannot have a constraint");
            }
        }
    }

    Attribute::Ptr attribute = new Attribute(name, type->second, array);
    attribute->setConstraints(buildConstraints(type->second, object, path));
    return attribute;
}

Attribute::ConstraintList ServiceBuilder::buildConstraints(AttributeType type, const Object& object,
                                                           const std::string& path) const
{
    const bool isText = type == AttrType_String;
    const bool isNumeric =
        type == AttrType_Integer || type == AttrType_IntegerUnsigned || type == AttrType_Number;
    for (const char* key : {"enum", "format"})
    {
        if (object.has(key) && !isText)
        {
            fail(join(path, key), "applies to string attributes only");
        }
    }
    for (const char* key : {"minimum", "maximum", "resolution"})
    {
        if (object.has(key) && !isNumeric)
        {
            fail(join(path, key), "applies to numeric attributes only");
        }
    }
    if (object.has("targets") && type != AttrType_Object)
    {
        fail(join(path, "targets"), "applies to reference attributes only");
    }

    Attribute::ConstraintList constraints;
    if (object.has("enum") && object.has("format"))
    {
        fail(path, "enum and format cannot be combined");
    }
    if (object.has("enum"))
    {
        std::vector<std::string> values = stringsAt(object.get("enum"), join(path, "enum"));
        if (values.empty())
        {
            fail(join(path, "enum"), "must not be empty");
        }
        Poco::SharedPtr<ConstraintEnum> constraint = new ConstraintEnum;
        constraint->setEnumValues(ConstraintEnum::EnumValues(values.begin(), values.end()));
        constraints.emplace_back(constraint);
    }
    if (object.has("format"))
    {
        const std::string formatPath = join(path, "format");
        std::string format = nonEmptyStringAt(object.get("format"), formatPath);
        try
        {
            Poco::RegularExpression expression(format);
        }
        catch (const Poco::RegularExpressionException& error)
        {
            fail(formatPath, "is not a valid regular expression (" + error.message() + ")");
        }
        Poco::SharedPtr<ConstraintFormat> constraint = new ConstraintFormat;
        constraint->setFormat(std::move(format));
        constraints.emplace_back(constraint);
    }
    if (isNumeric && (object.has("minimum") || object.has("maximum") || object.has("resolution")))
    {
        if (type == AttrType_Integer)
        {
            constraints.push_back(buildIntegerRange(object, path));
        }
        else if (type == AttrType_IntegerUnsigned)
        {
            constraints.push_back(buildUnsignedRange(object, path));
        }
        else
        {
            constraints.push_back(buildNumberRange(object, path));
        }
    }
    if (object.has("targets"))
    {
        const std::string targetsPath = join(path, "targets");
        std::vector<std::string> targets = stringsAt(object.get("targets"), targetsPath);
        if (targets.empty())
        {
            fail(targetsPath, "must not be empty");
        }
        for (std::size_t index = 0; index < targets.size(); ++index)
        {
            const Poco::StringTokenizer parts(targets[index], ".");
            if (parts.count() != 3 || parts[0].empty() || parts[1].empty() || parts[2].empty())
            {
                fail(item(targetsPath, index), "must name a target as service.resource.element");
            }
        }
        Poco::SharedPtr<ConstraintOneOf> constraint = new ConstraintOneOf;
        constraint->setClasses(std::move(targets));
        constraints.emplace_back(constraint);
    }
    return constraints;
}

aConstraint::Ptr ServiceBuilder::buildIntegerRange(const Object& object, const std::string& path) const
{
    // The check reads both bounds as integers, so a bound left open is the type's limit.
    Poco::Int64 minimum = std::numeric_limits<Poco::Int64>::min();
    Poco::Int64 maximum = std::numeric_limits<Poco::Int64>::max();
    if (object.has("minimum"))
    {
        minimum = signedAt(object.get("minimum"), join(path, "minimum"));
    }
    if (object.has("maximum"))
    {
        maximum = signedAt(object.get("maximum"), join(path, "maximum"));
    }
    if (minimum > maximum)
    {
        fail(join(path, "minimum"), "must not be greater than the maximum");
    }
    Poco::SharedPtr<ConstraintResolution> constraint = new ConstraintResolution;
    constraint->setMinimum(minimum);
    constraint->setMaximum(maximum);
    if (object.has("resolution"))
    {
        const Poco::Int64 resolution = signedAt(object.get("resolution"), join(path, "resolution"));
        if (resolution <= 0)
        {
            fail(join(path, "resolution"), "must be greater than 0");
        }
        constraint->setResolution(resolution);
    }
    return constraint;
}

aConstraint::Ptr ServiceBuilder::buildUnsignedRange(const Object& object, const std::string& path) const
{
    Poco::UInt64 minimum = 0;
    Poco::UInt64 maximum = std::numeric_limits<Poco::UInt64>::max();
    if (object.has("minimum"))
    {
        minimum = unsignedAt(object.get("minimum"), join(path, "minimum"));
    }
    if (object.has("maximum"))
    {
        maximum = unsignedAt(object.get("maximum"), join(path, "maximum"));
    }
    if (minimum > maximum)
    {
        fail(join(path, "minimum"), "must not be greater than the maximum");
    }
    Poco::SharedPtr<ConstraintResolution> constraint = new ConstraintResolution;
    constraint->setMinimum(minimum);
    constraint->setMaximum(maximum);
    if (object.has("resolution"))
    {
        const std::string resolutionPath = join(path, "resolution");
        const Poco::UInt64 resolution = unsignedAt(object.get("resolution"), resolutionPath);
        if (resolution == 0)
        {
            fail(resolutionPath, "must be greater than 0");
        }
        constraint->setResolution(resolution);
    }
    return constraint;
}

aConstraint::Ptr ServiceBuilder::buildNumberRange(const Object& object, const std::string& path) const
{
    Poco::SharedPtr<ConstraintResolution> constraint = new ConstraintResolution;
    double minimum = constraint->getMinimum().convert<double>();
    double maximum = constraint->getMaximum().convert<double>();
    if (object.has("minimum"))
    {
        minimum = numberAt(object.get("minimum"), join(path, "minimum"));
    }
    if (object.has("maximum"))
    {
        maximum = numberAt(object.get("maximum"), join(path, "maximum"));
    }
    if (minimum > maximum)
    {
        fail(join(path, "minimum"), "must not be greater than the maximum");
    }
    constraint->setMinimum(minimum);
    constraint->setMaximum(maximum);
    if (object.has("resolution"))
    {
        const double resolution = numberAt(object.get("resolution"), join(path, "resolution"));
        if (!(resolution > 0.0))
        {
            fail(join(path, "resolution"), "must be greater than 0");
        }
        constraint->setResolution(resolution);
    }
    return constraint;
}

std::vector<Endpoint> ServiceBuilder::buildEndpoints(const Var& value, const std::string& path,
                                                     const AttributeMap& attributes) const
{
    const Object& object = objectAt(value, path);
    checkKeys(object, path, {"get", "post", "required", "delete"});

    Endpoint global;
    global.setGet(object.has("get") && booleanAt(object.get("get"), join(path, "get")));

    // Rules bound to attributes, in the order their names first appear.
    std::vector<Endpoint> bound;
    std::map<std::string, std::size_t> boundIndex;
    const auto ruleFor = [&](const std::string& name, const std::string& location) -> Endpoint&
    {
        const auto attribute = attributes.find(name);
        if (attribute == attributes.end())
        {
            fail(location, "\"" + name + "\" is not an attribute of the element");
        }
        const auto known = boundIndex.find(name);
        if (known != boundIndex.end())
        {
            return bound[known->second];
        }
        boundIndex.emplace(name, bound.size());
        bound.emplace_back();
        bound.back().setAttribute(attribute->second);
        return bound.back();
    };
    const auto readRule = [&](const char* key, bool& all, std::vector<std::string>& names)
    {
        if (!object.has(key))
        {
            return;
        }
        const Var& rule = object.get(key);
        if (!rule.isEmpty() && rule.isBoolean())
        {
            all = rule.extract<bool>();
        }
        else if (isArray(rule))
        {
            names = stringsAt(rule, join(path, key));
        }
        else
        {
            fail(join(path, key), "must be true, false or an array of attribute names");
        }
    };

    bool postAll = false;
    bool deleteAll = false;
    std::vector<std::string> postNames;
    std::vector<std::string> deleteNames;
    readRule("post", postAll, postNames);
    readRule("delete", deleteAll, deleteNames);
    global.setPost(postAll);
    global.setDelete(deleteAll);

    for (std::size_t index = 0; index < postNames.size(); ++index)
    {
        const std::string location = item(join(path, "post"), index);
        Endpoint& rule = ruleFor(postNames[index], location);
        if (rule.isPost())
        {
            fail(location, "\"" + postNames[index] + "\" is listed twice");
        }
        rule.setPost(true);
    }
    if (object.has("required"))
    {
        const std::string requiredPath = join(path, "required");
        if (!object.has("post") || !isArray(object.get("post")))
        {
            fail(requiredPath, "needs post as an array of attribute names");
        }
        const std::vector<std::string> requiredNames = stringsAt(object.get("required"), requiredPath);
        for (std::size_t index = 0; index < requiredNames.size(); ++index)
        {
            const auto known = boundIndex.find(requiredNames[index]);
            if (known == boundIndex.end())
            {
                fail(item(requiredPath, index), "\"" + requiredNames[index] + "\" is not listed in post");
            }
            bound[known->second].setRequired(true);
        }
    }
    for (std::size_t index = 0; index < deleteNames.size(); ++index)
    {
        const std::string location = item(join(path, "delete"), index);
        Endpoint& rule = ruleFor(deleteNames[index], location);
        if (rule.isDelete())
        {
            fail(location, "\"" + deleteNames[index] + "\" is listed twice");
        }
        rule.setDelete(true);
    }

    std::vector<Endpoint> endpoints;
    endpoints.reserve(bound.size() + 1);
    if (global.isGet() || global.isPost() || global.isDelete())
    {
        endpoints.push_back(std::move(global));
    }
    for (Endpoint& rule : bound)
    {
        endpoints.push_back(std::move(rule));
    }
    return endpoints;
}

DbId nextElementIdOf(const ServiceMap& services)
{
    DbId highest = 0;
    for (const auto& service : services)
    {
        for (const auto& resource : service.second->getResources())
        {
            const Element::Ptr& element = resource.second->getElement();
            if (!element.isNull())
            {
                highest = std::max(highest, element->getDBID());
            }
        }
    }
    return highest + 1;
}

void buildInto(const std::string& text, const std::string& source, const ServiceMap& services,
               ServiceMap& scratch, DbId& nextElementId)
{
    Var root;
    try
    {
        Poco::JSON::Parser parser(new Poco::JSON::ParseHandler(true));
        root = parser.parse(text);
    }
    catch (const Poco::Exception& error)
    {
        throw SchemaError(source, "invalid JSON (" + error.message() + ")");
    }
    Service::Ptr service = ServiceBuilder(text, source, nextElementId).build(root);
    const std::string& name = service->getName();
    if (services.count(name) != 0 || scratch.count(name) != 0)
    {
        throw SchemaError(source + ": name", "service \"" + name + "\" is already loaded");
    }
    scratch.emplace(name, std::move(service));
}

} // namespace

void SchemaLoader::loadFile(const std::string& path, DBData::ServiceMap& services) const
{
    loadFiles({path}, services);
}

void SchemaLoader::loadFiles(const std::vector<std::string>& paths, DBData::ServiceMap& services) const
{
    ServiceMap scratch;
    DbId nextElementId = nextElementIdOf(services);
    for (const std::string& path : paths)
    {
        buildInto(readFile(path), path, services, scratch, nextElementId);
    }
    merge(scratch, services);
}

void SchemaLoader::loadText(const std::string& text, const std::string& sourceName,
                            DBData::ServiceMap& services) const
{
    ServiceMap scratch;
    DbId nextElementId = nextElementIdOf(services);
    buildInto(text, sourceName, services, scratch, nextElementId);
    merge(scratch, services);
}

std::string SchemaLoader::readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    // A directory opens like a file but reads as nothing.
    if (!file || !Poco::File(path).isFile())
    {
        throw SchemaError(path, "cannot be read");
    }
    // An empty file leaves the stream failed without being an error; the parser reports it.
    content << file.rdbuf();
    return content.str();
}

void SchemaLoader::merge(DBData::ServiceMap& scratch, DBData::ServiceMap& services)
{
    services.merge(scratch);
}

} // namespace Orvi::Loader
