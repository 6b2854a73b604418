-- Turns every wrk request into a DELETE of another object: the paths come from the file BENCH_PATHS,
-- one a line, and each thread takes every n-th of them, so that no object is deleted twice.
local next_id = 0

setup = function(thread)
    thread:set("thread_id", next_id)
    next_id = next_id + 1
end

local paths = {}
local position = 0

init = function()
    local count = tonumber(os.getenv("BENCH_THREADS") or "1")
    local index = 0
    for line in io.lines(os.getenv("BENCH_PATHS")) do
        if index % count == thread_id then
            table.insert(paths, line)
        end
        index = index + 1
    end
end

request = function()
    position = position + 1
    -- Past the end of the list the requests fail (404) and show up in the error count.
    return wrk.format("DELETE", paths[position] or "/nothing-left")
end
