#!/usr/bin/python3
# Debian's Python and no other, for it has Selenium.
"""Looks at the built site in a browser that has no network: check_browser.py SITE [PICTURES]. No page is wider than the
screen of a phone or a desktop or loads with an error, and the search finds what it is asked for, from a server and from
files. With a folder PICTURES every page is photographed into it, as phone and desktop show it, light and dark."""

import functools
import http.server
import pathlib
import sys
import threading

from selenium import webdriver
from selenium.common.exceptions import TimeoutException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

WIDTHS = {"phone": 390, "desktop": 1280}
# A search, and the page that it has to find.
SEARCHES = {"zt_vector": "fault-reports.html", "ProxySettings": "records.html", "install": "tutorial.html"}


def browser():
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
                     "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def show_as(driver, width, height, scheme):
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 600})
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": "prefers-color-scheme", "value": scheme}]})


def check_page(driver, page, width):
    shown = driver.execute_script("return document.documentElement.scrollWidth")
    problems = [entry["message"] for entry in driver.get_log("browser") if entry["level"] == "SEVERE"
                and "/favicon.ico " not in entry["message"]]
    if shown > width:
        problems.append(f"{page} is {shown} pixels wide, the screen {width}")
    return problems


def check_pages(driver, address, pages, pictures):
    problems = []
    for device, width in WIDTHS.items():
        for scheme in ("light", "dark") if pictures else ["light"]:
            show_as(driver, width, 900, scheme)
            for page in pages:
                driver.get(f"{address}/{page}")
                problems += check_page(driver, page, width)
                if pictures:
                    name = page.removesuffix(".html").replace("/", "-")
                    driver.save_screenshot(str(pictures / f"{name}-{device}-{scheme}.png"))
    return problems


def check_search(driver, address):
    problems = []
    show_as(driver, WIDTHS["desktop"], 900, "light")
    for words, page in SEARCHES.items():
        driver.get(f"{address}/index.html")
        driver.find_element(By.CSS_SELECTOR, "[data-md-component=search-query]").send_keys(words)

        def found(driver):
            results = driver.find_elements(By.CSS_SELECTOR, ".md-search-result__link")
            return any(page in (result.get_attribute("href") or "") for result in results)

        try:
            WebDriverWait(driver, 20).until(found)
        except TimeoutException:
            problems.append(f"{address}: the search for {words} does not find {page}")
    return problems


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


def main():
    site = pathlib.Path(sys.argv[1]).resolve()
    pictures = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else None
    if pictures:
        pictures.mkdir(parents=True, exist_ok=True)
    # Of the reference, which has hundreds of pages, one of each sort.
    pages = sorted(page.name for page in site.glob("*.html")) + [
        "api/index.html", "api/files.html", "api/zt__arena_8h.html", "api/structvyn__connector_1_1ProxySettings.html",
        "api/classmur_1_1Exception.html"]
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Quiet, directory=site))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    address = f"http://127.0.0.1:{server.server_port}"
    driver = browser()
    try:
        problems = check_pages(driver, address, pages, pictures)
        for place in (address, site.as_uri()):
            problems += check_search(driver, place)
    finally:
        driver.quit()
    for problem in problems:
        print(problem)
    print(f"{len(pages)} pages, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
