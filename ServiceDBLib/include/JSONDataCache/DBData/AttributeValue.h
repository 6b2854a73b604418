#pragma once

#include "CompareResult.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Dynamic/VarHolder.h>
#include <Poco/SharedPtr.h>

#include <string>
#include <vector>

namespace Orvi::DBData
{

/// One stored cell: the value of one attribute in one object. Every write goes through it, so that a
/// stored value holds its attribute's canonical type; references are checked but kept as they came.
class AttributeValue : public aDBTableEntry
{
public:
    using ValueArray = Poco::Dynamic::Array;
    using ValueArrayPtr = Poco::SharedPtr<ValueArray>;
    /// The form of an array value; the vector is shared by every copy of the Var that holds it.

    AttributeValue(DbId parentObj, const Attribute::Ptr& attribute, DbId dbid);
    /// Raises Poco::NullPointerException without an attribute.

    ~AttributeValue() override;

    AttributeValue(const AttributeValue&) = delete;
    AttributeValue& operator=(const AttributeValue&) = delete;
    /// Cells are shared through AttributeValuePtr, never copied.

    DbId getParent() const { return parent; }
    /// The id of the owning object.

    const std::string& getName() const { return attribute->getName(); }
    AttributeType getType() const { return attribute->getType(); }
    bool isArray() const { return attribute->isArray(); }
    const Attribute::Ptr& getAttribute() const { return attribute; }

    Poco::Dynamic::Var& getValue() { return value; }
    const Poco::Dynamic::Var& getValue() const { return value; }

    bool hasValue() const { return !value.isEmpty(); }
    /// False while the value is null.

    bool setValue(const Poco::Dynamic::Var& newValue);
    /// Converts and checks the value and stores it; null is always accepted. An array attribute takes a
    /// JSON array or a ValueArray (also by pointer), drops null elements and keeps the identity of its
    /// shared vector. On failure gives false, logs, and keeps the stored value.

    void setValue(const Poco::Dynamic::Var& newValue, bool typeConversion);
    /// Without typeConversion stores the value as it stands, for values already checked. With it, as
    /// the single-argument form, raising Poco::RuntimeException on failure.

    bool appendArrayValue(const Poco::Dynamic::Var& val, bool typeConversion);
    /// Appends one element to an array value; a converted element that fails its check is not kept.

    void clear() { value.clear(); }
    /// Makes the value null.

    void convertValue(Poco::Dynamic::Var& toConvert) const;
    /// Converts in place to the attribute's canonical type.

    bool convertAndCheckValue(Poco::Dynamic::Var& toCheck) const;
    /// Converts in place and checks against the attribute's constraint; null is refused.

    static Util::CompareResult compareValues(AttributeType type, const Poco::Dynamic::Var& lhs,
                                             const Poco::Dynamic::Var& rhs);
    /// Three-way comparison in the order of the type, converting a side that does not hold the
    /// canonical type. Null sorts after every value; arrays compare element by element, and a single
    /// value against an array, or arrays of different lengths, are UNKNOWN.

    Util::CompareResult compareValue(const Poco::Dynamic::Var& other) const;
    /// Compares the stored value with another by the attribute's type.

    bool operator==(const AttributeValue& other) const;
    /// Equal definitions and values; the ids of the cells and of their objects take no part.

    static void printLogWarn(const std::string& msg);
    /// Logs the text at warning level.

private:
    ValueArray& sharedArray();
    /// The vector held by the value, created when the value is null.

    const Attribute::Ptr attribute;
    DbId parent;
    Poco::Dynamic::Var value;
};

using AttributeValuePtr = Poco::SharedPtr<AttributeValue>;
using AttributeValueList = std::vector<AttributeValuePtr>;

} // namespace Orvi::DBData
