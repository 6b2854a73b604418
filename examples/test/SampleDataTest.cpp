#include "SampleData.h"

#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/JSONDataCache.h"
#include "SchemaLoader/SchemaLoader.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

namespace
{

using Orvi::DBData::AttributeValue;
using Orvi::Example::SampleData;

const std::string DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;

class SampleDataFill : public ::testing::Test
{
protected:
    SampleDataFill()
        : cache(services)
        , sut(cache)
    {
        Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/cabin.json", DEFINITIONS + "/audio.json"},
                                               services);
    }

    std::size_t countOf(const std::string& service, const std::string& resource)
    {
        std::vector<long> ids;
        cache.selectXObjectIDsOfResource(service, resource, ids);
        return ids.size();
    }

    std::string textOf(const std::string& uuid, const std::string& attribute)
    {
        const Orvi::DBData::XObject::Ptr object = cache.selectXObject(uuid, 0);
        return object.isNull() ? "no object" : text(object->getValue(attribute)->getValue());
    }

    // A selection resolves references into objects; they read here as their UUIDs.
    static std::string text(const Poco::Dynamic::Var& value)
    {
        if (value.type() == typeid(Orvi::DBData::XObject::Ptr))
        {
            return value.extract<Orvi::DBData::XObject::Ptr>()->getUUID();
        }
        return value.toString();
    }

    Orvi::DBData::ServiceMap services;
    Orvi::JSONDataCache::JSONDataCache cache;
    SampleData sut;
};

TEST(SampleData, CountsRoundUpSoThatEveryTrackHasAnAlbumAndAnArtist)
{
    const SampleData::Counts counts = SampleData::countsFor(101);

    EXPECT_EQ(counts.tracks, 101U);
    EXPECT_EQ(counts.albums, 11U);
    EXPECT_EQ(counts.artists, 3U);
    EXPECT_EQ(counts.playlists, 2U);
}

TEST(SampleData, CountsNothingForNoTracks)
{
    const SampleData::Counts counts = SampleData::countsFor(0);

    EXPECT_EQ(counts.albums, 0U);
    EXPECT_EQ(counts.artists, 0U);
    EXPECT_EQ(counts.playlists, 0U);
}

TEST(SampleData, NumbersTheUuidsByKind)
{
    EXPECT_EQ(SampleData::artistUuid(0), "a0000001-0000-4000-8000-000000000000");
    EXPECT_EQ(SampleData::albumUuid(10), "a0000002-0000-4000-8000-00000000000a");
    EXPECT_EQ(SampleData::trackUuid(99999), "a0000003-0000-4000-8000-00000001869f");
    EXPECT_EQ(SampleData::playlistUuid(1), "a0000004-0000-4000-8000-000000000001");
    EXPECT_EQ(SampleData::cabinUuid(14), "c0000001-0000-4000-8000-00000000000e");
}

TEST_F(SampleDataFill, StoresTheCountsItReports)
{
    const SampleData::Counts counts = sut.fillAudio(101);

    EXPECT_EQ(countOf("audio", "tracks"), counts.tracks);
    EXPECT_EQ(countOf("audio", "albums"), counts.albums);
    EXPECT_EQ(countOf("audio", "artists"), counts.artists);
    EXPECT_EQ(countOf("audio", "playlists"), counts.playlists);
}

TEST_F(SampleDataFill, GivesATrackItsValuesAndTheAlbumAndArtistOfItsGroup)
{
    sut.fillAudio(101);

    const std::string track = SampleData::trackUuid(100);
    EXPECT_EQ(textOf(track, "title"), "Track 101");
    EXPECT_EQ(textOf(track, "name"), "Track 101");
    EXPECT_EQ(textOf(track, "genre"), "jazz");
    EXPECT_EQ(textOf(track, "duration"), "220");
    EXPECT_EQ(textOf(track, "year"), "1970");
    EXPECT_EQ(textOf(track, "album"), SampleData::albumUuid(10));
    EXPECT_EQ(textOf(track, "artist"), SampleData::artistUuid(2));
    EXPECT_EQ(textOf(SampleData::albumUuid(10), "artist"), SampleData::artistUuid(2));
    EXPECT_EQ(textOf(SampleData::artistUuid(2), "country"), "GB");
}

TEST_F(SampleDataFill, FillsAPlaylistWithConsecutiveTracksWrappingAtTheEnd)
{
    sut.fillAudio(105);

    const Orvi::DBData::XObject::Ptr playlist = cache.selectXObject(SampleData::playlistUuid(1), 0);
    ASSERT_FALSE(playlist.isNull());
    const auto& tracks = playlist->getValue("tracks")->getValue().extract<AttributeValue::ValueArrayPtr>();
    ASSERT_EQ(tracks->size(), 10U);
    EXPECT_EQ(text((*tracks)[0]), SampleData::trackUuid(100));
    EXPECT_EQ(text((*tracks)[4]), SampleData::trackUuid(104));
    EXPECT_EQ(text((*tracks)[5]), SampleData::trackUuid(0));
}

TEST_F(SampleDataFill, FillsTheCabinWithItsFixedObjects)
{
    sut.fillCabin();

    EXPECT_EQ(countOf("cabin", "zones"), 2U);
    EXPECT_EQ(countOf("cabin", "seats"), 5U);
    EXPECT_EQ(countOf("cabin", "doors"), 4U);
    EXPECT_EQ(countOf("cabin", "windows"), 4U);
    EXPECT_EQ(textOf(SampleData::cabinUuid(0), "setPoint"), "21.5");
    EXPECT_EQ(textOf(SampleData::cabinUuid(2), "zone"), SampleData::cabinUuid(0));
    EXPECT_EQ(textOf(SampleData::cabinUuid(14), "position"), "100");
}

TEST_F(SampleDataFill, GeneratesTheSameObjectsOnEveryRun)
{
    Orvi::DBData::ServiceMap otherServices;
    Orvi::Loader::SchemaLoader().loadFiles({DEFINITIONS + "/audio.json"}, otherServices);
    Orvi::JSONDataCache::JSONDataCache otherCache(otherServices);

    sut.fillAudio(30);
    SampleData(otherCache).fillAudio(30);

    for (std::size_t track = 0; track < 30; ++track)
    {
        const Orvi::DBData::XObject::Ptr first = cache.selectXObject(SampleData::trackUuid(track), 0);
        const Orvi::DBData::XObject::Ptr second = otherCache.selectXObject(SampleData::trackUuid(track), 0);
        ASSERT_FALSE(first.isNull());
        ASSERT_FALSE(second.isNull());
        for (const char* name : {"title", "genre", "duration", "year", "album", "artist"})
        {
            EXPECT_EQ(text(first->getValue(name)->getValue()), text(second->getValue(name)->getValue()))
                << name << " of track " << track;
        }
    }
}

} // namespace
