#include "ReviewReport.h"

#include "platform/text/Text.h"

#include <glib.h>

#include <map>
#include <memory>

namespace velmorant::review {
namespace {

// Dark like the gallery's own page.
constexpr std::string_view kStyle = R"(
:root { color-scheme: dark; }
* { box-sizing: border-box; }
body { margin: 0; background: #0b0e13; color: #e6edf3;
  font: 15px/1.45 Inter, system-ui, -apple-system, "Segoe UI", "DejaVu Sans", sans-serif; }
header { padding: 32px 40px 16px; }
h1 { margin: 0 0 6px; font-size: 30px; font-weight: 650; }
.summary { margin: 0; font-size: 17px; }
.facts { margin: 4px 0 0; color: #8b949e; }
.verdict { display: inline-block; margin-right: 10px; padding: 2px 10px; border-radius: 10px; font-weight: 600; }
.verdict.same { background: #12361f; color: #7ee2a8; }
.verdict.changed { background: #3d1a22; color: #ff9aa9; }
.verdict.unreproducible { background: #3d2f0c; color: #ffd56b; }
.toolbar { position: sticky; top: 0; z-index: 2; display: flex; gap: 12px; align-items: center; padding: 10px 40px;
  background: rgba(11, 14, 19, 0.95); border-bottom: 1px solid #1f262e; }
.toolbar code { flex: 1; overflow-x: auto; white-space: nowrap; padding: 6px 10px; border-radius: 8px; background: #161b22; }
button { padding: 5px 12px; border: 1px solid #30363d; border-radius: 8px; background: #21262d; color: #e6edf3;
  font: inherit; cursor: pointer; }
button:hover { background: #30363d; }
button[aria-pressed="true"] { background: #1f6feb; border-color: #1f6feb; }
section { padding: 4px 40px 28px; }
h2 { margin: 24px 0 8px; font-size: 21px; font-weight: 620; }
.group { margin: 0 0 26px; padding: 14px 18px 4px; border-radius: 18px; background: #0f141b; box-shadow: inset 0 0 0 1px #1f262e; }
.group h3 { margin: 0 0 8px; font-size: 17px; color: #c9d1d9; }
article { margin: 0 0 18px; }
.head { display: flex; flex-wrap: wrap; gap: 10px; align-items: baseline; }
.title { font-weight: 620; }
.id, code { font: 12.5px/1.4 ui-monospace, "DejaVu Sans Mono", monospace; color: #8b949e; }
.status { padding: 1px 8px; border-radius: 8px; font-size: 12.5px; background: #3d1a22; color: #ff9aa9; }
.status.added { background: #10304a; color: #9ecbff; }
.status.removed { background: #2d2d2d; color: #c9d1d9; }
.status.minor { background: #3d2f0c; color: #ffd56b; }
.fields { margin: 6px 0 8px; padding-left: 20px; color: #e3b341; font-size: 14px; }
.fields li { margin: 2px 0; }
.modes { display: flex; gap: 6px; margin: 8px 0; }
.views { display: flex; flex-wrap: wrap; gap: 18px; align-items: flex-start; }
figure { margin: 0; }
figcaption { margin-top: 4px; color: #8b949e; font-size: 12.5px; }
img { display: block; max-width: 100%; height: auto; background: #000; border-radius: 6px; }
.frame { position: relative; display: inline-block; }
.box { position: absolute; outline: 2px solid #ff2850; outline-offset: 3px; pointer-events: none; }
.slider { display: inline-block; }
.stage { position: relative; }
.stage .before { position: absolute; inset: 0; }
.stage .before img { width: 100%; height: 100%; }
.stage .handle { position: absolute; top: 0; bottom: 0; width: 2px; margin-left: -1px; background: #fff;
  box-shadow: 0 0 0 1px rgba(0, 0, 0, 0.5); pointer-events: none; }
.slider input { display: block; width: 100%; margin: 8px 0 0; }
article[data-mode="side"] .slider, article[data-mode="slider"] .side { display: none; }
.accept { margin: 6px 0 0; font-size: 13px; color: #8b949e; }
.accept code { color: #9ecbff; }
details { margin: 8px 0; }
summary { cursor: pointer; color: #c9d1d9; }
ul.names { columns: 3; font: 13px/1.5 ui-monospace, "DejaVu Sans Mono", monospace; color: #8b949e; }
.legend span { display: inline-block; width: 10px; height: 10px; margin: 0 4px 0 10px; border-radius: 2px; }
)";

constexpr std::string_view kScript = R"(
const base = document.body.dataset.accept;
const command = document.getElementById('accept-command');
const ticks = [...document.querySelectorAll('input.tick')];
function update() {
  const chosen = ticks.filter(t => t.checked).map(t => t.value);
  command.textContent = base + (chosen.length ? ' ' + chosen.join(' ') : '');
  document.getElementById('accept-note').textContent = chosen.length
    ? chosen.length + ' ticked' : 'nothing ticked: accepts every changed, added and removed item';
}
ticks.forEach(t => t.addEventListener('change', update));
document.getElementById('copy').addEventListener('click', () => {
  const text = command.textContent;
  if (navigator.clipboard) navigator.clipboard.writeText(text).catch(() => {});
  const range = document.createRange();
  range.selectNodeContents(command);
  getSelection().removeAllRanges();
  getSelection().addRange(range);
});
document.querySelectorAll('article[data-mode]').forEach(item => {
  item.querySelectorAll('.modes button').forEach(button => button.addEventListener('click', () => {
    item.dataset.mode = button.dataset.mode;
    item.querySelectorAll('.modes button').forEach(b => b.setAttribute('aria-pressed', b === button));
  }));
  const range = item.querySelector('.slider input');
  const before = item.querySelector('.slider .before');
  const handle = item.querySelector('.slider .handle');
  if (range && before) {
    const slide = () => {
      before.style.clipPath = 'inset(0 ' + (100 - range.value) + '% 0 0)';
      handle.style.left = range.value + '%';
    };
    range.addEventListener('input', slide);
    slide();
  }
});
update();
)";

std::string dataUri(const std::string& png) {
    std::unique_ptr<gchar, decltype(&g_free)> encoded(
        g_base64_encode(reinterpret_cast<const guchar*>(png.data()), png.size()), &g_free);
    return "data:image/png;base64," + std::string(encoded.get());
}

std::string px(double points) { return std::to_string(static_cast<long>(points + 0.5)); }

std::string image(const std::string& src, const ManifestItem& item, const std::string& alt) {
    return "<img src=\"" + platform::escapeHtml(src) + "\" width=\"" + px(item.width) + "\" height=\"" + px(item.height) + "\" alt=\"" +
           platform::escapeHtml(alt) + "\">";
}

std::string percent(double part, double whole) { return std::to_string(whole > 0 ? part / whole * 100 : 0) + "%"; }

// The difference view with a box around what changed, so a single pixel can be found.
std::string differenceFigure(const ItemReview& r) {
    const PictureDifference& p = r.pixels;
    std::string box = "<div class=\"box\" style=\"left:" + percent(p.left, r.afterWidth) + ";top:" +
                      percent(p.top, r.afterHeight) + ";width:" + percent(p.right - p.left, r.afterWidth) +
                      ";height:" + percent(p.bottom - p.top, r.afterHeight) + "\"></div>";
    std::string counts = std::to_string(p.changedPixels) + " pixels changed (red), " +
                         std::to_string(p.antiAliasedPixels) + " anti-aliasing (yellow)";
    return "<figure><div class=\"frame\">" + image(dataUri(r.differencePng), r.item, "Difference: " + counts) + box +
           "</div><figcaption>Difference: " + counts + "</figcaption></figure>";
}

std::string pictureViews(const ItemReview& r) {
    std::string before = r.beforePng.empty() ? "" : dataUri(r.beforePng);
    std::string after = r.item.picture;
    std::string html = "<div class=\"modes\"><button data-mode=\"side\" aria-pressed=\"true\">Side by side</button>"
                       "<button data-mode=\"slider\" aria-pressed=\"false\">Slider</button></div>\n<div class=\"views side\">";
    html += "<figure>" + image(before, r.item, "Before: " + r.item.alt) + "<figcaption>Before (baseline)</figcaption></figure>";
    html += "<figure>" + image(after, r.item, "After: " + r.item.alt) + "<figcaption>After</figcaption></figure>";
    if (!r.differencePng.empty()) html += differenceFigure(r);
    html += "</div>\n<div class=\"views slider\"><figure><div class=\"slider\"><div class=\"stage\">" +
            image(after, r.item, "After: " + r.item.alt) + "<div class=\"before\">" +
            image(before, r.item, "Before: " + r.item.alt) + "</div><div class=\"handle\"></div></div>" +
            "<input type=\"range\" min=\"0\" max=\"100\" value=\"50\" aria-label=\"Before on the left, after on the right\">"
            "</div><figcaption>Before on the left of the handle, after on the right</figcaption></figure></div>\n";
    return html;
}

std::string statusClass(ItemStatus status) {
    switch (status) {
        case ItemStatus::Added: return "added";
        case ItemStatus::Removed: return "removed";
        case ItemStatus::AntiAliasingOnly:
        case ItemStatus::WithinAllowance: return "minor";
        default: return "changed";
    }
}

std::string article(const Review& review, const ItemReview& r) {
    bool acceptable = r.status == ItemStatus::Changed || r.status == ItemStatus::Added || r.status == ItemStatus::Removed;
    std::string html = "<article id=\"item-" + platform::escapeHtml(r.item.id) + "\" data-id=\"" + platform::escapeHtml(r.item.id) +
                       "\" data-status=\"" + statusWords(r.status) + "\" data-mode=\"side\">\n<div class=\"head\">";
    if (acceptable)
        html += "<label><input type=\"checkbox\" class=\"tick\" value=\"" + platform::escapeHtml(r.item.id) + "\"> </label>";
    html += "<span class=\"title\">" + platform::escapeHtml(r.item.title) + "</span><span class=\"id\">" + platform::escapeHtml(r.item.id) +
            "</span><span class=\"status " + statusClass(r.status) + "\">" + statusWords(r.status) + "</span>";
    if (r.pixels.sizeDiffers && r.beforeWidth)
        html += "<span class=\"id\">size " + std::to_string(r.beforeWidth) + " × " + std::to_string(r.beforeHeight) +
                " → " + std::to_string(r.afterWidth) + " × " + std::to_string(r.afterHeight) + " px</span>";
    html += "</div>\n";
    if (!r.fields.empty()) {
        html += "<ul class=\"fields\">";
        for (const FieldChange& f : r.fields) html += "<li>" + platform::escapeHtml(f.words()) + "</li>";
        html += "</ul>\n";
    }
    if (r.status == ItemStatus::Added && !r.item.picture.empty())
        html += "<div class=\"views\"><figure>" + image(r.item.picture, r.item, r.item.alt) + "<figcaption>New</figcaption></figure></div>\n";
    else if (r.status == ItemStatus::Removed && !r.beforePng.empty())
        html += "<div class=\"views\"><figure>" + image(dataUri(r.beforePng), r.item, r.item.alt) +
                "<figcaption>In the baseline only</figcaption></figure></div>\n";
    else if (!r.beforePng.empty())
        html += pictureViews(r);
    if (acceptable)
        html += "<p class=\"accept\">Accept it: <code>" + platform::escapeHtml(acceptCommand(review, {r.item.id})) + "</code></p>\n";
    return html + "</article>\n";
}

std::string changedSection(const Review& review) {
    // Cards in the order their first item comes, each with its snippet, empty state and widget pictures.
    std::vector<std::string> cards;
    std::map<std::string, std::vector<const ItemReview*>> byCard;
    for (const ItemReview& r : review.items) {
        if (r.status != ItemStatus::Changed) continue;
        if (!byCard.contains(r.item.card)) cards.push_back(r.item.card);
        byCard[r.item.card].push_back(&r);
    }
    std::string html = "<section id=\"changed\">\n<h2>Changed (" + std::to_string(review.count(ItemStatus::Changed)) +
                       ")</h2>\n<p class=\"facts legend\">Difference view: the new picture faded, changed pixels<span "
                       "style=\"background:#ff2850\"></span>, anti-aliasing<span style=\"background:#ffc800\"></span></p>\n";
    for (const std::string& card : cards) {
        html += "<div class=\"group\" data-card=\"" + platform::escapeHtml(card) + "\">\n<h3>" + platform::escapeHtml(card) + "</h3>\n";
        for (const ItemReview* r : byCard[card]) html += article(review, *r);
        html += "</div>\n";
    }
    return html + "</section>\n";
}

std::string listSection(const Review& review, const char* id, const char* heading, std::initializer_list<ItemStatus> statuses) {
    std::string items;
    std::size_t count = 0;
    for (const ItemReview& r : review.items)
        for (ItemStatus s : statuses)
            if (r.status == s) items += article(review, r), ++count;
    if (!count) return "";
    return "<section id=\"" + std::string(id) + "\">\n<h2>" + heading + " (" + std::to_string(count) + ")</h2>\n" + items +
           "</section>\n";
}

}  // namespace

std::string reviewHtml(const Review& review) {
    const char* verdictClass = review.notReproducible() ? "unreproducible" : review.hasChanges() ? "changed" : "same";
    const char* verdict = review.notReproducible() ? "Not reproducible" : review.hasChanges() ? "Changed" : "Nothing changed";
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                       "<title>Velmorant snippets — review</title>\n<style>";
    html += kStyle;
    html += "</style>\n</head>\n<body data-accept=\"" + platform::escapeHtml(acceptCommand(review)) + "\">\n<header>\n<h1>What changed</h1>\n";
    html += "<p class=\"summary\"><span class=\"verdict " + std::string(verdictClass) + "\">" + verdict + "</span>" +
            platform::escapeHtml(review.summary()) + "</p>\n";
    std::string inputs = "the same store, fonts, artwork, program and options";
    if (!review.differingInputs.empty()) {
        inputs = "different ";
        for (std::size_t i = 0; i < review.differingInputs.size(); ++i) inputs += (i ? ", " : "") + review.differingInputs[i];
    }
    html += "<p class=\"facts\">" + platform::escapeHtml(review.newDir.string()) + " against the baseline " +
            platform::escapeHtml(review.baselineDir.string()) + ", drawn from " + platform::escapeHtml(inputs) + " · colour threshold " +
            std::to_string(review.options.threshold).substr(0, 4) + " · allowed pixels " +
            std::to_string(review.options.allowedPixels) + "</p>\n";
    if (review.notReproducible())
        html += "<p class=\"facts\">Both galleries were drawn from the same inputs, yet they differ: this is not a change "
                "to review but drawing that is not repeatable.</p>\n";
    html += "</header>\n<div class=\"toolbar\"><button id=\"copy\">Copy</button><code id=\"accept-command\"></code>"
            "<span id=\"accept-note\" class=\"facts\"></span></div>\n<main>\n";
    html += changedSection(review);
    html += listSection(review, "added", "Added", {ItemStatus::Added});
    html += listSection(review, "removed", "Removed", {ItemStatus::Removed});
    html += listSection(review, "minor", "Not counted as change",
                        {ItemStatus::AntiAliasingOnly, ItemStatus::WithinAllowance});
    html += "<section id=\"unchanged\">\n<details><summary>" + std::to_string(review.count(ItemStatus::Unchanged)) +
            " unchanged</summary>\n<ul class=\"names\">";
    for (const ItemReview& r : review.items)
        if (r.status == ItemStatus::Unchanged) html += "<li>" + platform::escapeHtml(r.item.id) + "</li>";
    html += "</ul>\n</details>\n</section>\n</main>\n<script>";
    html += kScript;
    return html + "</script>\n</body>\n</html>\n";
}

}  // namespace velmorant::review
