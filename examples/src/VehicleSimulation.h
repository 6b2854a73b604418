#pragma once

#include "Message/MessageSync.h"
#include "VehicleLink.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>

namespace Orvi::Example
{

/// The clock of the simulated vehicle: a thread of its own that has the worker run a VehicleStep a
/// given number of times a second. Ticks that find the worker's queue full are dropped, as a bus
/// drops stale samples.
class VehicleSimulation
{
public:
    VehicleSimulation(Util::MessageSync& worker, VehicleLink& link, std::size_t stepsPerSecond);
    /// Both must outlive the simulation; 0 steps a second means that start() does nothing.

    ~VehicleSimulation();
    /// Stops as stop() does.

    VehicleSimulation(const VehicleSimulation&) = delete;
    VehicleSimulation& operator=(const VehicleSimulation&) = delete;

    void start();

    void stop();
    /// Ends the thread; steps already queued still run on the worker.

    std::size_t stepsQueued() const;

    bool waitForSteps(std::size_t steps, std::chrono::milliseconds timeout) const;
    /// True once that many steps have been queued; false when the time runs out first.

private:
    void run();

    Util::MessageSync& m_worker;
    VehicleLink& m_link;
    const std::size_t m_stepsPerSecond;
    mutable std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    mutable std::condition_variable m_stepQueued;
    bool m_stopping = false;
    std::size_t m_stepsQueued = 0;
    std::thread m_thread;
};

} // namespace Orvi::Example
