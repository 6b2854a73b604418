#include "DataLayer/JSONInputProcessor.h"

#include "GadgetObject.h"
#include "TestSupport/JsonText.h"
#include "TestSupport/LogCapture.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace
{

using Orvi::DataLayer::JSONExtractionMap_t;
using Orvi::DataLayer::JSONInputProcessor;
using Orvi::DataLayer::JSONProcessingContext;
using Orvi::DataLayer::JSONProcessingData;
using Orvi::DBData::XObject;
using Orvi::DBData::XObjectId;
using Orvi::Mapping::OperationResult;
using ServiceDB::Test::GadgetObject;
using ServiceDB::Test::LogCapture;
using ServiceDB::Test::parseObject;
using Lines = std::vector<std::string>;

const auto POST_ON_ELEMENT = JSONProcessingContext::InputContext_POST_On_Element;
const auto POST_ON_RESOURCE = JSONProcessingContext::InputContext_POST_On_Resource;
const auto IPC = JSONProcessingContext::InputContext_IPC;
const auto CACHE_ONLY = JSONProcessingContext::InputContext_POST_On_Element_Cache_Only;

// What the derived class was handed, one entry per call.
struct Handover
{
    JSONProcessingContext::Enum ctx;
    std::string service;
    std::string resource;
    const XObject* object;
    const Poco::JSON::Object* input;
    std::map<std::string, const Orvi::DBData::AttributeValue*> cells;
};

// Records what reaches the derived side and answers with a chosen result; knows the objects that a
// reference by id may name.
class RecordingProcessor : public JSONInputProcessor
{
public:
    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum, const std::string&,
                                                 const std::string&, XObject&,
                                                 Poco::SharedPtr<JSONExtractionMap_t>) override
    {
        ADD_FAILURE() << "the form with a bare map is not the gate's to call";
        return OperationResult::ErrorOnUpdate;
    }

    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum ctx,
                                                 const std::string& servicename,
                                                 const std::string& resourcename, XObject& xObject,
                                                 JSONProcessingData& processingData) override
    {
        Handover handover{ctx, servicename, resourcename, &xObject, processingData.pObj, {}};
        for (const auto& [name, cell] : *processingData.pExtractionMap)
        {
            handover.cells[name] = cell.get();
        }
        handovers.push_back(handover);
        return result;
    }

    XObject::Ptr resolveObjectReferenceByDbId(const XObjectId& id) override
    {
        if (throwOnResolve)
        {
            throw Poco::NotFoundException("store is gone");
        }
        const auto found = known.find(id);
        return found == known.end() ? XObject::Ptr() : found->second;
    }

    std::vector<Handover> handovers;
    OperationResult::Enum result = OperationResult::ObjectUpdated;
    std::map<XObjectId, XObject::Ptr> known;
    bool throwOnResolve = false;
};

class JSONInputProcessorTest : public ::testing::Test
{
protected:
    OperationResult::Enum process(JSONProcessingContext::Enum ctx, const Poco::JSON::Object::Ptr& input)
    {
        return sut.processJSONValues(ctx, "cabin", "gadgets", *gadget.object, input.get());
    }

    OperationResult::Enum process(JSONProcessingContext::Enum ctx, const std::string& input)
    {
        return process(ctx, parseObject(input));
    }

    GadgetObject gadget;
    RecordingProcessor sut;
};

TEST_F(JSONInputProcessorTest, RefusesAnObjectWithoutUuid)
{
    gadget.object->setId(Orvi::DBData::UUID());
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"count": 4})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: (0) Incomplete xobject used for extraction"});
    EXPECT_TRUE(sut.handovers.empty());
    EXPECT_EQ(gadget.value("count"), "3");
}

TEST_F(JSONInputProcessorTest, RefusesAnObjectWithoutId)
{
    XObject sut_object(gadget.element);
    sut_object.setId(Orvi::DBData::UUID(GadgetObject::UUID_TEXT));
    LogCapture capture;

    const auto result = sut.processJSONValues(IPC, "cabin", "gadgets", sut_object, parseObject("{}").get());

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: (2) Incomplete xobject used for extraction"});
}

TEST_F(JSONInputProcessorTest, RefusesAnObjectWithoutElement)
{
    XObject sut_object{Orvi::DBData::Element::Ptr()};
    sut_object.setDBID(8);
    sut_object.setId(Orvi::DBData::UUID(GadgetObject::UUID_TEXT));
    LogCapture capture;

    const auto result =
        sut.processJSONValues(CACHE_ONLY, "cabin", "gadgets", sut_object, parseObject("{}").get());

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: (3) Incomplete xobject used for extraction"});
}

TEST_F(JSONInputProcessorTest, RefusesAMissingJsonObject)
{
    LogCapture capture;

    const auto result = sut.processJSONValues(POST_ON_ELEMENT, "cabin", "gadgets", *gadget.object, nullptr);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: No JSON-Object provided."});
}

TEST_F(JSONInputProcessorTest, GivesUnchangedForAnEmptyObjectWithoutCallingTheDerivedSide)
{
    LogCapture capture;

    const auto result = process(POST_ON_RESOURCE, "{}");

    EXPECT_EQ(result, OperationResult::ObjectUnchanged);
    EXPECT_TRUE(sut.handovers.empty());
    EXPECT_EQ(capture.lines(), Lines{"Trace: (1) Update attribute values failed. No changes detected."});
}

TEST_F(JSONInputProcessorTest, RefusesAMemberThatNamesNoAttribute)
{
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"colour": "red"})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              Lines{"Error: processJSONValues: (0) Could not find attribute colour for element type "
                    "cabin.gadgets.gadget"});
    EXPECT_TRUE(sut.handovers.empty());
}

TEST_F(JSONInputProcessorTest, HandsTheChangedCellsOnWithTheInputAndTheNames)
{
    const Poco::JSON::Object::Ptr input = parseObject(R"({"count": "5", "mode": "boost"})");

    const auto result = process(POST_ON_ELEMENT, input);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    ASSERT_EQ(sut.handovers.size(), 1U);
    const Handover& handover = sut.handovers.front();
    EXPECT_EQ(handover.ctx, POST_ON_ELEMENT);
    EXPECT_EQ(handover.service, "cabin");
    EXPECT_EQ(handover.resource, "gadgets");
    EXPECT_EQ(handover.object, gadget.object.get());
    EXPECT_EQ(handover.input, input.get());
    const std::map<std::string, const Orvi::DBData::AttributeValue*> sameCells{
        {"count", gadget.object->getValue("count").get()}, {"mode", gadget.object->getValue("mode").get()}};
    EXPECT_EQ(handover.cells, sameCells);
    EXPECT_EQ(gadget.value("count"), "5");
    EXPECT_EQ(gadget.object->getValue("count")->getValue().type(), typeid(Poco::Int64));
    EXPECT_EQ(gadget.value("mode"), "\"boost\"");
}

TEST_F(JSONInputProcessorTest, PublishesTheChangedCellsInTheProcessingData)
{
    JSONProcessingData data;
    const Poco::JSON::Object::Ptr input = parseObject(R"({"enabled": true})");
    data.pObj = input.get();

    const auto result = sut.processJSONValues(POST_ON_ELEMENT, "cabin", "gadgets", *gadget.object, data);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    ASSERT_FALSE(data.pExtractionMap.isNull());
    ASSERT_EQ(data.pExtractionMap->size(), 1U);
    EXPECT_EQ(data.pExtractionMap->at("enabled").get(), gadget.object->getValue("enabled").get());
}

TEST_F(JSONInputProcessorTest, PassesEachContextThroughToTheDerivedSide)
{
    for (const auto ctx : {POST_ON_ELEMENT, POST_ON_RESOURCE, IPC, CACHE_ONLY})
    {
        sut.handovers.clear();
        gadget.set("size", Poco::Dynamic::Var());

        process(ctx, R"({"size": 12})");

        ASSERT_EQ(sut.handovers.size(), 1U);
        EXPECT_EQ(sut.handovers.front().ctx, ctx);
    }
}

TEST_F(JSONInputProcessorTest, GivesUnchangedForTheStoredValue)
{
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"count": 3})");

    EXPECT_EQ(result, OperationResult::ObjectUnchanged);
    EXPECT_TRUE(sut.handovers.empty());
    EXPECT_EQ(capture.lines(),
              (Lines{"Trace: processJSONValues No value change. Skip update of attribute value count "
                     "(cabin.gadgets.gadget).",
                     "Trace: (0) Update attribute values failed. No changes detected."}));
}

TEST_F(JSONInputProcessorTest, RefusesNullThroughHttp)
{
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"count": null})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: processJSONValues: (0) Failed to update attribute count "
                                     "(cabin.gadgets.gadget) with null value"});
    EXPECT_EQ(gadget.value("count"), "3");
}

TEST_F(JSONInputProcessorTest, ClearsAValueByNullFromTheVehicle)
{
    const auto result = process(IPC, R"({"count": null})");

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(gadget.value("count"), "null");
    ASSERT_EQ(sut.handovers.size(), 1U);
    EXPECT_EQ(sut.handovers.front().cells.count("count"), 1U);
}

TEST_F(JSONInputProcessorTest, CountsNullFromTheVehicleOnAnEmptyValueAsNoChange)
{
    LogCapture capture;

    const auto result = process(IPC, R"({"ratio": null})");

    EXPECT_EQ(result, OperationResult::ObjectUnchanged);
    EXPECT_EQ(capture.lines(),
              (Lines{"Trace: processJSONValues Skip removal of attribute value ratio (cabin.gadgets.gadget) "
                     "because it's already empty.",
                     "Trace: (2) Update attribute values failed. No changes detected."}));
}

TEST_F(JSONInputProcessorTest, RefusesAnArrayForAScalarAttribute)
{
    LogCapture capture;

    const auto result = process(IPC, R"({"count": [1]})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: processJSONValues: (2) Unable to update attribute count "
                                     "(cabin.gadgets.gadget) with non-array value"});
}

TEST_F(JSONInputProcessorTest, RefusesAScalarForAnArrayAttributeInAPost)
{
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"tags": "b"})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: processJSONValues: (0) Failed to update attribute tags "
                                     "(cabin.gadgets.gadget) with non-array value"});
    EXPECT_EQ(gadget.value("tags"), "[\"a\"]");
}

TEST_F(JSONInputProcessorTest, RefusesAnArrayThatIsNoJsonArray)
{
    Poco::JSON::Object::Ptr input(new Poco::JSON::Object);
    input->set("tags", Poco::Dynamic::Array{"b"});
    LogCapture capture;

    const auto result = process(IPC, input);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              Lines{"Error: processJSONValues: (2) Unable to handle array-format of new value "
                    "for attribute tags (cabin.gadgets.gadget)"});
}

TEST_F(JSONInputProcessorTest, ReplacesAWholeArray)
{
    const auto result = process(POST_ON_ELEMENT, R"({"levels": [3, "4", 5]})");

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(gadget.value("levels"), "[3,4,5]");
}

TEST_F(JSONInputProcessorTest, CountsAnEmptyArrayOnAnEmptyValueAsNoChange)
{
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"levels": []})");

    EXPECT_EQ(result, OperationResult::ObjectUnchanged);
    EXPECT_EQ(gadget.value("levels"), "null");
    EXPECT_EQ(capture.lines(),
              (Lines{"Trace: processJSONValues No value change. Skip update of attribute value levels "
                     "(cabin.gadgets.gadget).",
                     "Trace: (0) Update attribute values failed. No changes detected."}));
}

TEST_F(JSONInputProcessorTest, StoresAnEmptyArrayOverAValue)
{
    const auto result = process(POST_ON_ELEMENT, R"({"tags": []})");

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(gadget.value("tags"), "[]");
}

TEST_F(JSONInputProcessorTest, TreatsAnArrayOfNullsAsAnEmptyArray)
{
    LogCapture capture;

    const auto onEmpty = process(POST_ON_ELEMENT, R"({"levels": [null, null]})");
    const auto onValue = process(POST_ON_ELEMENT, R"({"tags": [null]})");

    EXPECT_EQ(onEmpty, OperationResult::ObjectUnchanged);
    EXPECT_EQ(onValue, OperationResult::ObjectUpdated);
    EXPECT_EQ(gadget.value("levels"), "null");
    EXPECT_EQ(gadget.value("tags"), "[]");
    EXPECT_EQ(capture.lines(),
              (Lines{"Debug: processJSONValues: Ignore empty array values.",
                     "Debug: processJSONValues: Ignore empty array values.",
                     "Trace: processJSONValues No value change. Skip update of attribute value levels "
                     "(cabin.gadgets.gadget).",
                     "Trace: (0) Update attribute values failed. No changes detected.",
                     "Debug: processJSONValues: Ignore empty array values."}));
}

TEST_F(JSONInputProcessorTest, RefusesAnArrayWithAnInvalidElement)
{
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"levels": [1, "high"]})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(gadget.value("levels"), "null");
    EXPECT_EQ(capture.lines().back(), "Error: processJSONValues: (0) Failed to update array-attribute levels "
                                      "(cabin.gadgets.gadget) with invalid value");
}

TEST_F(JSONInputProcessorTest, RefusesAValueOutsideItsConstraint)
{
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"count": 11})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(gadget.value("count"), "3");
    EXPECT_EQ(capture.lines().back(), "Error: processJSONValues: (0) Failed to update attribute count "
                                      "(cabin.gadgets.gadget) with invalid value");
}

TEST_F(JSONInputProcessorTest, AppendsAScalarFromTheVehicleToAnArrayEachTime)
{
    const auto first = process(IPC, R"({"tags": "b"})");
    const auto second = process(IPC, R"({"tags": "b"})");

    EXPECT_EQ(first, OperationResult::ObjectUpdated);
    EXPECT_EQ(second, OperationResult::ObjectUpdated);
    EXPECT_EQ(gadget.value("tags"), "[\"a\",\"b\",\"b\"]");
    EXPECT_EQ(sut.handovers.size(), 2U);
}

TEST_F(JSONInputProcessorTest, AppendsFromTheVehicleToAnEmptyArray)
{
    const auto result = process(IPC, R"({"levels": "4"})");

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(gadget.value("levels"), "[4]");
}

TEST_F(JSONInputProcessorTest, RefusesAnInvalidAppendFromTheVehicle)
{
    gadget.set("levels", Poco::Dynamic::Var(Orvi::DBData::AttributeValue::ValueArrayPtr(
                             new Orvi::DBData::AttributeValue::ValueArray{Poco::Int64(1)})));
    LogCapture capture;

    const auto result = process(IPC, R"({"levels": "high"})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(gadget.value("levels"), "[1]");
    EXPECT_EQ(capture.lines().back(), "Error: processJSONValues: (2) Failed to append to attribute levels "
                                      "(cabin.gadgets.gadget) an invalid value");
}

TEST_F(JSONInputProcessorTest, TakesMembersInKeyOrderAndKeepsWhatWasWrittenBeforeAFailure)
{
    Poco::JSON::Object::Ptr input(new Poco::JSON::Object(Poco::JSON_PRESERVE_KEY_ORDER));
    input->set("size", "not a number");
    input->set("enabled", true);
    JSONProcessingData data;
    data.pObj = input.get();
    LogCapture capture;

    const auto result = sut.processJSONValues(POST_ON_ELEMENT, "cabin", "gadgets", *gadget.object, data);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(gadget.value("enabled"), "true");
    EXPECT_EQ(gadget.value("size"), "null");
    EXPECT_TRUE(data.pExtractionMap.isNull());
    EXPECT_TRUE(sut.handovers.empty());
    EXPECT_EQ(capture.lines().back(), "Error: processJSONValues: (0) Failed to update attribute size "
                                      "(cabin.gadgets.gadget) with invalid value");
}

TEST_F(JSONInputProcessorTest, ResolvesAnObjectIdFromTheVehicle)
{
    const XObject::Ptr owner(new XObject(gadget.element));
    sut.known[42] = owner;
    Poco::JSON::Object::Ptr input(new Poco::JSON::Object);
    input->set("owner", Poco::Int64(42));

    const auto result = process(IPC, input);

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    const Poco::Dynamic::Var& stored = gadget.object->getValue("owner")->getValue();
    ASSERT_EQ(stored.type(), typeid(XObject::Ptr));
    EXPECT_EQ(stored.extract<XObject::Ptr>().get(), owner.get());
}

TEST_F(JSONInputProcessorTest, RefusesAnUnknownObjectIdFromTheVehicle)
{
    Poco::JSON::Object::Ptr input(new Poco::JSON::Object);
    input->set("owner", Poco::Int64(42));
    LogCapture capture;

    const auto result = process(IPC, input);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              Lines{"Error: processJSONValues: Failed to resolve provided object reference!"});
}

TEST_F(JSONInputProcessorTest, RefusesAnUnknownObjectIdInAnArrayFromTheVehicle)
{
    const XObject::Ptr known(new XObject(gadget.element));
    sut.known[1] = known;
    Poco::JSON::Array::Ptr targets(new Poco::JSON::Array);
    targets->add(Poco::Int64(1));
    targets->add(Poco::Int64(2));
    Poco::JSON::Object::Ptr input(new Poco::JSON::Object);
    input->set("targets", targets);
    LogCapture capture;

    const auto result = process(IPC, input);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: processJSONValues: (2) Failed to update attribute targets "
                                     "(cabin.gadgets.gadget) unknown object reference"});
}

TEST_F(JSONInputProcessorTest, PassesAnObjectIdInAPostStraightToTheCheck)
{
    Poco::JSON::Object::Ptr unchecked(new Poco::JSON::Object);
    unchecked->set("owner", Poco::Int64(42));
    Poco::JSON::Object::Ptr checked(new Poco::JSON::Object);
    checked->set("partner", Poco::Int64(42));

    const auto withoutConstraint = process(POST_ON_ELEMENT, unchecked);
    const auto withConstraint = process(POST_ON_ELEMENT, checked);

    EXPECT_EQ(withoutConstraint, OperationResult::ObjectUpdated);
    EXPECT_EQ(gadget.value("owner"), "42");
    EXPECT_EQ(withConstraint, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(gadget.value("partner"), "null");
}

TEST_F(JSONInputProcessorTest, StoresAReferenceByItsAddress)
{
    const auto result =
        process(POST_ON_ELEMENT, R"({"partner": "/cabin/gadgets/6a000000-0000-4000-8000-000000000008"})");

    EXPECT_EQ(result, OperationResult::ObjectUpdated);
    EXPECT_EQ(gadget.value("partner"), "\"/cabin/gadgets/6a000000-0000-4000-8000-000000000008\"");
}

TEST_F(JSONInputProcessorTest, TurnsAnExceptionWhileAMemberIsHandledIntoAFailure)
{
    sut.throwOnResolve = true;
    Poco::JSON::Object::Ptr input(new Poco::JSON::Object);
    input->set("owner", Poco::Int64(42));
    LogCapture capture;

    const auto result = process(IPC, input);

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(),
              Lines{"Error: cabin.gadgets.owner - Caught exception: Not found: store is gone"});
}

TEST_F(JSONInputProcessorTest, StopsWithABugcheckAtAnEmptyCell)
{
    gadget.object->getAttributeValues().insert(gadget.object->getAttributeValues().begin(),
                                               Orvi::DBData::AttributeValuePtr());

    try
    {
        process(POST_ON_ELEMENT, R"({"count": 4})");
        FAIL() << "no bugcheck";
    }
    catch (const Poco::BugcheckException& e)
    {
        EXPECT_NE(e.message().find("Nullpointer in AttributeValue list"), std::string::npos) << e.message();
    }
}

TEST_F(JSONInputProcessorTest, LogsAFailureOfTheDerivedSideWithTheNumberOfValues)
{
    sut.result = OperationResult::ErrorOnUpdate;
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"count": 4, "ratio": 0.5})");

    EXPECT_EQ(result, OperationResult::ErrorOnUpdate);
    EXPECT_EQ(capture.lines(), Lines{"Error: (0) Update of 2 attribute values failed."});
}

TEST_F(JSONInputProcessorTest, PassesAServiceErrorOfTheDerivedSideWithoutALogLine)
{
    sut.result = OperationResult::ServiceErrorOnUpdate;
    LogCapture capture;

    const auto result = process(POST_ON_ELEMENT, R"({"count": 4})");

    EXPECT_EQ(result, OperationResult::ServiceErrorOnUpdate);
    EXPECT_TRUE(capture.lines().empty());
}

TEST_F(JSONInputProcessorTest, GivesWhatTheDerivedSideGives)
{
    sut.result = OperationResult::ObjectProcessed;

    EXPECT_EQ(process(POST_ON_ELEMENT, R"({"count": 4})"), OperationResult::ObjectProcessed);
}

TEST_F(JSONInputProcessorTest, LeavesAnythingButALongAloneWhenResolving)
{
    Poco::Dynamic::Var small(5);
    Poco::Dynamic::Var text("/cabin/gadgets/6a000000-0000-4000-8000-000000000008");

    EXPECT_TRUE(sut.resolveObjectRef(small));
    EXPECT_TRUE(sut.resolveObjectRef(text));
    EXPECT_EQ(small.type(), typeid(int));
    EXPECT_EQ(text.type(), typeid(std::string));
}

TEST_F(JSONInputProcessorTest, ResolvesALongToTheStoredObject)
{
    const XObject::Ptr owner(new XObject(gadget.element));
    sut.known[9] = owner;
    Poco::Dynamic::Var known(9L);
    Poco::Dynamic::Var unknown(10L);

    EXPECT_TRUE(sut.resolveObjectRef(known));
    EXPECT_FALSE(sut.resolveObjectRef(unknown));
    EXPECT_EQ(known.extract<XObject::Ptr>().get(), owner.get());
    EXPECT_EQ(unknown.extract<long>(), 10L);
}

} // namespace
