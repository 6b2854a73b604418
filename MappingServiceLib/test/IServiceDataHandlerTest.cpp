#include "IServiceDataHandler.h"

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

// The defaults never look at the object, so any storage can stand for it.
const XObject& unusedObject()
{
    alignas(std::max_align_t) static unsigned char storage[64] = {};
    return *reinterpret_cast<const XObject*>(storage);
}

TEST(IServiceDataHandler, AcceptsEveryChangeForTheMapperCacheByDefault)
{
    MinimalDataHandler sut;
    AttributeMapPtr values = new Orvi::Data::AttributeMap;

    const bool added = sut.addToMapperCache("cabin", unusedObject(), values);

    EXPECT_TRUE(added);
    EXPECT_TRUE(values->empty());
}

TEST(IServiceDataHandler, AcceptsANullValueMapForTheMapperCacheByDefault)
{
    MinimalDataHandler sut;

    const bool added = sut.addToMapperCache("cabin", unusedObject(), AttributeMapPtr());

    EXPECT_TRUE(added);
}

TEST(IServiceDataHandler, ClearsTheMapperCacheSuccessfullyByDefault)
{
    MinimalDataHandler sut;

    const bool cleared = sut.clearMapperCache("cabin");

    EXPECT_TRUE(cleared);
}

} // namespace
