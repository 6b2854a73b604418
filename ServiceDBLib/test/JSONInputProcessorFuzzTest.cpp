#include "DataLayer/JSONInputProcessor.h"

#include "GadgetObject.h"
#include "TestSupport/LogCapture.h"

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <random>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

namespace
{

using Orvi::DataLayer::JSONExtractionMap_t;
using Orvi::DataLayer::JSONInputProcessor;
using Orvi::DataLayer::JSONProcessingContext;
using Orvi::DataLayer::JSONProcessingData;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::XObject;
using Orvi::DBData::XObjectId;
using Orvi::Mapping::OperationResult;
using Poco::Dynamic::Var;
using ServiceDB::Test::GadgetObject;

// Accepts every change and knows the objects of the ids 1 and 2.
class AcceptingProcessor : public JSONInputProcessor
{
public:
    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum, const std::string&,
                                                 const std::string&, XObject&,
                                                 Poco::SharedPtr<JSONExtractionMap_t>) override
    {
        return OperationResult::ErrorOnUpdate;
    }

    OperationResult::Enum processAttributeValues(JSONProcessingContext::Enum, const std::string&,
                                                 const std::string&, XObject&,
                                                 JSONProcessingData& processingData) override
    {
        handedOver.push_back(*processingData.pExtractionMap);
        return OperationResult::ObjectUpdated;
    }

    XObject::Ptr resolveObjectReferenceByDbId(const XObjectId& id) override
    {
        return id == 1 || id == 2 ? m_known.object : XObject::Ptr();
    }

    std::vector<JSONExtractionMap_t> handedOver;

private:
    GadgetObject m_known;
};

const std::array<const char*, 15> NAMES = {"count", "enabled", "id",      "levels", "mode",
                                           "name",  "owner",   "partner", "ratio",  "size",
                                           "tags",  "targets", "uri",     "colour", ""};

class RandomJson
{
public:
    explicit RandomJson(unsigned seed)
        : m_random(seed)
    {
    }

    Var scalar()
    {
        switch (pick(16))
        {
        case 0:
            return Var();
        case 1:
            return static_cast<int>(pick(21)) - 10;
        case 2:
            return Poco::Int64(pick(4));
        case 3:
            return Poco::Int64(-9000000000LL);
        case 4:
            return 0.25 * (static_cast<double>(pick(9)) - 4.0);
        case 5:
            return pick(2) == 0;
        case 6:
            return std::string("eco");
        case 7:
            return std::string("7");
        case 8:
            return std::string("-3.5");
        case 9:
            return std::string("yes");
        case 10:
            return std::string("/cabin/gadgets/6a000000-0000-4000-8000-00000000000") +
                   std::to_string(pick(10));
        case 11:
            return std::string("/audio/tracks/6a000000-0000-4000-8000-000000000001");
        case 12:
        {
            Poco::JSON::Object::Ptr reference(new Poco::JSON::Object);
            reference->set("uri", "/cabin/gadgets/6a000000-0000-4000-8000-000000000002");
            return reference;
        }
        case 13:
            return Poco::UInt64(18446744073709551615ULL);
        case 14:
            return std::string("");
        default:
            return std::string("\xff\x00 %", 4);
        }
    }

    Var value()
    {
        if (pick(3) != 0)
        {
            return scalar();
        }
        Poco::JSON::Array::Ptr array(new Poco::JSON::Array);
        const unsigned size = pick(4);
        for (unsigned i = 0; i < size; ++i)
        {
            array->add(scalar());
        }
        return array;
    }

    Poco::JSON::Object::Ptr body()
    {
        Poco::JSON::Object::Ptr object(new Poco::JSON::Object);
        const unsigned members = pick(5);
        for (unsigned i = 0; i < members; ++i)
        {
            object->set(NAMES[pick(NAMES.size())], value());
        }
        return object;
    }

    JSONProcessingContext::Enum context() { return static_cast<JSONProcessingContext::Enum>(pick(4)); }

private:
    unsigned pick(std::size_t bound)
    {
        return std::uniform_int_distribution<unsigned>(0, static_cast<unsigned>(bound) - 1)(m_random);
    }

    std::mt19937 m_random;
};

// The values of every attribute, as text.
std::map<std::string, std::string> snapshot(const GadgetObject& gadget)
{
    std::map<std::string, std::string> values;
    for (const auto& cell : gadget.object->getAttributeValues())
    {
        values[cell->getName()] = gadget.value(cell->getName());
    }
    return values;
}

// The type every stored element of this attribute type must have, or null for references, which keep
// their input form.
const std::type_info* canonicalType(Orvi::DBData::AttributeType type)
{
    switch (type)
    {
    case Orvi::DBData::AttrType_String:
        return &typeid(std::string);
    case Orvi::DBData::AttrType_Integer:
        return &typeid(Poco::Int64);
    case Orvi::DBData::AttrType_IntegerUnsigned:
        return &typeid(Poco::UInt64);
    case Orvi::DBData::AttrType_Number:
        return &typeid(double);
    case Orvi::DBData::AttrType_Boolean:
        return &typeid(bool);
    case Orvi::DBData::AttrType_Object:
        return nullptr;
    }
    return nullptr;
}

void expectCanonical(const AttributeValue& cell)
{
    const std::type_info* expected = canonicalType(cell.getType());
    const Var& value = cell.getValue();
    if (value.isEmpty() || expected == nullptr)
    {
        return;
    }
    if (!cell.isArray())
    {
        EXPECT_EQ(value.type(), *expected) << cell.getName();
        return;
    }
    ASSERT_EQ(value.type(), typeid(AttributeValue::ValueArrayPtr)) << cell.getName();
    for (const Var& element : *value.extract<AttributeValue::ValueArrayPtr>())
    {
        EXPECT_EQ(element.type(), *expected) << cell.getName();
    }
}

TEST(JSONInputProcessorFuzz, GivesOnlyTheStatedResultsAndWritesOnlyWhatItReports)
{
    ServiceDB::Test::LogCapture quiet(Poco::Message::PRIO_FATAL);
    RandomJson random(20261123);
    std::map<OperationResult::Enum, int> seen;

    for (int round = 0; round < 4000; ++round)
    {
        GadgetObject gadget;
        AcceptingProcessor sut;
        const auto before = snapshot(gadget);
        const Poco::JSON::Object::Ptr body = random.body();
        JSONProcessingData data;
        data.pObj = body.get();

        const auto result = sut.processJSONValues(random.context(), "cabin", "gadgets", *gadget.object, data);

        ++seen[result];
        const auto after = snapshot(gadget);
        for (const auto& [name, text] : before)
        {
            if (!body->has(name))
            {
                EXPECT_EQ(after.at(name), text) << name << " changed without being named";
            }
        }
        for (const auto& cell : gadget.object->getAttributeValues())
        {
            expectCanonical(*cell);
        }
        switch (result)
        {
        case OperationResult::ErrorOnUpdate:
            EXPECT_TRUE(data.pExtractionMap.isNull());
            EXPECT_TRUE(sut.handedOver.empty());
            break;
        case OperationResult::ObjectUnchanged:
            EXPECT_TRUE(sut.handedOver.empty());
            EXPECT_EQ(after, before);
            break;
        case OperationResult::ObjectUpdated:
            ASSERT_EQ(sut.handedOver.size(), 1U);
            ASSERT_FALSE(sut.handedOver.front().empty());
            for (const auto& [name, cell] : sut.handedOver.front())
            {
                EXPECT_TRUE(body->has(name));
                EXPECT_EQ(cell.get(), gadget.object->getValue(name).get());
            }
            break;
        default:
            ADD_FAILURE() << "unexpected result " << OperationResult::toString(result);
        }
    }

    EXPECT_GT(seen[OperationResult::ErrorOnUpdate], 0);
    EXPECT_GT(seen[OperationResult::ObjectUnchanged], 0);
    EXPECT_GT(seen[OperationResult::ObjectUpdated], 0);
}

} // namespace
