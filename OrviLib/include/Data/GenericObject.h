#pragma once

#include "Data/AttributeBase.h"
#include "Data/AttributeContainer.h"
#include "Data/AttributeValueStringable.h"
#include "Data/DataTypes.h"
#include "Data/ElementBase.h"
#include "Data/XObjectBase.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

namespace Orvi::Data
{

/// A typed object of the interface Base whose attributes live in its own container. Copies are deep:
/// they share no attribute or value with the original.
template <typename Base>
class GenericObject : public Base
{
public:
    explicit GenericObject(XObjectId id = -1);
    /// An object with no attributes; id is its own and its container's parent id.

    GenericObject(const std::string& name, const Poco::UUID& uuid, const Poco::URI& uri, XObjectId parentId);
    /// Stores uuid, uri and name. A non-empty uri must hold the text of uuid in its path, else
    /// Poco::DataException is raised.

    template <typename B = Base, typename = std::enable_if_t<std::is_base_of_v<ElementBase, B>>>
    GenericObject(const std::string& service, const std::string& resource, const std::string& name,
                  const Poco::UUID& uuid, XObjectId id = -1);
    /// An element of service and resource, with the URI "/service/resource/uuid".

    template <typename B = Base, typename = std::enable_if_t<std::is_base_of_v<ElementBase, B>>>
    GenericObject(const Poco::URI& uri, const std::string& name, XObjectId id = -1);
    /// An element at uri ("/service/resource/uuid"); the UUID is stored when the URI has one.

    GenericObject(const GenericObject& other);
    GenericObject(GenericObject&&) = default;
    GenericObject& operator=(const GenericObject& other);
    GenericObject& operator=(GenericObject&&) = default;
    ~GenericObject() override = default;

    AttributeMap getAttributes() const override;
    AttributeBase::Ptr getAttribute(const std::string& name) const override;
    bool hasValue(const std::string& name) const override;
    std::size_t size() const override;
    const AttributeValueBase* getValue(const std::string& name) const override;

    std::string getName() const override;
    /// Raises Poco::InvalidAccessException when KEY_NAME is missing or holds no string.

    Poco::UUID getId() const override;
    /// Raises Poco::InvalidAccessException when KEY_ID is missing or holds no UUID.

    Poco::URI getUri() const override;
    /// Raises Poco::InvalidAccessException when KEY_URI is missing or holds no URI.

    Poco::JSON::Object::Ptr toJSON(int level) const override;
    Poco::JSON::Object::Ptr toJSON(const std::vector<std::string>& names) const override;

    const AttributeContainer& getAttributesRef() const;
    AttributeContainer& getAttributesRef();

    void setName(const std::string& name);
    void setId(const Poco::UUID& uuid);
    void setUri(const Poco::URI& uri);

    bool setAttribute(const AttributeBase& attribute);
    /// As AttributeContainer::setAttribute.

    bool setAttribute(AttributeBase::Ptr&& attribute);
    /// As AttributeContainer::setAttribute.

    bool removeValue(const std::string& name);

protected:
    AttributeContainer m_attrContainer;
};

using XObjectGeneric = GenericObject<XObjectBase>;
using ElementGeneric = GenericObject<ElementBase>;

template <typename Base>
GenericObject<Base>::GenericObject(XObjectId id)
    : Base(id)
    , m_attrContainer(id)
{
}

template <typename Base>
GenericObject<Base>::GenericObject(const std::string& name, const Poco::UUID& uuid, const Poco::URI& uri,
                                   XObjectId parentId)
    : Base(parentId)
    , m_attrContainer(parentId)
{
    if (!uri.empty() && uri.getPath().find(uuid.toString()) == std::string::npos)
    {
        throw Poco::DataException("Invalid XObject - URI and UUID mismatch");
    }
    setId(uuid);
    setUri(uri);
    setName(name);
}

template <typename Base>
template <typename B, typename>
GenericObject<Base>::GenericObject(const std::string& service, const std::string& resource,
                                   const std::string& name, const Poco::UUID& uuid, XObjectId id)
    : Base(id)
    , m_attrContainer(id)
{
    this->initialize(service, resource);
    setId(uuid);
    setUri(Poco::URI("/" + service + "/" + resource + "/" + uuid.toString()));
    setName(name);
}

template <typename Base>
template <typename B, typename>
GenericObject<Base>::GenericObject(const Poco::URI& uri, const std::string& name, XObjectId id)
    : Base(id)
    , m_attrContainer(id)
{
    std::string objectId;
    this->initialize(uri, &objectId);
    if (!objectId.empty())
    {
        setId(Poco::UUID(objectId));
    }
    setUri(uri);
    setName(name);
}

template <typename Base>
GenericObject<Base>::GenericObject(const GenericObject& other)
    : Base(other)
    , m_attrContainer(AttributeContainer::deepCopy(other.m_attrContainer))
{
}

template <typename Base>
GenericObject<Base>& GenericObject<Base>::operator=(const GenericObject& other)
{
    if (this != &other)
    {
        Base::operator=(other);
        m_attrContainer = AttributeContainer::deepCopy(other.m_attrContainer);
    }
    return *this;
}

template <typename Base>
AttributeMap GenericObject<Base>::getAttributes() const
{
    return m_attrContainer.getAttributes();
}

template <typename Base>
AttributeBase::Ptr GenericObject<Base>::getAttribute(const std::string& name) const
{
    return m_attrContainer.getAttribute(name);
}

template <typename Base>
bool GenericObject<Base>::hasValue(const std::string& name) const
{
    return m_attrContainer.getValue(name) != nullptr;
}

template <typename Base>
std::size_t GenericObject<Base>::size() const
{
    return m_attrContainer.size();
}

template <typename Base>
const AttributeValueBase* GenericObject<Base>::getValue(const std::string& name) const
{
    return m_attrContainer.getValue(name);
}

template <typename Base>
std::string GenericObject<Base>::getName() const
{
    return m_attrContainer.getValue<AttributeValueString>(XObjectBase::KEY_NAME).get();
}

template <typename Base>
Poco::UUID GenericObject<Base>::getId() const
{
    return m_attrContainer.getValue<AttributeValueUUID>(XObjectBase::KEY_ID).get();
}

template <typename Base>
Poco::URI GenericObject<Base>::getUri() const
{
    return m_attrContainer.getValue<AttributeValueURI>(XObjectBase::KEY_URI).get();
}

template <typename Base>
Poco::JSON::Object::Ptr GenericObject<Base>::toJSON(int level) const
{
    return m_attrContainer.toJSON(level);
}

template <typename Base>
Poco::JSON::Object::Ptr GenericObject<Base>::toJSON(const std::vector<std::string>& names) const
{
    return m_attrContainer.toJSON(names);
}

template <typename Base>
const AttributeContainer& GenericObject<Base>::getAttributesRef() const
{
    return m_attrContainer;
}

template <typename Base>
AttributeContainer& GenericObject<Base>::getAttributesRef()
{
    return m_attrContainer;
}

template <typename Base>
void GenericObject<Base>::setName(const std::string& name)
{
    m_attrContainer.setValue(XObjectBase::KEY_NAME, AttributeValueString(name));
}

template <typename Base>
void GenericObject<Base>::setId(const Poco::UUID& uuid)
{
    m_attrContainer.setValue(XObjectBase::KEY_ID, AttributeValueUUID(uuid));
}

template <typename Base>
void GenericObject<Base>::setUri(const Poco::URI& uri)
{
    m_attrContainer.setValue(XObjectBase::KEY_URI, AttributeValueURI(uri));
}

template <typename Base>
bool GenericObject<Base>::setAttribute(const AttributeBase& attribute)
{
    return m_attrContainer.setAttribute(attribute);
}

template <typename Base>
bool GenericObject<Base>::setAttribute(AttributeBase::Ptr&& attribute)
{
    return m_attrContainer.setAttribute(std::move(attribute));
}

template <typename Base>
bool GenericObject<Base>::removeValue(const std::string& name)
{
    return m_attrContainer.removeValue(name);
}

} // namespace Orvi::Data
