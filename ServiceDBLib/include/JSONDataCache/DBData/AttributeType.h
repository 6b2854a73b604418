#pragma once

namespace Orvi::DBData
{

/// The value type of an attribute. Each type has one canonical type held in a Poco::Dynamic::Var
/// (see the aliases of Attribute); booleans are held as bool.
enum AttributeType
{
    AttrType_String = 0,
    AttrType_Integer = 1,
    AttrType_Number = 2,
    AttrType_Boolean = 3,
    AttrType_Object = 4,
    AttrType_IntegerUnsigned = 5
};

} // namespace Orvi::DBData
