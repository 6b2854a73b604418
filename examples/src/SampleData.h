#pragma once

#include "JSONDataCache/JSONDataCache.h"

#include <Poco/Dynamic/Var.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <utility>

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
    using Values = std::initializer_list<std::pair<const char*, Poco::Dynamic::Var>>;

    void insert(const std::string& service, const std::string& resource, const std::string& uuid,
                Values values);
    /// Creates the object and writes its values cell by cell, as a client's POST would.

    JSONDataCache::JSONDataCache& m_cache;
};

} // namespace Orvi::Example
