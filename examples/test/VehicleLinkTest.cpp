#include "VehicleLink.h"

#include "SampleData.h"
#include "VehicleFixture.h"

#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Example::SampleData;
using Orvi::Example::VehicleLink;
using Orvi::Mapping::OperationResult;

// The test thread plays the worker and calls the link directly.
class VehicleLinkSteps : public ServiceDB::Example::Test::VehicleFixture
{
protected:
    static constexpr unsigned FIRST_TRACK_DURATION = 120;

    VehicleLinkSteps()
        : sut(vehicle)
    {
    }

    static Poco::JSON::Object::Ptr valuesOf(const std::string& name, const Poco::Dynamic::Var& value)
    {
        Poco::JSON::Object::Ptr values(new Poco::JSON::Object);
        values->set(name, value);
        return values;
    }

    static std::string driverZone() { return SampleData::cabinUuid(0); }
    static std::string passengerZone() { return SampleData::cabinUuid(1); }

    VehicleLink& sut;
};

TEST_F(VehicleLinkSteps, ConnectWritesTheStartTemperatureIntoBothZones)
{
    sut.connect();

    EXPECT_EQ(textOf(driverZone(), "temperature"), "19");
    EXPECT_EQ(textOf(passengerZone(), "temperature"), "19");
}

TEST_F(VehicleLinkSteps, ConnectCreatesThePlayerOnTheFirstTrack)
{
    sut.connect();

    ASSERT_FALSE(sut.playerUuid().empty());
    EXPECT_EQ(textOf(sut.playerUuid(), "name"), "Now playing");
    EXPECT_EQ(textOf(sut.playerUuid(), "track"), SampleData::trackUuid(0));
    EXPECT_EQ(textOf(sut.playerUuid(), "position"), "0");
    EXPECT_EQ(textOf(sut.playerUuid(), "state"), "playing");
}

TEST_F(VehicleLinkSteps, ConnectTellsTheSubscribersOfTheZonesAndOfTheNewPlayersCollection)
{
    sut.connect();

    EXPECT_EQ(trigger.changes(), (std::vector<std::string>{"element cabin/zones/" + driverZone(),
                                                           "element cabin/zones/" + passengerZone(),
                                                           "collection audio/player"}));
}

TEST_F(VehicleLinkSteps, AStepMovesEveryZoneATenthOfADegreeTowardItsSetPoint)
{
    sut.connect();

    sut.step();

    EXPECT_EQ(textOf(driverZone(), "temperature"), "19.1");
    EXPECT_EQ(textOf(passengerZone(), "temperature"), "19.1");
    EXPECT_DOUBLE_EQ(sut.temperatureOf(driverZone()), 19.1);
}

TEST_F(VehicleLinkSteps, AStepAdvancesThePlayerBySecondAndTellsItsSubscribers)
{
    sut.connect();
    trigger.clear();

    sut.step();

    EXPECT_EQ(textOf(sut.playerUuid(), "position"), "1");
    EXPECT_EQ(trigger.changes(), (std::vector<std::string>{"element cabin/zones/" + driverZone(),
                                                           "element cabin/zones/" + passengerZone(),
                                                           "element audio/player/" + sut.playerUuid()}));
}

TEST_F(VehicleLinkSteps, AZoneStopsAtItsSetPointAndIsNoLongerReported)
{
    sut.connect();
    // The driver's zone needs 25 steps from 19.0 to 21.5, the passenger's 30 to 22.0.
    for (int i = 0; i < 30; ++i)
    {
        sut.step();
    }
    trigger.clear();

    sut.step();

    EXPECT_EQ(textOf(driverZone(), "temperature"), "21.5");
    EXPECT_EQ(textOf(passengerZone(), "temperature"), "22");
    EXPECT_EQ(trigger.changes(), std::vector<std::string>{"element audio/player/" + sut.playerUuid()});
}

TEST_F(VehicleLinkSteps, ThePlayerStartsTheTrackAgainAtItsEnd)
{
    sut.connect();

    for (unsigned i = 0; i < FIRST_TRACK_DURATION; ++i)
    {
        sut.step();
    }

    EXPECT_EQ(sut.playerPosition(), 0U);
    EXPECT_EQ(textOf(sut.playerUuid(), "position"), "0");
}

TEST_F(VehicleLinkSteps, AConfirmedSetPointIsStoredAndTheZoneDriftsTowardIt)
{
    sut.connect();

    const OperationResult::Enum result =
        sut.confirm("cabin", "zones", driverZone(), valuesOf("setPoint", 18.5));
    sut.step();

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(textOf(driverZone(), "setPoint"), "18.5");
    EXPECT_EQ(textOf(driverZone(), "temperature"), "18.9");
}

TEST_F(VehicleLinkSteps, AConfirmationOfASeatMapsTheSeatOnFirstUse)
{
    const std::string seat = SampleData::cabinUuid(2);

    const OperationResult::Enum first = sut.confirm("cabin", "seats", seat, valuesOf("heatingLevel", 3));
    const OperationResult::Enum second = sut.confirm("cabin", "seats", seat, valuesOf("heatingLevel", 1));

    EXPECT_EQ(first, OperationResult::ObjectUpdated);
    EXPECT_EQ(second, OperationResult::ObjectUpdated);
    EXPECT_EQ(textOf(seat, "heatingLevel"), "1");
    EXPECT_EQ(trigger.changes(),
              (std::vector<std::string>{"element cabin/seats/" + seat, "element cabin/seats/" + seat}));
}

TEST_F(VehicleLinkSteps, AConfirmationOfTheSameValuesChangesNothing)
{
    const OperationResult::Enum result =
        sut.confirm("cabin", "zones", driverZone(), valuesOf("setPoint", 21.5));

    EXPECT_EQ(result, OperationResult::ObjectUnchanged);
    EXPECT_TRUE(trigger.changes().empty());
}

TEST_F(VehicleLinkSteps, AConfirmationOfAnObjectTheStoreDoesNotHoldFails)
{
    const OperationResult::Enum result =
        sut.confirm("cabin", "zones", "c0000099-0000-4000-8000-000000000000", valuesOf("setPoint", 20.0));

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_TRUE(trigger.changes().empty());
}

TEST_F(VehicleLinkSteps, AStepBeforeConnectChangesNothing)
{
    sut.step();

    EXPECT_EQ(textOf(driverZone(), "temperature"), "empty");
    EXPECT_TRUE(trigger.changes().empty());
}

} // namespace
