#include "IMappingServiceManager.h"
#include "DbObjectIdMapper.h"
#include "XObjectRefHolder.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Mapping::IDbObjectIdMapper;
using Orvi::Mapping::IMappingServiceManager;
using Orvi::Mapping::XObjectRefBase;

class ManagerWithoutGeneralPart : public IMappingServiceManager
{
public:
    XObjectRefBase* getXObjectReferenceResolver() override { return &m_references; }
    IDbObjectIdMapper* getDBObjIdMapper() override { return &m_mapper; }

private:
    Orvi::Mapping::XObjectRefHolder m_references;
    Orvi::Mapping::DbObjectIdMapper m_mapper;
};

TEST(IMappingServiceManager, HasNoGeneralServicePartByDefault)
{
    ManagerWithoutGeneralPart sut;

    Orvi::Mapping::IOrviServiceGeneral* general = sut.getOrviServiceGeneral();

    EXPECT_EQ(general, nullptr);
}

} // namespace
