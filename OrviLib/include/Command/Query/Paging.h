#pragma once

#include "Command/Query/RenderCriterion.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Types.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Orvi::Command
{

/// The page of a list that "$offset" and "$limit" ask for.
///
/// The offset is an index (0 the first element, -1 the last) or the id of the element that opens the
/// page; the limit is the page size, where 0 asks for the totals alone. A request with only "$offset"
/// gets PAGING_LIMIT_DEFAULT elements, one with only "$limit" starts at index 0.
class Paging : public RenderCriterion
{
public:
    /// How the page is given.
    enum PagingType
    {
        TYPE_TOTAL = 0, ///< Limit 0 with an index offset: the totals alone.
        TYPE_UUID = 1,  ///< The offset is the id of an element.
        TYPE_INDEX = 2  ///< The offset is an index.
    };

    /// Which of the two parameters the request gave.
    enum PagingRequestType
    {
        NONE = 0,
        OFFSET_LIMIT = 1,
        OFFSET = 2,
        LIMIT = 3,
        FORCED = 4 ///< Paging that the server imposes without being asked.
    };

    /// Where a page lies in a list.
    struct Window
    {
        bool located;       ///< False when the offset id is not in the list; the page is then empty.
        std::size_t offset; ///< The index of the first element of the page; past the end for an empty page.
        std::size_t begin;  ///< The first element taken.
        std::size_t end;    ///< One past the last element taken.
    };

    static constexpr Poco::UInt16 PAGING_LIMIT_DEFAULT = 100;
    /// The page size when the request gives an offset without a limit.

    static constexpr Poco::UInt16 PAGING_LIMIT_MAX = 1000;
    /// The largest page a request may ask for; it bounds the size of one answer.

    static constexpr int OFFSET_LAST = -1;
    /// The index offset of the last element.

    Paging();
    /// No request: offset 0, the default limit, request type NONE.

    Paging(int numberOffset, int limit, PagingRequestType requestType);
    /// A page by index; invalid unless isValidOffset(numberOffset) and isValidLimit(limit).

    Paging(const std::string& uuidOffset, int limit, PagingRequestType requestType);
    /// A page that opens at the element of this id; invalid for an empty id or a limit out of range.

    ~Paging() override;

    static bool parseOffset(const std::string& text, int& out_numberOffset, std::string& out_uuidOffset);
    /// Reads "$offset": an integer not below -1 fills out_numberOffset, an id (a UUID) fills
    /// out_uuidOffset; false, with both untouched, for anything else.

    static bool parseLimit(const std::string& text, int& out_limit);
    /// Reads "$limit": decimal digits giving 0 to PAGING_LIMIT_MAX; false, untouched, for anything else.

    static bool isValidOffset(int numberOffset) { return numberOffset >= OFFSET_LAST; }

    static bool isValidLimit(int limit) { return limit >= 0 && limit <= PAGING_LIMIT_MAX; }

    const std::string& getUuidOffset() const { return m_uuidOffset; }
    /// The id that opens the page; empty for an index offset.

    int getNumberOffset() const { return m_numberOffset; }
    /// The index offset; 0 when the page opens at an id.

    int getLimit() const { return m_limit; }

    PagingType getType() const { return m_type; }

    PagingRequestType getPagingRequestType() const { return m_pagingRequestType; }

    bool isUuidOffset() const { return m_type == TYPE_UUID; }

    Window locate(std::vector<Poco::Dynamic::Var>::const_iterator first,
                  std::vector<Poco::Dynamic::Var>::const_iterator last) const;
    /// The page within the list. An id offset is looked up by the "id" key of the object elements,
    /// without regard to case; -1 is the last element (0 in an empty list); an index past the end gives an
    /// empty page at that index.

    Window locate(std::size_t total, const std::function<Poco::Dynamic::Var(std::size_t index)>& idOf) const;
    /// The same for a list of total elements whose "id" values idOf gives, read only up to the element
    /// that opens the page.

    bool opensPage(const Poco::Dynamic::Var& id) const;
    /// True when an element with this "id" value opens a page asked for by id.

private:
    std::string m_uuidOffset;
    int m_numberOffset;
    int m_limit;
    PagingType m_type;
    PagingRequestType m_pagingRequestType;
};

} // namespace Orvi::Command
