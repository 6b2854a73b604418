#pragma once

#include "JSONDataCache/DBData/Attribute.h"

#include <Poco/SharedPtr.h>

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

private:
    bool _get = false;
    bool _post = false;
    bool _delete = false;
    bool _required = false;
    Poco::SharedPtr<Attribute> attribute;
};

} // namespace Orvi::DBData
