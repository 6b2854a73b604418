#pragma once

#include "JSONDataCache/DBData/aConstraint.h"

#include <Poco/RegularExpression.h>
#include <Poco/SharedPtr.h>

#include <string>

namespace Orvi::DBData
{

/// Restricts a string attribute to the texts that a regular expression matches as a whole.
class ConstraintFormat : public aConstraint
{
public:
    ConstraintFormat();
    ~ConstraintFormat() override;

    const std::string& getFormat() const { return format; }
    /// The regular expression as given.

    void setFormat(const std::string& newFormat);
    void setFormat(std::string&& newFormat);
    void setFormat(const char* newFormat);

    bool matches(const std::string& value) const;
    /// True when the format matches the whole value. A format that does not compile raises the
    /// regular expression's exception on every call.

private:
    void compile();

    std::string format;
    // Compiled once per format, so that a check does not compile the pattern again; null when the
    // format does not compile.
    Poco::SharedPtr<Poco::RegularExpression> m_compiled;
};

} // namespace Orvi::DBData
