#pragma once

#include "IServiceDataHandler.h"
#include "Mapping/MappingServiceJSONDataCache.h"

#include <string>
#include <vector>

namespace Orvi::Registry
{

/// The registry's bridge to the rest of the vehicle, which has no part in its data: registrations are
/// stored as they are posted, created and deleted as a whole, and never lose a single attribute.
class RegistryDataHandler : public Mapping::IServiceDataHandler
{
public:
    void attach(Mapping::MappingServiceJSONDataCache& cache);
    /// The cache that posted values are stored in. It is built on this handler, so it comes afterwards;
    /// it must outlive the handler.

    Mapping::OperationResult::Enum updateToDb(const std::string& service, const std::string& resource,
                                              const Mapping::XObject& xobject,
                                              Mapping::ProcessingData& data) override;
    /// ObjectUpdated: a new registration's values are stored already.

    Mapping::OperationResult::Enum updateToMapper(const std::string& service, const std::string& resource,
                                                  const Mapping::XObject& xobject,
                                                  Mapping::ProcessingData& data) override;
    /// Stores the posted values at once and answers ObjectUpdated; ErrorOnUpdate without a cache or a
    /// JSON object, and when the values do not enter the store.

    Mapping::OperationResult::Enum beforeDeleteObject(const std::string& service, const std::string& resource,
                                                      const Mapping::XObject& xobject) override;
    /// ObjectUpdated: a registration may always be taken back.

    void afterDeleteObject(const std::string& service, const std::string& resource,
                           const Mapping::XObject& xobject) override;

    Mapping::OperationResult::Enum
    beforeDeleteAttributes(const std::string& service, const std::string& resource,
                           const Mapping::XObject& xobject,
                           const std::vector<std::string>& attributes) override;
    /// ErrorOnUpdate: a registration without its host or port would announce nothing.

    void afterDeleteAttributes(const std::string& service, const std::string& resource,
                               const Mapping::XObject& xobject,
                               const std::vector<std::string>& attributes) override;

private:
    Mapping::MappingServiceJSONDataCache* m_cache = nullptr;
};

} // namespace Orvi::Registry
