#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace velmorant::cli {

// `serve`: runs the rendering service until SIGTERM or SIGINT. `options` are
// the command line's (--port, --bind, --prefs, --workers), already known to
// apply to serve; throws UsageError for a bad value.
int runServe(const std::map<std::string, std::string>& options, const std::vector<std::string>& positional,
             std::ostream& out);

}  // namespace velmorant::cli
