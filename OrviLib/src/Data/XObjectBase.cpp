#include "Data/XObjectBase.h"

namespace Orvi::Data
{

const std::string XObjectBase::KEY_ID = "id";
const std::string XObjectBase::KEY_URI = "uri";
const std::string XObjectBase::KEY_NAME = "name";

XObjectBase::XObjectBase(XObjectId id)
    : m_id(id)
{
}

XObjectBase::~XObjectBase() = default;

XObjectId XObjectBase::id() const
{
    return m_id;
}

bool XObjectBase::operator<(const XObjectBase& other) const
{
    return compareTo(other) < 0;
}

bool XObjectBase::operator>(const XObjectBase& other) const
{
    return compareTo(other) > 0;
}

bool XObjectBase::operator==(const XObjectBase& other) const
{
    return compareTo(other) == 0;
}

bool XObjectBase::operator!=(const XObjectBase& other) const
{
    return compareTo(other) != 0;
}

int XObjectBase::compareTo(const XObjectBase& other) const
{
    const int byId = compareEntry(other, KEY_ID);
    if (byId != 0)
    {
        return byId;
    }
    return compareEntry(other, KEY_NAME);
}

int XObjectBase::compareEntry(const XObjectBase& other, const std::string& key) const
{
    const AttributeValueBase* mine = getValue(key);
    const AttributeValueBase* theirs = other.getValue(key);
    if (mine == nullptr || theirs == nullptr)
    {
        return (mine != nullptr ? 1 : 0) - (theirs != nullptr ? 1 : 0);
    }
    const int result = mine->compare(*theirs);
    return result < 0 ? -1 : (result > 0 ? 1 : 0);
}

} // namespace Orvi::Data
