#pragma once

#include "Message/DataMessageBase.h"

#include <Poco/SharedPtr.h>
#include <Poco/SynchronizedObject.h>

namespace Orvi::Util
{

/// A message whose sender waits on an event until the worker is done with it.
class DataWaitMessageBase : public DataMessageBase
{
public:
    using Event = Poco::SharedPtr<Poco::SynchronizedObject>;

    explicit DataWaitMessageBase(Event event = Event());

    void processData() override;
    /// Does nothing; subclasses do the work.

    void destroyData() override;
    /// Signals the event, if there is one, which wakes the waiting sender. Throws
    /// Poco::SystemException "cannot signal event (lock)" or "cannot signal event" when that fails.

protected:
    ~DataWaitMessageBase() override;

    Event m_event;
};

} // namespace Orvi::Util
