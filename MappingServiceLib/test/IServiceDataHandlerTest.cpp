#include "IServiceDataHandler.h"

#include "Data/GenericObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Mapping::AttributeMapPtr;
using Orvi::Mapping::IServiceDataHandler;
using Orvi::Mapping::OperationResult;
using Orvi::Mapping::ProcessingData;
using Orvi::Mapping::XObject;

// Overrides only what must be overridden, so that the cache operations keep their defaults.
class MinimalDataHandler : public IServiceDataHandler
{
public:
    OperationResult::Enum updateToDb(const std::string&, const std::string&, const XObject&,
                                     ProcessingData&) override
    {
        return OperationResult::ObjectUpdated;
    }
    OperationResult::Enum updateToMapper(const std::string&, const std::string&, const XObject&,
                                         ProcessingData&) override
    {
        return OperationResult::ObjectUpdated;
    }
    OperationResult::Enum beforeDeleteObject(const std::string&, const std::string&, const XObject&) override
    {
        return OperationResult::ObjectUpdated;
    }
    void afterDeleteObject(const std::string&, const std::string&, const XObject&) override {}
    OperationResult::Enum beforeDeleteAttributes(const std::string&, const std::string&, const XObject&,
                                                 const std::vector<std::string>&) override
    {
        return OperationResult::ObjectUpdated;
    }
    void afterDeleteAttributes(const std::string&, const std::string&, const XObject&,
                               const std::vector<std::string>&) override
    {
    }
};

TEST(IServiceDataHandler, AcceptsEveryChangeForTheMapperCacheByDefault)
{
    MinimalDataHandler sut;
    const Orvi::Data::XObjectGeneric seat("seat", Poco::UUID(), Poco::URI(), 4);
    AttributeMapPtr values = new Orvi::Data::AttributeMap;

    const bool added = sut.addToMapperCache("cabin", seat, values);

    EXPECT_TRUE(added);
    EXPECT_TRUE(values->empty());
}

TEST(IServiceDataHandler, AcceptsANullValueMapForTheMapperCacheByDefault)
{
    MinimalDataHandler sut;
    const Orvi::Data::XObjectGeneric seat("seat", Poco::UUID(), Poco::URI(), 4);

    const bool added = sut.addToMapperCache("cabin", seat, AttributeMapPtr());

    EXPECT_TRUE(added);
}

TEST(IServiceDataHandler, ClearsTheMapperCacheSuccessfullyByDefault)
{
    MinimalDataHandler sut;

    const bool cleared = sut.clearMapperCache("cabin");

    EXPECT_TRUE(cleared);
}

} // namespace
