// Looks at published sites in a browser: no finding of axe-core, no error of a script, no page wider than the window,
// nothing asked of another server, on a phone and a desktop, light and dark. Pages are opened from the disk, and
// Lighthouse's from a server of this process.
//   check.mjs FOLDER-OF-SITES [--lighthouse] [--pictures FOLDER]
import fs from "node:fs";
import http from "node:http";
import os from "node:os";
import path from "node:path";
import { createRequire } from "node:module";
import { pathToFileURL } from "node:url";
import puppeteer from "puppeteer-core";

const [folder, ...options] = process.argv.slice(2);
const pictures = options.includes("--pictures") ? options[options.indexOf("--pictures") + 1] : null;
const axe = fs.readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const profile = fs.mkdtempSync(path.join(os.tmpdir(), "site-check-"));
const browser = await puppeteer.launch({
  executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
  userDataDir: profile,
  protocolTimeout: 240000,
  args: ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
    "--disable-component-update", "--disable-sync", "--allow-file-access-from-files", "--remote-debugging-port=0"],
});
let faults = 0;
let looked = 0;

function fault(where, what) {
  ++faults;
  console.log(`${where}: ${what}`);
}

// One page of each kind; in the hostile league the first ones have the worst names.
function pagesOf(site) {
  const first = (part, count) => fs.existsSync(path.join(site, part))
    ? fs.readdirSync(path.join(site, part)).filter((name) => name.endsWith(".html"))
      .sort((a, b) => a.localeCompare(b, "en", { numeric: true })).slice(0, count).map((name) => `${part}/${name}`)
    : [];
  return ["index.html", "races.html", "drivers.html", "matrix.html", "records.html",
    ...first("races", 2), ...first("drivers", 2), ...first("reports", 99).filter((name) => !/by-driver/.test(name))]
    .filter((name) => fs.existsSync(path.join(site, name)));
}

// Every width and scheme of one page. What axe-core says of the structure does not change with the scheme.
async function look(site, name) {
  let where = `${path.basename(site)}/${name}`;
  const page = await browser.newPage();
  page.on("pageerror", (error) => fault(where, `script error: ${error.message}`));
  page.on("console", (message) => { if (message.type() === "error") fault(where, `console: ${message.text()}`); });
  page.on("dialog", async (dialog) => { fault(where, "a text of the league ran"); await dialog.dismiss(); });
  page.on("request", (request) => {
    if (!/^(file|data):/.test(request.url())) fault(where, `asks for ${request.url()}`);
  });
  await page.goto(pathToFileURL(path.join(site, name)).href, { waitUntil: "load" });
  await page.evaluate(() => document.querySelectorAll("details").forEach((details) => { details.open = true; }));
  await page.evaluate(axe);
  for (const width of [360, 1280]) {
    await page.setViewport({ width, height: 800 });
    for (const scheme of ["light", "dark"]) {
      where = `${path.basename(site)}/${name} at ${width} ${scheme}`;
      await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: scheme }]);
      const wide = await page.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);
      if (wide > 0) fault(where, `${wide} pixels wider than the window`);
      const { violations } = await page.evaluate((contrastOnly) => window.axe.run(document,
        { resultTypes: ["violations"], ...(contrastOnly ? { runOnly: ["color-contrast"] } : {}) }), scheme === "dark");
      for (const violation of violations)
        fault(where, `${violation.id}: ${violation.help}: ${violation.nodes.slice(0, 2).map((node) =>
          `${node.html.slice(0, 160)} ${node.any.map((check) => check.message).join("; ")}`).join(" | ")}`);
      ++looked;
    }
  }
  await page.close();
}

// Sorting and searching are tried once.
async function tryScripts(site) {
  const page = await browser.newPage();
  await page.goto(pathToFileURL(path.join(site, "races.html")).href, { waitUntil: "load" });
  const column = () => page.$$eval("table.sortable tbody tr", (rows) => rows.map((row) => row.cells[0].textContent));
  const before = await column();
  await page.click("thead th button");
  await page.click("thead th button");
  const after = await column();
  if (before.length < 2 || after.join() !== before.reverse().join()) fault(site, "the races do not sort");
  await page.click("#search");
  await page.type("#search", "gordon");
  await page.waitForSelector("#found a", { timeout: 5000 }).catch(() => fault(site, "the search finds nothing"));
  const found = await page.$$eval("#found a", (links) => links.map((link) => link.getAttribute("href")));
  for (const target of found)
    if (!fs.existsSync(path.join(site, target))) fault(site, `the search leads to ${target}, which is not there`);
  await page.close();
}

async function picture(site, name, file, width, height, scheme) {
  const page = await browser.newPage();
  await page.setViewport({ width, height });
  await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: scheme }]);
  await page.goto(pathToFileURL(path.join(site, name)).href, { waitUntil: "load" });
  await page.screenshot({ path: path.join(pictures, file) });
  await page.close();
}

async function lighthouse(site) {
  const { default: run } = await import("lighthouse");
  const types = { ".html": "text/html; charset=utf-8", ".css": "text/css", ".js": "text/javascript", ".png": "image/png",
    ".json": "application/json", ".xml": "application/xml" };
  const server = http.createServer((request, response) => {
    const file = path.join(site, path.normalize(decodeURI(new URL(request.url, "http://x").pathname)).replace(/\/$/, "/index.html"));
    if (!file.startsWith(site) || !fs.existsSync(file)) return response.writeHead(404).end();
    response.writeHead(200, { "content-type": types[path.extname(file)] ?? "application/octet-stream" });
    fs.createReadStream(file).pipe(response);
  });
  await new Promise((done) => server.listen(0, "127.0.0.1", done));
  const port = Number(new URL(browser.wsEndpoint()).port);
  for (const name of ["index.html", ...pagesOf(site).filter((page) => /^(races|drivers)\//.test(page)).filter((page, place, all) =>
    all.findIndex((other) => other.split("/")[0] === page.split("/")[0]) === place)]) {
    const result = await run(`http://127.0.0.1:${server.address().port}/${name}`,
      { port, logLevel: "error", onlyCategories: ["performance", "accessibility", "best-practices", "seo"] });
    const scores = Object.entries(result.lhr.categories).map(([key, category]) => [key, Math.round(category.score * 100)]);
    console.log(`${path.basename(site)}/${name}: ${scores.map(([key, score]) => `${key} ${score}`).join(", ")}`);
    for (const [key, score] of scores) {
      if (score >= 95) continue;
      const failed = result.lhr.categories[key].auditRefs.map((ref) => result.lhr.audits[ref.id])
        .filter((audit) => audit.score !== null && audit.score < 0.9).map((audit) => audit.id);
      fault(`${path.basename(site)}/${name}`, `${key} ${score}: ${failed.join(", ")}`);
    }
  }
  server.close();
}

try {
  const sites = fs.readdirSync(folder).map((name) => path.join(folder, name))
    .filter((site) => fs.existsSync(path.join(site, "index.html")));
  if (pictures) {
    const [classic, paddock] = ["season-classic", "season-paddock"].map((name) => path.join(folder, name));
    const race = pagesOf(paddock).find((name) => name.startsWith("races/"));
    const driver = `drivers/${fs.readdirSync(path.join(paddock, "drivers")).find((name) => /jeff-gordon/.test(name))}`;
    for (const [site, theme] of [[classic, "classic"], [paddock, "paddock"]]) {
      for (const scheme of ["light", "dark"]) {
        await picture(site, "index.html", `site-${theme}-${scheme}.png`, 1280, 900, scheme);
        await picture(site, "index.html", `site-${theme}-phone-${scheme}.png`, 360, 740, scheme);
        await picture(site, race, `site-${theme}-race-phone-${scheme}.png`, 360, 740, scheme);
        await picture(site, race, `site-${theme}-race-${scheme}.png`, 1280, 2600, scheme);
        await picture(site, driver, `site-${theme}-driver-${scheme}.png`, 1280, 1800, scheme);
        await picture(site, "reports/point-standings.html", `site-${theme}-standings-${scheme}.png`, 1280, 3600, scheme);
        await picture(site, "matrix.html", `site-${theme}-matrix-${scheme}.png`, 1280, 900, scheme);
      }
    }
  }
  for (const site of sites) for (const name of pagesOf(site)) await look(site, name);
  await tryScripts(path.join(folder, "season-paddock"));
  if (options.includes("--lighthouse")) await lighthouse(path.join(folder, "season-paddock"));
  console.log(`${looked} looks, ${faults} findings`);
  if (looked === 0) fault(folder, "there is no site");
} finally {
  await browser.close();
  fs.rmSync(profile, { recursive: true, force: true });
}
process.exitCode = faults === 0 ? 0 : 1;
