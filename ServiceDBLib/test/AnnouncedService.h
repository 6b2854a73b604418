#pragma once

#include "Data/MicroServiceInfo.h"

namespace ServiceDB::Test
{

// A description of a service of the kind an embedding process derives for its own bookkeeping.
class AnnouncedService : public Orvi::MicroServiceInfo
{
public:
    explicit AnnouncedService(const Orvi::MicroServiceInfo& info)
        : Orvi::MicroServiceInfo(info)
    {
    }
};

} // namespace ServiceDB::Test
