#pragma once

#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Index/IndexEntry.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/RegularExpression.h>
#include <Poco/SharedPtr.h>

#include <set>
#include <string>

namespace Orvi::DBData
{

/// The index of one attribute of an element: which cells hold a value, and which value each cell holds.
class IAttributeIndex
{
public:
    using Ptr = Poco::SharedPtr<IAttributeIndex>;

    explicit IAttributeIndex(const Attribute& attribute);
    /// The attribute is borrowed: its element keeps it alive as long as the index.

    virtual ~IAttributeIndex();

    IAttributeIndex(const IAttributeIndex&) = delete;
    IAttributeIndex& operator=(const IAttributeIndex&) = delete;

    virtual bool update(const AttributeValue& attrValue, const Poco::Dynamic::Var& value) = 0;
    /// Files the cell under the given value, which need not be the one the cell holds yet, and takes
    /// it out of its former group. False, with an error line, for a cell of another attribute.

    virtual bool remove(const AttributeValue& attrValue) = 0;
    /// Takes the cell out of the index; true also when it was not there. False, with an error line,
    /// for a cell of another attribute.

    virtual Index::IndexGroup find(const Poco::RegularExpression& regex) const = 0;
    /// The cells whose value, or one of whose array elements, matches as a whole text; in key order,
    /// and in order of arrival within a key.

    virtual Index::IndexGroup find(const Poco::Dynamic::Var& value) const = 0;
    /// The cells whose value, or one of whose array elements, equals the value; ordered as above.

    virtual Index::IndexGroup findWritten(const std::set<std::string>& texts) const = 0;
    /// The cells whose value, or one of whose array elements, is written exactly as one of the texts;
    /// ordered as above. Looks the texts up where every key is written as it sorts, else scans.

    static void printLogError(const std::string& msg);
    /// Logs the text at error level.

protected:
    const Attribute& m_attribute;
};

} // namespace Orvi::DBData
