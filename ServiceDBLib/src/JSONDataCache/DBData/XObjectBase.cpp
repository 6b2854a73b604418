#include "JSONDataCache/DBData/XObjectBase.h"

#include <Poco/UUIDGenerator.h>

namespace Orvi::DBData
{

XObjectBase::~XObjectBase() = default;

void XObjectBase::generateId()
{
    // One generator for the process; it locks internally, and a function-local static is created once.
    static Poco::UUIDGenerator generator;
    uuid.assign(generator.createRandom());
}

} // namespace Orvi::DBData
