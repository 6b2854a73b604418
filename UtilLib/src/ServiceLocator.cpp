#include "ServiceLocator.h"

namespace Orvi::Util
{

bool ServiceLocator::find(const std::type_info* type, Poco::Any& out_service) const
{
    if (type == nullptr)
    {
        return false;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_services.find(std::type_index(*type));
    if (found == m_services.end())
    {
        return false;
    }
    out_service = found->second;
    return true;
}

void ServiceLocator::put(const std::type_info& type, const Poco::Any& service)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_services[std::type_index(type)] = service;
}

void ServiceLocator::remove(const std::type_info& type)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_services.erase(std::type_index(type));
}

} // namespace Orvi::Util
