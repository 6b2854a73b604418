#include "DataAccess/ElementAccess.h"

#include "Data/AttributeValueArrayBase.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"
#include "Data/AttributeValueStringableBase.h"
#include "Data/GenericObject.h"
#include "Data/XObjectBase.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/OrviDataConverter.h"
#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>
#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>

namespace Orvi::Service::DataAccess
{

namespace
{

// A bare reference holds at most id, uri and name; an object with more has been read in full.
const std::size_t RESOLVED_REFERENCE_SIZE = 4;

// The depth at which a referenced object is read: its own references come with their attributes.
const Poco::Int32 REFERENCE_SELECTION_DEPTH = 2;

DBData::DbId idOf(const DBData::XObject::Ptr& base)
{
    return base.isNull() ? DBData::DbId(-1) : base->getDBID();
}

} // namespace

ElementAccess::ElementAccess(const DBData::XObject::Ptr& base, const std::string& service,
                             const std::string& resource, JSONDataCache::JSONDataCache* cache)
    : Data::ElementBase(idOf(base))
    , m_base(base)
    , m_cache(cache)
    , m_attributes(idOf(base))
{
    checkPointers();
    initialize(service, resource);
    storeIdentity(Poco::URI("/" + service + "/" + resource + "/" + m_base->getUUID()));
}

ElementAccess::ElementAccess(const DBData::XObject::Ptr& base, const Poco::URI& uri,
                             JSONDataCache::JSONDataCache* cache)
    : Data::ElementBase(idOf(base))
    , m_base(base)
    , m_cache(cache)
    , m_attributes(idOf(base))
{
    checkPointers();
    initialize(uri, nullptr);
    storeIdentity(uri);
}

ElementAccess::ElementAccess(const DBData::XObject::Ptr& base, JSONDataCache::JSONDataCache* cache)
    : Data::ElementBase(idOf(base))
    , m_base(base)
    , m_cache(cache)
    , m_attributes(idOf(base))
{
    checkPointers();
    const DBData::AttributeValuePtr uriValue = m_base->getValue(KEY_URI);
    if (uriValue.isNull())
    {
        throw Poco::NullPointerException("Missing 'uri' attribute in XObject pointer");
    }
    const Poco::URI uri(uriValue->getValue().extract<std::string>());
    initialize(uri, nullptr);
    storeIdentity(uri);
}

ElementAccess::ElementAccess(const ElementAccess& other)
    : Data::ElementBase(other)
    , m_base(other.m_base)
    , m_cache(other.m_cache)
    , m_attributes(Data::AttributeContainer::deepCopy(other.m_attributes))
{
}

ElementAccess& ElementAccess::operator=(const ElementAccess& other)
{
    if (this != &other)
    {
        Data::ElementBase::operator=(other);
        m_base = other.m_base;
        m_cache = other.m_cache;
        m_attributes = Data::AttributeContainer::deepCopy(other.m_attributes);
    }
    return *this;
}

ElementAccess::~ElementAccess() = default;

Data::AttributeMap ElementAccess::getAttributes() const
{
    initialiseAttributes();
    return m_attributes.getAttributes();
}

Data::AttributeBase::Ptr ElementAccess::getAttribute(const std::string& name) const
{
    initialiseAttribute(name);
    return m_attributes.getAttribute(name);
}

bool ElementAccess::hasValue(const std::string& name) const
{
    return m_attributes.contains(name) || !getAttribute(name).isNull();
}

std::size_t ElementAccess::size() const
{
    return m_attributes.size();
}

const Data::AttributeValueBase* ElementAccess::getValue(const std::string& name) const
{
    const Data::AttributeBase::Ptr attribute = getAttribute(name);
    return attribute.isNull() ? nullptr : attribute->getValueBase();
}

std::string ElementAccess::getName() const
{
    const Data::AttributeBase::Ptr attribute = getAttribute(KEY_NAME);
    if (attribute.isNull())
    {
        return std::string();
    }
    const auto* text = dynamic_cast<const Data::AttributeValueStringableBase*>(attribute->getValueBase());
    return text == nullptr ? std::string() : text->toString();
}

Poco::UUID ElementAccess::getId() const
{
    return m_attributes.getValue<Data::AttributeValueUUID>(KEY_ID).get();
}

Poco::URI ElementAccess::getUri() const
{
    return m_attributes.getValue<Data::AttributeValueURI>(KEY_URI).get();
}

Poco::JSON::Object::Ptr ElementAccess::toJSON(int level) const
{
    initialiseAttributes();
    for (const auto& entry : m_attributes)
    {
        if (!entry.second.isNull() && entry.second->getValueBase() != nullptr)
        {
            checkAndResolveObjRef(*entry.second->getValueBase());
        }
    }
    return m_attributes.toJSON(level);
}

Poco::JSON::Object::Ptr ElementAccess::toJSON(const std::vector<std::string>& names) const
{
    initialiseAttributes();
    for (const std::string& name : names)
    {
        Data::AttributeValueBase* value = m_attributes.getValue(name);
        if (value != nullptr)
        {
            checkAndResolveObjRef(*value);
        }
    }
    return m_attributes.toJSON(names);
}

void ElementAccess::initialiseAttributes() const
{
    if (m_base.isNull())
    {
        throw Poco::NullPointerException("Invalid XObject pointer");
    }
    // Empty values are never converted, so an object with one repeats this loop without effect.
    const DBData::AttributeValueList& values = m_base->getAttributeValues();
    if (values.size() == m_attributes.size())
    {
        return;
    }
    for (const DBData::AttributeValuePtr& value : values)
    {
        if (value.isNull())
        {
            poco_bugcheck_msg("Empty entry in the attribute values of an XObject");
        }
        if (!value->hasValue() || m_attributes.contains(value->getName()))
        {
            continue;
        }
        addConverted(*value);
    }
}

void ElementAccess::initialiseAttribute(const std::string& name) const
{
    if (m_attributes.contains(name))
    {
        return;
    }
    if (m_base.isNull())
    {
        throw Poco::NullPointerException("Invalid XObject pointer");
    }
    const DBData::AttributeValuePtr value = m_base->getValue(name);
    if (value.isNull() || !value->hasValue())
    {
        return;
    }
    addConverted(*value);
}

void ElementAccess::checkPointers() const
{
    if (m_base.isNull())
    {
        throw Poco::NullPointerException("Invalid XObject pointer");
    }
    if (m_cache == nullptr)
    {
        throw Poco::NullPointerException("Invalid JSONDataCache pointer");
    }
}

void ElementAccess::storeIdentity(const Poco::URI& uri)
{
    m_attributes.setValue(KEY_ID, Data::AttributeValueUUID(m_base->getId().get()));
    m_attributes.setValue(KEY_URI, Data::AttributeValueURI(uri));
}

void ElementAccess::addConverted(const DBData::AttributeValue& value) const
{
    Data::AttributeBase::Ptr attribute(DBData::OrviDataConverter::createAttribute(m_base->getDBID(), value));
    if (attribute.isNull() || !m_attributes.setAttribute(std::move(attribute)))
    {
        poco_bugcheck_msg("Converted XObject attribute refused by the AttributeContainer");
    }
}

void ElementAccess::checkAndResolveObjRef(Data::AttributeValueBase& value) const
{
    if (value.isArray())
    {
        auto* array = dynamic_cast<Data::AttributeValueArrayBase*>(&value);
        if (array == nullptr)
        {
            poco_bugcheck_msg("Array value outside the AttributeValueArrayBase branch");
        }
        for (Data::AttributeValueBase* element : array->getValueArray())
        {
            checkAndResolveObjRef(*element);
        }
        return;
    }
    if (!value.isXObjReference())
    {
        return;
    }

    auto* reference = dynamic_cast<Data::AttributeValueObject<Data::XObjectGeneric>*>(&value);
    if (reference == nullptr)
    {
        poco_bugcheck_msg("Reference value that does not hold an XObjectGeneric");
    }
    Data::XObjectGeneric& object = reference->get();
    if (object.size() >= RESOLVED_REFERENCE_SIZE)
    {
        return;
    }

    DBData::XObject selected((DBData::Element::Ptr()));
    if (!m_cache->selectXObjectByID(object.id(), selected, REFERENCE_SELECTION_DEPTH, false))
    {
        LOG_ERROR("Failed to resolve XObject references. JSONDataCache::selectXObjectByID was unsuccessful.");
        return;
    }
    object = DBData::OrviDataConverter::createXObjectGeneric(selected);
}

} // namespace Orvi::Service::DataAccess
