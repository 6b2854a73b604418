#pragma once

#include "Array/IArrayIndexManager.h"

namespace Orvi::Mapping
{

/// What a process's handlers share beyond a single service.
class IOrviServiceGeneral
{
public:
    virtual ~IOrviServiceGeneral() = default;

    virtual Array::IArrayIndexManager* getArrayIndexManager() = 0;
    /// Not owned by the caller.
};

} // namespace Orvi::Mapping
