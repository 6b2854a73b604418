#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/ConstraintEnum.h"
#include "JSONDataCache/DBData/ConstraintFormat.h"
#include "JSONDataCache/DBData/ConstraintOneOf.h"
#include "JSONDataCache/DBData/ConstraintResolution.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>

#include <benchmark/benchmark.h>

#include <string>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeType;
using Poco::Dynamic::Var;

const std::string OBJECT_URI = "/car/doors/6f1c2a3e-4b5d-4e6f-8a7b-9c0d1e2f3a4b";

// Converts a fresh copy of the input in every iteration, as a request body does with each value.
void convertEach(benchmark::State& state, AttributeType type, const Var& input)
{
    for (auto _ : state)
    {
        Var value(input);
        Attribute::convertValue(type, value);
        benchmark::DoNotOptimize(value);
    }
}

// Converts and checks a fresh copy of the input in every iteration; the check has to pass.
void checkEach(benchmark::State& state, const Attribute& attribute, const Var& input)
{
    Var probe(input);
    if (!attribute.checkAttributeValueContent(probe, false))
    {
        state.SkipWithError("the value does not pass the check");
        return;
    }
    for (auto _ : state)
    {
        Var value(input);
        benchmark::DoNotOptimize(attribute.checkAttributeValueContent(value, false));
        benchmark::DoNotOptimize(value);
    }
}

Attribute constrained(const std::string& name, AttributeType type,
                      const Poco::SharedPtr<Orvi::DBData::aConstraint>& c)
{
    Attribute attribute(name, type, false);
    attribute.setConstraints({c});
    return attribute;
}

Poco::SharedPtr<Orvi::DBData::aConstraint> range(const Var& minimum, const Var& maximum,
                                                 const Var& resolution)
{
    Poco::SharedPtr<Orvi::DBData::ConstraintResolution> constraint(new Orvi::DBData::ConstraintResolution);
    constraint->setMinimum(minimum);
    constraint->setMaximum(maximum);
    constraint->setResolution(resolution);
    return constraint;
}

// Conversions

void BM_StringFromText(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_String, Var(std::string("driver door")));
}
BENCHMARK(BM_StringFromText);

void BM_StringFromInteger(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_String, Var(Poco::Int64(-1234567)));
}
BENCHMARK(BM_StringFromInteger);

void BM_StringFromNumber(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_String, Var(21.375));
}
BENCHMARK(BM_StringFromNumber);

void BM_IntegerFromText(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_Integer, Var(std::string("-1234567")));
}
BENCHMARK(BM_IntegerFromText);

void BM_IntegerFromInteger(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_Integer, Var(1234567));
}
BENCHMARK(BM_IntegerFromInteger);

void BM_UnsignedFromText(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_IntegerUnsigned, Var(std::string("1234567")));
}
BENCHMARK(BM_UnsignedFromText);

void BM_UnsignedFromInteger(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_IntegerUnsigned, Var(1234567));
}
BENCHMARK(BM_UnsignedFromInteger);

void BM_NumberFromText(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_Number, Var(std::string("21.375")));
}
BENCHMARK(BM_NumberFromText);

void BM_NumberFromInteger(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_Number, Var(21));
}
BENCHMARK(BM_NumberFromInteger);

void BM_BooleanFromText(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_Boolean, Var(std::string("true")));
}
BENCHMARK(BM_BooleanFromText);

void BM_BooleanFromInteger(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_Boolean, Var(1));
}
BENCHMARK(BM_BooleanFromInteger);

void BM_ReferenceFromText(benchmark::State& state)
{
    convertEach(state, Orvi::DBData::AttrType_Object, Var(OBJECT_URI));
}
BENCHMARK(BM_ReferenceFromText);

void BM_ReferenceFromJsonObject(benchmark::State& state)
{
    Poco::JSON::Object::Ptr object(new Poco::JSON::Object(0));
    object->set("uri", OBJECT_URI);
    convertEach(state, Orvi::DBData::AttrType_Object, Var(object));
}
BENCHMARK(BM_ReferenceFromJsonObject);

// Checks

void BM_CheckStringWithoutConstraint(benchmark::State& state)
{
    checkEach(state, Attribute("label", Orvi::DBData::AttrType_String, false),
              Var(std::string("driver door")));
}
BENCHMARK(BM_CheckStringWithoutConstraint);

void BM_CheckStringAgainstEnum(benchmark::State& state)
{
    Poco::SharedPtr<Orvi::DBData::ConstraintEnum> constraint(new Orvi::DBData::ConstraintEnum);
    constraint->setEnumValues({"closed", "locked", "open", "unknown", "unlocked"});
    checkEach(state, constrained("state", Orvi::DBData::AttrType_String, constraint),
              Var(std::string("unlocked")));
}
BENCHMARK(BM_CheckStringAgainstEnum);

void BM_CheckStringAgainstFormat(benchmark::State& state)
{
    Poco::SharedPtr<Orvi::DBData::ConstraintFormat> constraint(new Orvi::DBData::ConstraintFormat);
    constraint->setFormat("[A-HJ-NPR-Z0-9]{17}");
    checkEach(state, constrained("vin", Orvi::DBData::AttrType_String, constraint),
              Var(std::string("WDB1234561A234567")));
}
BENCHMARK(BM_CheckStringAgainstFormat);

void BM_CheckIntegerAgainstRangeWithResolution(benchmark::State& state)
{
    checkEach(state, constrained("rpm", Orvi::DBData::AttrType_Integer, range(0, 8000, 50)),
              Var(std::string("2437")));
}
BENCHMARK(BM_CheckIntegerAgainstRangeWithResolution);

void BM_CheckUnsignedAgainstRangeWithResolution(benchmark::State& state)
{
    checkEach(state, constrained("odometer", Orvi::DBData::AttrType_IntegerUnsigned, range(0, 2000000, 10)),
              Var(123456));
}
BENCHMARK(BM_CheckUnsignedAgainstRangeWithResolution);

void BM_CheckNumberAgainstRangeWithResolution(benchmark::State& state)
{
    checkEach(state, constrained("temperature", Orvi::DBData::AttrType_Number, range(-40.0, 85.0, 0.5)),
              Var(21.3));
}
BENCHMARK(BM_CheckNumberAgainstRangeWithResolution);

void BM_CheckBoolean(benchmark::State& state)
{
    checkEach(state, Attribute("locked", Orvi::DBData::AttrType_Boolean, false), Var(std::string("false")));
}
BENCHMARK(BM_CheckBoolean);

void BM_CheckReferenceAgainstAllowedTargets(benchmark::State& state)
{
    Poco::SharedPtr<Orvi::DBData::ConstraintOneOf> constraint(new Orvi::DBData::ConstraintOneOf);
    constraint->setClasses({"car.windows.window", "car.seats.seat", "car.doors.door"});
    checkEach(state, constrained("door", Orvi::DBData::AttrType_Object, constraint), Var(OBJECT_URI));
}
BENCHMARK(BM_CheckReferenceAgainstAllowedTargets);

} // namespace
