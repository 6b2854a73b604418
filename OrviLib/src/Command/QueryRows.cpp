#include "Command/QueryRows.h"

namespace Orvi::Command
{

QueryRows::~QueryRows() = default;

} // namespace Orvi::Command
