#include "DataAccess/ResourceAccess.h"

#include "Data/AttributeValueStringable.h"
#include "Data/XObjectBase.h"
#include "DataAccess/ElementAccess.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/XObject.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>

#include <string>
#include <vector>

namespace Orvi::Service::DataAccess
{

namespace
{

// Objects are read with their references and the identity of what these refer to.
const Poco::Int32 ELEMENT_SELECTION_DEPTH = 1;

const std::string INVALID_RESOURCE_POINTER = "Invalid resource pointer";

Data::XObjectId idOf(const DBData::Resource::Ptr& base)
{
    return base.isNull() ? Data::XObjectId(-1) : base->getDBID();
}

} // namespace

ResourceAccess::ResourceAccess(const DBData::Resource::Ptr& base, const std::string& service,
                               JSONDataCache::JSONDataCache& cache)
    : Data::GenericObject<Data::ResourceBase>(idOf(base))
    , m_serviceName(service)
    , m_base(base)
    , m_cache(&cache)
{
    if (m_base.isNull() || m_base->getElement().isNull())
    {
        throw Poco::NullPointerException(INVALID_RESOURCE_POINTER);
    }
    initAttributes();
}

ResourceAccess::~ResourceAccess() = default;

std::string ResourceAccess::getDescription() const
{
    return m_attrContainer.getValue<Data::AttributeValueString>(KEY_DESCRIPTION).get();
}

std::string ResourceAccess::getSpecification() const
{
    return row().getSpec();
}

bool ResourceAccess::hasElement(Data::XObjectId id) const
{
    return row().getElement()->hasXObject(id);
}

Poco::SharedPtr<Data::ElementBase> ResourceAccess::getElement(Data::XObjectId id) const
{
    if (!hasElement(id))
    {
        return {};
    }
    const DBData::XObject::Ptr object = m_cache->selectXObject(id, ELEMENT_SELECTION_DEPTH);
    if (object.isNull())
    {
        return {};
    }
    return new ElementAccess(object, m_cache);
}

std::vector<Poco::SharedPtr<Data::ElementBase>> ResourceAccess::getElements() const
{
    const std::vector<long> ids = row().getElement()->getAllXObjectIds();
    std::vector<Poco::SharedPtr<Data::ElementBase>> elements;
    elements.reserve(ids.size());
    for (const long id : ids)
    {
        const DBData::XObject::Ptr object = m_cache->selectXObject(id, ELEMENT_SELECTION_DEPTH);
        if (object.isNull())
        {
            throw Poco::NotFoundException("XObject with ID " + std::to_string(id) +
                                          " not available for resource " + getName());
        }
        elements.emplace_back(new ElementAccess(object, m_cache));
    }
    return elements;
}

void ResourceAccess::initAttributes()
{
    m_attrContainer.setValue(KEY_NAME, Data::AttributeValueString(m_base->getName()));
    m_attrContainer.setValue(KEY_ID, Data::AttributeValueUUID(m_base->getId().get()));
    // Service name and UUID without a separator: clients of this view rely on this form.
    m_attrContainer.setValue(KEY_URI,
                             Data::AttributeValueURI(Poco::URI("/" + m_serviceName + m_base->getUUID())));
    m_attrContainer.setValue(KEY_DESCRIPTION, Data::AttributeValueString(m_base->getDescription()));
}

const DBData::Resource& ResourceAccess::row() const
{
    if (m_base.isNull())
    {
        throw Poco::NullPointerException(INVALID_RESOURCE_POINTER);
    }
    return *m_base;
}

} // namespace Orvi::Service::DataAccess
