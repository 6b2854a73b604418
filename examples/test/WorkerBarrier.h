#pragma once

#include "Message/DataMessageBase.h"
#include "Message/MessagePriority.h"
#include "Message/MessageSync.h"

#include <Poco/Event.h>
#include <Poco/SharedPtr.h>

#include <utility>

namespace ServiceDB::Example::Test
{

/// Lets a test wait, with a time limit, until the worker has run every message queued before:
/// a message of the lowest priority that signals an event.
class WorkerBarrier
{
public:
    static constexpr long TIME_LIMIT_MS = 5000;

    static bool passed(Orvi::Util::MessageSync& worker)
    {
        // Shared, so that the event outlives a wait that gave up.
        Poco::SharedPtr<Poco::Event> reached(new Poco::Event);
        if (!worker.enqueueDataMessage(new Signal(reached), Orvi::Util::MESSAGE_PRIO_NORMAL))
        {
            return false;
        }
        return reached->tryWait(TIME_LIMIT_MS);
    }

private:
    class Signal : public Orvi::Util::DataMessageBase
    {
    public:
        explicit Signal(Poco::SharedPtr<Poco::Event> reached)
            : m_reached(std::move(reached))
        {
        }

        void processData() override { m_reached->set(); }

    protected:
        ~Signal() override = default;

    private:
        Poco::SharedPtr<Poco::Event> m_reached;
    };
};

} // namespace ServiceDB::Example::Test
