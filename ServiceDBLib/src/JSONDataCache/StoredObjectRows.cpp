#include "JSONDataCache/StoredObjectRows.h"

#include "Command/Query/QueryParameter.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBDataToJSONTransformator.h"
#include "JSONDataCache/JsonText.h"
#include "JSONDataCache/UuidList.h"

#include <Poco/Bugcheck.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Stringifier.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <sstream>
#include <typeinfo>
#include <utility>

namespace Orvi::JSONDataCache
{

namespace
{

constexpr std::size_t NO_ROW = static_cast<std::size_t>(-1);

} // namespace

StoredObjectRows::StoredObjectRows(const DBData::XObjectCache& store,
                                   const std::vector<DBData::XObjectId>& ids, Renderer renderer)
    : m_store(store)
    , m_ids(ids)
    , m_renderer(std::move(renderer))
    , m_row(NO_ROW)
    , m_object(nullptr)
    , m_asText(false)
    , m_expansion(0)
    , m_texts(nullptr)
    , m_textLength(0)
    , m_orders(nullptr)
    , m_element(DBData::aDBTableEntry::INVALID_DBID)
    , m_version(0)
{
}

StoredObjectRows::~StoredObjectRows() = default;

void StoredObjectRows::rememberOrders(SortedOrderCache& orders, DBData::DbId element, Poco::UInt64 version)
{
    m_orders = &orders;
    m_element = element;
    m_version = version;
}

void StoredObjectRows::writeAsText(bool enabled, int expansion)
{
    m_asText = enabled;
    m_expansion = expansion;
}

void StoredObjectRows::keepTexts(RowTextCache& texts)
{
    m_texts = &texts;
}

const std::vector<std::size_t>* StoredObjectRows::orderOfAll(const Sortings& sortings)
{
    if (m_orders == nullptr)
    {
        return nullptr;
    }
    const std::string criteria = SortedOrderCache::criteriaOf(sortings);
    if (SortedOrderCache::Kept* kept = m_orders->find(m_element, m_version, criteria))
    {
        std::vector<std::size_t> changedRows;
        for (const DBData::DbId id : kept->changed)
        {
            const auto row = std::lower_bound(m_ids.begin(), m_ids.end(), id);
            if (row != m_ids.end() && *row == id)
            {
                changedRows.push_back(static_cast<std::size_t>(row - m_ids.begin()));
            }
        }
        reposition(kept->order, std::move(changedRows), sortings);
        kept->changed.clear();
        return &kept->order;
    }
    SortedOrderCache::Order order(m_ids.size());
    std::iota(order.begin(), order.end(), 0);
    sort(order, sortings);
    return &m_orders->keep(m_element, m_version, criteria, std::move(order));
}

const DBData::XObject& StoredObjectRows::object(std::size_t row)
{
    // Search and sort read several members of one row in turn.
    if (row != m_row)
    {
        m_object = m_store.find(m_ids[row]);
        m_row = row;
    }
    if (m_object == nullptr)
    {
        poco_bugcheck_msg("An object of the resource is missing from the store");
    }
    return *m_object;
}

Poco::Dynamic::Var StoredObjectRows::member(std::size_t row, const std::string& key)
{
    const DBData::XObject& stored = object(row);
    // The last cell of the name is the one the rendered object holds.
    const DBData::AttributeValueList& cells = stored.getAttributeValues();
    for (auto cell = cells.rbegin(); cell != cells.rend(); ++cell)
    {
        if (!cell->isNull() && !(*cell)->getAttribute().isNull() && (*cell)->getName() == key)
        {
            Poco::Dynamic::Var result = renderedValue(**cell);
            if (result.isEmpty() && key == Command::QueryParameter::KEY_ID)
            {
                break;
            }
            return result;
        }
    }
    if (key == Command::QueryParameter::KEY_ID)
    {
        return stored.getId().toString();
    }
    return {};
}

bool StoredObjectRows::anyMember(std::size_t row, const MemberTest& test)
{
    const DBData::XObject& stored = object(row);
    bool idRendered = false;
    for (const DBData::AttributeValuePtr& cell : stored.getAttributeValues())
    {
        if (cell.isNull() || cell->getAttribute().isNull())
        {
            continue;
        }
        const Poco::Dynamic::Var value = renderedValue(*cell);
        if (value.isEmpty())
        {
            continue;
        }
        if (cell->getName() == Command::QueryParameter::KEY_ID)
        {
            idRendered = true;
        }
        if (test(value))
        {
            return true;
        }
    }
    return !idRendered && test(Poco::Dynamic::Var(stored.getId().toString()));
}

Poco::Dynamic::Var StoredObjectRows::render(std::size_t row)
{
    return m_renderer(m_ids[row]);
}

Poco::Dynamic::Var StoredObjectRows::renderWhole(std::size_t row)
{
    if (std::optional<JsonText> text = wholeText(row))
    {
        return *text;
    }
    return render(row);
}

std::optional<JsonText> StoredObjectRows::wholeText(std::size_t row)
{
    if (!m_asText)
    {
        return std::nullopt;
    }
    // Deeper levels write the same text for an object without references only; they are not kept.
    RowTextCache* const texts = m_expansion == 0 ? m_texts : nullptr;
    const Poco::UInt64 storeVersion = DBData::Element::latestVersion();
    if (texts != nullptr)
    {
        if (const JsonText* kept = texts->find(m_ids[row], storeVersion))
        {
            return *kept;
        }
    }
    const DBData::XObject& stored = object(row);
    std::string out;
    out.reserve(m_textLength + m_textLength / 4);
    if (!writeText(stored, out))
    {
        return std::nullopt;
    }
    m_textLength = out.size();
    JsonText text(std::move(out));
    if (texts != nullptr)
    {
        texts->keep(m_ids[row], storeVersion, text);
    }
    return text;
}

bool StoredObjectRows::writeText(const DBData::XObject& stored, std::string& out) const
{
    const DBData::AttributeValueList& cells = stored.getAttributeValues();
    if (cells.empty())
    {
        return false;
    }
    std::vector<Member> members;
    members.reserve(cells.size() + 1);
    // Rendered values live here while their members point at them; one at most for each cell, so that
    // the vector never moves them.
    std::vector<Poco::Dynamic::Var> rendered;
    rendered.reserve(cells.size());
    for (const DBData::AttributeValuePtr& cell : cells)
    {
        if (cell.isNull() || cell->getAttribute().isNull() || !cell->hasValue())
        {
            continue;
        }
        const Poco::Dynamic::Var& value = cell->getValue();
        if (cell->getType() != DBData::AttrType_Object && !cell->isArray())
        {
            members.push_back({&cell->getName(), &value, nullptr});
            continue;
        }
        // Beyond the first level a reference renders as more than its identity.
        if (cell->getType() == DBData::AttrType_Object && m_expansion != 0)
        {
            return false;
        }
        if (cell->getType() == DBData::AttrType_Object && !cell->isArray())
        {
            const Poco::Dynamic::Var* identity = writeIdentity(value.extract<std::string>());
            if (identity == nullptr)
            {
                return false;
            }
            if (!identity->isEmpty())
            {
                members.push_back({&cell->getName(), identity, nullptr});
            }
            continue;
        }
        Poco::Dynamic::Var& member = rendered.emplace_back();
        bool present = true;
        if (cell->getType() != DBData::AttrType_Object)
        {
            present = DBDataToJSONTransformator::handleAttributeValue(cell->getType(), cell->getName(), true,
                                                                      value, 0, member);
        }
        else if (!writeReferences(*cell, member, present))
        {
            return false;
        }
        if (present)
        {
            members.push_back({&cell->getName(), &member, nullptr});
        }
    }
    return writeMembers(members, stored, out);
}

bool StoredObjectRows::writeReferences(const DBData::AttributeValue& cell, Poco::Dynamic::Var& out,
                                       bool& present) const
{
    std::vector<std::string> uuids;
    if (!extractUuidList(cell.getValue(), uuids) || uuids.empty())
    {
        present = false;
        return true;
    }
    // Written as the stringifier writes an array: its elements between brackets, separated by commas.
    std::string identities;
    for (const std::string& uuid : uuids)
    {
        const Poco::Dynamic::Var* identity = writeIdentity(uuid);
        if (identity == nullptr)
        {
            return false;
        }
        if (!identity->isEmpty())
        {
            identities += identities.empty() ? '[' : ',';
            identities += identity->extract<JsonText>().text();
        }
    }
    // An array whose objects all render as nothing is shown as null.
    if (!identities.empty())
    {
        identities += ']';
        out = JsonText(std::move(identities));
    }
    present = true;
    return true;
}

const Poco::Dynamic::Var* StoredObjectRows::writeIdentity(const std::string& uuid) const
{
    const auto known = m_identities.find(uuid);
    if (known != m_identities.end())
    {
        return &known->second;
    }
    // A missing object is left to the selection, which repairs the reference.
    const DBData::XObject::Ptr target = m_store.get(uuid);
    if (target.isNull())
    {
        return nullptr;
    }
    if (target->getAttributeValues().empty())
    {
        return &m_identities.emplace(uuid, Poco::Dynamic::Var()).first->second;
    }
    std::vector<Member> members;
    for (const DBData::AttributeValuePtr& cell : target->getAttributeValues())
    {
        if (cell.isNull() || cell->getAttribute().isNull() || !cell->hasValue() ||
            !DBData::Attribute::isDefaultAttribute(cell->getName()))
        {
            continue;
        }
        if (cell->getType() == DBData::AttrType_Object || cell->isArray())
        {
            return nullptr;
        }
        members.push_back({&cell->getName(), &cell->getValue(), nullptr});
    }
    std::string text;
    if (!writeMembers(members, *target, text))
    {
        return nullptr;
    }
    return &m_identities.emplace(uuid, JsonText(std::move(text))).first->second;
}

bool StoredObjectRows::writeMembers(std::vector<Member>& members, const DBData::XObject& object,
                                    std::string& out)
{
    // As a JSON object holds them: sorted by name, a later member of a name replacing an earlier one,
    // "id" from the UUID when no member gives it. An "id" that differs from the UUID is left to the
    // rendering, which refuses it.
    // An insertion sort keeps equal names in order and needs no buffer; an object has a few members.
    for (auto member = members.begin(); member != members.end(); ++member)
    {
        const Member moving = *member;
        auto place = member;
        for (; place != members.begin() && *moving.name < *std::prev(place)->name; --place)
        {
            *place = *std::prev(place);
        }
        *place = moving;
    }
    auto kept = members.begin();
    for (auto member = members.begin(); member != members.end(); ++member)
    {
        const auto next = std::next(member);
        if (next == members.end() || *next->name != *member->name)
        {
            *kept++ = *member;
        }
    }
    members.erase(kept, members.end());
    const std::string uuid = object.getId().toString();
    const auto id =
        std::lower_bound(members.begin(), members.end(), Command::QueryParameter::KEY_ID,
                         [](const Member& member, const std::string& key) { return *member.name < key; });
    if (id == members.end() || *id->name != Command::QueryParameter::KEY_ID)
    {
        members.insert(id, {&Command::QueryParameter::KEY_ID, nullptr, &uuid});
    }
    else if (!id->value->isString() || id->value->extract<std::string>() != uuid)
    {
        return false;
    }

    out.clear();
    out += '{';
    for (auto member = members.begin(); member != members.end(); ++member)
    {
        if (member != members.begin())
        {
            out += ',';
        }
        appendString(*member->name, out);
        out += ':';
        if (member->value != nullptr)
        {
            appendValue(*member->value, out);
        }
        else
        {
            appendString(*member->text, out);
        }
    }
    out += '}';
    return true;
}

void StoredObjectRows::appendString(const std::string& value, std::string& out)
{
    // Printable ASCII stands as it is in JSON text, the quote and the backslash after a backslash; anything
    // else is escaped as the JSON stringifier escapes it.
    const bool printable =
        std::all_of(value.begin(), value.end(), [](char c) { return c >= 0x20 && c <= 0x7e; });
    if (printable)
    {
        out += '"';
        for (const char c : value)
        {
            if (c == '"' || c == '\\')
            {
                out += '\\';
            }
            out += c;
        }
        out += '"';
        return;
    }
    std::ostringstream text;
    Poco::JSON::Stringifier::formatString(value, text, Poco::JSON_WRAP_STRINGS);
    out += text.str();
}

void StoredObjectRows::appendValue(const Poco::Dynamic::Var& value, std::string& out)
{
    // The stringifier writes a number or a boolean as its text, and a text quoted.
    if (value.type() == typeid(std::string))
    {
        appendString(value.extract<std::string>(), out);
        return;
    }
    if (value.type() == typeid(JsonText))
    {
        out += value.extract<JsonText>().text();
        return;
    }
    if ((value.isNumeric() || value.isBoolean()) && value.type() != typeid(char))
    {
        out += value.convert<std::string>();
        return;
    }
    std::ostringstream text;
    Poco::JSON::Stringifier::stringify(value, text, 0, 0, Poco::JSON_WRAP_STRINGS);
    out += text.str();
}

Poco::Dynamic::Var StoredObjectRows::renderedValue(const DBData::AttributeValue& cell) const
{
    const Poco::Dynamic::Var& value = cell.getValue();
    if (value.isEmpty())
    {
        return {};
    }
    if (cell.getType() != DBData::AttrType_Object)
    {
        if (!cell.isArray())
        {
            return value;
        }
        Poco::Dynamic::Var rendered;
        DBDataToJSONTransformator::handleAttributeValue(cell.getType(), cell.getName(), true, value, 0,
                                                        rendered);
        return rendered;
    }
    if (!cell.isArray())
    {
        return renderedReference(value.extract<std::string>());
    }
    std::vector<std::string> uuids;
    if (!extractUuidList(value, uuids))
    {
        return {};
    }
    Poco::JSON::Array::Ptr rendered(new Poco::JSON::Array);
    for (const std::string& uuid : uuids)
    {
        Poco::Dynamic::Var reference = renderedReference(uuid);
        if (!reference.isEmpty())
        {
            rendered->add(reference);
        }
    }
    return rendered->size() > 0 ? Poco::Dynamic::Var(rendered) : Poco::Dynamic::Var();
}

Poco::Dynamic::Var StoredObjectRows::renderedReference(const std::string& uuid) const
{
    const DBData::XObject::Ptr target = m_store.get(uuid);
    if (target.isNull() || target->getAttributeValues().empty())
    {
        return {};
    }
    Poco::JSON::Object::Ptr reference(new Poco::JSON::Object(0));
    reference->set(Command::QueryParameter::KEY_ID, renderedId(*target));
    return reference;
}

Poco::Dynamic::Var StoredObjectRows::renderedId(const DBData::XObject& object)
{
    const DBData::AttributeValuePtr cell = object.getValue(Command::QueryParameter::KEY_ID);
    if (!cell.isNull() && cell->hasValue() && cell->getType() != DBData::AttrType_Object && !cell->isArray())
    {
        return cell->getValue();
    }
    return object.getId().toString();
}

} // namespace Orvi::JSONDataCache
