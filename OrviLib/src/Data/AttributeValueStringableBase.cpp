#include "Data/AttributeValueStringableBase.h"

namespace Orvi::Data
{

AttributeValueStringableBase::~AttributeValueStringableBase() = default;

} // namespace Orvi::Data
