#include "Data/AttributeBase.h"

namespace Orvi::Data
{

AttributeBase::AttributeBase(XObjectId parentId)
    : m_parentId(parentId)
{
}

AttributeBase::~AttributeBase() = default;

XObjectId AttributeBase::parent() const
{
    return m_parentId;
}

bool AttributeBase::isEmpty() const
{
    return getValueBase() == nullptr;
}

} // namespace Orvi::Data
