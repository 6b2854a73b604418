#include "JSONDataCache/DBData/Resource.h"

#include "JSONDataCache/DBData/Service.h"

#include <Poco/Bugcheck.h>

namespace Orvi::DBData
{

Resource::Resource(Service& owner)
    : parent(owner)
{
}

Resource::~Resource() = default;

Resource& Resource::operator=(const Resource& other)
{
    // The parent reference cannot be reseated, so the service behind it takes the other's state.
    parent = other.parent;
    if (this != &other)
    {
        element = other.element;
    }
    description = other.description;
    spec = other.spec;
    endpoints = other.endpoints;
    return *this;
}

void Resource::setElement(const Poco::SharedPtr<Element>& newElement)
{
    if (newElement.isNull())
    {
        return;
    }
    if (&newElement->getResource() != this)
    {
        poco_bugcheck_msg("Can not add element with different parent");
    }
    element = newElement;
}

} // namespace Orvi::DBData
