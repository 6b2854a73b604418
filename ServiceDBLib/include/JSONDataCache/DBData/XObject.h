#pragma once

#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/XObjectBase.h"

#include <Poco/SharedPtr.h>

#include <string>

namespace Orvi::DBData
{

using XObjectId = DbId;
/// The id of a stored object.

/// One stored object: an instance of an element, holding one value per attribute in the order in
/// which the values were added. Null entries in the list of values are skipped by every traversal.
class XObject : public XObjectBase
{
public:
    using Ptr = Poco::SharedPtr<XObject>;

    explicit XObject(const Element::Ptr& element);
    /// No name, no UUID, no id and no values. The element may be null for an object that only
    /// receives a later copyFrom or swap.

    ~XObject() override;

    XObject(const XObject&) = delete;
    XObject& operator=(const XObject&) = delete;
    /// Objects are copied only on purpose, by copyFrom, which decides how deep.

    const Element::Ptr& getElement() const { return element; }

    const AttributeValueList& getAttributeValues() const { return attributeValues; }
    AttributeValueList& getAttributeValues() { return attributeValues; }

    void setAttributeValues(const AttributeValueList& values) { attributeValues = values; }
    /// Shares the cells with the given list; nothing is copied.

    AttributeValuePtr getValue(const std::string& attributeName) const;
    /// The first cell of that attribute name, or null.

    void removeValue(const std::string& attributeName);
    /// Empties every cell of that attribute name; the cells stay in the list with their ids.

    void copyFrom(const XObject& xobj, bool includeVals);
    /// Takes id (past the write-once rule), name, UUID and element of xobj, and a fresh cell for each
    /// of its cells, with the same attribute and id; with includeVals the values too, else the cells
    /// are empty. Neither the cells nor the vectors of array values are shared with xobj. Copying from
    /// itself leaves no values.

    void swap(XObject& other);
    /// Exchanges id, name, UUID, element and values without copying.

private:
    Element::Ptr element;
    AttributeValueList attributeValues;
};

} // namespace Orvi::DBData
