#pragma once

namespace Orvi::Util
{

/// Base of classes whose objects have an identity and must not be copied.
class IUncopyable
{
public:
    IUncopyable() = default;
    virtual ~IUncopyable() = default;

    IUncopyable(const IUncopyable&) = delete;
    IUncopyable& operator=(const IUncopyable&) = delete;
};

} // namespace Orvi::Util
