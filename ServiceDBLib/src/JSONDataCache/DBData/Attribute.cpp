#include "JSONDataCache/DBData/Attribute.h"

namespace Orvi::DBData
{

Attribute::Attribute(const std::string& attributeName)
    : name(attributeName)
{
}

Attribute::~Attribute() = default;

} // namespace Orvi::DBData
