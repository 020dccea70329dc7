-- Counts the answers by status and prints them with the latency percentiles.
-- IF_NONE_MATCH, when set, is sent with every request.
statuses = {}
local threads = {}

function setup(thread) table.insert(threads, thread) end

function init(args)
  local tag = os.getenv("IF_NONE_MATCH")
  if tag and tag ~= "" then wrk.headers["If-None-Match"] = tag end
end

function response(status, headers, body)
  statuses[status] = (statuses[status] or 0) + 1
end

function done(summary, latency, requests)
  local totals = {}
  for _, thread in ipairs(threads) do
    for status, n in pairs(thread:get("statuses")) do totals[status] = (totals[status] or 0) + n end
  end
  local line = "statuses:"
  for status, n in pairs(totals) do line = line .. " " .. status .. "=" .. n end
  io.write(line .. "\n")
  io.write(string.format("latency_ms: p50=%.2f p99=%.2f max=%.2f\n", latency:percentile(50) / 1000,
                         latency:percentile(99) / 1000, latency.max / 1000))
end
