#include "Message/DataWaitMessageBase.h"

#include <Poco/Exception.h>

#include <utility>

namespace Orvi::Util
{

DataWaitMessageBase::DataWaitMessageBase(Event event)
    : m_event(std::move(event))
{
}

DataWaitMessageBase::~DataWaitMessageBase() = default;

void DataWaitMessageBase::processData() {}

void DataWaitMessageBase::destroyData()
{
    if (m_event.isNull())
    {
        return;
    }
    try
    {
        m_event->lock();
    }
    catch (const Poco::Exception&)
    {
        throw Poco::SystemException("cannot signal event (lock)");
    }
    try
    {
        m_event->notify();
    }
    catch (const Poco::Exception&)
    {
        m_event->unlock();
        throw Poco::SystemException("cannot signal event");
    }
    m_event->unlock();
}

} // namespace Orvi::Util
