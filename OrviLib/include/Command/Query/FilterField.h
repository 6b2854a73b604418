#pragma once

#include "Command/Query/Paging.h"

#include <Poco/SharedPtr.h>

#include <string>

namespace Orvi::Command
{

/// One key that a field selection keeps, with an optional page of its array value.
class FilterField
{
public:
    explicit FilterField(std::string name, Poco::SharedPtr<Paging> paging = {});

    const std::string& getName() const { return m_name; }

    const Poco::SharedPtr<Paging>& getPaging() const { return m_paging; }
    /// The page to take of the field's array value; empty to keep the whole value.

private:
    std::string m_name;
    Poco::SharedPtr<Paging> m_paging;
};

} // namespace Orvi::Command
