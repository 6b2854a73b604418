-- Mixed load for the soak: reads of pages, searches and objects, and writes to playlists that each wrk
-- thread owns. Every thread drives one connection, so each answer belongs to the thread's last request;
-- the thread remembers what the example acknowledged, and at the end every thread's record goes to
-- SOAK_RECORD: "name <address> <name>" for a playlist's last acknowledged name, "gone <address>" for
-- one whose delete was acknowledged, "unsure <address>" for one written to without an answer (a
-- time-out, or the write in flight when wrk stopped), whose state the check cannot know. Statuses are counted per method; SOAK_STATUS gets them. A thread
-- stops after SOAK_REQUESTS_PER_THREAD answers and then writes a line to SOAK_FINISHED.
local record_file = os.getenv("SOAK_RECORD")
local per_thread = tonumber(os.getenv("SOAK_REQUESTS_PER_THREAD") or "0")
local finished_file = os.getenv("SOAK_FINISHED")
local status_file = os.getenv("SOAK_STATUS")
local json = { ["Content-Type"] = "application/json" }

local threads = {}
local counter = 1

setup = function(thread)
    thread:set("id", counter)
    counter = counter + 1
    table.insert(threads, thread)
end

-- Globals, so that the main thread can copy them at the end.
sent = 0
pending = nil
owned = {}      -- address -> last acknowledged name
order = {}      -- owned addresses, oldest first
gone = {}
statuses = {}
unsure = {}     -- addresses written to without an answer (time-out, or wrk stopped): either state holds

local reads = {
    "/audio/tracks?$limit=20&$offset=%d",
    "/audio/tracks?genre=rock&$limit=50&$offset=%d",
    "/audio/tracks?$sortby=-year&$limit=20&$offset=%d",
    "/audio/tracks/a0000003-0000-4000-8000-%012x",
    "/audio/albums?$limit=10&$offset=%d",
    "/cabin/zones",
    "/audio/player?$expand=track",
}

local function read()
    local template = reads[sent % #reads + 1]
    return { method = "GET", path = string.format(template, sent % 997) }
end

local function next_request()
    sent = sent + 1
    local turn = sent % 20
    if turn == 0 or #order == 0 then
        local name = string.format("soak-%d-%d", id, sent)
        return { method = "POST", path = "/audio/playlists", body = '{"name":"' .. name .. '"}', name = name,
                 create = true }
    elseif turn == 1 and #order > 4 then
        return { method = "DELETE", path = order[1], delete = true }
    elseif turn < 7 then
        local address = order[sent % #order + 1]
        local name = string.format("soak-%d-%d", id, sent)
        return { method = "POST", path = address, body = '{"name":"' .. name .. '"}', name = name }
    end
    return read()
end

request = function()
    if pending and not pending.answered and pending.method ~= "GET" then
        table.insert(unsure, pending.path)
    end
    pending = next_request()
    return wrk.format(pending.method, pending.path, pending.body and json or nil, pending.body)
end

response = function(status, headers, body)
    answered = (answered or 0) + 1
    if per_thread > 0 and answered == per_thread then
        -- wrk waits out its duration; the driver interrupts it once every thread has written its line.
        local finished = io.open(finished_file, "a")
        finished:write(id, "\n")
        finished:close()
        wrk.thread:stop()
    end
    pending.answered = true
    local key = pending.method .. " " .. status
    statuses[key] = (statuses[key] or 0) + 1
    if pending.create and status == 201 then
        local address = headers["Location"] or headers["location"]
        owned[address] = pending.name
        table.insert(order, address)
    elseif pending.delete and status == 200 then
        owned[pending.path] = nil
        table.remove(order, 1)
        table.insert(gone, pending.path)
    elseif pending.name and status == 200 then
        owned[pending.path] = pending.name
    end
end

done = function(summary, latency, requests)
    local records = io.open(record_file, "w")
    local totals = {}
    for _, thread in ipairs(threads) do
        for address, name in pairs(thread:get("owned")) do
            records:write("name ", address, " ", name, "\n")
        end
        for _, address in ipairs(thread:get("gone")) do
            records:write("gone ", address, "\n")
        end
        for _, address in ipairs(thread:get("unsure")) do
            records:write("unsure ", address, "\n")
        end
        local last = thread:get("pending")
        if last and not last.answered and last.method ~= "GET" then
            records:write("unsure ", last.path, "\n")
        end
        for key, count in pairs(thread:get("statuses")) do
            totals[key] = (totals[key] or 0) + count
        end
    end
    records:close()
    local out = io.open(status_file, "w")
    for key, count in pairs(totals) do
        out:write(key, " ", count, "\n")
    end
    out:close()
end
