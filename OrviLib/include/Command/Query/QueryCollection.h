#pragma once

// The criteria are complete here: a shared pointer released where its class is only declared
// would free the criterion without running its destructor.
#include "Command/Query/RenderCriterion.h"
#include "Command/Query/SearchCriterion.h"

#include <Poco/SharedPtr.h>

#include <map>
#include <string>
#include <typeinfo>
#include <vector>

namespace Orvi::Command
{

/// Criteria of one family by the run-time type name of each criterion, so that all criteria of one class
/// stand under one key, in the order of the address.
template <class B>
using QueryCollectionMap = std::map<std::string, std::vector<Poco::SharedPtr<B>>>;

/// The criteria that shape the rendering of an answer: fields, expansion, paging and sorting.
using RenderCriteriaMap = QueryCollectionMap<RenderCriterion>;

/// The criteria that select the elements of an answer: free text and attribute values.
using SearchCriteriaMap = QueryCollectionMap<SearchCriterion>;

/// The key of a criterion class in a QueryCollectionMap: the type name as the type information reports it,
/// without a leading '*'.
inline std::string queryCollectionKey(const std::type_info& type)
{
    const char* name = type.name();
    // Some compilers mark types of internal linkage with a leading '*'; the key must not depend on it.
    if (*name == '*')
    {
        ++name;
    }
    return name;
}

/// The key under which criteria of class T stand in a QueryCollectionMap.
template <class T>
std::string queryCollectionKey()
{
    return queryCollectionKey(typeid(T));
}

} // namespace Orvi::Command
