#pragma once

#include <Poco/Dynamic/Var.h>
#include <Poco/RegularExpression.h>

#include <memory>
#include <string>

namespace Orvi::DBData::Index
{

/// The key form of a single value in an attribute index. Keys sort by the text of their values, and
/// null sorts after every value.
class SimpleValue
{
public:
    explicit SimpleValue(const Poco::Dynamic::Var& keyValue);

    SimpleValue(const SimpleValue& other);
    SimpleValue(SimpleValue&& other) noexcept;
    SimpleValue& operator=(const SimpleValue& other);
    SimpleValue& operator=(SimpleValue&& other) noexcept;
    ~SimpleValue();
    /// A moved key keeps the holder of its value, so that moving copies no text.

    bool match(const Poco::RegularExpression& regex) const;
    /// Whether the whole text of the value, as an attribute value is written, matches; a null value
    /// never does.

    bool match(const Poco::Dynamic::Var& other) const;
    /// Whether the value equals the other by the text of both.

    bool match(const SimpleValue& probe) const;
    /// The same as match(probe.value), with the text of each side computed only once.

    bool isWrittenAs(const std::string& written) const;
    /// Whether the value, as an attribute value is written, is exactly the text; a null value never is.

    bool isWrittenAsSorted() const;
    /// Whether the value is null or written as the text it sorts by, as the held types of the attribute
    /// types are; such a key can be looked up by its written text.

    bool operator<(const SimpleValue& other) const;
    /// Text order of the values, null last: 10 sorts before 9.

    bool operator==(const SimpleValue& other) const;
    /// Equality of the values by their text.

    Poco::Dynamic::Var value;

private:
    const std::string& text() const;
    /// The text by which values sort and compare, computed once.

    const std::string& writtenText(std::string& buffer) const;
    /// The text of a value that is not null as an attribute value is written; the buffer holds it when
    /// it is not the sort text.

    // Empty until first needed. For a text value it points into the value's own holder and owns nothing;
    // otherwise it owns the converted text, shared by the copies of the key so that copying copies no text.
    mutable std::shared_ptr<const std::string> sortText;
};

} // namespace Orvi::DBData::Index
