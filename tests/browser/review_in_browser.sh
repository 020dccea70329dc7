#!/usr/bin/env bash
# Opens review.html of a review with changes in headless Chromium and checks,
# as a reviewer would use it, that every picture loaded, the changed items come
# first, the slider view shows and moves, and ticking an item puts it into the
# accept command. The page is read through a checking page that holds it in a
# frame, so review.html carries no test code. A copy with a picture missing
# must be caught too, so a check that sees nothing cannot pass.
# Usage: review_in_browser.sh PROGRAM. Exits 77 (skipped) without a browser, except under CI.
set -euo pipefail
program="$1"

here="$(cd "$(dirname "$0")" && pwd)"
source "$here/framed_page.sh"

common=(--tz Europe/London --locale en_US --scale 2)
"$program" gallery "$work/baseline" --now 2024-03-05T22:10:00 "${common[@]}" >/dev/null 2>&1
status=0
"$program" gallery "$work/out" --now 2024-03-05T23:40:00 "${common[@]}" --against "$work/baseline" >/dev/null 2>&1 || status=$?
if [ "$status" -ne 1 ]; then
  echo "browser test: the later gallery should review as changed (exit 1), not $status" >&2
  exit 1
fi

write_check_page <<'JS'
  const broken = images.filter(i => !(i.naturalWidth > 0)).map(i => i.getAttribute('src').slice(0, 40));
  const statuses = [...page.querySelectorAll('article')].map(a => a.dataset.status);
  const changed = statuses.filter(s => s === 'changed').length;
  const first = changed > 0 && statuses.slice(0, changed).every(s => s === 'changed');
  const item = page.querySelector('article[data-status="changed"]');
  let slider = 'none';
  if (item) {
    item.querySelector('button[data-mode="slider"]').click();
    const shown = item.querySelector('.views.slider').offsetWidth > 0 && item.querySelector('.views.side').offsetWidth === 0;
    const range = item.querySelector('.slider input');
    range.value = 20;
    range.dispatchEvent(new Event('input'));
    const clip = item.querySelector('.slider .before').style.clipPath;
    slider = shown && clip === 'inset(0px 80% 0px 0px)' ? 'ok' : 'shown=' + shown + ' clip=' + clip;
    const tick = item.querySelector('input.tick');
    tick.checked = true;
    tick.dispatchEvent(new Event('change'));
  }
  const command = page.getElementById('accept-command').textContent;
  const ticked = item && command.endsWith(' ' + item.dataset.id) ? 'ok' : command;
  say('images=' + images.length + ' broken=' + broken.join(',') + ' changed=' + changed + ' first=' + first +
      ' slider=' + slider + ' tick=' + ticked);
JS


expected=$(grep -o '<img ' "$work/out/review.html" | wc -l)
changed=$(grep -o 'data-status="changed"' "$work/out/review.html" | wc -l)
want="images=$expected broken= changed=$changed first=true slider=ok tick=ok"
found=$(look out/review.html)
status=0
if [ "$changed" -eq 0 ] || [ "$found" != "$want" ]; then
  echo "browser test: review: expected $want, found: ${found:-nothing}" >&2
  status=1
fi

cp -r "$work/out" "$work/damaged"
rm "$work/damaged/snippets/LightsOffIntent.png"
found=$(look damaged/review.html)
case "$found" in
  *"broken=snippets/LightsOffIntent.png,snippets/LightsOffIntent.png "*) ;;
  *) echo "browser test: damaged copy: the missing picture was not noticed: ${found:-nothing}" >&2; status=1 ;;
esac

[ "$status" -eq 0 ] && echo "browser test: review page: $expected pictures loaded, $changed changed items first, slider and ticks work"
exit "$status"
