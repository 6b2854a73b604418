#pragma once

#include "Data/GenericObject.h"
#include "DataAccess/DBDataAccessPoint.h"
#include "JSONDataCache/JSONDataCache.h"

#include <cstddef>
#include <string>

namespace Orvi::Example
{

/// Fills the store with generated sample objects that are the same on every run: a fixed cabin and an
/// audio library that grows with the number of tracks. Every tenth track starts a new album, every
/// fifth album a new artist and every hundredth track a new playlist of up to ten consecutive tracks.
class SampleData
{
public:
    /// The number of objects of each audio resource.
    struct Counts
    {
        std::size_t tracks = 0;
        std::size_t albums = 0;
        std::size_t artists = 0;
        std::size_t playlists = 0;
    };

    static constexpr std::size_t TRACKS_PER_ALBUM = 10;
    static constexpr std::size_t ALBUMS_PER_ARTIST = 5;
    static constexpr std::size_t TRACKS_PER_PLAYLIST_START = 100;
    static constexpr std::size_t PLAYLIST_LENGTH = 10;

    static Counts countsFor(std::size_t trackCount);
    /// Each count rounds up, so that every track has an album and an artist.

    static std::string artistUuid(std::size_t index);
    static std::string albumUuid(std::size_t index);
    static std::string trackUuid(std::size_t index);
    static std::string playlistUuid(std::size_t index);
    static std::string cabinUuid(std::size_t index);
    /// The UUIDs of the cabin objects, numbered across zones, seats, doors and windows.

    explicit SampleData(JSONDataCache::JSONDataCache& cache);
    /// The cache must outlive this object; fill it before the worker runs or on the worker.

    void fillCabin();
    /// Two climate zones, five seats, four doors and four windows.

    Counts fillAudio(std::size_t trackCount);
    /// Artists, albums, tracks and playlists for the given number of tracks; gives back the counts.

private:
    void insert(const Data::ElementGeneric& element);
    /// Creates the object under the element's UUID through the data access point, as program code
    /// would; raises Poco::InvalidArgumentException when the store refuses it.

    Service::DBDataAccessPoint m_access;
};

} // namespace Orvi::Example
