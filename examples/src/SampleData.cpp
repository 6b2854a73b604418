#include "SampleData.h"

#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/XObject.h"

#include <Poco/Exception.h>
#include <Poco/Format.h>
#include <Poco/Types.h>
#include <Poco/URI.h>

#include <algorithm>
#include <array>

namespace Orvi::Example
{

namespace
{

// The first group of a UUID tells the kind of object, the last group its number.
constexpr unsigned KIND_ARTIST = 0xa0000001;
constexpr unsigned KIND_ALBUM = 0xa0000002;
constexpr unsigned KIND_TRACK = 0xa0000003;
constexpr unsigned KIND_PLAYLIST = 0xa0000004;
constexpr unsigned KIND_CABIN = 0xc0000001;

const std::string AUDIO = "audio";
const std::string CABIN = "cabin";

const std::array<const char*, 7> GENRES{"rock", "pop", "jazz", "classical", "electronic", "hiphop", "folk"};
const std::array<const char*, 5> COUNTRIES{"DE", "FR", "GB", "SE", "US"};

std::string uuidOf(unsigned kind, std::size_t index)
{
    return Poco::format("%08x-0000-4000-8000-%012Lx", kind, static_cast<Poco::UInt64>(index));
}

std::size_t roundedUp(std::size_t count, std::size_t perGroup)
{
    return (count + perGroup - 1) / perGroup;
}

Poco::Dynamic::Var referenceTo(const std::string& service, const std::string& resource,
                               const std::string& uuid)
{
    return Poco::URI("/" + service + "/" + resource + "/" + uuid);
}

std::string numbered(const char* prefix, std::size_t index)
{
    return prefix + std::to_string(index + 1);
}

} // namespace

SampleData::Counts SampleData::countsFor(std::size_t trackCount)
{
    Counts counts;
    counts.tracks = trackCount;
    counts.albums = roundedUp(trackCount, TRACKS_PER_ALBUM);
    counts.artists = roundedUp(counts.albums, ALBUMS_PER_ARTIST);
    counts.playlists = roundedUp(trackCount, TRACKS_PER_PLAYLIST_START);
    return counts;
}

std::string SampleData::artistUuid(std::size_t index)
{
    return uuidOf(KIND_ARTIST, index);
}

std::string SampleData::albumUuid(std::size_t index)
{
    return uuidOf(KIND_ALBUM, index);
}

std::string SampleData::trackUuid(std::size_t index)
{
    return uuidOf(KIND_TRACK, index);
}

std::string SampleData::playlistUuid(std::size_t index)
{
    return uuidOf(KIND_PLAYLIST, index);
}

std::string SampleData::cabinUuid(std::size_t index)
{
    return uuidOf(KIND_CABIN, index);
}

SampleData::SampleData(JSONDataCache::JSONDataCache& cache)
    : m_cache(cache)
{
}

void SampleData::fillCabin()
{
    const std::string driverZone = cabinUuid(0);
    const std::string passengerZone = cabinUuid(1);
    insert(CABIN, "zones", driverZone,
           {{"name", "Driver"}, {"setPoint", 21.5}, {"fanLevel", 3}, {"mode", "auto"}});
    insert(CABIN, "zones", passengerZone,
           {{"name", "Passenger"}, {"setPoint", 22.0}, {"fanLevel", 2}, {"mode", "cool"}});

    const auto zoneOf = [&](const std::string& uuid) { return referenceTo(CABIN, "zones", uuid); };
    insert(CABIN, "seats", cabinUuid(2),
           {{"name", "Driver seat"}, {"position", -10}, {"heatingLevel", 2}, {"zone", zoneOf(driverZone)}});
    insert(CABIN, "seats", cabinUuid(3),
           {{"name", "Front passenger seat"},
            {"position", 0},
            {"heatingLevel", 0},
            {"zone", zoneOf(passengerZone)}});
    insert(CABIN, "seats", cabinUuid(4),
           {{"name", "Rear left seat"}, {"position", 0}, {"heatingLevel", 1}, {"zone", zoneOf(driverZone)}});
    insert(CABIN, "seats", cabinUuid(5),
           {{"name", "Rear centre seat"},
            {"position", 0},
            {"heatingLevel", 0},
            {"zone", zoneOf(passengerZone)}});
    insert(
        CABIN, "seats", cabinUuid(6),
        {{"name", "Rear right seat"}, {"position", 5}, {"heatingLevel", 0}, {"zone", zoneOf(passengerZone)}});

    insert(CABIN, "doors", cabinUuid(7), {{"name", "Front left door"}, {"state", "closed"}});
    insert(CABIN, "doors", cabinUuid(8), {{"name", "Front right door"}, {"state", "closed"}});
    insert(CABIN, "doors", cabinUuid(9), {{"name", "Rear left door"}, {"state", "closed"}});
    insert(CABIN, "doors", cabinUuid(10), {{"name", "Rear right door"}, {"state", "open"}});

    insert(CABIN, "windows", cabinUuid(11),
           {{"name", "Front left window"}, {"state", "closed"}, {"position", 0}});
    insert(CABIN, "windows", cabinUuid(12),
           {{"name", "Front right window"}, {"state", "open"}, {"position", 25}});
    insert(CABIN, "windows", cabinUuid(13),
           {{"name", "Rear left window"}, {"state", "closed"}, {"position", 0}});
    insert(CABIN, "windows", cabinUuid(14),
           {{"name", "Rear right window"}, {"state", "open"}, {"position", 100}});
}

SampleData::Counts SampleData::fillAudio(std::size_t trackCount)
{
    const Counts counts = countsFor(trackCount);
    for (std::size_t artist = 0; artist < counts.artists; ++artist)
    {
        insert(AUDIO, "artists", artistUuid(artist),
               {{"name", numbered("Artist ", artist)}, {"country", COUNTRIES[artist % COUNTRIES.size()]}});
    }
    for (std::size_t album = 0; album < counts.albums; ++album)
    {
        insert(AUDIO, "albums", albumUuid(album),
               {{"name", numbered("Album ", album)},
                {"artist", referenceTo(AUDIO, "artists", artistUuid(album / ALBUMS_PER_ARTIST))},
                {"year", static_cast<int>(1960 + album % 60)}});
    }
    for (std::size_t track = 0; track < counts.tracks; ++track)
    {
        const std::size_t album = track / TRACKS_PER_ALBUM;
        const std::string title = numbered("Track ", track);
        insert(AUDIO, "tracks", trackUuid(track),
               {{"name", title},
                {"title", title},
                {"genre", GENRES[track % GENRES.size()]},
                {"duration", static_cast<int>(120 + track * 37 % 300)},
                {"year", static_cast<int>(1960 + album % 60)},
                {"album", referenceTo(AUDIO, "albums", albumUuid(album))},
                {"artist", referenceTo(AUDIO, "artists", artistUuid(album / ALBUMS_PER_ARTIST))}});
    }
    const std::size_t length = std::min(PLAYLIST_LENGTH, counts.tracks);
    for (std::size_t playlist = 0; playlist < counts.playlists; ++playlist)
    {
        DBData::AttributeValue::ValueArrayPtr tracks(new DBData::AttributeValue::ValueArray);
        tracks->reserve(length);
        for (std::size_t k = 0; k < length; ++k)
        {
            const std::size_t track = (playlist * TRACKS_PER_PLAYLIST_START + k) % counts.tracks;
            tracks->push_back(referenceTo(AUDIO, "tracks", trackUuid(track)));
        }
        insert(AUDIO, "playlists", playlistUuid(playlist),
               {{"name", numbered("Playlist ", playlist)}, {"tracks", Poco::Dynamic::Var(tracks)}});
    }
    return counts;
}

void SampleData::insert(const std::string& service, const std::string& resource, const std::string& uuid,
                        Values values)
{
    std::string newUuid = uuid;
    if (!m_cache.insertXObject(service, resource, newUuid))
    {
        throw Poco::InvalidArgumentException("cannot create sample object " + uuid + " in /" + service + "/" +
                                             resource);
    }
    const DBData::XObject::Ptr object = m_cache.selectXObject(newUuid, 0);
    for (const auto& [name, value] : values)
    {
        DBData::AttributeValuePtr cell = object->getValue(name);
        if (cell.isNull() || !cell->setValue(value) || !m_cache.updateCacheAttributeValueById(*cell, false))
        {
            throw Poco::InvalidArgumentException("cannot write sample value " + std::string(name) + " of " +
                                                 uuid);
        }
    }
}

} // namespace Orvi::Example
