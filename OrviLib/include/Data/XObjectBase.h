#pragma once

#include "Data/AttributeBase.h"
#include "Data/AttributeValueBase.h"
#include "Data/DataTypes.h"

#include <Poco/JSON/Object.h>
#include <Poco/SharedPtr.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Orvi::Data
{

/// A typed object: named attribute values, among them its UUID, its URI and its name.
class XObjectBase
{
public:
    using Ptr = Poco::SharedPtr<XObjectBase>;

    static const std::string KEY_ID;
    static const std::string KEY_URI;
    static const std::string KEY_NAME;

    explicit XObjectBase(XObjectId id = -1);
    XObjectBase(const XObjectBase&) = default;
    XObjectBase(XObjectBase&&) = default;
    XObjectBase& operator=(const XObjectBase&) = default;
    XObjectBase& operator=(XObjectBase&&) = default;
    virtual ~XObjectBase();

    XObjectId id() const;
    /// The database id of the object's row, or -1 for an object that has none.

    virtual AttributeMap getAttributes() const = 0;
    virtual AttributeBase::Ptr getAttribute(const std::string& name) const = 0;
    /// The attribute, or an empty pointer.

    virtual bool hasValue(const std::string& name) const = 0;
    virtual std::size_t size() const = 0;
    /// The number of attributes.

    virtual const AttributeValueBase* getValue(const std::string& name) const = 0;
    /// The value of the attribute, or null if there is none.

    virtual std::string getName() const = 0;
    virtual Poco::UUID getId() const = 0;
    virtual Poco::URI getUri() const = 0;

    virtual Poco::JSON::Object::Ptr toJSON(int level) const = 0;
    /// All attributes; references are rendered in full down to the given level.

    virtual Poco::JSON::Object::Ptr toJSON(const std::vector<std::string>& names) const = 0;
    /// Only the named attributes that exist.

    virtual bool operator<(const XObjectBase& other) const;
    /// Objects order by their UUID, then by their name; a missing entry orders before a present one.

    virtual bool operator>(const XObjectBase& other) const;
    virtual bool operator==(const XObjectBase& other) const;
    /// Same UUID and same name, whatever else the objects hold.

    virtual bool operator!=(const XObjectBase& other) const;

private:
    int compareTo(const XObjectBase& other) const;
    int compareEntry(const XObjectBase& other, const std::string& key) const;

    XObjectId m_id;
};

} // namespace Orvi::Data
