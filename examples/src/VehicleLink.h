#pragma once

#include "DataAccess/DBDataAccessPoint.h"
#include "Mapping/DataHandler/ServiceDataHandlerOutputBaseImplDBData.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "MappingServiceManager.h"
#include "OperationResult.h"
#include "SubscriptionHandling/SubscriptionTrigger.h"

#include <Poco/JSON/Object.h>
#include <Poco/Types.h>

#include <map>
#include <string>
#include <utility>

namespace Orvi::Example
{

/// The vehicle as the example simulates it, talking to the database as a data handler does: by its own
/// object ids, through executeMappingToDb. It confirms the cabin changes that users asked for, lets the
/// cabin temperatures drift toward their set points and plays a track. Every method runs on the worker.
class VehicleLink : public Mapping::DataHandler::ServiceDataHandlerOutputBaseImplDBData
{
public:
    static constexpr Poco::Int32 PLAYER_ID = 0x0200;
    /// The object id of the player, the only object the vehicle creates.
    static constexpr double START_TEMPERATURE = 19.0;
    /// The temperature of every zone when the simulation starts, in degrees Celsius.
    static constexpr double TEMPERATURE_STEP = 0.1;
    /// How far a zone's temperature moves toward its set point in one step.

    VehicleLink(Mapping::MappingServiceJSONDataCache& cache, Service::SubscriptionTrigger* trigger);
    /// The cache, and the trigger if given, must outlive the link.

    ~VehicleLink() override;

    void connect();
    /// Maps the climate zones that the store holds and creates the player on its first track. Call once,
    /// after the sample data are in.

    void step();
    /// One tick of the simulation: each zone one TEMPERATURE_STEP closer to its set point, the player one
    /// second further (from the start again at the end of the track).

    Mapping::OperationResult::Enum confirm(const std::string& service, const std::string& resource,
                                           const std::string& uuid, const Poco::JSON::Object::Ptr& values);
    /// Writes values that a controller has applied into the object; the first confirmation of an object
    /// maps it to an object id of the vehicle. ErrorOnUpdate for an object the store does not hold.

    double temperatureOf(const std::string& uuid) const;
    /// The simulated temperature of a zone; 0 for an unknown one.

    Poco::UInt32 playerPosition() const { return m_playerPosition; }

    const std::string& playerUuid() const { return m_playerUuid; }
    /// Empty until connect() has created the player.

private:
    struct Zone
    {
        Poco::Int32 objId = 0;
        double temperature = START_TEMPERATURE;
        double setPoint = START_TEMPERATURE;
    };

    Poco::Int32 objectIdFor(const std::string& service, const std::string& resource, const std::string& uuid);
    void startPlayer();
    Mapping::OperationResult::Enum deliver(Poco::Int32 objId, const std::string& service,
                                           const std::string& resource,
                                           const Poco::JSON::Object::Ptr& values);

    Service::DBDataAccessPoint m_access;
    Mapping::MappingServiceManager m_manager;
    std::map<std::pair<std::string, std::string>, Poco::Int32> m_objIdsByAddress;
    std::map<std::string, Zone> m_zones;
    Poco::Int32 m_nextObjId = 0x0100;
    Poco::UInt32 m_playerPosition = 0;
    Poco::UInt32 m_trackDuration = 0;
    std::string m_playerUuid;
};

} // namespace Orvi::Example
