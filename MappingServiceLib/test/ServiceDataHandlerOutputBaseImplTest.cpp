#include "DataHandler/ServiceDataHandlerOutputBaseImpl.h"
#include "DbObjectIdMapper.h"
#include "XObjectRefHolder.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Mapping::DbObjectIdMapper;
using Orvi::Mapping::IDbObjectIdMapper;
using Orvi::Mapping::IMappingServiceManager;
using Orvi::Mapping::OperationResult;
using Orvi::Mapping::ServiceArrayIndexType_t;
using Orvi::Mapping::XObjectId;
using Orvi::Mapping::XObjectRefBase;
using Orvi::Mapping::DataHandler::ServiceDataHandlerOutputBaseImpl;

class FakeManager : public IMappingServiceManager
{
public:
    XObjectRefBase* getXObjectReferenceResolver() override { return &references; }
    IDbObjectIdMapper* getDBObjIdMapper() override { return withMapper ? &mapper : nullptr; }

    Orvi::Mapping::XObjectRefHolder references;
    DbObjectIdMapper mapper;
    bool withMapper = true;
};

// The database side is not at hand here; only the id look-up of the base is under test.
class OutputHandler : public ServiceDataHandlerOutputBaseImpl
{
public:
    using ServiceDataHandlerOutputBaseImpl::ServiceDataHandlerOutputBaseImpl;

    XObjectId getDBIdForObject(const std::string&, const std::string&, const std::string&) const override
    {
        return -1;
    }
    OperationResult::Enum executeMappingToDb(Poco::Int32, const std::string&, const std::string&,
                                             ServiceArrayIndexType_t, Poco::JSON::Object::Ptr,
                                             std::string&) const override
    {
        return OperationResult::ErrorOnUpdate;
    }
    bool executeMappingResultDeleteObject(const std::string&, const std::string&, Poco::Int32,
                                          ServiceArrayIndexType_t) const override
    {
        return false;
    }
};

TEST(ServiceDataHandlerOutputBaseImpl, StartsWithoutManager)
{
    const OutputHandler sut;

    EXPECT_EQ(sut.getMappingServiceManager(), nullptr);
}

TEST(ServiceDataHandlerOutputBaseImpl, KeepsTheManagerItWasGiven)
{
    FakeManager manager;

    const OutputHandler sut(&manager);

    EXPECT_EQ(sut.getMappingServiceManager(), &manager);
}

TEST(ServiceDataHandlerOutputBaseImpl, TakesAManagerAfterConstruction)
{
    FakeManager manager;
    OutputHandler sut;

    sut.setMappingServiceManager(&manager);

    EXPECT_EQ(sut.getMappingServiceManager(), &manager);
}

TEST(ServiceDataHandlerOutputBaseImpl, GivesTheDatabaseIdOfAMappedObject)
{
    FakeManager manager;
    manager.mapper.addXObjId(0x1201, 57, 3);
    const OutputHandler sut(&manager);

    const XObjectId id = sut.getXObjectId(0x1201, 3);

    EXPECT_EQ(id, 57);
}

TEST(ServiceDataHandlerOutputBaseImpl, GivesMinusOneForAnObjectMappedUnderAnotherIndex)
{
    FakeManager manager;
    manager.mapper.addXObjId(0x1201, 57, 3);
    const OutputHandler sut(&manager);

    const XObjectId id = sut.getXObjectId(0x1201, 0);

    EXPECT_EQ(id, -1);
}

TEST(ServiceDataHandlerOutputBaseImpl, GivesMinusOneForAnUnmappedObject)
{
    FakeManager manager;
    const OutputHandler sut(&manager);

    const XObjectId id = sut.getXObjectId(0x1201, 0);

    EXPECT_EQ(id, -1);
}

TEST(ServiceDataHandlerOutputBaseImpl, GivesMinusOneWithoutManager)
{
    const OutputHandler sut;

    const XObjectId id = sut.getXObjectId(0x1201, 0);

    EXPECT_EQ(id, -1);
}

TEST(ServiceDataHandlerOutputBaseImpl, GivesMinusOneWhenTheManagerHasNoIdMapper)
{
    FakeManager manager;
    manager.mapper.addXObjId(0x1201, 57, 0);
    manager.withMapper = false;
    const OutputHandler sut(&manager);

    const XObjectId id = sut.getXObjectId(0x1201, 0);

    EXPECT_EQ(id, -1);
}

} // namespace
