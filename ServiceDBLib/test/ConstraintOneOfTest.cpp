#include "JSONDataCache/DBData/ConstraintOneOf.h"

#include "Command/UrlPath.h"

#include <Poco/Exception.h>
#include <Poco/URI.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using Orvi::Command::UrlPath;
using Orvi::DBData::ConstraintOneOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::vector<std::string> describe(const ConstraintOneOf::AllowedReferences& references)
{
    std::vector<std::string> result;
    for (const ConstraintOneOf::ElementType& reference : references)
    {
        result.push_back(reference.service + "|" + reference.resource + "|" + reference.element);
    }
    return result;
}

UrlPath path(const std::string& address)
{
    return UrlPath(Poco::URI(address));
}

std::string bugcheckMessage(ConstraintOneOf& sut, const std::vector<std::string>& classes)
{
    try
    {
        sut.setClasses(classes);
    }
    catch (const Poco::BugcheckException& e)
    {
        return e.message();
    }
    return "no bugcheck";
}

TEST(ConstraintOneOf, IsAOneOfConstraintWithoutTargetsAtFirst)
{
    const ConstraintOneOf sut;

    EXPECT_EQ(sut.getType(), Orvi::DBData::ConstraintType_OneOf);
    EXPECT_THAT(sut.getClasses(), IsEmpty());
    EXPECT_THAT(sut.getAllowedReferences(), IsEmpty());
}

TEST(ConstraintOneOf, ParsesAClassIntoLowerCaseLevels)
{
    ConstraintOneOf sut;

    sut.setClasses({"Car.Doors.Door"});

    EXPECT_THAT(describe(sut.getAllowedReferences()), ElementsAre("car|doors|door"));
    EXPECT_THAT(sut.getClasses(), ElementsAre("Car.Doors.Door"));
}

TEST(ConstraintOneOf, GivesTheSameTargetForAClassInCapitals)
{
    ConstraintOneOf sut;

    sut.setClasses({"a.b.c", "A.B.C"});

    EXPECT_THAT(describe(sut.getAllowedReferences()), ElementsAre("a|b|c", "a|b|c"));
}

TEST(ConstraintOneOf, AcceptsAnEmptyMiddleLevel)
{
    ConstraintOneOf sut;

    sut.setClasses({"a..c"});

    EXPECT_THAT(describe(sut.getAllowedReferences()), ElementsAre("a||c"));
}

TEST(ConstraintOneOf, RefusesAClassOfTwoLevelsWithABugcheck)
{
    ConstraintOneOf sut;

    const std::string message = bugcheckMessage(sut, {"a.b"});

    EXPECT_THAT(message, StartsWith("Invalid OneOf value in file \""));
    EXPECT_THAT(message, HasSubstr("ConstraintOneOf.cpp\", line "));
}

TEST(ConstraintOneOf, RefusesAClassOfFourLevelsWithABugcheck)
{
    ConstraintOneOf sut;

    EXPECT_THAT(bugcheckMessage(sut, {"a.b.c.d"}), StartsWith("Invalid OneOf value in file \""));
}

TEST(ConstraintOneOf, RefusesAnEmptyClassWithABugcheck)
{
    ConstraintOneOf sut;

    EXPECT_THAT(bugcheckMessage(sut, {""}), StartsWith("Invalid OneOf value in file \""));
}

TEST(ConstraintOneOf, KeepsTheTargetsParsedBeforeABadClass)
{
    ConstraintOneOf sut;

    bugcheckMessage(sut, {"a.b.c", "x.y", "d.e.f"});

    EXPECT_THAT(describe(sut.getAllowedReferences()), ElementsAre("a|b|c"));
    EXPECT_THAT(sut.getClasses(), ElementsAre("a.b.c", "x.y", "d.e.f"));
}

TEST(ConstraintOneOf, ReplacesFormerTargets)
{
    ConstraintOneOf sut;
    sut.setClasses({"a.b.c"});

    sut.setClasses({"d.e.f"});

    EXPECT_THAT(describe(sut.getAllowedReferences()), ElementsAre("d|e|f"));
}

TEST(ConstraintOneOf, CopiesGivenClassesAndTakesOverMovedOnes)
{
    ConstraintOneOf sut;
    const std::vector<std::string> copied{"a.b.c"};
    std::vector<std::string> moved{"d.e.f", "g.h.i"};

    sut.setClasses(copied);
    EXPECT_THAT(copied, ElementsAre("a.b.c"));
    EXPECT_THAT(describe(sut.getAllowedReferences()), ElementsAre("a|b|c"));

    sut.setClasses(std::move(moved));
    EXPECT_THAT(sut.getClasses(), ElementsAre("d.e.f", "g.h.i"));
    EXPECT_THAT(describe(sut.getAllowedReferences()), ElementsAre("d|e|f", "g|h|i"));
}

TEST(ConstraintOneOf, AllowsAnyObjectOfAnAllowedResource)
{
    ConstraintOneOf sut;
    sut.setClasses({"car.doors.door"});

    EXPECT_TRUE(sut.checkUrlPath(path("/car/doors/6f1c2a3e-4b5d-4e6f-8a7b-9c0d1e2f3a4b")));
    EXPECT_TRUE(sut.checkUrlPath(path("/car/doors/other")));
}

TEST(ConstraintOneOf, AllowsAnAddressWrittenInAnotherCase)
{
    ConstraintOneOf sut;
    sut.setClasses({"car.doors.door"});

    EXPECT_TRUE(sut.checkUrlPath(path("/CAR/Doors/x")));
}

TEST(ConstraintOneOf, RefusesAnotherResourceOrService)
{
    ConstraintOneOf sut;
    sut.setClasses({"car.doors.door"});

    EXPECT_FALSE(sut.checkUrlPath(path("/car/windows/x")));
    EXPECT_FALSE(sut.checkUrlPath(path("/home/doors/x")));
}

TEST(ConstraintOneOf, IgnoresTheElementOfATarget)
{
    ConstraintOneOf first;
    first.setClasses({"car.doors.door"});
    ConstraintOneOf second;
    second.setClasses({"car.doors.hatch"});

    EXPECT_TRUE(first.checkUrlPath(path("/car/doors/x")));
    EXPECT_TRUE(second.checkUrlPath(path("/car/doors/x")));
}

TEST(ConstraintOneOf, FindsAnAllowedResourceAfterOthers)
{
    ConstraintOneOf sut;
    sut.setClasses({"car.windows.window", "home.lights.light", "car.doors.door"});

    EXPECT_TRUE(sut.checkUrlPath(path("/car/doors/x")));
}

TEST(ConstraintOneOf, AllowsNothingWithoutTargets)
{
    const ConstraintOneOf sut;

    EXPECT_FALSE(sut.checkUrlPath(path("/car/doors/x")));
}

TEST(ConstraintOneOf, GivesACopyOfItsTargets)
{
    ConstraintOneOf sut;
    sut.setClasses({"a.b.c"});

    ConstraintOneOf::AllowedReferences references = sut.getAllowedReferences();
    references.clear();

    EXPECT_EQ(sut.getAllowedReferences().size(), 1u);
}

} // namespace
