#pragma once

#include "Command/Query/QueryCollection.h"

#include <Poco/URI.h>

#include <string>

namespace Orvi::Command
{

/// Turns the decoded query of an address into search and render criteria.
///
/// The grammar:
///   - "$fields=a,b": FilterParameter.
///   - "$expand=N" (0 to 3) or "$expand=a,b": ExpandParameter.
///   - "$q=text": AnyValueSearch.
///   - "$offset=N" (N >= -1) or "$offset=<uuid>", "$limit=N" (0 to Paging::PAGING_LIMIT_MAX): together
///     one Paging.
///   - "$sortby=a,-b": SortingParameter.
///   - "name=v1,v2": AttributeValueSearch, one for each such parameter.
/// Commas always separate alternatives; a comma cannot be part of a value. A parameter without name and
/// value (as between "&&") is skipped.
class QueryParser
{
public:
    static const char RESERVED_PREFIX;
    /// '$', the first character of every reserved parameter; other names are attribute names.

    QueryParser() = delete;

    static void parse(const Poco::URI::QueryParameters& parameters, RenderCriteriaMap& out_renderCriteria,
                      SearchCriteriaMap& out_searchCriteria);
    /// Adds the criteria of the parameters to the maps, in the order of the parameters. Throws
    /// Poco::URISyntaxException, with the maps untouched, for a reserved parameter that is unknown, given
    /// twice, empty or malformed, and for a value without an attribute name.
};

} // namespace Orvi::Command
