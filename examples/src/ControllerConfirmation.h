#pragma once

#include "Message/DataMessageBase.h"
#include "VehicleLink.h"

#include <Poco/JSON/Object.h>

#include <string>

namespace Orvi::Example
{

/// A worker message in which a vehicle controller confirms a change it was asked for: the vehicle
/// delivers the values it applied as a data handler does. It holds copies only, so that nothing of
/// the request it came from has to live on.
class ControllerConfirmation : public Util::DataMessageBase
{
public:
    ControllerConfirmation(VehicleLink& vehicle, const std::string& service, const std::string& resource,
                           const std::string& uuid, Poco::JSON::Object::Ptr values);
    /// The vehicle must outlive the message.

    void processData() override;
    /// Logs "Info: Controller confirmed /service/resource/uuid" or, when the store refuses the values,
    /// "Warning: Controller could not apply /service/resource/uuid".

protected:
    ~ControllerConfirmation() override;

private:
    VehicleLink& m_vehicle;
    const std::string m_service;
    const std::string m_resource;
    const std::string m_uuid;
    const Poco::JSON::Object::Ptr m_values;
};

} // namespace Orvi::Example
