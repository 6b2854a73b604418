#include "MappingServiceManager.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Mapping::MappingServiceManager;

TEST(MappingServiceManager, GivesItsOwnIdMapperThroughTheInterface)
{
    MappingServiceManager sut;
    Orvi::Mapping::XObjectId xObjId = -1;

    sut.getDBObjIdMapper()->addXObjId(0x2A, 17, 0);

    EXPECT_EQ(sut.idMapper().size(), 1U);
    EXPECT_TRUE(sut.idMapper().getXObjIdItemByObjId(0x2A, 0, xObjId));
    EXPECT_EQ(xObjId, 17);
}

TEST(MappingServiceManager, GivesItsOwnReferenceHolderThroughTheInterface)
{
    MappingServiceManager sut;
    sut.references().addReference("audio", "playlists", "tracks", 7, 3);

    const auto dependencies = sut.getXObjectReferenceResolver()->getDependencyInfos(3);

    ASSERT_EQ(dependencies.size(), 1U);
    EXPECT_EQ(dependencies.front()->pointingToId, 3);
    EXPECT_EQ(dependencies.front()->pointingFromObjectData->getAttributeName(), "tracks");
}

TEST(MappingServiceManager, HasNoGeneralServicePart)
{
    MappingServiceManager sut;

    EXPECT_EQ(sut.getOrviServiceGeneral(), nullptr);
}

} // namespace
