#include "Data/MicroServiceInfo.h"

#include "Data/AttributeValue.h"
#include "Data/AttributeValueStringable.h"

namespace Orvi
{

MicroServiceInfo::MicroServiceInfo(Data::XObjectId id)
    : Data::GenericObject<Data::ServiceBase>(id)
{
}

MicroServiceInfo::MicroServiceInfo(const Poco::UUID& uuid, const Poco::URI& uri, const std::string& name,
                                   unsigned int port, const std::string& description)
    : Data::GenericObject<Data::ServiceBase>(name, uuid, uri, -1)
{
    setPort(port);
    setDescription(description);
}

MicroServiceInfo::~MicroServiceInfo() = default;

Data::AttributeValueStringArray MicroServiceInfo::getPrivileges() const
{
    return getStringArray(KEY_PRIVILEGES);
}

Data::AttributeValueStringArray MicroServiceInfo::getServiceCategories() const
{
    return getStringArray(KEY_CATEGORIES);
}

Data::AttributeValueStringArray MicroServiceInfo::getVersions() const
{
    return getStringArray(KEY_VERSIONS);
}

std::string MicroServiceInfo::getDescription() const
{
    if (!m_attrContainer.contains(KEY_DESCRIPTION))
    {
        return {};
    }
    return m_attrContainer.getValue<Data::AttributeValueString>(KEY_DESCRIPTION).get();
}

unsigned int MicroServiceInfo::getPort() const
{
    if (!m_attrContainer.contains(KEY_PORT))
    {
        return 0;
    }
    return static_cast<unsigned int>(
        m_attrContainer.getValue<Data::AttributeValueIntegerUnsigned>(KEY_PORT).get());
}

std::string MicroServiceInfo::getSpecification() const
{
    return {};
}

void MicroServiceInfo::updateServiceId(const Poco::UUID& id)
{
    setId(id);
}

std::vector<unsigned int> MicroServiceInfo::getAllPorts() const
{
    if (!m_attrContainer.contains(KEY_PORT))
    {
        return {};
    }
    return {getPort()};
}

std::vector<Poco::SharedPtr<Data::ResourceBase>> MicroServiceInfo::getResources() const
{
    return {};
}

void MicroServiceInfo::setPrivileges(const Data::AttributeValueStringArray& privileges)
{
    m_attrContainer.setValue(KEY_PRIVILEGES, privileges);
}

void MicroServiceInfo::setServiceCategories(const Data::AttributeValueStringArray& categories)
{
    m_attrContainer.setValue(KEY_CATEGORIES, categories);
}

void MicroServiceInfo::setVersions(const Data::AttributeValueStringArray& versions)
{
    m_attrContainer.setValue(KEY_VERSIONS, versions);
}

void MicroServiceInfo::setDescription(const std::string& description)
{
    m_attrContainer.setValue(KEY_DESCRIPTION, Data::AttributeValueString(description));
}

void MicroServiceInfo::setPort(unsigned int port)
{
    m_attrContainer.setValue(KEY_PORT, Data::AttributeValueIntegerUnsigned(port));
}

std::string MicroServiceInfo::getIdString() const
{
    return getId().toString();
}

Data::AttributeValueStringArray MicroServiceInfo::getStringArray(const std::string& key) const
{
    if (!m_attrContainer.contains(key))
    {
        return {};
    }
    return m_attrContainer.getValue<Data::AttributeValueStringArray>(key);
}

} // namespace Orvi
