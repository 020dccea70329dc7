#include "GalleryHtml.h"

#include "platform/text/Text.h"

#include <algorithm>
#include <cmath>

namespace velmorant::cli {
namespace {

// Dark like the cards themselves; cards keep their point size as CSS pixels.
constexpr std::string_view kStyle = R"(
:root { color-scheme: dark; }
* { box-sizing: border-box; }
body { margin: 0; background: #0b0e13; color: #e6edf3;
  font: 15px/1.45 Inter, system-ui, -apple-system, "Segoe UI", "DejaVu Sans", sans-serif; }
header { padding: 36px 40px 18px; }
h1 { margin: 0 0 6px; font-size: 30px; font-weight: 650; letter-spacing: -0.01em; }
.facts { margin: 0; color: #8b949e; }
nav { position: sticky; top: 0; z-index: 1; padding: 10px 40px; background: rgba(11, 14, 19, 0.94);
  border-bottom: 1px solid #1f262e; }
nav a { margin-right: 22px; color: #9ecbff; text-decoration: none; }
nav a:hover { text-decoration: underline; }
section { padding: 6px 40px 36px; }
h2 { margin: 26px 0 4px; font-size: 21px; font-weight: 620; }
.note { max-width: 72em; margin: 0 0 22px; color: #8b949e; }
.grid { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(var(--column), 100%), var(--column)));
  gap: 34px 36px; align-items: start; }
figure { margin: 0; max-width: 100%; }
img { display: block; max-width: 100%; height: auto; }
.card img { border-radius: 22px; background: #000; box-shadow: 0 10px 28px rgba(0, 0, 0, 0.55); }
.tile { display: inline-block; max-width: 100%; padding: 18px; border-radius: 30px; background: #161b22;
  box-shadow: inset 0 0 0 1px #222a33; }
figcaption { margin-top: 12px; }
.title { font-weight: 620; }
.name, .size, .record { font: 12px/1.4 ui-monospace, "DejaVu Sans Mono", monospace; color: #8b949e; }
.record { color: #9ecbff; }
.spoken { margin: 6px 0 0; color: #aab4bf; font-size: 13px; }
.mirrors { display: flex; flex-wrap: wrap; gap: 28px; align-items: flex-start; }
table { border-collapse: collapse; font: 13px/1.4 ui-monospace, "DejaVu Sans Mono", monospace;
  background: #11161d; border-radius: 14px; overflow: hidden; }
caption { padding: 0 0 8px; text-align: left; font: 600 15px/1.4 Inter, system-ui, sans-serif; }
th, td { padding: 6px 14px; text-align: left; border-bottom: 1px solid #1f262e; vertical-align: top; }
th { color: #c9d1d9; font-weight: 500; }
td { color: #e3b341; }
tr:last-child th, tr:last-child td { border-bottom: none; }
a { color: #9ecbff; }
)";

std::string pixels(double points) { return std::to_string(static_cast<long>(std::lround(points))); }

// A picture with its caption; `framed` puts it on a widget's tile.
std::string figure(const GalleryPicture& picture, const std::string& language, bool framed) {
    std::string w = pixels(picture.size.width), h = pixels(picture.size.height);
    std::string img = "<img src=\"" + platform::escapeHtml(picture.file) + "\" width=\"" + w + "\" height=\"" + h +
                      "\" alt=\"" + platform::escapeHtml(picture.altText) + "\" lang=\"" + platform::escapeHtml(language) + "\">";
    std::string html = framed ? "<figure>\n<div class=\"tile\">" + img + "</div>\n" : "<figure class=\"card\">\n" + img + "\n";
    html += "<figcaption><span class=\"title\">" + platform::escapeHtml(picture.title) + "</span> <span class=\"name\">" +
            platform::escapeHtml(picture.name) + "</span><br><span class=\"size\">" + w + " × " + h + " pt</span>";
    if (!picture.record.empty())
        html += " · <a class=\"record\" href=\"" + platform::escapeHtml(picture.record) + "\">view record</a>";
    if (!framed)
        html += "<p class=\"spoken\" lang=\"" + platform::escapeHtml(language) + "\">" + platform::escapeHtml(picture.altText) + "</p>";
    html += "</figcaption>\n</figure>\n";
    return html;
}

std::string section(std::string_view id, std::string_view heading, std::string_view note, double column,
                    const std::vector<GalleryPicture>& pictures, const std::string& language, bool framed) {
    std::string html = "<section id=\"" + std::string(id) + "\">\n<h2>" + std::string(heading) + "</h2>\n<p class=\"note\">" +
                       std::string(note) + "</p>\n<div class=\"grid\" style=\"--column: " + pixels(column) + "px\">\n";
    for (const GalleryPicture& picture : pictures) html += figure(picture, language, framed);
    return html + "</div>\n</section>\n";
}

double widestOf(const std::vector<GalleryPicture>& pictures, double least) {
    double widest = least;
    for (const GalleryPicture& p : pictures) widest = std::max(widest, p.size.width);
    return widest;
}

}  // namespace

std::string galleryHtml(const GalleryPage& page) {
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                       "<title>Velmorant snippets — gallery</title>\n<style>";
    html += kStyle;
    html += "</style>\n</head>\n<body>\n<header>\n<h1>Velmorant snippets</h1>\n<p class=\"facts\">" +
            platform::escapeHtml(page.facts) + "</p>\n</header>\n";
    html += "<nav><a href=\"#snippets\">Snippets</a><a href=\"#empty\">Empty state</a>"
            "<a href=\"#widgets\">Widget images</a><a href=\"#mirrors\">Widget mirrors</a></nav>\n<main>\n";

    const std::string& language = page.contentLanguage;
    html += section("snippets", "Snippets",
                    "Each card as the voice assistant shows it, from the night's results; under it what a "
                    "screen reader says. The last one answers an intent this extension does not know.",
                    widestOf(page.snippets, 300), page.snippets, language, false);
    html += section("empty", "Empty state",
                    "The same snippets when the shared store holds nothing: no night has been recorded.",
                    widestOf(page.emptySnippets, 300), page.emptySnippets, language, false);
    html += section("widgets", "Widget images",
                    "The pictures the home-screen widgets ask for, at their widget and accessory sizes.",
                    widestOf(page.widgetImages, 200) + 36, page.widgetImages, language, true);

    html += "<section id=\"mirrors\">\n<h2>Widget mirrors</h2>\n<p class=\"note\">The “Swift-” keys the widgets "
            "read, as the shared store holds them after every widget mirror has run, with the night's results "
            "and with an empty store. As JSON: <a href=\"" +
            platform::escapeHtml(page.mirrorsFile) + "\">" + platform::escapeHtml(page.mirrorsFile) + "</a>.</p>\n<div class=\"mirrors\">\n";
    for (const MirrorTable& table : page.mirrors) {
        html += "<table>\n<caption>" + platform::escapeHtml(table.title) + "</caption>\n";
        if (table.rows.empty()) html += "<tr><th>(no keys)</th><td></td></tr>\n";
        // An empty text shows as "" so that it is not mistaken for a missing row.
        for (const auto& [key, value] : table.rows)
            html += "<tr><th>" + platform::escapeHtml(key) + "</th><td lang=\"" + platform::escapeHtml(language) + "\">" +
                    platform::escapeHtml(value.empty() ? "\"\"" : value) + "</td></tr>\n";
        html += "</table>\n";
    }
    html += "</div>\n</section>\n</main>\n</body>\n</html>\n";
    return html;
}

}  // namespace velmorant::cli
