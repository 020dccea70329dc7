// Drives the live preview page in headless Chromium as a person would: waits
// for every card, changes a night figure and waits for that card's picture and
// text to change, then has the store files rewritten on disk and waits for the
// page to redraw by itself. Prints one line per step; exits 1 on a failure.
// Usage: node preview_check.mjs URL BROWSER PROFILE_DIR REWRITE_COMMAND [SCREENSHOT]
import { execSync } from "node:child_process";
import puppeteer from "puppeteer-core";

const [url, executablePath, profile, rewrite, screenshot] = process.argv.slice(2);
const browser = await puppeteer.launch({
  executablePath,
  headless: true,
  args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--disable-dev-shm-usage", `--user-data-dir=${profile}`],
});
let failed = false;
const fail = message => { console.error("preview test: " + message); failed = true; };
try {
  const page = await browser.newPage();
  await page.setViewport({ width: 1400, height: 1900 });
  page.on("pageerror", e => fail("page error: " + e.message));
  await page.goto(url, { waitUntil: "domcontentloaded" });
  const card = intent => page.$eval(`img[data-intent="${intent}"]`, i => ({ etag: i.dataset.etag || "", alt: i.alt, width: i.naturalWidth }));
  const allDrawn = () => page.waitForFunction(() => {
    const images = [...document.querySelectorAll("#cards img")];
    return images.length === 9 && images.every(i => i.dataset.etag && i.complete && i.naturalWidth > 0 && i.alt) &&
           !document.querySelector('figure[aria-busy="true"]');
  }, { timeout: 60000 });

  await allDrawn();
  console.log("preview test: 9 cards drawn, each with its alternative text");
  const before = await card("SleepSpO2Intent");
  const untouched = await card("RespirationIntent");

  // A figure changed in the page: that card is redrawn, without a reload.
  await page.evaluate(() => { window.notReloaded = true; });
  const field = await page.$('input[name="spo2Average"]');
  await field.click({ clickCount: 3 });
  await field.type("82.5");
  await page.waitForFunction(old => {
    const i = document.querySelector('img[data-intent="SleepSpO2Intent"]');
    return i.dataset.etag && i.dataset.etag !== old && i.alt.includes("82.5");
  }, { timeout: 60000 }, before.etag).catch(() => fail("the blood-oxygen card did not change with its figure"));
  await allDrawn();
  const after = await card("SleepSpO2Intent");
  if (after.alt === before.alt) fail("the card's text did not change");
  if (!(await page.evaluate(() => window.notReloaded === true))) fail("the page was reloaded");
  if ((await card("RespirationIntent")).alt !== untouched.alt) fail("a card whose figures did not change changed");
  console.log("preview test: the blood-oxygen card follows its figure (" + after.alt + ")");
  if (screenshot) await page.screenshot({ path: screenshot, fullPage: true });

  // The store files rewritten on disk: the page redraws by itself.
  const readiness = await card("ReadinessIntent");
  execSync(rewrite, { stdio: "ignore" });
  await page.waitForFunction(old => {
    const i = document.querySelector('img[data-intent="ReadinessIntent"]');
    return i.dataset.etag && i.dataset.etag !== old;
  }, { timeout: 60000 }, readiness.etag).catch(() => fail("the page did not redraw when the store files changed"));
  await allDrawn();
  const spo2 = await card("SleepSpO2Intent");
  if (!failed) console.log("preview test: the page redrew by itself when the store files changed");
  if (!(await page.$eval('input[name="spo2Average"]', i => i.value === "82.5"))) fail("the edited figure was lost on redraw");
} catch (e) {
  fail(e.message);
} finally {
  await browser.close();
}
process.exit(failed ? 1 : 0);
