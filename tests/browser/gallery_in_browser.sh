#!/usr/bin/env bash
# Opens a freshly drawn gallery's index.html in headless Chromium, as a person
# would, and checks that every picture loaded (naturalWidth > 0) and has its
# alternative text. The page is read from a small checking page beside it that
# holds the gallery in a frame, so index.html itself carries no test code. A
# damaged copy (one picture missing, one text blanked) must be caught as well,
# so a check that sees nothing cannot pass.
# Usage: gallery_in_browser.sh PROGRAM. Exits 77 (skipped) when no browser is
# installed, except under CI, where scripts/test.sh installs one.
set -euo pipefail
program="$1"

browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ]; then
  echo "browser test: chromium is not installed (scripts/setup.sh --with-browser installs it)" >&2
  if [ -n "${CI:-}" ]; then exit 1; fi
  exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$program" gallery "$work/gallery" --now 2024-03-05T22:10:00 --tz Europe/London --locale en_US >/dev/null

cat > "$work/check.html" <<'HTML'
<!DOCTYPE html>
<html><body><pre id="result">pending</pre>
<iframe id="gallery" style="width:1400px;height:900px"></iframe>
<script>
const frame = document.getElementById('gallery');
const say = text => { document.getElementById('result').textContent = text; };
frame.addEventListener('load', () => {
  let page = null;
  try { page = frame.contentDocument; } catch (e) {}
  if (!page) { say('no access to the gallery page'); return; }
  const images = [...page.images];
  const settled = images.map(i => i.complete ? Promise.resolve()
                                             : new Promise(done => { i.onload = i.onerror = done; }));
  Promise.all(settled).then(() => {
    const broken = images.filter(i => !(i.naturalWidth > 0)).map(i => i.getAttribute('src'));
    const silent = images.filter(i => !(i.getAttribute('alt') || '').trim()).map(i => i.getAttribute('src'));
    say('images=' + images.length + ' broken=' + broken.join(',') + ' noalt=' + silent.join(','));
  });
});
frame.src = new URLSearchParams(location.search).get('page');
</script>
</body></html>
HTML

# Prints what the checking page found for the gallery in folder $1.
look() {
  timeout 120 "$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync --disable-extensions \
    --disable-dev-shm-usage \
    --user-data-dir="$work/profile" --allow-file-access-from-files --virtual-time-budget=15000 \
    --dump-dom "file://$work/check.html?page=$1/index.html" 2>/dev/null |
    sed -n 's|.*<pre id="result">\(.*\)</pre>.*|\1|p'
}

expected=$(grep -o '<img ' "$work/gallery/index.html" | wc -l)
status=0
found=$(look gallery)
if [ "$expected" -eq 0 ] || [ "$found" != "images=$expected broken= noalt=" ]; then
  echo "browser test: gallery: expected images=$expected broken= noalt=, found: ${found:-nothing}" >&2
  status=1
fi

cp -r "$work/gallery" "$work/damaged"
rm "$work/damaged/widgets/swiftSpO2Image.png"
sed -i -E 's#(<img src="snippets/SleepSpO2Intent.png"[^>]* alt=")[^"]*"#\1"#' "$work/damaged/index.html"
found=$(look damaged)
want="images=$expected broken=widgets/swiftSpO2Image.png noalt=snippets/SleepSpO2Intent.png"
if [ "$found" != "$want" ]; then
  echo "browser test: damaged copy: expected $want, found: ${found:-nothing}" >&2
  status=1
fi

[ "$status" -eq 0 ] && echo "browser test: $expected pictures loaded, each with its alternative text"
exit "$status"
