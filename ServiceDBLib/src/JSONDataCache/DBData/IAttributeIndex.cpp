#include "JSONDataCache/DBData/IAttributeIndex.h"

#include "Logging/LogStream.h"

namespace Orvi::DBData
{

IAttributeIndex::IAttributeIndex(const Attribute& attribute)
    : m_attribute(attribute)
{
}

IAttributeIndex::~IAttributeIndex() = default;

void IAttributeIndex::printLogError(const std::string& msg)
{
    LOG_ERROR(msg);
}

} // namespace Orvi::DBData
