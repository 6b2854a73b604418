#include "JSONDataCache/DBData/ConstraintFormat.h"

#include <Poco/Exception.h>

#include <utility>

namespace Orvi::DBData
{

ConstraintFormat::ConstraintFormat()
    : aConstraint(ConstraintType_Format)
{
    compile();
}

ConstraintFormat::~ConstraintFormat() = default;

void ConstraintFormat::setFormat(const std::string& newFormat)
{
    format = newFormat;
    compile();
}

void ConstraintFormat::setFormat(std::string&& newFormat)
{
    format = std::move(newFormat);
    compile();
}

void ConstraintFormat::setFormat(const char* newFormat)
{
    format = newFormat;
    compile();
}

bool ConstraintFormat::matches(const std::string& value) const
{
    if (m_compiled.isNull())
    {
        // Compiling again raises the pattern's error to the caller, as a check of this value.
        return Poco::RegularExpression::match(value, format, 0);
    }
    return m_compiled->match(value, 0, 0);
}

void ConstraintFormat::compile()
{
    try
    {
        m_compiled = new Poco::RegularExpression(format, 0, false);
    }
    catch (const Poco::RegularExpressionException&)
    {
        m_compiled.reset();
    }
}

} // namespace Orvi::DBData
