#include "Data/ServiceBase.h"

namespace Orvi::Data
{

const std::string ServiceBase::KEY_DESCRIPTION = "description";
const std::string ServiceBase::KEY_PORT = "port";
const std::string ServiceBase::KEY_PRIVILEGES = "privileges";
const std::string ServiceBase::KEY_CATEGORIES = "categories";
const std::string ServiceBase::KEY_VERSIONS = "versions";

ServiceBase::ServiceBase(XObjectId id)
    : XObjectBase(id)
{
}

ServiceBase::~ServiceBase() = default;

} // namespace Orvi::Data
