#include "JSONDataCache/DBData/ConstraintOneOf.h"

#include "Command/UrlPath.h"

#include <Poco/Bugcheck.h>
#include <Poco/String.h>
#include <Poco/StringTokenizer.h>

#include <utility>

namespace Orvi::DBData
{

namespace
{

const std::string CLASS_SEPARATOR = ".";
constexpr std::size_t CLASS_LEVELS = 3;

} // namespace

ConstraintOneOf::ConstraintOneOf()
    : aConstraint(ConstraintType_OneOf)
{
}

ConstraintOneOf::~ConstraintOneOf() = default;

void ConstraintOneOf::setClasses(const std::vector<std::string>& newClasses)
{
    setClasses(std::vector<std::string>(newClasses));
}

void ConstraintOneOf::setClasses(std::vector<std::string>&& newClasses)
{
    classes = std::move(newClasses);
    m_oneof.clear();
    m_oneof.reserve(classes.size());
    for (const std::string& entry : classes)
    {
        // No options: empty levels count, so "a..c" still names three levels.
        const Poco::StringTokenizer levels(entry, CLASS_SEPARATOR);
        if (levels.count() != CLASS_LEVELS)
        {
            poco_bugcheck_msg("Invalid OneOf value");
        }
        m_oneof.push_back(
            ElementType{Poco::toLower(levels[0]), Poco::toLower(levels[1]), Poco::toLower(levels[2])});
    }
}

bool ConstraintOneOf::checkUrlPath(const Command::UrlPath& url) const
{
    const std::string service = Poco::toLower(url.getService());
    const std::string resource = Poco::toLower(url.getResource());
    for (const ElementType& allowed : m_oneof)
    {
        if (allowed.service == service && allowed.resource == resource)
        {
            return true;
        }
    }
    return false;
}

} // namespace Orvi::DBData
