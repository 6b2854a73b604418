#include "VehicleSimulation.h"

#include "VehicleFixture.h"
#include "WorkerBarrier.h"

#include <gtest/gtest.h>

#include <chrono>

namespace
{

using ServiceDB::Example::Test::WorkerBarrier;

using VehicleSimulationRun = ServiceDB::Example::Test::VehicleFixture;

constexpr std::chrono::milliseconds TIME_LIMIT{5000};

TEST_F(VehicleSimulationRun, QueuesStepsForTheWorkerUntilItIsStopped)
{
    vehicle.connect();
    worker.start();
    Orvi::Example::VehicleSimulation sut(worker, vehicle, 200);

    sut.start();
    ASSERT_TRUE(sut.waitForSteps(3, TIME_LIMIT));
    sut.stop();
    const std::size_t steps = sut.stepsQueued();
    ASSERT_TRUE(WorkerBarrier::passed(worker));

    EXPECT_GE(steps, 3U);
    EXPECT_EQ(sut.stepsQueued(), steps);
    EXPECT_EQ(vehicle.playerPosition(), steps % 120);
}

TEST_F(VehicleSimulationRun, StaysStillAtARateOfZero)
{
    Orvi::Example::VehicleSimulation sut(worker, vehicle, 0);

    sut.start();
    sut.stop();

    EXPECT_EQ(sut.stepsQueued(), 0U);
    EXPECT_FALSE(sut.waitForSteps(1, std::chrono::milliseconds(0)));
}

TEST_F(VehicleSimulationRun, CanBeStoppedWithoutHavingStarted)
{
    Orvi::Example::VehicleSimulation sut(worker, vehicle, 10);

    sut.stop();

    EXPECT_EQ(sut.stepsQueued(), 0U);
}

} // namespace
