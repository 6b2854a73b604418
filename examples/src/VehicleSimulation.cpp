#include "VehicleSimulation.h"

#include "VehicleStep.h"

namespace Orvi::Example
{

VehicleSimulation::VehicleSimulation(Util::MessageSync& worker, VehicleLink& link, std::size_t stepsPerSecond)
    : m_worker(worker)
    , m_link(link)
    , m_stepsPerSecond(stepsPerSecond)
{
}

VehicleSimulation::~VehicleSimulation()
{
    stop();
}

void VehicleSimulation::start()
{
    if (m_stepsPerSecond == 0 || m_thread.joinable())
    {
        return;
    }
    m_thread = std::thread([this] { run(); });
}

void VehicleSimulation::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wakeUp.notify_all();
    if (m_thread.joinable())
    {
        m_thread.join();
    }
}

std::size_t VehicleSimulation::stepsQueued() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_stepsQueued;
}

bool VehicleSimulation::waitForSteps(std::size_t steps, std::chrono::milliseconds timeout) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_stepQueued.wait_for(lock, timeout, [this, steps] { return m_stepsQueued >= steps; });
}

void VehicleSimulation::run()
{
    const auto period = std::chrono::nanoseconds(std::chrono::seconds(1)) / m_stepsPerSecond;
    // Steps follow a fixed schedule, so that a late step does not shift all later ones.
    auto next = std::chrono::steady_clock::now() + period;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_wakeUp.wait_until(lock, next, [this] { return m_stopping; }))
    {
        next += period;
        if (m_worker.isCriticalQueueSizeReached())
        {
            continue;
        }
        if (m_worker.enqueueDataMessage(new VehicleStep(m_link), Util::MESSAGE_PRIO_NORMAL))
        {
            ++m_stepsQueued;
            m_stepQueued.notify_all();
        }
    }
}

} // namespace Orvi::Example
