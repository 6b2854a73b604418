// Drives the explorer page of a running example process in a real (headless) Chromium and compares
// what the page shows with what the process's API answers for the same request.
//
// Needs EXPLORER_PORT: the port of a servicedb-example started with --tracks 100000 --vehicle-rate 2
// (scripts/check-explorer.sh starts one). CHROMIUM may name the browser (default /usr/bin/chromium);
// SCREENSHOT_DIR is where the pictures go (default build/explorer-screenshots).
"use strict";

const { test, before, after } = require("node:test");
const assert = require("node:assert/strict");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const { chromium } = require("playwright-core");

const port = process.env.EXPLORER_PORT;
if (!port) {
    throw new Error("EXPLORER_PORT is not set: start servicedb-example and give its port");
}
const origin = `http://127.0.0.1:${port}`;
const explorer = `${origin}/$explorer/`;
const repoRoot = path.resolve(__dirname, "..", "..");
const screenshotDir = path.resolve(process.env.SCREENSHOT_DIR || path.join(repoRoot, "build", "explorer-screenshots"));

// A view normally shows within milliseconds; the bound only keeps a broken page from hanging the run.
const VIEW_TIMEOUT = 10000;
// A change that reaches the process has to show on the page, marked, within this time.
const LIVE_TIMEOUT = 1000;

let profile;
let context;
let page;
const requests = [];      // every request the page sent to the API
const sockets = [];       // every WebSocket the page opened, with the messages it sent and received
const problems = [];      // page errors and refusals by the content security policy
let loaded = false;

async function api(address, init) {
    const response = await fetch(origin + address, init);
    const body = await response.json();
    return { status: response.status, statusText: response.statusText, body };
}

async function apiPost(address, body) {
    return api(address, { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify(body) });
}

function formatCount(n) {
    return Number(n).toLocaleString("en-US");
}

function pagingText(paging) {
    const page = Math.floor(paging.offset / paging.limit) + 1;
    return `Page ${formatCount(page)} of ${formatCount(paging.totalPages)} · ${formatCount(paging.total)} object${paging.total === 1 ? "" : "s"}`;
}

function isCollection(pathname) {
    const parts = pathname.split("/").filter(Boolean);
    return parts.length === 2 && !parts[1].startsWith("$");
}

async function rendered() {
    return page.evaluate(() => {
        const main = document.getElementById("explorer");
        return main ? main.dataset.rendered || null : null;
    });
}

// Runs an action that changes the view and waits until the page has finished showing the new one.
async function changeView(action) {
    const previous = await rendered();
    await action();
    await page.waitForFunction((before) => {
        const main = document.getElementById("explorer");
        return main.dataset.rendered !== undefined && main.dataset.rendered !== before &&
            main.getAttribute("aria-busy") === "false";
    }, previous, { timeout: VIEW_TIMEOUT });
}

// Shows a view by its hash: the first time by loading the page, later as the user would, in place.
async function open(hash) {
    if (!loaded) {
        loaded = true;
        await changeView(() => page.goto(explorer + hash));
        return;
    }
    assert.notEqual(new URL(page.url()).hash, hash, "open() needs a view other than the current one");
    await changeView(() => page.evaluate((target) => { location.hash = target; }, hash));
}

async function rowUris() {
    return page.$$eval("[data-testid=rows] tr[data-uri]", (rows) => rows.map((row) => row.dataset.uri));
}

async function text(selector) {
    return (await page.textContent(selector)).trim();
}

async function shot(name) {
    fs.mkdirSync(screenshotDir, { recursive: true });
    await page.screenshot({ path: path.join(screenshotDir, name) });
}

before(async () => {
    profile = fs.mkdtempSync(path.join(os.tmpdir(), "explorer-chromium-"));
    context = await chromium.launchPersistentContext(profile, {
        executablePath: process.env.CHROMIUM || "/usr/bin/chromium",
        headless: true,
        args: ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
            "--disable-component-update", "--disable-sync"],
        viewport: { width: 1280, height: 800 }
    });
    page = context.pages()[0] || await context.newPage();
    page.setDefaultTimeout(VIEW_TIMEOUT);
    page.on("request", (request) => {
        const url = new URL(request.url());
        if (url.origin === origin && !url.pathname.startsWith("/$explorer")) {
            requests.push({ method: request.method(), pathname: decodeURIComponent(url.pathname), params: url.searchParams });
        }
    });
    page.on("websocket", (socket) => {
        const record = { url: socket.url(), sent: [], received: [] };
        sockets.push(record);
        socket.on("framesent", (frame) => record.sent.push(JSON.parse(frame.payload)));
        socket.on("framereceived", (frame) => record.received.push(JSON.parse(frame.payload)));
    });
    page.on("pageerror", (error) => problems.push(`page error: ${error.message}`));
    page.on("console", (message) => {
        if (/Content Security Policy|Refused to/i.test(message.text())) {
            problems.push(`console: ${message.text()}`);
        }
    });
});

after(async () => {
    if (context) {
        await context.close();
    }
    if (profile) {
        fs.rmSync(profile, { recursive: true, force: true });
    }
});

test("the services list shows every service with its description and versions", async () => {
    const { body } = await api("/");
    const names = body.data.map((service) => service.name);
    assert.ok(names.includes("cabin") && names.includes("audio"), `the API lists ${names}`);

    await open("#/");
    const cards = await page.$$eval("[data-testid=service-card]", (all) => all.map((card) => card.dataset.service));
    assert.deepEqual(cards.sort(), names.slice().sort());
    for (const service of body.data) {
        const card = `[data-testid=service-card][data-service="${service.name}"]`;
        assert.equal(await text(`${card} [data-testid=service-description]`), service.description);
        assert.equal(await text(`${card} [data-testid=service-versions]`), service.versions.join(", "));
    }
    // The tree beside lists each service's resources as the API names them.
    for (const service of ["audio", "cabin"]) {
        const resources = (await api(`/${service}`)).body.data.map((r) => r.name);
        await page.waitForSelector(`[data-testid=tree-resource-${service}-${resources[resources.length - 1]}]`, { timeout: VIEW_TIMEOUT });
        const shown = await page.$$eval(`[data-service="${service}"] [data-resource]`, (all) => all.map((li) => li.dataset.resource));
        assert.deepEqual(shown, resources.map((r) => `${service}/${r}`));
    }
    await shot("services.png");
});

test("the live connection opens under the page's content security policy", async () => {
    await page.waitForFunction(() => document.querySelector("[data-testid=live-state]").dataset.state === "open",
        null, { timeout: VIEW_TIMEOUT });
    assert.equal(sockets.length, 1);
    assert.equal(sockets[0].url, `ws://127.0.0.1:${port}/`);
    assert.deepEqual(problems, []);
});

test("a service shows its resources with their descriptions and sizes", async () => {
    await changeView(() => page.click("[data-testid=tree-service-audio]"));
    assert.equal(new URL(page.url()).hash, "#/audio");
    const resources = (await api("/audio")).body.data;
    const rows = await page.$$eval("[data-testid=resource-list] tbody tr", (all) =>
        all.map((tr) => ({ name: tr.dataset.resource, description: tr.cells[1].textContent })));
    assert.deepEqual(rows, resources.map((r) => ({ name: r.name, description: r.description })));
    // The sizes come from one-object pages: the paging's total.
    for (const resource of resources) {
        const { body } = await api(`/audio/${resource.name}?$limit=1`);
        await page.waitForFunction(([name, want]) =>
            document.querySelector(`[data-testid=resource-list] tr[data-resource="${name}"] [data-testid=resource-count]`).textContent === want,
        [resource.name, formatCount(body.paging.total)], { timeout: VIEW_TIMEOUT });
    }
});

test("the tracks table shows a first page of 20 with the total", async () => {
    await changeView(() => page.click("[data-testid=tree-resource-audio-tracks]"));
    assert.equal(new URL(page.url()).hash, "#/audio/tracks?$offset=0&$limit=20");
    const { body } = await api("/audio/tracks?$offset=0&$limit=20");
    assert.equal(body.paging.total, 100000);
    assert.deepEqual(await rowUris(), body.data.map((track) => track.uri));
    assert.equal(await text("[data-testid=paging-info]"), pagingText(body.paging));
    const titles = await page.$$eval("[data-testid=rows] td[data-col=title]", (cells) => cells.map((c) => c.textContent));
    assert.deepEqual(titles, body.data.map((track) => track.title));
    // Wait for the live subscription of this page, so the picture shows the page as it normally is.
    await page.waitForFunction(() => document.querySelector("[data-testid=live-state]").dataset.state === "open",
        null, { timeout: VIEW_TIMEOUT });
    await shot("explorer.png");
});

test("the next page starts with the 21st track, and reload and back keep the place", async () => {
    await changeView(() => page.click("[data-testid=page-next]"));
    const { body } = await api("/audio/tracks?$offset=20&$limit=20");
    assert.equal(new URL(page.url()).hash, "#/audio/tracks?$offset=20&$limit=20");
    const uris = await rowUris();
    assert.equal(uris.length, 20);
    assert.equal(uris[0], body.data[0].uri);
    assert.deepEqual(uris, body.data.map((track) => track.uri));
    assert.equal(await text("[data-testid=paging-info]"), pagingText(body.paging));

    await changeView(() => page.reload());
    assert.deepEqual(await rowUris(), body.data.map((track) => track.uri));

    await changeView(() => page.goBack());
    const first = await api("/audio/tracks?$offset=0&$limit=20");
    assert.deepEqual(await rowUris(), first.body.data.map((track) => track.uri));
});

test("clicking a column header sorts as $sortby does, ascending then descending", async () => {
    for (const column of ["title", "duration"]) {
        await changeView(() => page.click(`[data-testid=sort-${column}]`));
        let answer = await api(`/audio/tracks?$sortby=${column}&$offset=0&$limit=20`);
        assert.deepEqual(await rowUris(), answer.body.data.map((track) => track.uri));
        assert.equal(await page.getAttribute(`th[data-col=${column}]`, "aria-sort"), "ascending");

        await changeView(() => page.click(`[data-testid=sort-${column}]`));
        answer = await api(`/audio/tracks?$sortby=-${column}&$offset=0&$limit=20`);
        assert.deepEqual(await rowUris(), answer.body.data.map((track) => track.uri));
        assert.equal(await page.getAttribute(`th[data-col=${column}]`, "aria-sort"), "descending");
        assert.ok(new URL(page.url()).hash.includes(`$sortby=-${column}`));
    }
    await open("#/audio/tracks");
    assert.equal(new URL(page.url()).hash, "#/audio/tracks?$offset=0&$limit=20");
});

async function search(typed, apiQuery) {
    await changeView(async () => {
        await page.fill("[data-testid=search-input]", typed);
        await page.press("[data-testid=search-input]", "Enter");
    });
    const answer = await api(`/audio/tracks?${apiQuery}&$limit=20`);
    assert.ok(answer.body.paging, `the API answers ${apiQuery} with paging`);
    assert.ok(answer.body.paging.total < 100000, `${apiQuery} narrows the tracks`);
    assert.equal(await page.getAttribute("[data-testid=paging-info]", "data-total"), String(answer.body.paging.total));
    assert.equal(await text("[data-testid=paging-info]"), pagingText(answer.body.paging));
    assert.deepEqual(await rowUris(), answer.body.data.map((track) => track.uri));
    return answer.body;
}

test("an attribute search narrows the table to the API's total", async () => {
    const rock = await search("genre=rock", "genre=rock");
    assert.ok(rock.data.every((track) => track.genre === "rock"));
    const genres = await page.$$eval("[data-testid=rows] td[data-col=genre]", (cells) => cells.map((c) => c.textContent));
    assert.deepEqual([...new Set(genres)], ["rock"]);

    await search("genre=rock year=1960", "genre=rock&year=1960");
    await search('title="Track 99%"', "title=Track%2099%25");
});

test("a free-text search narrows the table to the API's total", async () => {
    await search("1999", "$q=1999");
    await search("Track 9998", "$q=Track%209998");
    await changeView(() => page.click("[data-testid=search-clear]"));
    assert.equal(await page.inputValue("[data-testid=search-input]"), "");
});

test("an object shows its references as links, and the expansion level changes what is shown", async () => {
    const first = (await api("/audio/tracks?$offset=0&$limit=20")).body.data[0];
    await changeView(() => page.click(`tr[data-uri="${first.uri}"] [data-testid=object-link]`));
    assert.equal(new URL(page.url()).hash, `#${first.uri}`);
    const level0 = (await api(first.uri)).body.data;
    assert.equal(await text("[data-testid=object-title]"), level0.name);
    assert.equal(await text('[data-path="year"]'), String(level0.year));
    const albumLink = "[data-testid=attr-album] [data-path=album] > a[data-testid=ref-link]";
    assert.equal(await text(albumLink), level0.album.name);
    assert.equal(await page.getAttribute(albumLink, "href"), `#${level0.album.uri}`);
    assert.equal(await page.$('[data-path="album.year"]'), null);

    await changeView(() => page.selectOption("[data-testid=expand-level]", "1"));
    assert.equal(new URL(page.url()).hash, `#${first.uri}?$expand=1`);
    const level1 = (await api(`${first.uri}?$expand=1`)).body.data;
    assert.equal(await text('[data-path="album.year"]'), String(level1.album.year));
    assert.equal(await text('[data-path="artist.country"]'), level1.artist.country);
    assert.equal(await page.$('[data-path="album.artist.country"]'), null);

    await changeView(() => page.selectOption("[data-testid=expand-level]", "2"));
    const level2 = (await api(`${first.uri}?$expand=2`)).body.data;
    assert.equal(await text('[data-path="album.artist.country"]'), level2.album.artist.country);

    await changeView(() => page.click(albumLink));
    assert.equal(new URL(page.url()).hash, `#${level0.album.uri}`);
    const album = (await api(level0.album.uri)).body.data;
    assert.equal(await text("[data-testid=object-title]"), album.name);
    assert.equal(await text('[data-path="year"]'), String(album.year));
});

test("the schema view shows the resource's $spec", async () => {
    await open("#/audio/tracks");
    await changeView(() => page.click("[data-testid=tab-schema]"));
    assert.equal(new URL(page.url()).hash, "#/audio/tracks/$spec");
    const schema = (await api("/audio/tracks/$spec")).body;
    assert.deepEqual(JSON.parse(await text("[data-testid=schema-json]")), schema);
    const attributes = await page.$$eval("[data-testid=schema-attributes] tr[data-attribute]", (rows) => rows.map((r) => r.dataset.attribute));
    assert.deepEqual(attributes, Object.keys(schema.attributes));
});

test("an allowed attribute can be edited and the answer's status is shown", async () => {
    const track = (await api("/audio/tracks?$offset=2&$limit=1")).body.data[0];
    await open(`#${track.uri}`);
    const year = track.year === 1999 ? 1998 : 1999;
    await page.click("[data-testid=edit-year]");
    await page.fill("[data-testid=input-year]", String(year));
    await page.press("[data-testid=input-year]", "Enter");
    await page.waitForFunction(() => document.querySelector("[data-testid=status-result]").textContent !== "", null, { timeout: VIEW_TIMEOUT });
    assert.equal(await text("[data-testid=status-result]"), "200 OK");
    assert.equal((await api(track.uri)).body.data.year, year);
    // The change comes back over the live connection and is marked where it is shown.
    await page.waitForFunction((y) => {
        const el = document.querySelector('[data-path="year"]');
        return el.textContent === String(y) && el.classList.contains("changed");
    }, year, { timeout: LIVE_TIMEOUT });

    // Only what the access rules allow may be edited: the id is never writable.
    assert.equal(await page.$("[data-testid=edit-id]"), null);
});

test("a cabin write answers 202, a bad value 400 with the server's message", async () => {
    const zone = (await api("/cabin/zones?$offset=0&$limit=1")).body.data[0];
    await open(`#${zone.uri}`);
    assert.equal(await page.$("[data-testid=edit-temperature]"), null);
    assert.equal(await page.$("[data-testid=edit-mode]"), null);

    const bad = await apiPost(zone.uri, { setPoint: 40 });
    assert.equal(bad.status, 400);
    const expected = `400 Bad Request${bad.body.message ? `: ${bad.body.message}` : ""}`;
    await page.click("[data-testid=edit-setPoint]");
    await page.fill("[data-testid=input-setPoint]", "40");
    await page.click("[data-testid=save-setPoint]");
    await page.waitForFunction((want) => document.querySelector("[data-testid=status-result]").textContent === want,
        expected, { timeout: VIEW_TIMEOUT });
    assert.ok(await page.$eval("[data-testid=status-line]", (el) => el.classList.contains("error")));

    // A new set point: the controller confirms it, and the temperature starts to move toward it.
    const setPoint = zone.setPoint >= 27 ? zone.setPoint - 2 : zone.setPoint + 2;
    const temperature = await text('[data-path="temperature"]');
    await page.fill("[data-testid=input-setPoint]", String(setPoint));
    await page.click("[data-testid=save-setPoint]");
    await page.waitForFunction(() => document.querySelector("[data-testid=status-result]").textContent === "202 Accepted",
        null, { timeout: VIEW_TIMEOUT });
    await page.waitForFunction((want) => {
        const el = document.querySelector('[data-path="setPoint"]');
        return el.textContent === String(want) && el.classList.contains("changed");
    }, setPoint, { timeout: LIVE_TIMEOUT });
    const markedAt = Date.now();
    await page.waitForFunction((was) => {
        const el = document.querySelector('[data-path="temperature"]');
        return el.textContent !== was && el.classList.contains("changed");
    }, temperature, { timeout: LIVE_TIMEOUT });
    await shot("zone-edited.png");
    // The set point changed once: its mark stays long enough to be seen, then goes.
    await page.waitForFunction(() => !document.querySelector('[data-path="setPoint"]').classList.contains("changed"),
        null, { timeout: 3000 });
    assert.ok(Date.now() - markedAt >= 1500, `the mark went after ${Date.now() - markedAt} ms`);
});

test("a value the vehicle changes is updated in place and marked within a second", async () => {
    await open("#/audio/player");
    const player = (await api("/audio/player?$offset=0&$limit=20")).body.data[0];
    await changeView(() => page.click(`tr[data-uri="${player.uri}"] [data-testid=object-link]`));
    assert.equal(await page.$$eval("button.edit", (buttons) => buttons.length), 0, "the player is not writable");
    // Mark the element, so that the change is seen to happen to it rather than to a new one.
    const position = await page.$eval('[data-path="position"]', (el) => {
        el.dataset.probe = "kept";
        return el.textContent;
    });
    await page.waitForFunction((was) => {
        const el = document.querySelector('[data-path="position"]');
        return el.dataset.probe === "kept" && el.textContent !== was && el.classList.contains("changed");
    }, position, { timeout: LIVE_TIMEOUT });
    await shot("object-changed.png");
});

test("a row of the table is updated in place when its object changes", async () => {
    await open("#/audio/tracks?$offset=0&$limit=20");
    const track = (await api("/audio/tracks?$offset=0&$limit=20")).body.data[1];
    const cell = `tr[data-uri="${track.uri}"] td[data-col=year]`;
    const year = track.year === 2000 ? 2001 : 2000;
    await page.$eval(cell, (el) => { el.dataset.probe = "kept"; });
    assert.equal((await apiPost(track.uri, { year })).status, 200);
    await page.waitForFunction(([selector, want]) => {
        const el = document.querySelector(selector);
        return el && el.dataset.probe === "kept" && el.textContent === String(want) && el.classList.contains("changed");
    }, [cell, year], { timeout: LIVE_TIMEOUT });
});

test("every collection the page read or watched carried $limit of at most 100", async () => {
    const collections = requests.filter((r) => r.method === "GET" && isCollection(r.pathname));
    assert.ok(collections.length >= 10, `the page read ${collections.length} collections`);
    for (const request of collections) {
        const limit = request.params.get("$limit");
        assert.ok(limit !== null, `${request.pathname}?${request.params} has no $limit`);
        assert.ok(Number(limit) >= 1 && Number(limit) <= 100, `${request.pathname}?${request.params} asks for ${limit}`);
    }

    const subscribed = sockets.flatMap((socket) => socket.sent.filter((f) => f.type === "subscribe").map((f) => f.event));
    assert.ok(subscribed.length >= 5, `the page subscribed ${subscribed.length} times`);
    for (const event of subscribed) {
        const address = new URL(event.replace(/#.*$/, ""), origin);
        if (isCollection(address.pathname)) {
            const limit = Number(address.searchParams.get("$limit"));
            assert.ok(limit >= 1 && limit <= 100, `${event} asks for ${limit}`);
        }
    }
    // Each view's subscription ended when the next view came: on each connection only the last
    // subscription may be left (the one on screen, or the one that went with its page).
    for (const socket of sockets) {
        const events = socket.sent.filter((f) => f.type === "subscribe").map((f) => f.event);
        const ended = new Set(socket.sent.filter((f) => f.type === "unsubscribe").map((f) => f.event));
        const left = events.filter((event) => !ended.has(event));
        assert.ok(left.length <= 1 && (left.length === 0 || left[0] === events[events.length - 1]), `left subscribed: ${left}`);
        assert.deepEqual(socket.received.filter((f) => f.type === "error"), []);
    }
    const current = sockets[sockets.length - 1];
    assert.ok(current.received.some((f) => f.type === "subscribe" && f.status === "ok"));
    assert.ok(current.received.some((f) => f.type === "data"));
    assert.deepEqual(problems, []);
});
