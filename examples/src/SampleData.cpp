#include "SampleData.h"

#include "Data/Attribute.h"
#include "Data/AttributeValue.h"
#include "Data/AttributeValueArray.h"
#include "Data/AttributeValueObject.h"
#include "Data/AttributeValueStringable.h"

#include <Poco/Exception.h>
#include <Poco/Format.h>
#include <Poco/Types.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <algorithm>
#include <array>
#include <vector>

namespace Orvi::Example
{

namespace
{

using Data::AttributeValueInteger;
using Data::AttributeValueIntegerUnsigned;
using Data::AttributeValueNumber;
using Data::AttributeValueString;
using Data::ElementGeneric;
using Reference = Data::AttributeValueObject<Data::XObjectGeneric>;
using References = Data::AttributeValueArray<Reference>;

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

ElementGeneric element(const std::string& service, const std::string& resource, const std::string& uuid,
                       const std::string& name)
{
    return ElementGeneric(service, resource, name, Poco::UUID(uuid));
}

template <typename V>
ElementGeneric& with(ElementGeneric& object, const char* name, const V& value)
{
    object.getAttributesRef().setValue(name, value);
    return object;
}

Reference referenceTo(const std::string& service, const std::string& resource, const std::string& uuid)
{
    return Reference(Data::XObjectGeneric(std::string(), Poco::UUID(uuid),
                                          Poco::URI("/" + service + "/" + resource + "/" + uuid), -1));
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
    : m_access(cache)
{
}

void SampleData::fillCabin()
{
    const auto zone =
        [&](std::size_t index, const char* name, double setPoint, Poco::UInt64 fanLevel, const char* mode)
    {
        ElementGeneric object = element(CABIN, "zones", cabinUuid(index), name);
        with(object, "setPoint", AttributeValueNumber(setPoint));
        with(object, "fanLevel", AttributeValueIntegerUnsigned(fanLevel));
        insert(with(object, "mode", AttributeValueString(mode)));
    };
    zone(0, "Driver", 21.5, 3, "auto");
    zone(1, "Passenger", 22.0, 2, "cool");

    const auto seat = [&](std::size_t index, const char* name, Poco::Int64 position,
                          Poco::UInt64 heatingLevel, std::size_t zoneIndex)
    {
        ElementGeneric object = element(CABIN, "seats", cabinUuid(index), name);
        with(object, "position", AttributeValueInteger(position));
        with(object, "heatingLevel", AttributeValueIntegerUnsigned(heatingLevel));
        insert(with(object, "zone", referenceTo(CABIN, "zones", cabinUuid(zoneIndex))));
    };
    seat(2, "Driver seat", -10, 2, 0);
    seat(3, "Front passenger seat", 0, 0, 1);
    seat(4, "Rear left seat", 0, 1, 0);
    seat(5, "Rear centre seat", 0, 0, 1);
    seat(6, "Rear right seat", 5, 0, 1);

    const auto door = [&](std::size_t index, const char* name, const char* state)
    {
        ElementGeneric object = element(CABIN, "doors", cabinUuid(index), name);
        insert(with(object, "state", AttributeValueString(state)));
    };
    door(7, "Front left door", "closed");
    door(8, "Front right door", "closed");
    door(9, "Rear left door", "closed");
    door(10, "Rear right door", "open");

    const auto window = [&](std::size_t index, const char* name, const char* state, Poco::UInt64 position)
    {
        ElementGeneric object = element(CABIN, "windows", cabinUuid(index), name);
        with(object, "state", AttributeValueString(state));
        insert(with(object, "position", AttributeValueIntegerUnsigned(position)));
    };
    window(11, "Front left window", "closed", 0);
    window(12, "Front right window", "open", 25);
    window(13, "Rear left window", "closed", 0);
    window(14, "Rear right window", "open", 100);
}

SampleData::Counts SampleData::fillAudio(std::size_t trackCount)
{
    const Counts counts = countsFor(trackCount);
    for (std::size_t artist = 0; artist < counts.artists; ++artist)
    {
        ElementGeneric object = element(AUDIO, "artists", artistUuid(artist), numbered("Artist ", artist));
        insert(with(object, "country", AttributeValueString(COUNTRIES[artist % COUNTRIES.size()])));
    }
    for (std::size_t album = 0; album < counts.albums; ++album)
    {
        ElementGeneric object = element(AUDIO, "albums", albumUuid(album), numbered("Album ", album));
        with(object, "artist", referenceTo(AUDIO, "artists", artistUuid(album / ALBUMS_PER_ARTIST)));
        insert(with(object, "year", AttributeValueInteger(static_cast<Poco::Int64>(1960 + album % 60))));
    }
    for (std::size_t track = 0; track < counts.tracks; ++track)
    {
        const std::size_t album = track / TRACKS_PER_ALBUM;
        const std::string title = numbered("Track ", track);
        ElementGeneric object = element(AUDIO, "tracks", trackUuid(track), title);
        with(object, "title", AttributeValueString(title));
        with(object, "genre", AttributeValueString(GENRES[track % GENRES.size()]));
        with(object, "duration",
             AttributeValueIntegerUnsigned(static_cast<Poco::UInt64>(120 + track * 37 % 300)));
        with(object, "year", AttributeValueInteger(static_cast<Poco::Int64>(1960 + album % 60)));
        with(object, "album", referenceTo(AUDIO, "albums", albumUuid(album)));
        insert(with(object, "artist", referenceTo(AUDIO, "artists", artistUuid(album / ALBUMS_PER_ARTIST))));
    }
    const std::size_t length = std::min(PLAYLIST_LENGTH, counts.tracks);
    for (std::size_t playlist = 0; playlist < counts.playlists; ++playlist)
    {
        std::vector<Reference> tracks;
        tracks.reserve(length);
        for (std::size_t k = 0; k < length; ++k)
        {
            const std::size_t track = (playlist * TRACKS_PER_PLAYLIST_START + k) % counts.tracks;
            tracks.push_back(referenceTo(AUDIO, "tracks", trackUuid(track)));
        }
        ElementGeneric object =
            element(AUDIO, "playlists", playlistUuid(playlist), numbered("Playlist ", playlist));
        insert(with(object, "tracks", References(tracks)));
    }
    return counts;
}

void SampleData::insert(const Data::ElementGeneric& object)
{
    if (!m_access.insertElement(object).success())
    {
        throw Poco::InvalidArgumentException("cannot create sample object " + object.getUri().toString());
    }
}

} // namespace Orvi::Example
