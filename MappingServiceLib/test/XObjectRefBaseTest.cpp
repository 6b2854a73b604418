#include "XObjectRefBase.h"
#include "AttributeIdent.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace
{

using Orvi::Mapping::AttributeIdent;
using Orvi::Mapping::XObjectRefBase;

TEST(XObjectRefBase, GivesAnEmptyListForAnIdWithoutEntries)
{
    XObjectRefBase sut;

    const XObjectRefBase::DependencyList infos = sut.getDependencyInfos(7);

    EXPECT_TRUE(infos.empty());
    EXPECT_TRUE(sut.mapXObjectRefData.empty());
}

TEST(XObjectRefBase, GivesTheEntriesOfTheIdInListOrder)
{
    XObjectRefBase sut;
    const AttributeIdent fromPlaylist("audio", "playlists", "tracks", 11);
    const AttributeIdent fromAlbum("audio", "albums", "tracks", 12);
    XObjectRefBase::XObjectRefData first(&fromPlaylist, 7);
    XObjectRefBase::XObjectRefData second(&fromAlbum, 7);
    sut.mapXObjectRefData[7] = {&first, &second};

    const XObjectRefBase::DependencyList infos = sut.getDependencyInfos(7);

    EXPECT_EQ(infos, (XObjectRefBase::DependencyList{&first, &second}));
}

TEST(XObjectRefBase, GivesACopyThatLeavesTheStoredListAlone)
{
    XObjectRefBase sut;
    const AttributeIdent fromPlaylist("audio", "playlists", "tracks", 11);
    XObjectRefBase::XObjectRefData entry(&fromPlaylist, 7);
    sut.mapXObjectRefData[7] = {&entry};

    XObjectRefBase::DependencyList infos = sut.getDependencyInfos(7);
    infos.clear();

    EXPECT_EQ(sut.mapXObjectRefData[7], XObjectRefBase::DependencyList{&entry});
}

TEST(XObjectRefBase, KeepsTheFieldsOfAnEntry)
{
    const AttributeIdent fromPlaylist("audio", "playlists", "tracks", 11);

    const XObjectRefBase::XObjectRefData sut(&fromPlaylist, 7);

    EXPECT_EQ(sut.pointingFromObjectData, &fromPlaylist);
    EXPECT_EQ(sut.pointingToId, 7);
    EXPECT_TRUE(std::has_virtual_destructor_v<XObjectRefBase::XObjectRefData>);
}

} // namespace
