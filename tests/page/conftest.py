"""Makes pages with the built program and opens them in a real browser, where there is one."""

import base64
import json
import os
import subprocess
from pathlib import Path

import browser
import pytest

BUILD = Path(os.environ["CORVANE_BUILD"])
PICTURES = BUILD / "screenshots"


def corvane(*arguments):
    return subprocess.run([BUILD / "corvane", *map(str, arguments)], capture_output=True, text=True)


def make_page(path, *arguments):
    """The page's path."""
    made = corvane("report", "-o", path, *arguments)
    assert (made.returncode, made.stdout, made.stderr) == (0, "", "")
    return path


@pytest.fixture(scope="session")
def driver(tmp_path_factory):
    if os.environ.get("CORVANE_SANITIZE"):
        pytest.skip("no page is opened: those of the other presets are the same")
    wanted = browser.missing()
    if wanted and os.environ.get("CORVANE_NEED_BROWSER"):
        pytest.fail(f"not installed: {', '.join(wanted)}")
    if wanted:
        pytest.skip(f"no page is opened: {', '.join(wanted)} not installed")
    driver = browser.start(tmp_path_factory.mktemp("browser"))
    PICTURES.mkdir(exist_ok=True)
    yield driver
    driver.quit()


class Page:
    """An opened page."""

    def __init__(self, driver, path, width=1440, height=1000, dark=False):
        self.driver = driver
        browser.show_as(driver, width, height, dark)
        driver.get_log("performance")
        driver.get(path.as_uri())
        self.wait("return document.querySelectorAll('.panel[data-drawn]').length")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def wait(self, script, *arguments):
        """What the script returns, once that is anything."""
        from selenium.webdriver.support.ui import WebDriverWait
        return WebDriverWait(self.driver, 30, 0.02).until(lambda _: self.run(script, *arguments))

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0]).innerText", selector)

    def texts(self, selector):
        return self.run("return [...document.querySelectorAll(arguments[0])].map((e) => e.innerText)", selector)

    def see(self, selector):
        """Brings it into view, and waits until it is drawn where it is a panel."""
        self.run("document.querySelector(arguments[0]).scrollIntoView({block: 'center'})", selector)
        self.wait("""const panel = document.querySelector(arguments[0]).closest('.panel');
            return !panel || panel.dataset.drawn""", selector)

    def pointer(self, selector, *moves):
        """Moves the mouse over the plot: (action, part of its width), action down, up or move."""
        self.see(selector)
        left, width, top = self.run("""const box = document.querySelector(arguments[0]).getBoundingClientRect();
            return [box.left + 52, box.width - 53, box.top + 40]""", selector + " .frame")
        kinds = {"move": "mouseMoved", "down": "mousePressed", "up": "mouseReleased"}
        for action, part in moves:
            button = {} if action == "move" else {"button": "left", "clickCount": 1}
            self.driver.execute_cdp_cmd("Input.dispatchMouseEvent", {
                "type": kinds[action], "x": left + part * width, "y": top, **button})

    def key(self, key):
        self.run("document.body.dispatchEvent(new KeyboardEvent('keydown', {key: arguments[0], bubbles: true}))", key)

    def picture(self, name):
        self.driver.save_screenshot(str(PICTURES / f"{name}.png"))

    def printed(self):
        """On paper of the usual size, as PDF."""
        paper = {"paperWidth": 8.27, "paperHeight": 11.69}
        return base64.b64decode(self.driver.execute_cdp_cmd("Page.printToPDF", paper)["data"])

    def pixels(self, selector, least=40):
        """Where a canvas has colour, row by row; axes and grid are grey."""
        return self.run("""const canvas = document.querySelector(arguments[0]);
            const {width, height} = canvas;
            const data = canvas.getContext('2d').getImageData(0, 0, width, height).data;
            const coloured = (i) => data[i + 3] > 40 && Math.abs(data[i] - data[i + 2]) > arguments[1];
            return {width, height, ink: [...Array(width * height).keys()].map((i) => Number(coloured(4 * i))).join('')}""", selector, least)

    def complaints(self):
        """Console messages, and requests for anything but the page itself."""
        requests = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        urls = {message["params"]["request"]["url"] for message in requests
                if message["method"] == "Network.requestWillBeSent"}
        return [entry["message"] for entry in self.driver.get_log("browser")] + sorted(urls - {self.driver.current_url})


@pytest.fixture
def open_page(driver):
    def open_it(path, **options):
        return Page(driver, path, **options)
    driver.get("about:blank")
    driver.get_log("browser")
    return open_it
