#include "Message/DataMessageBase.h"

namespace Orvi::Util
{

DataMessageBase::~DataMessageBase() = default;

void DataMessageBase::destroyData() {}

} // namespace Orvi::Util
