-- POSTs the store in STORE_FILE, each request with another blood-oxygen
-- average, so that no two bodies are alike and nothing comes from the cache
-- (SALT, different for each run, keeps runs apart; each thread has its id).
-- DELAY_MS, when set, waits that long before each request (an offered load
-- below the maximum). Counts the answers by status.
local body_template
local counter = 0
statuses = {}
local delay_ms = tonumber(os.getenv("DELAY_MS") or "0")
local salt = tonumber(os.getenv("SALT") or "0")

function init(args)
  local file = assert(io.open(os.getenv("STORE_FILE"), "rb"))
  body_template = file:read("*a")
  file:close()
  wrk.method = "POST"
  wrk.headers["Content-Type"] = "application/json"
end

function request()
  counter = counter + 1
  local value = string.format("%.8f", 60 + (((salt * 16 + id) * 1000000 + counter) % 4000000000) / 100000000)
  return wrk.format(nil, nil, nil, (body_template:gsub("__SPO2__", value)))
end

if delay_ms > 0 then
  function delay() return delay_ms end
end

function response(status, headers, body)
  statuses[status] = (statuses[status] or 0) + 1
end

local threads = {}
function setup(thread)
  table.insert(threads, thread)
  thread:set("id", #threads)
end

function done(summary, latency, requests)
  local totals = {}
  for _, thread in ipairs(threads) do
    local counts = thread:get("statuses")
    for status, n in pairs(counts) do totals[status] = (totals[status] or 0) + n end
  end
  local line = "statuses:"
  for status, n in pairs(totals) do line = line .. " " .. status .. "=" .. n end
  io.write(line .. "\n")
  io.write(string.format("latency_ms: p50=%.2f p99=%.2f max=%.2f\n", latency:percentile(50) / 1000,
                         latency:percentile(99) / 1000, latency.max / 1000))
end
