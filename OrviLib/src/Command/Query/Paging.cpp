#include "Command/Query/Paging.h"

#include <Poco/JSON/Object.h>
#include <Poco/NumberParser.h>
#include <Poco/String.h>
#include <Poco/UUID.h>

#include <algorithm>
#include <cctype>

namespace Orvi::Command
{

namespace
{

constexpr char MINUS = '-';

bool isDecimal(const std::string& text, bool allowMinus)
{
    std::size_t begin = 0;
    if (allowMinus && !text.empty() && text.front() == MINUS)
    {
        begin = 1;
    }
    if (begin == text.size())
    {
        return false;
    }
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(begin), text.end(),
                       [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; });
}

} // namespace

Paging::Paging()
    : m_numberOffset(0)
    , m_limit(PAGING_LIMIT_DEFAULT)
    , m_type(TYPE_INDEX)
    , m_pagingRequestType(NONE)
{
}

Paging::Paging(int numberOffset, int limit, PagingRequestType requestType)
    : RenderCriterion(isValidOffset(numberOffset) && isValidLimit(limit))
    , m_numberOffset(numberOffset)
    , m_limit(limit)
    , m_type(limit == 0 ? TYPE_TOTAL : TYPE_INDEX)
    , m_pagingRequestType(requestType)
{
}

Paging::Paging(const std::string& uuidOffset, int limit, PagingRequestType requestType)
    : RenderCriterion(!uuidOffset.empty() && isValidLimit(limit))
    , m_uuidOffset(uuidOffset)
    , m_numberOffset(0)
    , m_limit(limit)
    , m_type(TYPE_UUID)
    , m_pagingRequestType(requestType)
{
}

Paging::~Paging() = default;

bool Paging::parseOffset(const std::string& text, int& out_numberOffset, std::string& out_uuidOffset)
{
    if (isDecimal(text, true))
    {
        int number = 0;
        if (!Poco::NumberParser::tryParse(text, number) || !isValidOffset(number))
        {
            return false;
        }
        out_numberOffset = number;
        return true;
    }
    Poco::UUID uuid;
    if (!uuid.tryParse(text))
    {
        return false;
    }
    out_uuidOffset = uuid.toString();
    return true;
}

bool Paging::parseLimit(const std::string& text, int& out_limit)
{
    int number = 0;
    if (!isDecimal(text, false) || !Poco::NumberParser::tryParse(text, number) || !isValidLimit(number))
    {
        return false;
    }
    out_limit = number;
    return true;
}

Paging::Window Paging::locate(std::vector<Poco::Dynamic::Var>::const_iterator first,
                              std::vector<Poco::Dynamic::Var>::const_iterator last) const
{
    return locate(static_cast<std::size_t>(last - first), [first](std::size_t index)
                  { return QueryParameter::memberOf(first[index], QueryParameter::KEY_ID); });
}

Paging::Window Paging::locate(std::size_t total,
                              const std::function<Poco::Dynamic::Var(std::size_t index)>& idOf) const
{
    Window window{true, 0, 0, 0};
    if (m_type == TYPE_UUID)
    {
        std::size_t index = 0;
        while (index < total && !opensPage(idOf(index)))
        {
            ++index;
        }
        if (index == total)
        {
            window.located = false;
            return window;
        }
        window.offset = index;
    }
    else if (m_numberOffset == OFFSET_LAST)
    {
        window.offset = total > 0 ? total - 1 : 0;
    }
    else
    {
        window.offset = static_cast<std::size_t>(std::max(m_numberOffset, 0));
    }
    const auto limit = static_cast<std::size_t>(isValidLimit(m_limit) ? m_limit : 0);
    window.begin = std::min(window.offset, total);
    window.end = window.begin + std::min(limit, total - window.begin);
    return window;
}

bool Paging::opensPage(const Poco::Dynamic::Var& id) const
{
    return id.type() == typeid(std::string) && Poco::icompare(id.extract<std::string>(), m_uuidOffset) == 0;
}

} // namespace Orvi::Command
