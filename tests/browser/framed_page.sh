# Shared by the browser tests that read a page the program wrote to disk.
# The page is opened inside a frame of a small checking page, so the page
# under test carries no test code; the checking page waits until every
# picture has loaded or failed, then runs the test's own check.
# Sourced, after `set -euo pipefail`. Sets $browser and $work (removed on exit).

browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ]; then
  echo "browser test: chromium is not installed (scripts/setup.sh --with-browser installs it)" >&2
  if [ -n "${CI:-}" ]; then exit 1; fi
  exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# write_check_page < CHECK: standard input is the body of a script function
# that sees `page` (the framed document), `images` (its pictures, settled) and `say`.
write_check_page() {
  local check
  check=$(cat)
  cat > "$work/check.html" <<HTML
<!DOCTYPE html>
<html><body><pre id="result">pending</pre>
<iframe id="under-test" style="width:1400px;height:900px"></iframe>
<script>
const frame = document.getElementById('under-test');
const say = text => { document.getElementById('result').textContent = text; };
const check = (page, images) => {
$check
};
frame.addEventListener('load', () => {
  let page = null;
  try { page = frame.contentDocument; } catch (e) {}
  if (!page) { say('no access to the page under test'); return; }
  const images = [...page.images];
  const settled = images.map(i => i.complete ? Promise.resolve()
                                             : new Promise(done => { i.onload = i.onerror = done; }));
  Promise.all(settled).then(() => check(page, images));
});
frame.src = new URLSearchParams(location.search).get('page');
</script>
</body></html>
HTML
}

# look PAGE: what the checking page found for PAGE (a path below $work).
look() {
  timeout 120 "$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync --disable-extensions \
    --disable-dev-shm-usage \
    --user-data-dir="$work/profile" --allow-file-access-from-files --virtual-time-budget=15000 \
    --dump-dom "file://$work/check.html?page=$1" 2>/dev/null |
    sed -n 's|.*<pre id="result">\(.*\)</pre>.*|\1|p'
}
