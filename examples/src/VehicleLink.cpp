#include "VehicleLink.h"

#include "ExampleDataHandler.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/XObject.h"
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
    , m_cache(cache)
{
    setMappingServiceManager(&m_manager);
}

VehicleLink::~VehicleLink() = default;

void VehicleLink::connect()
{
    for (const char* name : {"Driver", "Passenger"})
    {
        const Mapping::XObjectId dbId = getDBIdForObject(ExampleDataHandler::CABIN, ZONES, name);
        DBData::XObject zone{DBData::Element::Ptr()};
        if (dbId < 0 || !m_cache.selectXObjectByID(dbId, zone, 0, false))
        {
            continue;
        }
        const std::string uuid = zone.getId().toString();
        Zone& state = m_zones[uuid];
        state.objId = objectIdFor(ExampleDataHandler::CABIN, ZONES, uuid);
        const DBData::AttributeValuePtr setPoint = zone.getValue(SET_POINT);
        if (setPoint && !setPoint->getValue().isEmpty())
        {
            state.setPoint = setPoint->getValue().convert<double>();
        }
        Poco::JSON::Object::Ptr values(new Poco::JSON::Object);
        values->set(TEMPERATURE, state.temperature);
        deliver(state.objId, ExampleDataHandler::CABIN, ZONES, values);
    }
    startPlayer();
}

void VehicleLink::startPlayer()
{
    DBData::XObject track{DBData::Element::Ptr()};
    if (!m_cache.selectXObjectByUUID(ExampleDataHandler::AUDIO, TRACKS, SampleData::trackUuid(0), track, 0,
                                     false))
    {
        return;
    }
    const DBData::AttributeValuePtr duration = track.getValue("duration");
    m_trackDuration =
        duration && !duration->getValue().isEmpty() ? duration->getValue().convert<Poco::UInt32>() : 0;
    Poco::JSON::Object::Ptr values(new Poco::JSON::Object);
    values->set("name", "Now playing");
    values->set("track", static_cast<long>(track.getDBID()));
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
    DBData::XObject object{DBData::Element::Ptr()};
    if (!m_cache.selectXObjectByUUID(service, resource, uuid, object, 0, false))
    {
        return 0;
    }
    const Poco::Int32 objId = m_nextObjId++;
    m_manager.idMapper().addXObjId(objId, object.getDBID(), 0);
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
