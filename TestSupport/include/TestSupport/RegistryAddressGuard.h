#pragma once

#include <Poco/Types.h>

#include <string>

namespace ServiceDB::Test
{

/// Keeps the process-wide registry address of one test from leaking into the next: restores what it
/// found when it goes.
class RegistryAddressGuard
{
public:
    RegistryAddressGuard();
    /// Leaves the address as it is.

    explicit RegistryAddressGuard(Poco::UInt16 port);
    /// Points the address at 127.0.0.1 and the port.

    RegistryAddressGuard(const RegistryAddressGuard&) = delete;
    RegistryAddressGuard& operator=(const RegistryAddressGuard&) = delete;
    ~RegistryAddressGuard();

    static Poco::UInt16 closedPort();
    /// A port on 127.0.0.1 that nobody listens on.

private:
    std::string m_address;
    Poco::UInt16 m_port;
};

} // namespace ServiceDB::Test
