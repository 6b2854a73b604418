#include "JSONDataCache/DBData/AttributeIndex.h"

namespace Orvi::DBData
{

template class AttributeIndex<Index::SimpleValue>;
template class AttributeIndex<Index::ArrayValue>;

} // namespace Orvi::DBData
