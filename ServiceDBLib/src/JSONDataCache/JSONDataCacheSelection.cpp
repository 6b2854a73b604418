#include "JSONDataCache/JSONDataCache.h"
#include "JSONDataCache/UuidList.h"

#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/IAttributeIndex.h"
#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/RegularExpression.h>
#include <Poco/SharedPtr.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <unordered_set>

namespace Orvi::JSONDataCache
{

using Command::RequestBase;
using Command::UrlPath;
using DBData::AttributeValue;
using DBData::AttributeValuePtr;
using DBData::DbId;
using DBData::Element;
using DBData::XObject;

namespace
{

const std::string REGEX_ANY_TEXT = ".*";
const std::string REGEX_ALTERNATIVE = "|";
const std::string REGEX_SYNTAX = "\\^$.|?*+()[]{}";
// A larger pattern is compiled even when its values are literal: the engine refuses patterns from about
// 32 KiB on, and such a search has to raise as it did.
const std::size_t MAX_LOOKUP_PATTERN_SIZE = 4096;

// The cells of one index that a search finds.
using IndexSearch = std::function<DBData::Index::IndexGroup(const DBData::IAttributeIndex&)>;

// Whether the anchored pattern of the value finds exactly the texts equal to the value. Not so with a
// wildcard or pattern syntax, nor with a control character: a NUL ends the pattern early, and "$" also
// matches before a final line end, so that the alternatives v and v<LF> do not find v<LF>. The empty
// value finds nothing.
bool isLiteral(const std::string& value)
{
    return !value.empty() && value.find(UrlPath::QUERY_WILDCARD) == std::string::npos &&
           value.find(UrlPath::QUERY_WILDCARD_HTML) == std::string::npos &&
           std::none_of(value.begin(), value.end(),
                        [](char c) {
                            return static_cast<unsigned char>(c) < 0x20 ||
                                   REGEX_SYNTAX.find(c) != std::string::npos;
                        });
}

// A search for any of the values: literal values are looked up by their text; otherwise they are
// alternatives of one pattern, compiled once and studied, since every key of an index is matched
// against it.
IndexSearch makeSearch(const std::vector<std::string>& values)
{
    std::string pattern;
    for (const std::string& value : values)
    {
        if (!pattern.empty())
        {
            pattern += REGEX_ALTERNATIVE;
        }
        pattern += prepareRegEx(value);
    }
    if (pattern.size() <= MAX_LOOKUP_PATTERN_SIZE && std::all_of(values.begin(), values.end(), isLiteral))
    {
        return [texts = std::set<std::string>(values.begin(), values.end())](
                   const DBData::IAttributeIndex& index) { return index.findWritten(texts); };
    }
    const Poco::SharedPtr<Poco::RegularExpression> regex(new Poco::RegularExpression(pattern, 0, true));
    return [regex](const DBData::IAttributeIndex& index) { return index.find(*regex); };
}

} // namespace

bool JSONDataCache::existsObjectWithId(DbId objectId) const
{
    if (!m_xobjCache.exists(objectId))
    {
        LOG_DEBUG("XObject ID " << objectId << " NOT found in XObject Cache");
        return false;
    }
    LOG_TRACE("XObject ID " << objectId << " found in XObject Cache");
    return true;
}

XObject::Ptr JSONDataCache::selectXObject(DbId id, Poco::Int32 recursionDepth)
{
    XObject::Ptr object(new XObject(Element::Ptr()));
    if (!m_xobjCache.get(id, *object, true))
    {
        LOG_WARNING("Can not find XObject with ID " << id);
        return XObject::Ptr();
    }
    selectValues(*object, recursionDepth);
    return object;
}

XObject::Ptr JSONDataCache::selectXObject(const std::string& uuid, Poco::Int32 recursionDepth)
{
    XObject::Ptr object(new XObject(Element::Ptr()));
    if (!m_xobjCache.get(uuid, *object, true))
    {
        LOG_WARNING("Can not find XObject with UUID " << uuid);
        return XObject::Ptr();
    }
    selectValues(*object, recursionDepth);
    return object;
}

XObject::Ptr JSONDataCache::selectXObject(const std::string& servicename, const std::string& resourcename,
                                          const std::string& uuid, Poco::Int32 recursionDepth)
{
    XObject::Ptr object(new XObject(Element::Ptr()));
    if (!selectXObjectByUUID(servicename, resourcename, uuid, *object, recursionDepth, false))
    {
        LOG_WARNING("Can not find XObject /" << servicename << "/" << resourcename << "/" << uuid);
        return XObject::Ptr();
    }
    return object;
}

bool JSONDataCache::selectXObjectByID(DbId id, XObject& retXObject, Poco::Int32 recursionDepth, bool)
{
    XObject::Ptr found = selectXObject(id, recursionDepth);
    if (found.isNull())
    {
        return false;
    }
    retXObject.swap(*found);
    return true;
}

bool JSONDataCache::selectXObjectByUUID(const std::string& servicename, const std::string& resourcename,
                                        const std::string& uuid, XObject& retXObject,
                                        Poco::Int32 recursionDepth, bool)
{
    const Element::Ptr element = selectElement(servicename, resourcename);
    if (element.isNull())
    {
        LOG_WARNING("Can not find element info for resource " << servicename << "/" << resourcename
                                                              << " not found.");
        return false;
    }

    XObject::Ptr object = selectXObject(uuid, recursionDepth);
    if (object.isNull())
    {
        return false;
    }

    // UUIDs are unique across the store, so the object has to be checked against the resource.
    if (object->getElement()->getDBID() != element->getDBID())
    {
        LOG_WARNING("Can not find element " << servicename << "/" << resourcename << "/" << uuid);
        return false;
    }

    retXObject.swap(*object);
    return true;
}

void JSONDataCache::selectValues(XObject& xobj, Poco::Int32 recursionDepth)
{
    for (AttributeValuePtr& value : xobj.getAttributeValues())
    {
        if (value.isNull())
        {
            poco_bugcheck();
        }
        if (value->getDBID() == DBData::aDBTableEntry::INVALID_DBID || value->getAttribute().isNull())
        {
            poco_bugcheck_msg("Invalid AttributeValue instance");
        }

        // Past the requested depth an object is only its identity; this also ends circular references.
        if (recursionDepth < 0 && !DBData::Attribute::isDefaultAttribute(value->getName()))
        {
            value->clear();
            continue;
        }
        if (!value->hasValue() || value->getType() != DBData::AttrType_Object)
        {
            continue;
        }

        if (!value->isArray())
        {
            const std::string uuid = value->getValue().extract<std::string>();
            XObject::Ptr referenced = selectXObject(uuid, recursionDepth - 1);
            if (!referenced.isNull())
            {
                value->setValue(Poco::Dynamic::Var(referenced), false);
                continue;
            }
            // The referenced object was deleted: the read repairs the store as well.
            LOG_ERROR("Failed to retrieve references for " << xobj.getUUID() << " attribute "
                                                           << value->getName());
            value->clear();
            updateCacheAttributeValueById(*value, true);
            continue;
        }

        std::vector<std::string> uuids;
        if (!extractUuidList(value->getValue(), uuids) || uuids.empty())
        {
            value->clear();
            continue;
        }
        AttributeValue::ValueArrayPtr referenced(new AttributeValue::ValueArray);
        referenced->reserve(uuids.size());
        for (const std::string& uuid : uuids)
        {
            XObject::Ptr object = selectXObject(uuid, recursionDepth - 1);
            if (!object.isNull())
            {
                referenced->emplace_back(object);
            }
        }
        value->setValue(Poco::Dynamic::Var(referenced), false);
        if (referenced->size() < uuids.size())
        {
            updateCacheArrayAttributeValueById(*value, true);
        }
    }
}

bool JSONDataCache::selectXObjectsFromElement(const Element& parentElement,
                                              std::vector<XObject::Ptr>& retXobjects, int expansionLevel)
{
    retXobjects.clear();
    const Element::XObjectUuidMap& ids = parentElement.getXObjectIds();
    if (!ids.empty())
    {
        retXobjects.reserve(ids.size());
    }
    for (const auto& entry : ids)
    {
        XObject::Ptr object(new XObject(Element::Ptr()));
        if (!selectXObjectByID(entry.first, *object, expansionLevel, false))
        {
            LOG_WARNING("Could not find XObject with DB ID " << entry.first);
            continue;
        }
        retXobjects.push_back(object);
    }
    if (expansionLevel >= 0)
    {
        // Every reference of the element's objects has been resolved, and the dangling ones repaired.
        m_danglingSuspects.erase(parentElement.getDBID());
    }
    return !retXobjects.empty();
}

bool JSONDataCache::selectXObjectsByRequest(const RequestBase& request,
                                            std::vector<XObject::Ptr>& retXobjects)
{
    const UrlPath& urlPath = request.getUrlPath();
    if (urlPath.getCharacteristic() != UrlPath::SERVICE_RESOURCE)
    {
        LOG_ERROR("selectXObjects by Request supports only selection on resource level");
        return false;
    }
    const Element::Ptr element = selectElement(urlPath.getService(), urlPath.getResource());
    if (element.isNull())
    {
        LOG_ERROR("selectXObjects by Request: element info for resource "
                  << urlPath.getService() << "/" << urlPath.getResource() << " not found.");
        return false;
    }

    const int expansionLevel = getExpansionLevel(request);

    std::set<DbId> xobjIds;
    if (!findXObjectIds(request, *element, xobjIds))
    {
        return selectXObjectsFromElement(*element, retXobjects, expansionLevel);
    }

    std::vector<XObject::Ptr> selected;
    selected.reserve(xobjIds.size());
    for (const DbId id : xobjIds)
    {
        XObject::Ptr object = selectXObject(id, expansionLevel);
        if (object.isNull())
        {
            LOG_WARNING("Could not find XObject with DB ID " << id);
            continue;
        }
        selected.push_back(object);
    }
    retXobjects.swap(selected);
    return true;
}

bool JSONDataCache::findXObjectIds(const RequestBase& request, const Element& element,
                                   std::set<DbId>& out_ids)
{
    // Only the first free-text search counts.
    std::string anySearchParam;
    if (request.hasAnyCriteria())
    {
        std::vector<Poco::SharedPtr<Command::AnyValueSearch>> anySearches;
        RequestBase::extractCriteria(anySearches, request.getSearchCriteria());
        if (!anySearches.empty() && !anySearches.front().isNull())
        {
            anySearchParam = anySearches.front()->getQueryValue();
        }
    }

    // The values of one attribute are alternatives of one search; the first search of a name wins.
    std::map<std::string, IndexSearch> attrValueSearchParam;
    if (request.hasAttributeCriteria())
    {
        std::vector<Poco::SharedPtr<Command::AttributeValueSearch>> attributeSearches;
        RequestBase::extractCriteria(attributeSearches, request.getSearchCriteria());
        for (const Poco::SharedPtr<Command::AttributeValueSearch>& search : attributeSearches)
        {
            if (search.isNull() || attrValueSearchParam.count(search->getAttributeName()) > 0)
            {
                continue;
            }
            attrValueSearchParam.emplace(search->getAttributeName(), makeSearch(search->getSearchValues()));
        }
    }

    if (anySearchParam.empty() && attrValueSearchParam.empty())
    {
        return false;
    }

    const IndexSearch anySearch = anySearchParam.empty() ? IndexSearch() : makeSearch({anySearchParam});
    std::set<DbId> xobjIdsAnySearch;
    std::map<DbId, Poco::UInt32> xobjIdsAttrSearch;

    for (const auto& entry : element.getIndexes())
    {
        const DBData::IAttributeIndex::Ptr& index = entry.second;
        if (index.isNull())
        {
            poco_bugcheck();
        }
        if (anySearch)
        {
            for (const DBData::Index::IndexEntry& found : anySearch(*index))
            {
                xobjIdsAnySearch.insert(found.getXObjId());
            }
        }
        const auto attributeSearch = attrValueSearchParam.find(entry.first);
        if (attributeSearch != attrValueSearchParam.end())
        {
            // An index holds one entry per object, so the count is the number of matching attributes.
            for (const DBData::Index::IndexEntry& found : attributeSearch->second(*index))
            {
                ++xobjIdsAttrSearch[found.getXObjId()];
            }
        }
    }

    std::set<DbId>& xobjIds = out_ids;
    xobjIds.clear();
    if (attrValueSearchParam.empty())
    {
        xobjIds.swap(xobjIdsAnySearch);
    }
    else
    {
        for (const auto& counted : xobjIdsAttrSearch)
        {
            if (counted.second == attrValueSearchParam.size() &&
                (anySearchParam.empty() || xobjIdsAnySearch.count(counted.first) > 0))
            {
                xobjIds.insert(xobjIds.end(), counted.first);
            }
        }
    }
    return true;
}

bool JSONDataCache::selectXObjectIDsOfResource(const std::string& servicename,
                                               const std::string& resourcename, std::vector<long>& retIds)
{
    const Element::Ptr element = selectElement(servicename, resourcename);
    if (element.isNull())
    {
        return false;
    }
    retIds = element->getAllXObjectIds();
    return !retIds.empty();
}

bool JSONDataCache::selectXObjectIDsWithAttributesOfValues(const std::string& servicename,
                                                           const std::string& resourcename,
                                                           std::vector<long>& retIds,
                                                           const AttributeValuePairs& attributes_with_values)
{
    if (attributes_with_values.empty())
    {
        LOG_WARNING("Don't use this function with empty parameters!");
        return false;
    }
    const Element::Ptr element = selectElement(servicename, resourcename);
    if (element.isNull())
    {
        LOG_ERROR("Element for resource /" << servicename << "/" << resourcename << " not found.");
        return false;
    }

    const DBData::AttributeIndexMap& indexes = element->getIndexes();
    bool firstRun = true;
    for (const auto& pair : attributes_with_values)
    {
        const auto found = indexes.find(pair.first);
        if (found == indexes.end() || found->second.isNull())
        {
            LOG_WARNING("JSONDataCache::selectXObjectIDsWithAttributesOfValues: attribute name "
                        << pair.first << " not known.");
            continue;
        }
        const DBData::Index::IndexGroup result = found->second->find(pair.second);
        if (firstRun)
        {
            retIds.clear();
            retIds.reserve(result.size());
            for (const DBData::Index::IndexEntry& entry : result)
            {
                retIds.push_back(entry.getXObjId());
            }
        }
        else
        {
            std::unordered_set<DbId> matching;
            matching.reserve(result.size());
            for (const DBData::Index::IndexEntry& entry : result)
            {
                matching.insert(entry.getXObjId());
            }
            std::vector<long> narrowed;
            narrowed.reserve(retIds.size());
            for (const long id : retIds)
            {
                if (matching.count(id) > 0)
                {
                    narrowed.push_back(id);
                }
            }
            retIds.swap(narrowed);
        }
        firstRun = false;
    }
    return true;
}

const Poco::RegularExpression& findWildCard()
{
    static const Poco::RegularExpression wildcards(
        "(" + UrlPath::QUERY_WILDCARD + REGEX_ALTERNATIVE + UrlPath::QUERY_WILDCARD_HTML + ")+", 0, true);
    return wildcards;
}

std::string prepareRegEx(const std::string& searchValue)
{
    std::string pattern(searchValue);
    findWildCard().subst(pattern, REGEX_ANY_TEXT, Poco::RegularExpression::RE_GLOBAL);
    return "^" + pattern + "$";
}

} // namespace Orvi::JSONDataCache
