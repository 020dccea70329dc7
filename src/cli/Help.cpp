#include "Help.h"

namespace velmorant::cli {
namespace {

constexpr std::string_view kProgram = R"(velmorant-snippet: the Velmorant results snippets, on the command line.

Usage: velmorant-snippet COMMAND [ARGS] [OPTIONS]

Commands:
  show INTENT              fill the snippet of an intent and print its view record as JSON
  call CLASS.OPERATION ..  call one public operation and print its result as JSON
  demo --prefs DIR         write the built-in demo stores (dated tonight) into DIR
  gallery DIR              draw every snippet, its empty state and every widget picture into
                           DIR, with DIR/index.html showing them side by side
                           (--against BASELINE: then review it against that gallery)
  review NEW BASELINE      what a user would now see differently: NEW/review.html and .json
  accept NEW BASELINE ..   copy changed items of NEW into BASELINE, drawing nothing
  serve                    serve cards and widget pictures over HTTP, with a live preview page

Options for every command:
  --prefs DIR      folder of the store files: DIR/group.brumelkai.Velmorant.plist (shared
                   with the app) and DIR/standard.plist (this extension's own). Without it
                   the built-in demo data is used, in memory.
  --now ISO8601    the current instant, e.g. 2024-03-05T22:10:00 (local) or ...Z / +01:00
                   (default: the system clock)
  --tz ZONE        IANA time zone, e.g. Europe/London (default: the system's)
  --locale ID      ICU locale id, e.g. en_US, de_DE (default: from LC_ALL/LC_MESSAGES/LANG,
                   else en_US)
  --scale N        pixels per point of drawn images, 1 to 16 (default 3)
  --help           this text; `velmorant-snippet COMMAND --help` for one command
  --version        the program's version

Examples:
  velmorant-snippet show SleepSpO2Intent --png spo2.png
  velmorant-snippet call FormatTools.formattedTimeInterval 27000
  velmorant-snippet demo --prefs /tmp/prefs && velmorant-snippet show ReadinessIntent --prefs /tmp/prefs

Exit status: 0 on success, 2 for bad input (the message says which input and what is wrong);
review and gallery --against: 1 when something changed, 3 when not reproducible.
)";

constexpr std::string_view kShow = R"(Usage: velmorant-snippet show INTENT [--width W] [--png FILE] [--images DIR] [OPTIONS]

Runs the snippet controller for an intent named by its type and prints
  {"success":true,"size":{"width":W,"height":H},"views":{NAME:{attribute:value,...},...}}
with every outlet's hidden, text, font, image, backgroundColor and cornerRadius.

INTENT is one of LightsOffIntent, TimeAsleepIntent, ReadinessIntent, WristTempIntent,
SleepFuelIntent, SleepSpO2Intent, RespirationIntent, LatestBedtimeIntent, SleepRingsIntent;
any other name is an intent this extension does not know (it shows "I am so confused.").

  --width W      the host's maximum snippet width in points, 300 to 600 (default 390);
                 W x --scale may be at most 8192 pixels (so at most 512 at scale 16)
  --png FILE     also draw the card as a PNG picture
  --images DIR   write every image of the record as DIR/VIEW.png (named in the JSON as "file")

The parts of the pictures that do not depend on the night's figures (tracks, shadows,
dials, backdrops) are kept in $XDG_CACHE_HOME/velmorant (else ~/.cache/velmorant, at most
64 MB), so that the next run draws them from there, to the same pixels.
VELMORANT_CACHE_DIR=DIR keeps them in DIR instead; VELMORANT_CACHE_DIR= (empty) keeps none.
)";

constexpr std::string_view kCall = R"(Usage: velmorant-snippet call CLASS.OPERATION [ARG...] [--images DIR] [OPTIONS]

Calls one public operation on a fresh object and prints the result as one JSON value.
The operation is named by its selector, the trailing colon optional, or by the selector's
first part when only one operation has it (otherwise the error lists the candidates):
  velmorant-snippet call FormatTools.dateForDate:withHour:withMin: 2024-03-05T10:00:00 7 30
  velmorant-snippet call Pallet.colourForBatteryChargePercent 0.9999

Arguments are read as the parameter's type: numbers, true/false, strings, dates (ISO 8601;
without an offset, local time in --tz), dictionaries (a JSON object; {"date":"..."} inside it
is a date), and nil for none. Run `call CLASS --help` to list a class's operations.

Results: a record is a JSON object; numbers print as the shortest text that reads back as the
same float or double; dates as {"date":"...Z"} (UTC); colours as {"colour":{"h","s","b","a"}};
images as {"image":{"width","height","scale"}}; none as null.

  --images DIR   write every image of the result as a PNG in DIR (a record's as KEY.png, an
                 image result as OPERATION.png) and name it in the JSON as "file"
  velmorant-snippet call SleepMetricsUI.drawSpO2GaugeWithSize:withDict: 280 \
      '{"averageSpO2":95.4,"minSpO2":90,"maxSpO2":99}' --images gauges --scale 3

SleepMetricsUI's widget operations (swift...Image, ...ForSwift) draw at widget sizes; the
plain requests draw as the snippet does.
)";

constexpr std::string_view kGallery = R"(Usage: velmorant-snippet gallery DIR [--width W] [OPTIONS]

Draws, in one run, from the built-in demo data (dated for the current night) or the stores
named by --prefs (only read, never changed):
  DIR/snippets/INTENT.png, .json  the nine snippets and the fallback: card and view record
  DIR/empty/INTENT.png, .json     the nine with an empty shared store
  DIR/widgets/OPERATION.png       every widget picture (swift...Image) at its widget or
                                  accessory size
  DIR/mirrors.json                the "Swift-" keys after every widget mirror (...ForSwift)
                                  ran, with the night's results and with an empty store
  DIR/index.html                  all of it side by side, readable without a network
and prints the path of index.html. One line per section goes to standard error.

DIR must be missing, empty, or a gallery this program made (it holds .velmorant-gallery);
anything else is refused. The gallery is drawn into a folder beside DIR that takes its place
only when complete, so DIR is never left half written.

  --width W      the host's maximum snippet width in points, 300 to 600 (default 390)
  --locale ID    the language of the snippets, e.g. de_DE for a German gallery
  --now, --tz, --scale, --prefs as for every command.
  --against BASELINE  then review the new gallery against the gallery BASELINE, as
                 `review DIR BASELINE` does (same exit status); the baseline is checked
                 before anything is drawn
  --threshold T, --allowed-pixels N  as for review

DIR/manifest.json records what the gallery was made from (digests of the stores, fonts,
artwork and this program's build, and the options), so that a review can tell a change of
input from drawing that is not repeatable.
)";

constexpr std::string_view kReview = R"(Usage: velmorant-snippet review NEW BASELINE [--threshold T] [--allowed-pixels N]

Compares two galleries this program drew (see `gallery --help`) without drawing anything,
and tells what a user would now see differently:
  pictures    pixel by pixel with a perceptual colour distance (YIQ); a differing pixel on an
              edge that its neighbours explain is anti-aliasing, reported but not a change;
              a picture of another size is changed
  records     each card's view record field by field: "sleepTimeLabel text "7h 36m" →
              "7h 40m"" (text, font, colour, hidden, image, frame, spoken text)
  mirrors     mirrors.json key by key
Writes NEW/review.html (changed items first, grouped by card, with before, after, a
difference view, side by side and a slider; tick items to copy their accept command) and
NEW/review.json, and prints one line: review: 3 changed, 1 added, 0 removed, 35 unchanged

  --threshold T       colour distance a pixel may move without differing, 0 to 1 (default
                      0.1; 0 counts every change of colour)
  --allowed-pixels N  changed pixels a picture may have and still count as the same
                      (default 0: a one-pixel divider that moved is a change); such
                      pictures are still listed

Exit status: 0 nothing changed (anti-aliasing only counts as nothing), 1 something changed,
was added or removed, 3 not reproducible (both galleries drawn from the same store, fonts,
artwork, program and options, yet they differ), 2 bad input: a folder that is not a gallery,
a missing or damaged file in one, galleries of different scale, width or locale. On bad
input nothing is written.

CI: keep a baseline gallery in the repository, then on every change
  velmorant-snippet gallery out --now 2024-03-05T22:10:00 --tz UTC --against baseline
publish out/review.html, and accept what is meant with `accept out baseline`.
)";

constexpr std::string_view kAccept = R"(Usage: velmorant-snippet accept NEW BASELINE [ITEM...] [--threshold T] [--allowed-pixels N]

Copies items of the gallery NEW into the gallery BASELINE, without drawing anything; with no
ITEM, every item `review NEW BASELINE` finds changed, added or removed (with the same
--threshold and --allowed-pixels). An ITEM is a path without extension as review names it
(snippets/SleepSpO2Intent, empty/ReadinessIntent, widgets/swiftSpO2Image, mirrors) or a card
(SleepSpO2Intent: its snippet, empty state and widget pictures). An item NEW lacks is
removed from BASELINE.

BASELINE is replaced in one step and stays a gallery: its manifest.json and index.html
describe what it now holds. review.html lets you tick items and copy this command.
Exit status: 0 when done, 2 for bad input (nothing is written).
)";

constexpr std::string_view kDemo = R"(Usage: velmorant-snippet demo --prefs DIR [--now ISO8601] [--tz ZONE]

Writes the built-in demo stores into DIR (created when missing): a night of results dated for
the current night (night hour 21) in DIR/group.brumelkai.Velmorant.plist, and the extension's
own preferences in DIR/standard.plist. Keys already in those files that the demo does not set
are kept; writes take the store lock, like every writer of these files.
)";

constexpr std::string_view kServe = R"(Usage: velmorant-snippet serve [--port N] [--bind ADDR] [--prefs DIR] [--workers N]
                               [--body-memory MIB]

Serves cards and widget pictures over HTTP/1.1 until SIGTERM or Ctrl-C, and prints the address
of the live preview page to open in a browser.
  --port N       port to listen on, 0 for any free one (default 8080)
  --bind ADDR    address to listen on (default 127.0.0.1: this machine only)
  --prefs DIR    store files drawn on GET, watched for changes (default: the demo data)
  --workers N    render threads, 1 to 256 (default: the number of cores)
  --body-memory MIB  request bodies held at once by all clients together, 1 to 4096 MiB
                 (default 16); a body that would pass it is answered 503 with Retry-After

  GET  /                              the live preview page
  GET  /v1/snippets/INTENT.png|.json  card / view record; query width, scale, locale, tz, now
  POST /v1/snippets/INTENT.png|.json  the same from the store in the body: a property list of
                                      the shared store, or JSON {"shared": {..}, "standard": {..}}
  GET  /v1/widgets/OPERATION.png      a widget picture (swiftSpO2Image, ...)
  GET  /v1/events                     server-sent events when the store files change
  GET  /healthz, /metrics             health; Prometheus metrics
Nothing is ever written: stores in request bodies are drawn in memory.
)";

}  // namespace

std::string_view helpText(std::string_view command) {
    if (command.empty()) return kProgram;
    if (command == "show") return kShow;
    if (command == "call") return kCall;
    if (command == "demo") return kDemo;
    if (command == "gallery") return kGallery;
    if (command == "review") return kReview;
    if (command == "accept") return kAccept;
    if (command == "serve") return kServe;
    return {};
}

}  // namespace velmorant::cli
