#include "Data/AttributeValueBase.h"

#include <Poco/Exception.h>

namespace Orvi::Data
{

AttributeValueBase::~AttributeValueBase() = default;

Poco::Dynamic::Var AttributeValueBase::toJSON(int) const
{
    return asGeneric();
}

bool AttributeValueBase::isXObjReference() const
{
    return false;
}

bool AttributeValueBase::isArray() const
{
    return false;
}

int AttributeValueBase::compare(const AttributeValueBase& other) const
{
    try
    {
        const GenericValue mine = asGeneric();
        const GenericValue theirs = other.asGeneric();
        if (mine < theirs)
        {
            return -1;
        }
        if (theirs < mine)
        {
            return 1;
        }
    }
    catch (const Poco::Exception&)
    {
        // Var cannot convert one side for ordering (an object, say); such values count as equal.
    }
    return 0;
}

} // namespace Orvi::Data
