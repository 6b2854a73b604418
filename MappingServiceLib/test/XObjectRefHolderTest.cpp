#include "XObjectRefHolder.h"
#include "DbObjectIdMapper.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::Mapping::DbObjectIdMapper;
using Orvi::Mapping::IDbObjectIdMapper;
using Orvi::Mapping::ServiceArrayIndexType_t;
using Orvi::Mapping::XObjectId;
using Orvi::Mapping::XObjectRefBase;
using Orvi::Mapping::XObjectRefHolder;

using DependencyList = XObjectRefBase::DependencyList;

std::string describe(const XObjectRefBase::XObjectRefData* entry)
{
    const Orvi::Mapping::IAttributeIdent& from = *entry->pointingFromObjectData;
    return from.getServiceName() + "/" + from.getResourceName() + "/" + std::to_string(from.getObjectId()) +
           "." + from.getAttributeName() + "->" + std::to_string(entry->pointingToId);
}

std::vector<std::string> describe(const DependencyList& entries)
{
    std::vector<std::string> result;
    for (const XObjectRefBase::XObjectRefData* entry : entries)
    {
        result.push_back(describe(entry));
    }
    return result;
}

TEST(XObjectRefHolder, StartsWithoutReferences)
{
    const XObjectRefHolder sut;

    EXPECT_EQ(sut.size(), 0U);
    EXPECT_TRUE(sut.mapXObjectRefData.empty());
}

TEST(XObjectRefHolder, ListsAReferenceUnderTheTargetAndTheSource)
{
    XObjectRefHolder sut;

    const bool added = sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    EXPECT_TRUE(added);
    EXPECT_EQ(sut.size(), 1U);
    EXPECT_EQ(describe(sut.getDependencyInfos(0x100)),
              std::vector<std::string>{"audio/playlists/512.tracks->256"});
    EXPECT_EQ(sut.getDependencyInfos(0x200), sut.getDependencyInfos(0x100));
    EXPECT_EQ(sut.mapXObjectRefData.size(), 2U);
}

TEST(XObjectRefHolder, ListsAReferenceOfAnObjectToItselfOnce)
{
    XObjectRefHolder sut;

    sut.addReference("audio", "tracks", "previous", 0x100, 0x100);

    EXPECT_EQ(describe(sut.getDependencyInfos(0x100)),
              std::vector<std::string>{"audio/tracks/256.previous->256"});
    EXPECT_EQ(sut.mapXObjectRefData.size(), 1U);
}

TEST(XObjectRefHolder, KeepsAReferenceAddedTwiceOnce)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    const bool added = sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    EXPECT_FALSE(added);
    EXPECT_EQ(sut.size(), 1U);
    EXPECT_EQ(sut.getDependencyInfos(0x100).size(), 1U);
    EXPECT_EQ(sut.getDependencyInfos(0x200).size(), 1U);
}

TEST(XObjectRefHolder, KeepsReferencesThatDifferInAnyPart)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    EXPECT_TRUE(sut.addReference("audio", "playlists", "tracks", 0x200, 0x101));
    EXPECT_TRUE(sut.addReference("audio", "playlists", "cover", 0x200, 0x100));
    EXPECT_TRUE(sut.addReference("audio", "albums", "tracks", 0x200, 0x100));
    EXPECT_TRUE(sut.addReference("media", "playlists", "tracks", 0x200, 0x100));
    EXPECT_TRUE(sut.addReference("audio", "playlists", "tracks", 0x201, 0x100));

    EXPECT_EQ(sut.size(), 6U);
    EXPECT_EQ(describe(sut.getDependencyInfos(0x100)),
              (std::vector<std::string>{"audio/playlists/512.tracks->256", "audio/playlists/512.cover->256",
                                        "audio/albums/512.tracks->256", "media/playlists/512.tracks->256",
                                        "audio/playlists/513.tracks->256"}));
}

TEST(XObjectRefHolder, ListsTheReferencesFromAndToAnObjectInTheOrderTheyCame)
{
    XObjectRefHolder sut;

    sut.addReference("audio", "tracks", "album", 0x100, 0x300);
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    EXPECT_EQ(describe(sut.getDependencyInfos(0x100)),
              (std::vector<std::string>{"audio/tracks/256.album->768", "audio/playlists/512.tracks->256"}));
}

TEST(XObjectRefHolder, RemovesOneReferenceFromBothLists)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);
    sut.addReference("audio", "playlists", "tracks", 0x201, 0x100);

    const bool removed = sut.removeReference("audio", "playlists", "tracks", 0x200, 0x100);

    EXPECT_TRUE(removed);
    EXPECT_EQ(sut.size(), 1U);
    EXPECT_EQ(describe(sut.getDependencyInfos(0x100)),
              std::vector<std::string>{"audio/playlists/513.tracks->256"});
    EXPECT_TRUE(sut.getDependencyInfos(0x200).empty());
    EXPECT_EQ(sut.mapXObjectRefData.count(0x200), 0U);
}

TEST(XObjectRefHolder, RefusesToRemoveAnUnknownReference)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    const bool removed = sut.removeReference("audio", "playlists", "cover", 0x200, 0x100);

    EXPECT_FALSE(removed);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(XObjectRefHolder, RemovesEveryReferenceFromAnObject)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x101);
    sut.addReference("audio", "playlists", "tracks", 0x201, 0x100);
    sut.addReference("audio", "albums", "playlist", 0x300, 0x200);

    const std::size_t removed = sut.removeReferencesFrom(0x200);

    EXPECT_EQ(removed, 2U);
    EXPECT_EQ(sut.size(), 2U);
    EXPECT_EQ(describe(sut.getDependencyInfos(0x100)),
              std::vector<std::string>{"audio/playlists/513.tracks->256"});
    EXPECT_TRUE(sut.getDependencyInfos(0x101).empty());
    EXPECT_EQ(describe(sut.getDependencyInfos(0x200)),
              std::vector<std::string>{"audio/albums/768.playlist->512"});
}

TEST(XObjectRefHolder, RemovesEveryReferenceToAnObject)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);
    sut.addReference("audio", "playlists", "tracks", 0x201, 0x100);
    sut.addReference("audio", "tracks", "album", 0x100, 0x300);

    const std::size_t removed = sut.removeReferencesTo(0x100);

    EXPECT_EQ(removed, 2U);
    EXPECT_EQ(sut.size(), 1U);
    EXPECT_EQ(describe(sut.getDependencyInfos(0x100)),
              std::vector<std::string>{"audio/tracks/256.album->768"});
    EXPECT_TRUE(sut.getDependencyInfos(0x200).empty());
    EXPECT_TRUE(sut.getDependencyInfos(0x201).empty());
}

TEST(XObjectRefHolder, RemovesAReferenceOfAnObjectToItself)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "tracks", "previous", 0x100, 0x100);

    const std::size_t removed = sut.removeReferencesFrom(0x100);

    EXPECT_EQ(removed, 1U);
    EXPECT_TRUE(sut.mapXObjectRefData.empty());
}

TEST(XObjectRefHolder, RemovesNothingForAnObjectWithoutReferences)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    EXPECT_EQ(sut.removeReferencesFrom(0x100), 0U);
    EXPECT_EQ(sut.removeReferencesTo(0x200), 0U);
    EXPECT_EQ(sut.size(), 1U);
}

TEST(XObjectRefHolder, KeepsTheEntriesOfOtherReferencesInPlace)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);
    sut.addReference("audio", "playlists", "tracks", 0x201, 0x100);
    const XObjectRefBase::XObjectRefData* kept = sut.getDependencyInfos(0x201).front();

    sut.removeReferencesFrom(0x200);

    EXPECT_EQ(sut.getDependencyInfos(0x100).front(), kept);
    EXPECT_EQ(describe(kept), "audio/playlists/513.tracks->256");
}

TEST(XObjectRefHolder, ForgetsEverythingWhenCleared)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);
    sut.addReference("audio", "tracks", "album", 0x100, 0x300);

    sut.clear();

    EXPECT_EQ(sut.size(), 0U);
    EXPECT_TRUE(sut.mapXObjectRefData.empty());
}

TEST(XObjectRefHolder, TakesAReferenceAgainAfterItWasRemoved)
{
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);
    sut.removeReferencesTo(0x100);

    const bool added = sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    EXPECT_TRUE(added);
    EXPECT_EQ(describe(sut.getDependencyInfos(0x100)),
              std::vector<std::string>{"audio/playlists/512.tracks->256"});
}

struct ReferringObject
{
    XObjectId xObjId;
    std::string service;
    std::string resource;

    bool operator==(const ReferringObject& other) const
    {
        return xObjId == other.xObjId && service == other.service && resource == other.resource;
    }
};

// The way the database finds the objects whose references a deleted object leaves open.
std::vector<ReferringObject> referringObjectsOf(XObjectId deleted, const XObjectRefBase& references,
                                                const IDbObjectIdMapper& mapper)
{
    std::vector<ReferringObject> result;
    Poco::Int32 objId = 0;
    ServiceArrayIndexType_t index = 0;
    if (!mapper.getObjIdItemByXObjId(deleted, objId, index))
    {
        return result;
    }
    for (const XObjectRefBase::XObjectRefData* entry : references.getDependencyInfos(objId))
    {
        if (entry->pointingToId != objId)
        {
            continue;
        }
        XObjectId source = -1;
        if (!mapper.getXObjIdItemByObjId(entry->pointingFromObjectData->getObjectId(), 0, source))
        {
            continue;
        }
        result.push_back({source, entry->pointingFromObjectData->getServiceName(),
                          entry->pointingFromObjectData->getResourceName()});
    }
    return result;
}

TEST(XObjectRefHolder, LeadsFromADeletedObjectToTheObjectsThatReferToIt)
{
    DbObjectIdMapper mapper;
    mapper.addXObjId(0x100, 7, 0);
    mapper.addXObjId(0x200, 8, 0);
    mapper.addXObjId(0x300, 9, 0);
    mapper.addXObjId(0x201, 10, 0);
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);
    sut.addReference("audio", "tracks", "album", 0x100, 0x300);
    sut.addReference("audio", "albums", "tracks", 0x300, 0x100);
    sut.addReference("audio", "playlists", "tracks", 0x201, 0x101);
    sut.addReference("audio", "playlists", "tracks", 0x202, 0x100);

    const std::vector<ReferringObject> referring = referringObjectsOf(7, sut, mapper);

    EXPECT_EQ(referring, (std::vector<ReferringObject>{{8, "audio", "playlists"}, {9, "audio", "albums"}}));
}

TEST(XObjectRefHolder, LeadsNowhereFromAnUnmappedObject)
{
    DbObjectIdMapper mapper;
    mapper.addXObjId(0x200, 8, 0);
    XObjectRefHolder sut;
    sut.addReference("audio", "playlists", "tracks", 0x200, 0x100);

    const std::vector<ReferringObject> referring = referringObjectsOf(7, sut, mapper);

    EXPECT_TRUE(referring.empty());
}

TEST(XObjectRefHolder, LeadsFromAnArrayItemOnlyToReferrersMappedAtIndexZero)
{
    DbObjectIdMapper mapper;
    mapper.addXObjId(0x100, 7, 4);
    mapper.addXObjId(0x200, 8, 1);
    mapper.addXObjId(0x201, 9, 0);
    XObjectRefHolder sut;
    sut.addReference("cabin", "seats", "zone", 0x200, 0x100);
    sut.addReference("cabin", "doors", "zone", 0x201, 0x100);

    const std::vector<ReferringObject> referring = referringObjectsOf(7, sut, mapper);

    EXPECT_EQ(referring, (std::vector<ReferringObject>{{9, "cabin", "doors"}}));
}

} // namespace
