"""A headless Chromium, driven through chromedriver's own protocol: HTTP and JSON."""
import base64
import json
import re
import subprocess
import time
import urllib.error
import urllib.request


class Browser:
    """Opens a page of the file system; a context that ends the browser. What goes wrong is told with the driver's
    own words: its answer, and the end of its log, which lies beside the profile's folder."""

    def __init__(self, folder, driver="chromedriver"):
        self.folder, self.command = folder, driver
        self.log_file = folder.with_name(folder.name + ".chromedriver.log")
        self.driver = self.session = None

    def __enter__(self):
        self.log_file.parent.mkdir(parents=True, exist_ok=True)
        try:
            self.driver = subprocess.Popen([self.command, "--port=0", f"--log-path={self.log_file}"],
                                           stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        except OSError as error:
            raise AssertionError(f"{self.command} cannot be started: {error}") from error
        said, port = "", None
        while port is None:
            line = self.driver.stdout.readline()
            said += line
            if not line:
                self.__exit__()
                raise AssertionError(f"{self.command} did not start. It said:\n{said}{self.end_of_log()}")
            found = re.search(r"successfully on port (\d+)", line)
            port = found and found.group(1)
        self.url = f"http://127.0.0.1:{port}/session"
        arguments = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     f"--user-data-dir={self.folder}", "--window-size=1280,900"]
        try:
            self.session = self.call("POST", "", {"capabilities": {"alwaysMatch": {
                "browserName": "chrome", "goog:chromeOptions": {"args": arguments},
                "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}}})["sessionId"]
        except Exception:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self.session:
            self.call("DELETE", f"/{self.session}")
        self.driver.terminate()
        self.driver.wait()
        self.driver.stdout.close()

    def call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.url + path, data, {"Content-Type": "application/json"},
                                         method=method)
        # Whatever proxy the machine has, this is no matter of it.
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        try:
            with opener.open(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise AssertionError(f"{self.command}: {method} /session{path}: {error}\n"
                                 f"{error.read().decode(errors='replace')}\n{self.end_of_log()}") from error

    def end_of_log(self, most=4000):
        if not self.log_file.exists():
            return "It wrote no log."
        return f"The end of {self.log_file}:\n{self.log_file.read_text(errors='replace')[-most:]}"

    def post(self, path, body):
        return self.call("POST", f"/{self.session}/{path}", body)

    def open(self, file):
        self.post("url", {"url": file.resolve().as_uri()})

    def run(self, script, *arguments):
        return self.post("execute/sync", {"script": script, "args": list(arguments)})

    def devtools(self, command, **parameters):
        return self.post("goog/cdp/execute", {"cmd": command, "params": parameters})

    def log(self, kind):
        return self.post("se/log", {"type": kind})

    def requests(self):
        """Addresses asked for since the last call."""
        messages = (json.loads(entry["message"])["message"] for entry in self.log("performance"))
        return [m["params"]["request"]["url"] for m in messages if m["method"] == "Network.requestWillBeSent"]

    def type(self, selector, text):
        """Types into an element, key by key, in place of what it holds."""
        [element] = self.post("element", {"using": "css selector", "value": selector}).values()
        self.post(f"element/{element}/clear", {})
        if text:
            self.post(f"element/{element}/value", {"text": text})

    def click(self, selector):
        [element] = self.post("element", {"using": "css selector", "value": selector}).values()
        self.post(f"element/{element}/click", {})

    def wait_for(self, script, seconds=10):
        """Until the script gives something true, which is the result."""
        end = time.monotonic() + seconds
        while True:
            value = self.run(script)
            if value or time.monotonic() > end:
                return value
            time.sleep(0.02)

    def screen(self, width, height, phone=False, dark=False):
        self.devtools("Emulation.setDeviceMetricsOverride", width=width, height=height,
                      deviceScaleFactor=2 if phone else 1, mobile=phone)
        self.devtools("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def screenshot(self, file):
        """The whole page, beyond the window too."""
        picture = self.devtools("Page.captureScreenshot", captureBeyondViewport=True)
        file.write_bytes(base64.b64decode(picture["data"]))
