"""A browser without a window, for the tests of pages and for what measures them."""

import shutil

FLAGS = """--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run --hide-scrollbars
    --disable-background-networking --disable-component-update --disable-sync""".split()


def missing():
    """What would have to be installed."""
    wanted = [what for what in ("chromium", "chromedriver") if not shutil.which(what)]
    try:
        import selenium  # noqa: F401
    except ImportError:
        wanted.append("python3-selenium")
    return wanted


def start(profile):
    """Its driver; `profile` is an empty folder."""
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    for flag in [*FLAGS, f"--user-data-dir={profile}"]:
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)


def show_as(driver, width=1440, height=1000, dark=False):
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                           {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
    scheme = {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [scheme]})
