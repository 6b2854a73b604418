#pragma once

#include <Poco/Dynamic/VarHolder.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <utility>

namespace Orvi::JSONDataCache
{

/// A JSON value already written as compact text. Held in a Var inside a JSON array or object, it is
/// stringified as this text, so that an answer can carry rows that were never built as JSON objects.
/// Copies share the text, since a JSON array or object copies each value it is given.
class JsonText
{
public:
    explicit JsonText(std::string text)
        : m_text(std::make_shared<const std::string>(std::move(text)))
    {
    }

    const std::string& text() const { return *m_text; }

private:
    std::shared_ptr<const std::string> m_text;
};

} // namespace Orvi::JSONDataCache

namespace Poco::Dynamic
{

/// Lets a Var hold JsonText; its text is what the Var converts to, and what a stringifier writes.
template <>
class VarHolderImpl<Orvi::JSONDataCache::JsonText> : public VarHolder
{
public:
    explicit VarHolderImpl(const Orvi::JSONDataCache::JsonText& value)
        : m_value(value)
    {
    }

    const std::type_info& type() const override { return typeid(Orvi::JSONDataCache::JsonText); }

    void convert(std::string& out) const override { out = m_value.text(); }

    VarHolder* clone(Placeholder<VarHolder>* holder = nullptr) const override
    {
        return cloneHolder(holder, m_value);
    }

    const Orvi::JSONDataCache::JsonText& value() const { return m_value; }

private:
    Orvi::JSONDataCache::JsonText m_value;
};

} // namespace Poco::Dynamic
