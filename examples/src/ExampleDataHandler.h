#pragma once

#include "IServiceDataHandler.h"
#include "Mapping/MappingServiceJSONDataCache.h"
#include "Message/MessageSync.h"
#include "VehicleLink.h"

#include <string>
#include <vector>

namespace Orvi::Example
{

/// The example's bridge to the rest of the vehicle. The audio library is local data: changes are
/// stored at once, playlists can be created and deleted, tracks, albums and artists cannot be deleted.
/// The cabin belongs to the vehicle's controllers: a change is taken over (202) and its values reach the
/// store a moment later on the worker thread, as a controller's confirmation would.
class ExampleDataHandler : public Mapping::IServiceDataHandler
{
public:
    static const std::string AUDIO;
    /// "audio"
    static const std::string CABIN;
    /// "cabin"
    static const std::string PLAYLISTS;
    /// "playlists"

    explicit ExampleDataHandler(Util::MessageSync& worker);
    /// The worker must outlive the handler and run the messages it is given.

    void attach(Mapping::MappingServiceJSONDataCache& cache, VehicleLink& vehicle);
    /// The cache that audio values are delivered to, and the vehicle that confirms cabin changes. The
    /// cache is constructed with this handler, so both come afterwards; they must outlive the handler
    /// and every message the handler has queued.

    Mapping::OperationResult::Enum updateToDb(const std::string& service, const std::string& resource,
                                              const Mapping::XObject& xobject,
                                              Mapping::ProcessingData& data) override;
    /// ObjectUpdated for a new playlist, whose values are stored already; ErrorOnUpdate elsewhere.

    Mapping::OperationResult::Enum updateToMapper(const std::string& service, const std::string& resource,
                                                  const Mapping::XObject& xobject,
                                                  Mapping::ProcessingData& data) override;
    /// Audio: stores the posted values at once and answers ObjectUpdated. Cabin: queues them for the
    /// worker and answers ObjectProcessed. ErrorOnUpdate without a cache, a JSON object or a known
    /// service, and when the audio values do not enter the store.

    Mapping::OperationResult::Enum beforeDeleteObject(const std::string& service, const std::string& resource,
                                                      const Mapping::XObject& xobject) override;
    /// ObjectUpdated for a playlist; ErrorOnUpdate for everything else.

    void afterDeleteObject(const std::string& service, const std::string& resource,
                           const Mapping::XObject& xobject) override;

    Mapping::OperationResult::Enum
    beforeDeleteAttributes(const std::string& service, const std::string& resource,
                           const Mapping::XObject& xobject,
                           const std::vector<std::string>& attributes) override;
    /// ErrorOnUpdate: no attribute is cleared from outside.

    void afterDeleteAttributes(const std::string& service, const std::string& resource,
                               const Mapping::XObject& xobject,
                               const std::vector<std::string>& attributes) override;

private:
    Util::MessageSync& m_worker;
    Mapping::MappingServiceJSONDataCache* m_cache = nullptr;
    VehicleLink* m_vehicle = nullptr;
};

} // namespace Orvi::Example
