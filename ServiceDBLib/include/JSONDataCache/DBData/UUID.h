#pragma once

#include <Poco/UUID.h>

#include <string>

namespace Orvi::DBData
{

/// A UUID together with the text it was given; lookups use the parsed form, answers the text.
struct UUID
{
    UUID() = default;

    explicit UUID(const std::string& text);
    /// Throws Poco::SyntaxException when the text is neither empty nor a UUID.

    explicit UUID(const Poco::UUID& uuid);

    static bool parse(const std::string& text, Poco::UUID& parsed);
    /// Parses the whole text as a UUID, 36 characters with dashes or 32 without. Unlike
    /// Poco::UUID::tryParse, text after the UUID makes it fail.

    bool assign(const std::string& text);
    /// Empty text clears; otherwise keeps the text verbatim if it parses. False leaves this unchanged.

    bool assign(const Poco::UUID& uuid);
    /// Keeps the value and its canonical text; a null UUID thus gets the all-zero text.

    operator const std::string&() const { return svalue; }
    operator const Poco::UUID&() const { return value; }

    const std::string& toString() const { return svalue; }
    const Poco::UUID& get() const { return value; }

    bool isEmpty() const { return value == Poco::UUID::null(); }
    /// Looks at the parsed value only.

    void swap(UUID& other) noexcept;

    Poco::UUID value;
    std::string svalue;
};

} // namespace Orvi::DBData
