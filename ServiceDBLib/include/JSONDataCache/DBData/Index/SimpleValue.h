#pragma once

#include <Poco/Dynamic/Var.h>
#include <Poco/Nullable.h>
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

    bool match(const Poco::RegularExpression& regex) const;
    /// Whether the whole text of the value, as an attribute value is written, matches; a null value
    /// never does. The text is computed at the first call and kept.

    bool match(const Poco::Dynamic::Var& other) const;
    /// Whether the value equals the other by the text of both.

    bool match(const SimpleValue& probe) const;
    /// The same as match(probe.value), with the text of each side computed only once.

    bool operator<(const SimpleValue& other) const;
    /// Text order of the values, null last: 10 sorts before 9.

    bool operator==(const SimpleValue& other) const;
    /// Equality of the values by their text.

    mutable Poco::Nullable<std::string> svalue;
    /// The value as an attribute value is written; null until the first regular expression search.

    Poco::Dynamic::Var value;

private:
    const std::string& text() const;
    /// The text by which values sort and compare, computed once.

    // Shared by the copies of a key, so that the two copies an index keeps cost one text; empty until
    // first needed, and never needed for a value that is text itself.
    mutable std::shared_ptr<const std::string> sortText;
};

} // namespace Orvi::DBData::Index
