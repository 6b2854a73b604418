// Copies every track the example serves into a json-server database, page by page, so that both
// servers answer from the same data. Prints the id of the first track.
//
// Usage: node fetch-tracks.mjs BASE_URL DB_FILE   (BASE_URL like http://127.0.0.1:8080)

import { writeFileSync } from "node:fs";

const PAGE_SIZE = 1000;
const MAX_PAGES = 100000;

const [baseUrl, dbFile] = process.argv.slice(2);
if (!baseUrl || !dbFile) {
    console.error("usage: node fetch-tracks.mjs BASE_URL DB_FILE");
    process.exit(2);
}

async function fetchPage(offset) {
    const url = `${baseUrl}/audio/tracks?$limit=${PAGE_SIZE}&$offset=${offset}`;
    const response = await fetch(url);
    if (!response.ok) {
        throw new Error(`GET ${url} answered ${response.status}`);
    }
    return response.json();
}

const tracks = [];
let total = Infinity;
// Bounded both by the total the server reports and by a page count no real run reaches.
for (let page = 0; page < MAX_PAGES && tracks.length < total; ++page) {
    const answer = await fetchPage(tracks.length);
    const data = Array.isArray(answer.data) ? answer.data : [];
    if (answer.paging && Number.isInteger(answer.paging.total)) {
        total = answer.paging.total;
    }
    if (data.length === 0) {
        break;
    }
    tracks.push(...data);
}

if (tracks.length === 0) {
    console.error(`no tracks at ${baseUrl}/audio/tracks`);
    process.exit(1);
}
if (Number.isFinite(total) && tracks.length !== total) {
    console.error(`fetched ${tracks.length} tracks, the server reports ${total}`);
    process.exit(1);
}

// An empty playlists collection, so that json-server accepts the created playlists.
writeFileSync(dbFile, JSON.stringify({ tracks, playlists: [] }));
console.log(tracks[0].id);
