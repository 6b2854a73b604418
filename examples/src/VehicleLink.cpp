#include "VehicleLink.h"

#include "Data/AttributeValueBase.h"
#include "Data/ElementBase.h"
#include "ExampleDataHandler.h"
#include "Logging/LogStream.h"
#include "SampleData.h"

#include <cmath>

namespace Orvi::Example
{

using Mapping::OperationResult;

namespace
{

const std::string ZONES = "zones";
const std::string TRACKS = "tracks";
const std::string PLAYER = "player";
const std::string SET_POINT = "setPoint";
const std::string TEMPERATURE = "temperature";
const std::string POSITION = "position";

// Tenths of a degree, so that repeated steps land on the values a sensor of that resolution reports.
double roundToTenth(double value)
{
    return std::round(value * 10.0) / 10.0;
}

} // namespace

VehicleLink::VehicleLink(Mapping::MappingServiceJSONDataCache& cache, Service::SubscriptionTrigger* trigger)
    : ServiceDataHandlerOutputBaseImplDBData(&cache, trigger)
    , m_access(cache)
{
    setMappingServiceManager(&m_manager);
}

VehicleLink::~VehicleLink() = default;

void VehicleLink::connect()
{
    for (const char* name : {"Driver", "Passenger"})
    {
        const Mapping::XObjectId dbId = getDBIdForObject(ExampleDataHandler::CABIN, ZONES, name);
        const Data::ElementBase::Ptr zone = dbId < 0 ? Data::ElementBase::Ptr() : m_access.getElement(dbId);
        if (zone.isNull())
        {
            continue;
        }
        const std::string uuid = zone->getId().toString();
        Zone& state = m_zones[uuid];
        state.objId = objectIdFor(ExampleDataHandler::CABIN, ZONES, uuid);
        if (const Data::AttributeValueBase* setPoint = zone->getValue(SET_POINT))
        {
            state.setPoint = setPoint->asGeneric().convert<double>();
        }
        Poco::JSON::Object::Ptr values(new Poco::JSON::Object);
        values->set(TEMPERATURE, state.temperature);
        deliver(state.objId, ExampleDataHandler::CABIN, ZONES, values);
    }
    startPlayer();
}

void VehicleLink::startPlayer()
{
    const Data::ElementBase::Ptr track =
        m_access.getElement(ExampleDataHandler::AUDIO, TRACKS, SampleData::trackUuid(0));
    if (track.isNull())
    {
        return;
    }
    const Data::AttributeValueBase* duration = track->getValue("duration");
    m_trackDuration = duration != nullptr ? duration->asGeneric().convert<Poco::UInt32>() : 0;
    Poco::JSON::Object::Ptr values(new Poco::JSON::Object);
    values->set("name", "Now playing");
    values->set("track", static_cast<long>(track->id()));
    values->set(POSITION, m_playerPosition);
    values->set("state", "playing");
    if (executeMappingToDb(PLAYER_ID, ExampleDataHandler::AUDIO, PLAYER, 0, values, m_playerUuid) !=
        OperationResult::ObjectCreated)
    {
        m_playerUuid.clear();
        m_trackDuration = 0;
    }
}

void VehicleLink::step()
{
    for (auto& entry : m_zones)
    {
        Zone& zone = entry.second;
        const double gap = zone.setPoint - zone.temperature;
        if (std::fabs(gap) < TEMPERATURE_STEP / 2)
        {
            continue;
        }
        zone.temperature = roundToTenth(zone.temperature + (gap > 0 ? TEMPERATURE_STEP : -TEMPERATURE_STEP));
        Poco::JSON::Object::Ptr values(new Poco::JSON::Object);
        values->set(TEMPERATURE, zone.temperature);
        deliver(zone.objId, ExampleDataHandler::CABIN, ZONES, values);
    }
    if (m_trackDuration != 0)
    {
        m_playerPosition = (m_playerPosition + 1) % m_trackDuration;
        Poco::JSON::Object::Ptr values(new Poco::JSON::Object);
        values->set(POSITION, m_playerPosition);
        deliver(PLAYER_ID, ExampleDataHandler::AUDIO, PLAYER, values);
    }
}

OperationResult::Enum VehicleLink::confirm(const std::string& service, const std::string& resource,
                                           const std::string& uuid, const Poco::JSON::Object::Ptr& values)
{
    const Poco::Int32 objId = objectIdFor(service, resource, uuid);
    if (objId == 0)
    {
        return OperationResult::ErrorOnUpdate;
    }
    const auto zone = m_zones.find(uuid);
    if (zone != m_zones.end() && values->has(SET_POINT))
    {
        zone->second.setPoint = values->getValue<double>(SET_POINT);
    }
    return deliver(objId, service, resource, values);
}

double VehicleLink::temperatureOf(const std::string& uuid) const
{
    const auto zone = m_zones.find(uuid);
    return zone != m_zones.end() ? zone->second.temperature : 0.0;
}

Poco::Int32 VehicleLink::objectIdFor(const std::string& service, const std::string& resource,
                                     const std::string& uuid)
{
    const auto known = m_objIdsByAddress.find({service + "/" + resource, uuid});
    if (known != m_objIdsByAddress.end())
    {
        return known->second;
    }
    const Data::ElementBase::Ptr object = m_access.getElement(service, resource, uuid);
    if (object.isNull())
    {
        return 0;
    }
    const Poco::Int32 objId = m_nextObjId++;
    m_manager.idMapper().addXObjId(objId, object->id(), 0);
    m_objIdsByAddress.emplace(std::make_pair(service + "/" + resource, uuid), objId);
    return objId;
}

OperationResult::Enum VehicleLink::deliver(Poco::Int32 objId, const std::string& service,
                                           const std::string& resource, const Poco::JSON::Object::Ptr& values)
{
    std::string uuid;
    return executeMappingToDb(objId, service, resource, 0, values, uuid);
}

} // namespace Orvi::Example
