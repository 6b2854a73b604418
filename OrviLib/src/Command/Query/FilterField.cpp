#include "Command/Query/FilterField.h"

#include <utility>

namespace Orvi::Command
{

FilterField::FilterField(std::string name, Poco::SharedPtr<Paging> paging)
    : m_name(std::move(name))
    , m_paging(std::move(paging))
{
}

} // namespace Orvi::Command
