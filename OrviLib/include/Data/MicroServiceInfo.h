#pragma once

#include "Data/AttributeValueArray.h"
#include "Data/GenericObject.h"
#include "Data/ResourceBase.h"
#include "Data/ServiceBase.h"

#include <Poco/SharedPtr.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <string>
#include <vector>

namespace Orvi
{

/// The description of one service as the service registry keeps it. Fields that were never set read
/// as empty (0 for the port).
class MicroServiceInfo : public Data::GenericObject<Data::ServiceBase>
{
public:
    explicit MicroServiceInfo(Data::XObjectId id = -1);
    /// An info without any entry, for the service row of the given id.

    MicroServiceInfo(const Poco::UUID& uuid, const Poco::URI& uri, const std::string& name, unsigned int port,
                     const std::string& description);
    /// Raises Poco::DataException when a non-empty uri does not hold the text of uuid in its path.

    MicroServiceInfo(const MicroServiceInfo&) = default;
    MicroServiceInfo(MicroServiceInfo&&) = default;
    MicroServiceInfo& operator=(const MicroServiceInfo&) = default;
    MicroServiceInfo& operator=(MicroServiceInfo&&) = default;
    ~MicroServiceInfo() override;

    Data::AttributeValueStringArray getPrivileges() const override;
    Data::AttributeValueStringArray getServiceCategories() const override;
    Data::AttributeValueStringArray getVersions() const override;
    std::string getDescription() const override;
    unsigned int getPort() const override;

    std::string getSpecification() const override;
    /// Empty: an info carries no definition text.

    void updateServiceId(const Poco::UUID& id) override;

    std::vector<unsigned int> getAllPorts() const override;
    /// The port, or nothing before one is set.

    std::vector<Poco::SharedPtr<Data::ResourceBase>> getResources() const override;
    /// Empty: an info does not list resources.

    void setPrivileges(const Data::AttributeValueStringArray& privileges);
    void setServiceCategories(const Data::AttributeValueStringArray& categories);
    void setVersions(const Data::AttributeValueStringArray& versions);
    void setDescription(const std::string& description);
    void setPort(unsigned int port);

    std::string getIdString() const;
    /// The text of the UUID; raises as getId().

private:
    Data::AttributeValueStringArray getStringArray(const std::string& key) const;
};

} // namespace Orvi
