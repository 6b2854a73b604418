#include "Data/AttributeValueArrayBase.h"

namespace Orvi::Data
{

AttributeValueArrayBase::~AttributeValueArrayBase() = default;

bool AttributeValueArrayBase::isArray() const
{
    return true;
}

} // namespace Orvi::Data
