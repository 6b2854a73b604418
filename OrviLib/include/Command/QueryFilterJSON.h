#pragma once

#include "Command/QueryRows.h"
#include "Command/RequestBase.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include <vector>

namespace Orvi::Command
{

/// Applies the criteria of a request to finished JSON: search, then sort, then paging, then rendering
/// (field selection and expansion by name).
///
/// Search keeps an object when every attribute search matches (AND across attributes, OR across the
/// values of one) and every free-text search matches one of its attribute values. Elements of an array
/// that are not objects are kept by search, sort after all objects and are never rendered anew. The input
/// is never changed: a rendered object is a new object (options 0), an unrendered one is shared.
class QueryFilterJSON
{
public:
    using JsonObjectArray = std::vector<Poco::JSON::Object::Ptr>;

    QueryFilterJSON() = delete;

    static void filterJSONArrayByQuery(const Poco::JSON::Array& in, const RequestBase& request,
                                       Poco::JSON::Array& out);
    /// Replaces out by the elements of in that the search keeps, sorted and rendered; no paging. in and out
    /// may be the same array.

    static void filterJSONArrayByQuery(const Poco::JSON::Array& in, const RequestBase& request,
                                       Poco::JSON::Array& out, Poco::JSON::Object::Ptr& out_paging);
    /// As above, and takes the requested page. With paging, out_paging becomes a new object with "offset"
    /// (the index of the first element of the page), "offsetId" (when the page was asked for by id),
    /// "limit", "total" (the elements after the search), "totalPages" (0 for limit 0), and "previous" and
    /// "next" (the request's address with "$offset" at the neighbouring page, left out at the ends of the
    /// list and with limit 0). An id that is not in the list gives an empty page without "offset",
    /// "previous" and "next". Without paging, out_paging stays as it is.

    static void filterRowsByQuery(QueryRows& rows, const RequestBase& request, Poco::JSON::Array& out);
    static void filterRowsByQuery(QueryRows& rows, const RequestBase& request, Poco::JSON::Array& out,
                                  Poco::JSON::Object::Ptr& out_paging);
    /// As the two above for the array that the rows render to; only the rows that the answer takes are
    /// rendered.

    static void filterJSONObjectByQuery(const Poco::JSON::Object& in, const RequestBase& request,
                                        Poco::JSON::Object& out);
    /// Replaces out by in as the render criteria shape it; in and out may be the same object.

    static bool rendersObjects(const RequestBase& request);
    /// True when the request picks fields or expands named members, so that filtering changes an object.
};

} // namespace Orvi::Command
