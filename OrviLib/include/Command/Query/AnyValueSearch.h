#pragma once

#include "Command/Query/AbstractValueSearch.h"

#include <string>

namespace Orvi::Command
{

/// The free-text search of "$q": an element matches when any of its attribute values contains the text,
/// ASCII letters in either case, wildcards allowed. The text is one search value; commas in it are text.
class AnyValueSearch : public AbstractValueSearch
{
public:
    explicit AnyValueSearch(const std::string& queryValue);
    /// Invalid for an empty text.

    ~AnyValueSearch() override;
};

} // namespace Orvi::Command
