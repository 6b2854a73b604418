#include "Data/AttributeValueObjectBase.h"

namespace Orvi::Data
{

AttributeValueObjectBase::~AttributeValueObjectBase() = default;

bool AttributeValueObjectBase::isXObjReference() const
{
    return true;
}

} // namespace Orvi::Data
