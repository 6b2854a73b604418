#include "AttributeIdent.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Mapping::AttributeIdent;
using Orvi::Mapping::IAttributeIdent;

TEST(AttributeIdent, GivesItsPartsThroughTheInterface)
{
    const AttributeIdent ident("audio", "playlists", "tracks", -5);
    const IAttributeIdent& sut = ident;

    EXPECT_EQ(sut.getServiceName(), "audio");
    EXPECT_EQ(sut.getResourceName(), "playlists");
    EXPECT_EQ(sut.getAttributeName(), "tracks");
    EXPECT_EQ(sut.getObjectId(), -5);
}

TEST(AttributeIdent, EqualsAnIdentWithTheSameFourParts)
{
    const AttributeIdent sut("audio", "playlists", "tracks", 5);

    EXPECT_TRUE(sut == AttributeIdent("audio", "playlists", "tracks", 5));
}

TEST(AttributeIdent, DiffersFromAnIdentWithAnyPartChanged)
{
    const AttributeIdent sut("audio", "playlists", "tracks", 5);

    EXPECT_FALSE(sut == AttributeIdent("cabin", "playlists", "tracks", 5));
    EXPECT_FALSE(sut == AttributeIdent("audio", "albums", "tracks", 5));
    EXPECT_FALSE(sut == AttributeIdent("audio", "playlists", "cover", 5));
    EXPECT_FALSE(sut == AttributeIdent("audio", "playlists", "tracks", 6));
}

} // namespace
