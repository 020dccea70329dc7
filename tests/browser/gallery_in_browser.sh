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

here="$(cd "$(dirname "$0")" && pwd)"
source "$here/framed_page.sh"

"$program" gallery "$work/gallery" --now 2024-03-05T22:10:00 --tz Europe/London --locale en_US >/dev/null

write_check_page <<'JS'
  const broken = images.filter(i => !(i.naturalWidth > 0)).map(i => i.getAttribute('src'));
  const silent = images.filter(i => !(i.getAttribute('alt') || '').trim()).map(i => i.getAttribute('src'));
  say('images=' + images.length + ' broken=' + broken.join(',') + ' noalt=' + silent.join(','));
JS

expected=$(grep -o '<img ' "$work/gallery/index.html" | wc -l)
status=0
found=$(look gallery/index.html)
if [ "$expected" -eq 0 ] || [ "$found" != "images=$expected broken= noalt=" ]; then
  echo "browser test: gallery: expected images=$expected broken= noalt=, found: ${found:-nothing}" >&2
  status=1
fi

cp -r "$work/gallery" "$work/damaged"
rm "$work/damaged/widgets/swiftSpO2Image.png"
sed -i -E 's#(<img src="snippets/SleepSpO2Intent.png"[^>]* alt=")[^"]*"#\1"#' "$work/damaged/index.html"
found=$(look damaged/index.html)
want="images=$expected broken=widgets/swiftSpO2Image.png noalt=snippets/SleepSpO2Intent.png"
if [ "$found" != "$want" ]; then
  echo "browser test: damaged copy: expected $want, found: ${found:-nothing}" >&2
  status=1
fi

[ "$status" -eq 0 ] && echo "browser test: $expected pictures loaded, each with its alternative text"
exit "$status"
