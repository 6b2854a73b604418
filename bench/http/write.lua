-- Turns every wrk request into a write: the method from BENCH_METHOD, a JSON body taken in turn from
-- BENCH_BODY_A and BENCH_BODY_B (so that an update really changes the value each time).
local method = os.getenv("BENCH_METHOD") or "POST"
local bodies = { os.getenv("BENCH_BODY_A"), os.getenv("BENCH_BODY_B") or os.getenv("BENCH_BODY_A") }
local headers = { ["Content-Type"] = "application/json" }
local count = 0

request = function()
    count = count + 1
    return wrk.format(method, nil, headers, bodies[count % 2 + 1])
end
