#!/usr/bin/env python3
"""Opens reports in a browser, as wide as a desktop's and as a telephone's, and says what is wrong with them.

    browser.py FOLDER [--screenshots DIR]

looks at every report.html below FOLDER: messages on the console, requests to anywhere, pictures that do not show, charts
without a curve, text that runs out of the page at its side. Then damages copies of a report, one way each, and fails
unless every damage is found.
"""
import argparse
import base64
import contextlib
import json
import os
import pathlib
import sys
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

WIDTHS = (1400, 400)

LOOK = """
const done = arguments[0];
const broken = async (picture) => {
  try { await picture.decode(); } catch { return true; }
  return picture.naturalWidth === 0;
};
// Curves are coloured; axes, grids and labels are grey.
const hasCurve = (canvas) => {
  const pixels = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height).data;
  let coloured = 0;
  for (let i = 0; i < pixels.length; i += 4) {
    coloured += Math.max(pixels[i], pixels[i + 1], pixels[i + 2]) - Math.min(pixels[i], pixels[i + 1], pixels[i + 2]) > 60;
  }
  return coloured > 50;
};
(async () => {
  const found = [], charts = JSON.parse(document.getElementById("data").textContent).charts;
  for (const picture of document.images) {
    if (await broken(picture)) found.push("picture: does not show: " + picture.alt);
  }
  const canvases = [...document.querySelectorAll("canvas")];
  if (canvases.length !== charts.length) found.push(`chart: ${charts.length} expected, ${canvases.length} there`);
  canvases.filter((canvas) => !hasCurve(canvas)).forEach((canvas) => found.push("chart: no curve: " + canvas.id));
  const page = document.documentElement;
  if (page.scrollWidth > page.clientWidth) found.push(`width: ${page.scrollWidth} of ${page.clientWidth} pixels`);
  done({ found, height: page.scrollHeight });
})();
"""

# What is wrong, and what is put before the end of the page to make it so.
DAMAGES = {
    "picture": '<img alt="no picture" src="data:image/jpeg;base64,AAAA">',
    "console": "<script>throw new Error('planted');</script>",
    "request": '<img alt="elsewhere" src="http://127.0.0.1:9/picture.png">',
    "chart": "<script>for (const c of document.querySelectorAll('canvas')) c.replaceWith(c.cloneNode());</script>",
    "width": '<div style="width: 500px">wide</div>',
}
POLICY = 'http-equiv="Content-Security-Policy"'


class Browser:
    def __init__(self):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", "--hide-scrollbars", "--disable-dev-shm-usage", "--disable-gpu"):
            options.add_argument(argument)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    def close(self):
        self.driver.quit()

    def look(self, page, width, screenshot=None):
        """A list of texts "KIND: what is wrong"."""
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        for log in ("browser", "performance"):
            self.driver.get_log(log)  # what an earlier page has left
        self.driver.get(page.resolve().as_uri())
        seen = self.driver.execute_async_script(LOOK)
        found = seen["found"] + [f"console: {entry['message']}" for entry in self.driver.get_log("browser")]
        sent = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        asked = [message["params"]["request"]["url"] for message in sent
                 if message["method"] == "Network.requestWillBeSent"]
        found += [f"request: {url}" for url in asked if not url.startswith("data:") and url != page.resolve().as_uri()]
        if screenshot:
            clip = {"x": 0, "y": 0, "width": width, "height": seen["height"], "scale": 1}
            picture = self.driver.execute_cdp_cmd("Page.captureScreenshot",
                                                  {"captureBeyondViewport": True, "clip": clip})
            screenshot.write_bytes(base64.b64decode(picture["data"]))
        return found


def faults(browser, folder, pages, screenshots):
    for page in pages:
        name = "-".join(page.relative_to(folder).parent.parts) or "all"
        for width in WIDTHS:
            shot = screenshots / f"{name}-{width}.png" if screenshots else None
            for fault in browser.look(page, width, shot):
                yield f"{page}: at {width} pixels: {fault}"


def overlooked(browser, page):
    """Damages that are not found."""
    with tempfile.TemporaryDirectory() as folder:
        for kind, damage in DAMAGES.items():
            # Without its policy the page may ask for something elsewhere.
            text = page.read_text(encoding="utf-8").replace(POLICY, 'name="policy"')
            copy = pathlib.Path(folder, f"{kind}.html")
            copy.write_text(text.replace("</body>", damage + "</body>"), encoding="utf-8")
            found = browser.look(copy, WIDTHS[-1])
            if not any(fault.startswith(kind) for fault in found):
                yield f"planted and not found: {kind}: {damage}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--screenshots", type=pathlib.Path, metavar="DIR", help="whole pages as pictures")
    options = parser.parse_args()
    pages = sorted(options.folder.rglob("report.html"))
    if not pages:
        parser.error(f"{options.folder}: no report.html below it")
    if options.screenshots:
        options.screenshots.mkdir(parents=True, exist_ok=True)
    with contextlib.closing(Browser()) as browser:
        wrong = list(faults(browser, options.folder, pages, options.screenshots))
        wrong += overlooked(browser, min(pages, key=lambda page: len(page.parts)))
    print("\n".join(wrong + [f"{len(pages)} reports at {len(WIDTHS)} widths: {len(wrong)} faults"]))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
