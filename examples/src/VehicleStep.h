#pragma once

#include "Message/DataMessageBase.h"
#include "VehicleLink.h"

namespace Orvi::Example
{

/// A worker message that lets the simulated vehicle take one step.
class VehicleStep : public Util::DataMessageBase
{
public:
    explicit VehicleStep(VehicleLink& link);
    /// The link must outlive the message.

    void processData() override;

protected:
    ~VehicleStep() override;

private:
    VehicleLink& m_link;
};

} // namespace Orvi::Example
