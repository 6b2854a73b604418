#include "Data/ResourceBase.h"

#include "Data/AttributeValueStringableBase.h"

#include <Poco/Exception.h>

namespace Orvi::Data
{

const std::string ResourceBase::KEY_DESCRIPTION = "description";

ResourceBase::ResourceBase(XObjectId id)
    : XObjectBase(id)
{
}

ResourceBase::~ResourceBase() = default;

std::string ResourceBase::getDescription() const
{
    const AttributeValueBase* value = getValue(KEY_DESCRIPTION);
    if (value == nullptr)
    {
        return {};
    }
    const auto* text = dynamic_cast<const AttributeValueStringableBase*>(value);
    if (text == nullptr)
    {
        throw Poco::InvalidAccessException("Invalid type for attribute " + KEY_DESCRIPTION +
                                           " in AttributeContainer");
    }
    return text->toString();
}

std::string ResourceBase::getSpecification() const
{
    return {};
}

bool ResourceBase::hasElement(XObjectId) const
{
    return false;
}

Poco::SharedPtr<ElementBase> ResourceBase::getElement(XObjectId) const
{
    return {};
}

std::vector<Poco::SharedPtr<ElementBase>> ResourceBase::getElements() const
{
    return {};
}

} // namespace Orvi::Data
