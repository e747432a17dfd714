"""A shop's people at work in a browser: they bring a file, look at its pages, print one again, remove a job.

Usage: browser_test.py RASTREL [--pictures DIRECTORY]. Ends with 77 where there is no browser. With a directory it leaves
pictures of each page there: light, dark, and as wide as a phone.
"""
import json
import os
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

from browser import Browser, program

LIMIT = 120  # seconds, for each wait
PHONE = 360  # pixels

# Three pages of 144 by 72 points, which are as many pixels at 72 per inch: a red square at the lower left, and a bar at
# the top whose length says the page's number.
JOB = b"""%!PS-Adobe-3.0
%%Pages: 3
1 1 3 { /n exch def << /PageSize [144 72] >> setpagedevice
1 0 0 setrgbcolor 0 0 36 36 rectfill
0 0 1 setrgbcolor 0 60 n 20 mul 12 rectfill showpage } for
%%EOF
"""
HOSTILE = "<img src=x onerror=window.hacked=1>\u202egnp.ps"


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


class Shop:
    """A server with a data root of its own."""

    def __init__(self, rastrel, place):
        self.port = free_port()
        self.address = f"http://127.0.0.1:{self.port}"
        root = os.path.join(place, "root")
        os.makedirs(os.path.join(root, "server"), mode=0o700)
        os.makedirs(os.path.join(place, "out"))
        os.chmod(root, 0o700)
        with open(os.path.join(root, "server.toml"), "w", encoding="utf-8") as file:
            file.write(f'[web]\nport = {self.port}\n[[device]]\nname = "Plotter"\nkind = "folder"\n'
                       f'address = "{place}/out"\n')
        environment = dict(os.environ, HOME=place, RASTREL_HOME=root)
        self.log = open(os.path.join(place, "log"), "w+b")
        self.process = subprocess.Popen([rastrel, "serve"], env=environment, stdout=self.log, stderr=self.log)
        token = os.path.join(root, "server", "web.token")
        end = time.monotonic() + LIMIT
        while not self._answers():
            assert time.monotonic() < end and self.process.poll() is None, "the server did not start: " + self.said()
            time.sleep(0.1)
        with open(token, encoding="ascii") as file:
            self.token = file.read().strip()

    def _answers(self):
        try:
            return urllib.request.urlopen(self.address + "/api/v1/health", timeout=5).status == 200
        except OSError:
            return False

    def said(self):
        self.log.seek(0)
        return self.log.read().decode(errors="replace")

    def get(self, path):
        request = urllib.request.Request(f"{self.address}/api/v1/{path}",
                                         headers={"Authorization": f"Bearer {self.token}"})
        with urllib.request.urlopen(request, timeout=30) as answer:
            return json.loads(answer.read())

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(30)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()


def bring(browser, path):
    """Gives the form a file and returns the number of its job."""
    before = browser.run("document.querySelectorAll('#uploads a').length")
    browser.choose_file("#upload input[type=file]", path)
    browser.run("document.querySelector('#upload select[name=mode]').value = 'TIFF/tiff default.ps'")
    browser.run("document.querySelector('#upload select[name=device]').value = 'Plotter'")
    browser.run("document.querySelector('#upload button').click()")
    browser.wait(f"document.querySelectorAll('#uploads a').length > {before}", "a job of the file", LIMIT)
    return int(browser.run("[...document.querySelectorAll('#uploads a')].at(-1).href.split('/').at(-1)"))


def ready(browser, what):
    browser.wait("document.body.dataset.ready === 'yes'", what, LIMIT)


STATE = "document.querySelector('#state .state')?.textContent"


def pixel(browser, x, y):
    """Color of a pixel of the page of 144 by 72 in the middle of the viewer, as [red, green, blue]."""
    return browser.run(f"""(() => {{
      const canvas = document.querySelector('.stage canvas');
      const left = Math.floor(canvas.width / 2) - 72;
      const top = Math.floor(canvas.height / 2) - 36;
      // Of a copy: reading a canvas again and again changes how the browser keeps it.
      const copy = new OffscreenCanvas(1, 1).getContext('2d');
      copy.drawImage(canvas, left + {x}, top + {y}, 1, 1, 0, 0, 1, 1);
      return [...copy.getImageData(0, 0, 1, 1).data].slice(0, 3);
    }})()""")


def see(browser, x, y, color):
    """Waits until that pixel has a color."""
    deadline = time.monotonic() + LIMIT
    while pixel(browser, x, y) != color:
        assert time.monotonic() < deadline, f"({x}, {y}) is {pixel(browser, x, y)} and not {color}"
        time.sleep(0.1)


def check_form(browser, what):
    """What every page has for people who don't see it, or see it on a phone."""
    faults = browser.run("""(() => {
      const faults = [];
      const name = (one) => one.getAttribute('aria-label') || one.textContent.trim() || one.value ||
        [...(one.labels ?? [])].map((label) => label.textContent.trim()).join('') || one.title;
      for (const one of document.querySelectorAll('button, a, input:not([type=hidden]), select')) {
        if (one.closest('[hidden]') || one.getAttribute('aria-hidden')) continue;
        const named = one.matches('input, select') ? [...one.labels].some((label) => label.textContent.trim()) ||
          one.getAttribute('aria-label') : name(one);
        if (!named) faults.push('no name: ' + one.outerHTML);
      }
      for (const one of document.querySelectorAll('img')) if (!one.hasAttribute('alt')) faults.push('no alt');
      for (const one of document.querySelectorAll('table')) if (!one.caption) faults.push('no caption');
      if (document.querySelectorAll('h1').length !== 1) faults.push('not one h1');
      if (document.querySelectorAll('main').length !== 1) faults.push('not one main');
      if (!document.documentElement.lang) faults.push('no language');
      const ids = [...document.querySelectorAll('[id]')].map((one) => one.id);
      if (new Set(ids).size !== ids.length) faults.push('an id twice: ' + ids);
      return faults;
    })()""")
    assert not faults, f"{what}: {faults}"
    browser.surroundings(width=PHONE, height=740)
    wide = browser.run("document.documentElement.scrollWidth")
    assert wide <= PHONE, f"{what} is {wide} pixels wide on a phone of {PHONE}"
    browser.surroundings()


def take_pictures(browser, directory, name):
    if directory is None:
        return
    for kind, how in (("light", {}), ("dark", {"dark": True}), ("phone", {"width": PHONE, "height": 740})):
        browser.surroundings(**how)
        time.sleep(0.7)
        browser.picture(os.path.join(directory, f"{name}-{kind}.png"))
    browser.surroundings()


def work(browser, shop, place, pictures):
    # Nobody sees a thing without signing in; the hand-over does it.
    browser.surroundings()
    browser.open(shop.address + "/jobs?state=done")
    assert browser.run("location.pathname") == "/login"
    check_form(browser, "the sign-in")
    take_pictures(browser, pictures, "sign-in")
    browser.open(f"{shop.address}/login?next=/#token={shop.token}")
    browser.wait("location.pathname === '/' && document.body.dataset.ready === 'yes'", "the overview", LIMIT)
    assert browser.run("location.hash") == "", "the token stays in the address"

    # A file is brought, and the list shows its job without being loaded again.
    path = os.path.join(place, "sign.ps")
    with open(path, "wb") as file:
        file.write(JOB)
    job = bring(browser, path)
    check_form(browser, "the overview")
    take_pictures(browser, pictures, "overview")
    browser.open(f"{shop.address}/jobs/{job}")
    browser.wait(f"{STATE} === 'done'", "the end of the job", LIMIT)

    # Its pages: 144 by 72 pixels at 72 pixels per inch.
    browser.wait("document.querySelectorAll('#thumbnails li').length === 3", "three pages", LIMIT)
    described = shop.get(f"jobs/{job}/pages")["pages"]
    assert [(one["width"], one["height"]) for one in described] == [(144, 72)] * 3, described
    check_form(browser, "the job")
    take_pictures(browser, pictures, "job")
    browser.run("document.querySelector('.viewer [aria-label=\"Pixel for pixel\"]').click()")
    browser.wait("document.querySelector('.viewer output').textContent === '100 %'", "the full size", LIMIT)
    # The red square is 36 pixels high at the lower left, the bar of page 1 is 20 wide and 12 high.
    see(browser, 18, 54, [255, 0, 0])
    see(browser, 100, 54, [255, 255, 255])
    see(browser, 10, 6, [0, 0, 255])
    see(browser, 30, 6, [255, 255, 255])
    # The blue light by itself: none in the red square, full in the bar and in white.
    browser.run("document.querySelectorAll('#inks input')[3].click()")
    see(browser, 18, 54, [0, 0, 0])
    see(browser, 100, 54, [0, 0, 255])

    # Page 2 is printed again: a dialog asks, and a new job does it.
    browser.run("document.querySelector('[data-action=reprint]').click()")
    browser.wait("document.querySelector('dialog input[name=pages]')", "the dialog", LIMIT)
    take_pictures(browser, pictures, "dialog")
    browser.run("document.querySelector('dialog input[name=pages]').value = '2'")
    browser.run("document.querySelector('dialog button[value=accept]').click()")
    browser.wait(f"location.pathname !== '/jobs/{job}' && {STATE} === 'done'", "the second print", LIMIT)
    again = int(browser.run("location.pathname.split('/').at(-1)"))
    assert again > job and shop.get(f"jobs/{again}")["state"] == "done"

    # It is removed, after a question that may be answered with no.
    browser.run("document.querySelector('[data-action=remove]').click()")
    browser.wait("document.querySelector('dialog')", "the question", LIMIT)
    browser.run("document.querySelector('dialog button[value=cancel]').click()")
    browser.wait("!document.querySelector('dialog')", "the end of the question", LIMIT)
    assert shop.get(f"jobs/{again}")["id"] == again
    browser.run("document.querySelector('[data-action=remove]').click()")
    browser.wait("document.querySelector('dialog')", "the question", LIMIT)
    browser.run("document.querySelector('dialog button[value=accept]').click()")
    browser.wait("location.pathname === '/'", "the overview", LIMIT)
    assert [one["id"] for one in shop.get("jobs")["jobs"]] == [job]

    # A file's name is a text, whatever it is.
    ready(browser, "the overview")
    path = os.path.join(place, HOSTILE)
    with open(path, "wb") as file:
        file.write(JOB)
    job = bring(browser, path)
    for page in ("/", "/jobs", f"/jobs/{job}"):
        browser.open(shop.address + page)
        ready(browser, page)
        if page != "/":  # the job may be over already
            browser.wait("document.body.textContent.includes('<img src=x onerror=window.hacked=1>\\\\u202egnp')",
                         f"the title on {page}", LIMIT)
        assert browser.run("window.hacked") is None
        check_form(browser, page)
    browser.open(shop.address + "/jobs")
    ready(browser, "the jobs")
    take_pictures(browser, pictures, "jobs")

    # A file is dropped on the page; its job waits, gets another priority, and is released.
    browser.open(shop.address + "/")
    ready(browser, "the overview")
    browser.run("document.querySelector('#upload input[name=hold]').click()")
    browser.run("""(() => {
      const dropped = new DataTransfer();
      dropped.items.add(new File(['%!PS\\nshowpage\\n'], 'dropped.ps'));
      for (const kind of ['dragenter', 'dragover', 'drop']) {
        document.body.dispatchEvent(
          new DragEvent(kind, { dataTransfer: dropped, bubbles: true, cancelable: true }));
      }
    })()""")
    browser.wait("document.querySelector('#uploads a')", "a job of the dropped file", LIMIT)
    dropped = int(browser.run("document.querySelector('#uploads a').href.split('/').at(-1)"))
    browser.wait(f"document.querySelector('tr[data-job=\"{dropped}\"]')", "its row", LIMIT)
    assert shop.get(f"jobs/{dropped}")["state"] == "held"
    browser.open(f"{shop.address}/jobs/{dropped}")
    browser.wait("document.querySelector('[data-action=priority]')", "its actions", LIMIT)
    assert browser.run("document.getElementById('no-pages').textContent").startswith("The job is held")
    browser.run("document.querySelector('[data-action=priority]').click()")
    browser.wait("document.querySelector('dialog input[name=priority]')", "the dialog", LIMIT)
    browser.run("document.querySelector('dialog input[name=priority]').value = '70'")
    browser.run("document.querySelector('dialog button[value=accept]').click()")
    browser.wait("document.querySelector('[data-field=priority]').textContent === '70'", "the priority", LIMIT)
    browser.run("document.querySelector('[data-action=release]').click()")
    browser.wait(f"{STATE} === 'done'", "the end of the dropped job", LIMIT)

    # Keys: the list of shortcuts, and the way to the devices.
    browser.press("?")
    browser.wait("document.querySelector('dialog .keys')", "the list of keys", LIMIT)
    browser.press("Escape", 27)
    browser.wait("!document.querySelector('dialog')", "its end", LIMIT)
    browser.press("d")
    browser.wait("location.pathname === '/devices'", "the devices", LIMIT)
    ready(browser, "the devices")
    check_form(browser, "the devices")
    take_pictures(browser, pictures, "devices")

    # Without scripts all can be read.
    browser.surroundings(scripts=False)
    for page, text in (("/jobs", "sign.ps"), ("/devices", "Plotter"), (f"/jobs/{job}", "Story")):
        browser.open(shop.address + page)
        source = browser.call("DOM.getOuterHTML", nodeId=browser.call("DOM.getDocument")["root"]["nodeId"])["outerHTML"]
        assert text in source, f"{page} has no {text} without scripts"
    browser.surroundings()
    assert not browser.messages, browser.messages


def run_in_browser(work, prefix):
    """Calls work(browser, shop, place, pictures) with a shop of its own; what went wrong is told with the page's and the
    server's words. Returns the exit status."""
    if program() is None:
        print("skipped: there is no chromium")
        return 77
    pictures = sys.argv[3] if len(sys.argv) > 3 else None
    with tempfile.TemporaryDirectory(prefix=prefix) as place:
        shop = Shop(sys.argv[1], place)
        try:
            with Browser() as browser:
                try:
                    work(browser, shop, place, pictures)
                except BaseException:
                    print(browser.messages, browser.run("document.body.innerText"))
                    raise
        except BaseException:
            print(shop.said())
            raise
        finally:
            shop.stop()
    return 0


if __name__ == "__main__":
    sys.exit(run_in_browser(work, "rastrel-page-"))
