#include "JSONDataCache/DBData/ConstraintResolution.h"

#include "TestSupport/LogCapture.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <typeinfo>

namespace
{

using Orvi::DBData::ConstraintResolution;
using Poco::Dynamic::Var;
using ServiceDB::Test::LogCapture;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr double LARGEST = std::numeric_limits<double>::max();

ConstraintResolution range(const Var& minimum, const Var& maximum, const Var& resolution = Var())
{
    ConstraintResolution constraint;
    constraint.setMinimum(minimum);
    constraint.setMaximum(maximum);
    constraint.setResolution(resolution);
    return constraint;
}

// The display text of the exception that checking the value throws; it has to be of class Expected.
template <typename Expected, typename T>
std::string checkError(const ConstraintResolution& sut, T value)
{
    try
    {
        sut.checkValue(value);
    }
    catch (const Poco::Exception& e)
    {
        EXPECT_TRUE(typeid(e) == typeid(Expected)) << e.className();
        return e.displayText();
    }
    return "nothing thrown";
}

TEST(ConstraintResolution, SpansAllFiniteDoublesWithoutResolutionAtFirst)
{
    const ConstraintResolution sut;

    EXPECT_EQ(sut.getType(), Orvi::DBData::ConstraintType_Resolution);
    EXPECT_EQ(sut.getMaximum().extract<double>(), LARGEST);
    EXPECT_EQ(sut.getMinimum().extract<double>(), -LARGEST);
    EXPECT_TRUE(sut.getResolution().isEmpty());
}

TEST(ConstraintResolution, KeepsBoundsAndResolutionAsGiven)
{
    ConstraintResolution sut;

    sut.setMinimum(std::string("-5"));
    sut.setMaximum(7);
    sut.setResolution(0.25);

    EXPECT_EQ(sut.getMinimum().extract<std::string>(), "-5");
    EXPECT_EQ(sut.getMaximum().extract<int>(), 7);
    EXPECT_EQ(sut.getResolution().extract<double>(), 0.25);
}

// Numbers

TEST(ConstraintResolution, RoundsANumberUpToTheNearestStep)
{
    const ConstraintResolution sut = range(0.0, 10.0, 0.5);
    double value = 1.3;

    EXPECT_TRUE(sut.checkValue(value));
    EXPECT_EQ(value, 1.5);
}

TEST(ConstraintResolution, RoundsANumberDownToTheNearestStep)
{
    const ConstraintResolution sut = range(0.0, 10.0, 0.5);
    double value = 1.2;

    EXPECT_TRUE(sut.checkValue(value));
    EXPECT_EQ(value, 1.0);
}

TEST(ConstraintResolution, RoundsHalfStepsOfANumberAwayFromZero)
{
    const ConstraintResolution sut = range(-10.0, 10.0, 1.0);
    double positive = 2.5;
    double negative = -2.5;

    EXPECT_TRUE(sut.checkValue(positive));
    EXPECT_TRUE(sut.checkValue(negative));
    EXPECT_EQ(positive, 3.0);
    EXPECT_EQ(negative, -3.0);
}

TEST(ConstraintResolution, RoundsANumberToAStepAboveOne)
{
    const ConstraintResolution sut = range(-100.0, 100.0, 20.0);
    double value = -31.0;

    EXPECT_TRUE(sut.checkValue(value));
    EXPECT_EQ(value, -40.0);
}

TEST(ConstraintResolution, RefusesAZeroResolutionForANumberWithABugcheck)
{
    const ConstraintResolution sut = range(0.0, 1.0, 0.0);

    const std::string text = checkError<Poco::BugcheckException>(sut, 0.5);

    EXPECT_THAT(text, StartsWith("Bugcheck: invalid resolution in file \""));
    EXPECT_THAT(text, HasSubstr("ConstraintResolution.cpp\", line "));
}

TEST(ConstraintResolution, RefusesANegativeResolutionForANumberWithABugcheck)
{
    const ConstraintResolution sut = range(0.0, 1.0, -0.5);

    EXPECT_THAT(checkError<Poco::BugcheckException>(sut, 0.5), StartsWith("Bugcheck: invalid resolution"));
}

TEST(ConstraintResolution, PassesEveryFiniteNumberAndNaNWithDefaultBounds)
{
    LogCapture capture;
    const ConstraintResolution sut;
    double largest = LARGEST;
    double smallest = -LARGEST;
    double zero = 0.0;
    double notANumber = std::nan("");

    EXPECT_TRUE(sut.checkValue(largest));
    EXPECT_TRUE(sut.checkValue(smallest));
    EXPECT_TRUE(sut.checkValue(zero));
    EXPECT_TRUE(sut.checkValue(notANumber));
    EXPECT_TRUE(std::isnan(notANumber));
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(ConstraintResolution, RefusesInfinityWithDefaultBounds)
{
    LogCapture capture;
    const ConstraintResolution sut;
    double positive = std::numeric_limits<double>::infinity();
    double negative = -std::numeric_limits<double>::infinity();

    EXPECT_FALSE(sut.checkValue(positive));
    EXPECT_FALSE(sut.checkValue(negative));
    EXPECT_THAT(capture.lines(),
                ElementsAre("Debug: Value inf not between -1.79769e+308 and 1.79769e+308.",
                            "Debug: Value -inf not between -1.79769e+308 and 1.79769e+308."));
}

TEST(ConstraintResolution, IncludesBothBoundsOfANumber)
{
    const ConstraintResolution sut = range(-1.5, 2.5);
    double lowest = -1.5;
    double highest = 2.5;
    double below = -1.5000001;

    EXPECT_TRUE(sut.checkValue(lowest));
    EXPECT_TRUE(sut.checkValue(highest));
    EXPECT_FALSE(sut.checkValue(below));
}

TEST(ConstraintResolution, RefusesANumberRoundedAboveTheMaximumAndKeepsItRounded)
{
    LogCapture capture;
    const ConstraintResolution sut = range(0.0, 1.4, 0.5);
    double value = 1.3;

    EXPECT_FALSE(sut.checkValue(value));
    EXPECT_EQ(value, 1.5);
    EXPECT_THAT(capture.lines(), ElementsAre("Debug: Value 1.5 not between 0 and 1.4."));
}

TEST(ConstraintResolution, ReadsBoundsOfAnyHeldTypeForANumber)
{
    const ConstraintResolution sut = range(std::string("-2"), 3, std::string("0.5"));
    double inside = 2.9;
    double outside = 3.3;

    EXPECT_TRUE(sut.checkValue(inside));
    EXPECT_EQ(inside, 3.0);
    EXPECT_FALSE(sut.checkValue(outside));
}

TEST(ConstraintResolution, RaisesTheEmptyValueErrorForAMissingBoundOfANumber)
{
    ConstraintResolution sut;
    sut.setMaximum(Var());

    EXPECT_EQ(checkError<Poco::InvalidAccessException>(sut, 1.0),
              "Invalid access: Can not convert empty value.");
}

// Signed integers

TEST(ConstraintResolution, RoundsIntegersToTheNearestMultipleOfTen)
{
    const ConstraintResolution sut = range(-100, 100, 10);
    Poco::Int64 fourteen = 14;
    Poco::Int64 fifteen = 15;
    Poco::Int64 minusFifteen = -15;
    Poco::Int64 minusFourteen = -14;

    EXPECT_TRUE(sut.checkValue(fourteen));
    EXPECT_TRUE(sut.checkValue(fifteen));
    EXPECT_TRUE(sut.checkValue(minusFifteen));
    EXPECT_TRUE(sut.checkValue(minusFourteen));
    EXPECT_EQ(fourteen, 10);
    EXPECT_EQ(fifteen, 20);
    EXPECT_EQ(minusFifteen, -20);
    EXPECT_EQ(minusFourteen, -10);
}

TEST(ConstraintResolution, RoundsTheTruncatedHalfOfAnOddResolutionUp)
{
    const ConstraintResolution sut = range(-100, 100, 3);
    Poco::Int64 three = 3;
    Poco::Int64 four = 4;
    Poco::Int64 five = 5;
    Poco::Int64 minusFour = -4;

    EXPECT_TRUE(sut.checkValue(three));
    EXPECT_TRUE(sut.checkValue(four));
    EXPECT_TRUE(sut.checkValue(five));
    EXPECT_TRUE(sut.checkValue(minusFour));
    EXPECT_EQ(three, 3);
    EXPECT_EQ(four, 6);
    EXPECT_EQ(five, 6);
    EXPECT_EQ(minusFour, -6);
}

TEST(ConstraintResolution, LeavesAnIntegerUnroundedForAResolutionOfOneOrLess)
{
    LogCapture capture;
    Poco::Int64 one = 17;
    Poco::Int64 zero = 17;
    Poco::Int64 negative = 17;

    EXPECT_TRUE(range(0, 100, 1).checkValue(one));
    EXPECT_TRUE(range(0, 100, 0).checkValue(zero));
    EXPECT_TRUE(range(0, 100, -5).checkValue(negative));
    EXPECT_EQ(one, 17);
    EXPECT_EQ(zero, 17);
    EXPECT_EQ(negative, 17);
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(ConstraintResolution, TestsTheRangeOnlyForAZeroIntegerResolution)
{
    LogCapture capture;
    const ConstraintResolution sut = range(0, 100, 0);
    Poco::Int64 value = 101;

    EXPECT_FALSE(sut.checkValue(value));
    EXPECT_EQ(value, 101);
    EXPECT_THAT(capture.lines(), ElementsAre("Debug: Value 101 not between 0 and 100."));
}

TEST(ConstraintResolution, WritesARoundedIntegerBackEvenWhenItIsOutOfRange)
{
    LogCapture capture;
    const ConstraintResolution sut = range(0, 100, 10);
    Poco::Int64 value = 96;
    Poco::Int64 tooLarge = 106;

    EXPECT_TRUE(sut.checkValue(value));
    EXPECT_FALSE(sut.checkValue(tooLarge));
    EXPECT_EQ(value, 100);
    EXPECT_EQ(tooLarge, 110);
    EXPECT_THAT(capture.lines(), ElementsAre("Debug: Value 110 not between 0 and 100."));
}

TEST(ConstraintResolution, RefusesAnIntegerBelowTheMinimum)
{
    LogCapture capture;
    const ConstraintResolution sut = range(-10, 10);
    Poco::Int64 value = -11;

    EXPECT_FALSE(sut.checkValue(value));
    EXPECT_THAT(capture.lines(), ElementsAre("Debug: Value -11 not between -10 and 10."));
}

TEST(ConstraintResolution, CannotReadTheDefaultBoundsAsInteger)
{
    const ConstraintResolution sut;

    EXPECT_EQ(checkError<Poco::RangeException>(sut, Poco::Int64(1)), "Out of range: Value too small.");
}

TEST(ConstraintResolution, CannotReadTheDefaultMaximumAsInteger)
{
    ConstraintResolution sut;
    sut.setMinimum(0);

    EXPECT_EQ(checkError<Poco::RangeException>(sut, Poco::Int64(1)), "Out of range: Value too large.");
}

TEST(ConstraintResolution, ReadsIntegerBoundsGivenAsText)
{
    const ConstraintResolution sut = range(std::string("-5"), std::string("5"), std::string("2"));
    Poco::Int64 value = -3;

    EXPECT_TRUE(sut.checkValue(value));
    EXPECT_EQ(value, -4);
}

TEST(ConstraintResolution, RoundsTheLargestIntegerDownInsteadOfBeyondItsType)
{
    const ConstraintResolution sut =
        range(std::numeric_limits<Poco::Int64>::min(), std::numeric_limits<Poco::Int64>::max(), 10);
    Poco::Int64 largest = std::numeric_limits<Poco::Int64>::max();
    Poco::Int64 smallest = std::numeric_limits<Poco::Int64>::min();

    EXPECT_TRUE(sut.checkValue(largest));
    EXPECT_TRUE(sut.checkValue(smallest));
    EXPECT_EQ(largest, 9223372036854775800);
    EXPECT_EQ(smallest, -9223372036854775800);
}

TEST(ConstraintResolution, KeepsTheSmallestIntegerWhenItIsAMultiple)
{
    const ConstraintResolution sut =
        range(std::numeric_limits<Poco::Int64>::min(), std::numeric_limits<Poco::Int64>::max(), 2);
    Poco::Int64 smallest = std::numeric_limits<Poco::Int64>::min();

    EXPECT_TRUE(sut.checkValue(smallest));
    EXPECT_EQ(smallest, std::numeric_limits<Poco::Int64>::min());
}

// Unsigned integers

TEST(ConstraintResolution, RoundsUnsignedIntegersToTheNearestMultipleOfFour)
{
    const ConstraintResolution sut = range(0, 100, 4);
    Poco::UInt64 six = 6;
    Poco::UInt64 five = 5;

    EXPECT_TRUE(sut.checkValue(six));
    EXPECT_TRUE(sut.checkValue(five));
    EXPECT_EQ(six, 8u);
    EXPECT_EQ(five, 4u);
}

TEST(ConstraintResolution, RefusesAnUnsignedIntegerAboveTheMaximum)
{
    LogCapture capture;
    const ConstraintResolution sut = range(10, 20, 4);
    Poco::UInt64 value = 22;

    EXPECT_FALSE(sut.checkValue(value));
    EXPECT_EQ(value, 24u);
    EXPECT_THAT(capture.lines(), ElementsAre("Debug: Value 24 not between 10 and 20."));
}

TEST(ConstraintResolution, RoundsTheLargestUnsignedIntegerDownInsteadOfWrappingRound)
{
    const ConstraintResolution sut = range(0, std::numeric_limits<Poco::UInt64>::max(), 10);
    Poco::UInt64 largest = std::numeric_limits<Poco::UInt64>::max();

    EXPECT_TRUE(sut.checkValue(largest));
    EXPECT_EQ(largest, 18446744073709551610u);
}

TEST(ConstraintResolution, CannotReadTheDefaultMinimumAsUnsignedInteger)
{
    const ConstraintResolution sut;

    EXPECT_EQ(checkError<Poco::RangeException>(sut, Poco::UInt64(1)), "Out of range: Value too small.");
}

TEST(ConstraintResolution, CannotReadANegativeResolutionAsUnsignedInteger)
{
    const ConstraintResolution sut = range(0, 10, -4);

    EXPECT_EQ(checkError<Poco::RangeException>(sut, Poco::UInt64(1)), "Out of range: Value too small.");
}

} // namespace
