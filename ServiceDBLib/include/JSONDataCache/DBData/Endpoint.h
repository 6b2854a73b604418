#pragma once

#include "JSONDataCache/DBData/Attribute.h"

#include <Poco/SharedPtr.h>

#include <string>
#include <vector>

namespace Poco::JSON
{
class Object;
} // namespace Poco::JSON

namespace Orvi::DBData
{

/// One access rule of a resource or element: global when it names no attribute, else bound to one.
class Endpoint
{
public:
    bool isGet() const { return _get; }
    bool isPost() const { return _post; }
    bool isDelete() const { return _delete; }

    bool isRequired() const { return _required; }
    /// The bound attribute has to be present in a POST.

    void setGet(bool allowed) { _get = allowed; }
    void setPost(bool allowed) { _post = allowed; }
    void setDelete(bool allowed) { _delete = allowed; }
    void setRequired(bool required) { _required = required; }

    bool isGlobal() const { return attribute.isNull(); }
    /// True when the rule speaks of the element as a whole.

    Poco::SharedPtr<Attribute>& getAttribute() { return attribute; }
    const Poco::SharedPtr<Attribute>& getAttribute() const { return attribute; }
    void setAttribute(const Poco::SharedPtr<Attribute>& boundAttribute) { attribute = boundAttribute; }

    static bool checkGetAllowed(const std::vector<Endpoint>& endpoints);
    /// True when a global rule allows GET; rules bound to an attribute do not count.

    static bool checkPostAllowed(const std::vector<Endpoint>& endpoints,
                                 const std::vector<std::string>& attrList, bool& missingAttribute,
                                 bool& forbiddenAttribute);
    /// True when the rules allow a POST of exactly these attribute names. A global POST rule allows
    /// everything from where it stands in the list. Otherwise every name needs its own POST rule, counted
    /// once per rule against the number of names; a required attribute that is not named refuses the
    /// POST and sets missingAttribute, a name without a rule sets forbiddenAttribute.

    static bool checkPostAllowed(const std::vector<Endpoint>& endpoints, const Poco::JSON::Object& json,
                                 bool& missingAttribute, bool& forbiddenAttribute);
    /// The same check on the keys of the posted object.

    static bool checkDeleteAllowed(const std::vector<Endpoint>& endpoints,
                                   const std::vector<std::string>& attrList);
    /// Without names: whether a global rule allows deleting the element. With names: whether each of
    /// them has a DELETE rule bound to it; a global rule does not allow deleting single attributes.

private:
    bool _get = false;
    bool _post = false;
    bool _delete = false;
    bool _required = false;
    Poco::SharedPtr<Attribute> attribute;
};

} // namespace Orvi::DBData
