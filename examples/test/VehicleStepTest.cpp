#include "VehicleStep.h"

#include "VehicleFixture.h"
#include "WorkerBarrier.h"

#include <gtest/gtest.h>

namespace
{

using ServiceDB::Example::Test::WorkerBarrier;

using VehicleStepOnTheWorker = ServiceDB::Example::Test::VehicleFixture;

TEST_F(VehicleStepOnTheWorker, LetsTheVehicleTakeOneStep)
{
    vehicle.connect();
    worker.start();

    ASSERT_TRUE(
        worker.enqueueDataMessage(new Orvi::Example::VehicleStep(vehicle), Orvi::Util::MESSAGE_PRIO_NORMAL));
    ASSERT_TRUE(WorkerBarrier::passed(worker));

    EXPECT_EQ(textOf(vehicle.playerUuid(), "position"), "1");
    EXPECT_EQ(textOf(Orvi::Example::SampleData::cabinUuid(0), "temperature"), "19.1");
}

} // namespace
