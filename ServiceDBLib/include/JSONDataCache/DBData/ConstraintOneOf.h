#pragma once

#include "JSONDataCache/DBData/aConstraint.h"

#include <string>
#include <vector>

namespace Orvi::Command
{
class UrlPath;
}

namespace Orvi::DBData
{

/// Restricts an object reference to the objects of a list of resources.
class ConstraintOneOf : public aConstraint
{
public:
    /// One allowed target, parsed from "service.resource.element"; all three in lower case.
    struct ElementType
    {
        std::string service;
        std::string resource;
        std::string element;
    };

    using AllowedReferences = std::vector<ElementType>;

    ConstraintOneOf();
    ~ConstraintOneOf() override;

    const std::vector<std::string>& getClasses() const { return classes; }
    /// The class strings as given.

    void setClasses(const std::vector<std::string>& newClasses);
    void setClasses(std::vector<std::string>&& newClasses);
    /// Parses each "service.resource.element" into an allowed target; any other shape is a bugcheck.

    AllowedReferences getAllowedReferences() const { return m_oneof; }
    /// A copy of the parsed targets, in the order of the classes.

    bool checkUrlPath(const Command::UrlPath& url) const;
    /// True when the address names an object of an allowed service and resource, in any case. The
    /// element of an allowed target takes no part.

private:
    std::vector<std::string> classes;
    AllowedReferences m_oneof;
};

} // namespace Orvi::DBData
