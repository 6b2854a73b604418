#pragma once

#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/aConstraint.h"
#include "JSONDataCache/DBData/aDBTableEntry.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/SharedPtr.h>
#include <Poco/Types.h>
#include <Poco/URI.h>

#include <string>
#include <vector>

namespace Orvi::DBData
{

class Element;

/// The definition of one named field of an element's objects: its type, whether it is an array, and
/// its constraints. Also the vocabulary that turns any input value into the canonical held type of an
/// attribute type and checks it against a constraint.
class Attribute : public aDBTableEntry
{
public:
    using Ptr = Poco::SharedPtr<Attribute>;
    using ConstraintList = std::vector<Poco::SharedPtr<aConstraint>>;

    using String = std::string;
    using Integer = Poco::Int64;
    using Number = double;
    using ObjectRef = Poco::URI;
    using IntegerUnsigned = Poco::UInt64;

    explicit Attribute(const std::string& attributeName, const AttributeType& attributeType = AttrType_String,
                       bool isArrayValue = false);
    /// A single string attribute unless told otherwise.

    Attribute(const std::string& attributeName, Poco::SharedPtr<Element> element,
              const AttributeType& attributeType, bool isArrayValue);
    /// The element is accepted for the loader's sake and not kept.

    ~Attribute() override;

    const std::string& getName() const { return name; }
    void setName(const std::string& newName) { name = newName; }

    AttributeType getType() const { return type; }
    void setType(AttributeType newType) { type = newType; }

    bool isArray() const { return isArrayAttribute; }
    /// The value is an array of the type.

    void setIsArray(bool isArrayValue) { isArrayAttribute = isArrayValue; }

    const ConstraintList& getConstraints() const { return constraints; }
    /// Only the first constraint takes part in checks.

    void setConstraints(const ConstraintList& newConstraints);
    void setConstraints(ConstraintList&& newConstraints);

    bool operator==(const Attribute& other) const;
    /// Equal in name, type and array flag; constraints are not compared.

    void convertValue(Poco::Dynamic::Var& val) const;
    /// Converts the value in place to the canonical held type of this attribute's type.

    bool checkAttributeValueContent(Poco::Dynamic::Var& value, bool allowNullValue) const;
    /// Converts and checks the value against this attribute's first constraint.

    static bool isDefaultAttribute(const std::string& attributeName);
    /// True for "id", "name" and "uri", the attributes that every object has.

    static void convertValue(AttributeType attributeType, Poco::Dynamic::Var& var);
    /// Converts the value in place to the canonical held type of the type; raises
    /// Poco::RuntimeException when it cannot.

    static void convertToInteger(Poco::Dynamic::Var& value);
    /// To Integer; text is read like std::stoll, so trailing text is ignored.

    static void convertToIntegerUnsigned(Poco::Dynamic::Var& value);
    /// To IntegerUnsigned; text must be a whole number.

    static void convertToNumber(Poco::Dynamic::Var& value);
    /// To Number; text must be a whole number with '.' as decimal point.

    static void convertToString(Poco::Dynamic::Var& value);
    /// To String; booleans become "true" or "false", doubles their shortest text.

    static void convertToBoolean(Poco::Dynamic::Var& value);
    /// To bool; integers are true when non-zero, text is read like Poco::NumberParser::tryParseBool.

    static void convertToObjectRef(Poco::Dynamic::Var& value);
    /// To ObjectRef, from a stored object or a JSON object with "uri", a URI or text; the address has to
    /// name one object of a resource.

    static bool checkAttributeValueContent(AttributeType attributeType, Poco::Dynamic::Var& value,
                                           const aConstraint* aconst, bool allowNullValue);
    /// Converts the value in place (a reference is checked on a copy and left as it came) and checks
    /// it against the constraint, if any; a numeric value rounded by a passed check replaces the
    /// value. Reports failures by the result and a log line.

    static bool checkAttributeStringValue(const String& value, const aConstraint& aconst);
    /// Checks against an enum or format constraint.

    static bool checkAttributeIntegerValue(Integer& value, const aConstraint& aconst);
    static bool checkAttributeIntegerValue(IntegerUnsigned& value, const aConstraint& aconst);
    static bool checkAttributeNumberValue(Number& value, const aConstraint& aconst);
    /// Check against a resolution constraint, which may round the value.

    static bool checkAttributeObjectRefValue(const ObjectRef& value, const aConstraint& aconst);
    /// Checks against a constraint of allowed reference targets.

private:
    std::string name;
    std::string description;
    AttributeType type;
    ConstraintList constraints;
    bool isArrayAttribute;
};

} // namespace Orvi::DBData
