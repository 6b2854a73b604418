#include "JSONDataCache/DBData/Index/IndexEntry.h"

namespace Orvi::DBData::Index
{

IndexEntry::~IndexEntry() = default;

} // namespace Orvi::DBData::Index
