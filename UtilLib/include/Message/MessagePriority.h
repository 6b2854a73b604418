#pragma once

namespace Orvi::Util
{

/// Priorities of worker messages: the lower number runs first.
enum MESSAGE_PRIO
{
    MESSAGE_PRIO_URGENT = 10,
    MESSAGE_PRIO_HIGH = 15,
    MESSAGE_PRIO_NORMAL = 20
};

} // namespace Orvi::Util
