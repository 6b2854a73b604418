#pragma once

#include <Poco/Any.h>
#include <Poco/SharedPtr.h>

#include <map>
#include <mutex>
#include <typeindex>
#include <typeinfo>

namespace Orvi::Util
{

/// A registry of the process's application services, keyed by their run-time type.
class ServiceLocator
{
public:
    template <typename T>
    void registerService(const Poco::SharedPtr<T>& service);
    /// Registers the service under the type T, replacing an earlier one of that type.

    template <typename T>
    void unregisterService();

    bool find(const std::type_info* type, Poco::Any& out_service) const;
    /// True if a service of that type is registered; out_service then holds its Poco::SharedPtr.

    template <typename T>
    Poco::SharedPtr<T> getService() const;
    /// The service of type T, or an empty pointer.

private:
    void put(const std::type_info& type, const Poco::Any& service);
    void remove(const std::type_info& type);

    mutable std::mutex m_mutex;
    std::map<std::type_index, Poco::Any> m_services;
};

template <typename T>
void ServiceLocator::registerService(const Poco::SharedPtr<T>& service)
{
    put(typeid(T), Poco::Any(service));
}

template <typename T>
void ServiceLocator::unregisterService()
{
    remove(typeid(T));
}

template <typename T>
Poco::SharedPtr<T> ServiceLocator::getService() const
{
    Poco::Any service;
    if (!find(&typeid(T), service))
    {
        return Poco::SharedPtr<T>();
    }
    return Poco::AnyCast<Poco::SharedPtr<T>>(service);
}

} // namespace Orvi::Util
