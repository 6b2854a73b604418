#include "VehicleStep.h"

namespace Orvi::Example
{

VehicleStep::VehicleStep(VehicleLink& link)
    : m_link(link)
{
}

VehicleStep::~VehicleStep() = default;

void VehicleStep::processData()
{
    m_link.step();
}

} // namespace Orvi::Example
