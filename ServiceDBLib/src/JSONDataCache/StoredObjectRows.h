#pragma once

#include "Command/QueryRows.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/DBData/XObjectCache.h"
#include "JSONDataCache/JsonText.h"
#include "JSONDataCache/RowTextCache.h"
#include "JSONDataCache/SortedOrderCache.h"

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Orvi::JSONDataCache
{

/// Stored objects as the rows of a resource answer: search, sort and paging read the stored values as
/// the rendered objects would hold them, and only the objects of the answer are selected and rendered.
///
/// A member of a rendered object is its stored value, but for references: a reference renders as the
/// object it names, which search and sort see by its "id" alone, and a reference whose object is gone
/// renders as nothing (the selection of that object repairs it).
class StoredObjectRows : public Command::QueryRows
{
public:
    using Renderer = std::function<Poco::Dynamic::Var(DBData::XObjectId id)>;
    /// Selects and renders one object of the answer.

    StoredObjectRows(const DBData::XObjectCache& store, const std::vector<DBData::XObjectId>& ids,
                     Renderer renderer);
    /// The rows are the objects of these ids, in this order; the list is borrowed and has to outlive the
    /// rows unchanged.

    ~StoredObjectRows() override;

    void rememberOrders(SortedOrderCache& orders, DBData::DbId element, Poco::UInt64 version);
    /// Takes the order of all rows from the cache and keeps it there; only for rows that are all objects
    /// of the element in this version, in ascending order of their ids.

    std::size_t size() const override { return m_ids.size(); }
    bool isObject(std::size_t) override { return true; }
    Poco::Dynamic::Var member(std::size_t row, const std::string& key) override;
    bool anyMember(std::size_t row, const MemberTest& test) override;
    Poco::Dynamic::Var render(std::size_t row) override;
    Poco::Dynamic::Var renderWhole(std::size_t row) override;

    void writeAsText(bool enabled, int expansion);
    /// Gives whole rows as JSON text (JsonText) written from the stored values, for answers that are
    /// sent as text and expanded to this level: an object renders as its values, and at level 0 a
    /// reference as the identity of the object it names, none of which needs a selection.

    void keepTexts(RowTextCache& texts);
    /// Takes the texts of rows at level 0 from the cache, and keeps there those it writes.

    const std::vector<std::size_t>* orderOfAll(const Sortings& sortings) override;

    std::optional<JsonText> wholeText(std::size_t row);
    /// The whole row as renderWhole gives it in text; none when the object has to be selected and
    /// rendered instead, or rows are not given as text.

private:
    const DBData::XObject& object(std::size_t row);
    Poco::Dynamic::Var renderedValue(const DBData::AttributeValue& cell) const;
    Poco::Dynamic::Var renderedReference(const std::string& uuid) const;
    static Poco::Dynamic::Var renderedId(const DBData::XObject& object);
    // A member of an object being written: its name and its value as rendered, or else a text.
    struct Member
    {
        const std::string* name;
        const Poco::Dynamic::Var* value;
        const std::string* text;
    };

    bool writeText(const DBData::XObject& stored, std::string& out) const;
    bool writeReferences(const DBData::AttributeValue& cell, Poco::Dynamic::Var& out, bool& present) const;
    /// Writes an array of references at level 0 as the identities of the objects they name.
    static bool writeMembers(std::vector<Member>& members, const DBData::XObject& object, std::string& out);
    /// Each gives false when the object has to be rendered from its selection instead.

    const Poco::Dynamic::Var* writeIdentity(const std::string& uuid) const;
    /// The identity of the object as JSON text, empty when it renders as nothing; null when the reference
    /// has to be rendered from its selection instead.

    static void appendString(const std::string& value, std::string& out);
    static void appendValue(const Poco::Dynamic::Var& value, std::string& out);
    /// Append the JSON text of the value as the JSON stringifier writes it.

    const DBData::XObjectCache& m_store;
    const std::vector<DBData::XObjectId>& m_ids;
    Renderer m_renderer;
    std::size_t m_row;
    const DBData::XObject* m_object;
    bool m_asText;
    int m_expansion;
    mutable std::unordered_map<std::string, Poco::Dynamic::Var> m_identities;
    /// The identities written so far by UUID, empty for an object that renders as nothing. Rows name the
    /// same objects again and again, and a read changes no identity.
    RowTextCache* m_texts;
    std::size_t m_textLength;
    /// The length of the text written last: rows of one answer are much alike.
    SortedOrderCache* m_orders;
    DBData::DbId m_element;
    Poco::UInt64 m_version;
};

} // namespace Orvi::JSONDataCache
