#!/usr/bin/env python3
"""Prints the same documents in every way that leads to the server, and compares what is delivered.

usage: desktop.py RASTREL [short]

A document goes to the server by `lp` through a print system of the trial's own, by ipptool, by a hot folder, by
`rastrel jobs add`, by the HTTP interface, and by the page in a browser where there is one. Each has to deliver the very file that `rastrel print` makes (and for a picture, that the others make),
and the queue holds the document's own bytes where nothing on the way had to change it. Then the print system's own tests of
IPP printers are run, with documents that are made here. What they expect and this printer does not offer is in
NOT_OFFERED, with the reason; any other complaint fails the trial. Skipped (status 77) where no print system can be run.
A table says what came of each. `short` leaves out lp, the browser and the long test."""

import contextlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import urllib.parse
import urllib.request

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "server/web/pages"))

import browser as browsers  # noqa: E402
from support.print_system import answers, can_run, free_port, start_print_system  # noqa: E402
from support.shop import Shop, wait_for  # noqa: E402

TESTS = pathlib.Path("/usr/share/cups/ipptool")
DEVICES = "[Sign]\nkind = file\nformat = png\npattern = {output}/{job}-{page}.png\n"
NOT_OFFERED = {
    "overrides-supported": "settings of single pages or documents are not heeded, so none are promised",
    "printer-supply": "the server does not know how much ink or material a device has",
    "printer-supply-description": "the same",
    "job-state-reasons": "the IPP library gives a job that its sender holds its state, and no reason",
}
# Tests that pass at least: a run that ends early is no success.
NEEDED = {"ipp-1.1": 39, "ipp-2.0": 40, "ipp-everywhere": 73}
SEND = """{ NAME "Print" OPERATION Print-Job GROUP operation-attributes-tag
ATTR charset attributes-charset utf-8 ATTR language attributes-natural-language en ATTR uri printer-uri $uri
ATTR name requesting-user-name $user ATTR name job-name "$title" ATTR mimeMediaType document-format $filetype
FILE $filename STATUS successful-ok }
"""
# 4 by 6 inches, which the sender names as the media: nothing on the way fits it to another sheet.
PAGE = """%!PS-Adobe-3.0HEADER
%%BoundingBox: 0 0 288 432
%%Pages: 1
%%EndComments
%%Page: 1 1
SETUP1 0 0 setrgbcolor 40 40 100 150 rectfill 0 0 1 setrgbcolor 150 250 90 0 360 arc fill
0 0.5 0 setrgbcolor 3 setlinewidth 20 380 moveto 270 380 lineto stroke
showpage
%%EOF
"""


def ghostscript(device, output, source, *options):
    subprocess.run(["gs", "-dQUIET", "-dSAFER", "-dBATCH", "-dNOPAUSE", f"-sDEVICE={device}", *options, "-o",
                    str(output), str(source)], check=True, stdout=subprocess.DEVNULL)


def make_documents(place):
    place.mkdir()
    setup = "<< /PageSize [288 432] >> setpagedevice\n"
    (place / "sheet.ps").write_text(PAGE.replace("HEADER", "").replace("SETUP", setup))
    (place / "figure.eps").write_text(PAGE.replace("HEADER", " EPSF-3.0").replace("SETUP", ""))
    ghostscript("pdfwrite", place / "page.pdf", place / "sheet.ps")
    ghostscript("jpeg", place / "photo.jpg", place / "sheet.ps", "-r72")
    ghostscript("png16m", place / "logo.png", place / "sheet.ps", "-r72")
    return sorted(place.iterdir())


KINDS = {".ps": "application/postscript", ".eps": "application/postscript", ".pdf": "application/pdf",
         ".jpg": "image/jpeg", ".png": "image/png"}


class Desk:
    def __init__(self, shop, uri, web, place):
        self.shop, self.uri, self.place = shop, uri, place
        self.web = f"http://127.0.0.1:{web}"
        self.page = None  # a browser that has signed in
        self.hot = shop.hot_folder("hot", 'device = "Sign"\nsettle = 1\npoll = 1\n')
        self.test = place / "send.test"
        self.test.write_text(SEND)
        self.environment = dict(os.environ)

    def add(self, document, name):
        del name
        self.shop.run("jobs", "add", str(document), "--device", "Sign")

    def drop(self, document, name):
        # Copied with no second step: the file is taken as soon as it is closed.
        shutil.copyfile(document, self.hot / (name + document.suffix))

    def send(self, document, name):
        subprocess.run(["ipptool", "-d", f"title={name}", "-d", f"filetype={KINDS[document.suffix]}",
                        "-f", str(document), self.uri, str(self.test)], check=True)

    def token(self):
        return (self.shop.root / "server/web.token").read_text().strip()

    def http(self, document, name):
        query = urllib.parse.urlencode({"title": name, "device": "Sign"})
        urllib.request.urlopen(urllib.request.Request(
            f"{self.web}/api/v1/jobs?{query}", data=document.read_bytes(),
            headers={"Authorization": f"Bearer {self.token()}", "Content-Type": KINDS[document.suffix]})).close()

    def sign_in(self, page):
        self.page = page
        page.surroundings()
        page.open(f"{self.web}/login?next=/#token={self.token()}")
        page.wait("location.pathname === '/' && document.body.dataset.ready === 'yes'", "the overview")

    def browser(self, document, name):
        named = self.place / (name + document.suffix)
        shutil.copyfile(document, named)
        self.page.choose_file("#upload input[type=file]", str(named))
        self.page.run("document.querySelector('#upload select[name=device]').value = 'Sign'")
        self.page.run("document.querySelector('#upload button').click()")

    def lp(self, document, name):
        subprocess.run(["lp", "-d", "sign", "-t", name, "-o", "media=Custom.4x6in", str(document)], check=True, env=self.environment,
                       stdout=subprocess.DEVNULL)


def delivered_by(shop, bring, document, name):
    """The number of the new job, and the file that was delivered."""
    before = set(shop.jobs())
    output = shop.root / "output"
    known = set(output.iterdir()) if output.exists() else set()
    bring(document, name)

    def ended():
        fresh = [job for number, job in shop.jobs().items() if number not in before]
        return [job for job in fresh if job["state"] in ("done", "failed", "uncertain")]
    job = wait_for(ended, f"{document.name} by {bring.__name__}")[0]
    if job["state"] != "done":
        sys.exit(f"{document.name} by {bring.__name__}: {job}")
    files = set(output.iterdir()) - known
    if len(files) != 1:
        sys.exit(f"{document.name} by {bring.__name__}: {files} were delivered")
    return job["id"], files.pop().read_bytes()


def check_documents(shop, desk, documents, ways):
    faults, rows = [], [["document", *(way.__name__ for way in ways)]]
    for document in documents:
        expected, row = None, [document.name]
        if document.suffix in (".ps", ".eps", ".pdf"):
            by_print = shop.place / "by-print" / document.stem
            shop.run("print", str(document), "--printer", "Sign", "--output", str(by_print))
            expected, = [path.read_bytes() for path in by_print.iterdir()]
        for way in ways:
            number, made = delivered_by(shop, way, document, f"{document.stem}-{way.__name__}")
            expected = made if expected is None else expected
            if made != expected:
                kept = shop.place / f"{document.stem}-{way.__name__}.png"
                kept.write_bytes(made)
                faults.append(f"{document.name} by {way.__name__} is another picture")
            is_own = way in (desk.add, desk.drop, desk.http, desk.browser) or (
                way == desk.send and document.suffix not in (".jpg", ".png"))
            is_same = shop.job_file(number) == document.read_bytes()
            if is_own and not is_same:
                faults.append(f"{document.name} by {way.__name__}: the queue has other bytes")
            row.append(("same file" if made == expected else "OTHER") + (", own bytes" if is_same else ""))
        rows.append(row)
    print("What is delivered, held against `rastrel print` (a picture's against the first way), and whether the queue holds\n"
          "the document's own bytes:")
    for row in rows:
        print("".join(f"{cell:<22}" for cell in row).rstrip(), flush=True)
    return faults


def make_test_documents(place, documents):
    """Those that the tests of IPP printers send, and that do not come with them."""
    folder = place / "ipptool"
    folder.mkdir()
    for test in TESTS.glob("*.test"):
        shutil.copy(test, folder)
    sheet = {path.suffix: path for path in documents}
    for size in ("a4", "letter"):
        shutil.copy(sheet[".ps"], folder / f"document-{size}.ps")
        shutil.copy(sheet[".pdf"], folder / f"document-{size}.pdf")
    shutil.copy(sheet[".jpg"], folder / "color.jpg")
    ghostscript("jpeggray", folder / "gray.jpg", sheet[".ps"], "-r72")
    samples = {}
    for resolution in (300, 600):
        for space, number in (("srgb-8", 19), ("sgray-8", 18)):
            samples[resolution, space] = place / f"{resolution}-{space}.pwg"
            ghostscript("pwgraster", samples[resolution, space], sheet[".ps"], f"-r{resolution}",
                        f"-dcupsColorSpace={number}", "-dcupsBitsPerColor=8", "-sPwgRaster=PwgRaster")
    # Those of other kinds only have to be there: their tests are passed over.
    for name in re.findall(r"FILE (pwg-\S+)", (folder / "ipp-everywhere.test").read_text()):
        resolution, space = re.match(r"pwg-raster-samples-(\d+)dpi/([^/]+)/", name).groups()
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(samples.get((int(resolution), space), samples[300, "srgb-8"]), folder / name)
    return folder


def check_protocol(uri, folder, names):
    faults = []
    for name in names:
        shown = subprocess.run(["ipptool", "-tI", "-f", str(folder / "color.jpg"), uri, str(folder / f"{name}.test")],
                               capture_output=True, text=True, check=False, timeout=1800).stdout
        passed, failed = shown.count("[PASS]"), shown.count("[FAIL]")
        print(f"{name}: {passed} passed, {failed} failed, {shown.count('[SKIP]')} do not concern this printer")
        if passed < NEEDED[name]:
            faults.append(f"{name} ended early: {shown[-500:]}")
        for block in re.split(r"\n(?=    \S)", shown):
            if "[FAIL]" not in block:
                continue
            missed = re.findall(r"EXPECTED: (\S+)", block)
            if not missed or any(word not in NOT_OFFERED for word in missed):
                faults.append(f"{name}: {block}")
            else:
                for word in sorted(set(missed)):
                    print(f"  {word}: {NOT_OFFERED[word]}")
    return faults


def main():
    command, short = sys.argv[1], sys.argv[2:] == ["short"]
    if not can_run() or not shutil.which("ipptool") or not TESTS.is_dir():
        print("skipped: a private print system needs cupsd, lpadmin, ipptool and the superuser")
        return 77
    with tempfile.TemporaryDirectory(prefix="rastrel-desktop-", ignore_cleanup_errors=True) as name:
        place = pathlib.Path(name)
        place.chmod(0o755)
        port, web = free_port(), free_port()
        shop = Shop(command, place, DEVICES, f"[printer]\nport = {port}\n[web]\nport = {web}\n")
        desk = Desk(shop, f"ipp://localhost:{port}/ipp/print/Sign", web, place)
        documents = make_documents(place / "documents")
        processes = []
        shop.start()
        try:
            wait_for(lambda: answers(port), "the printer on the network")
            ways = [desk.add, desk.drop, desk.send, desk.http]
            with contextlib.ExitStack() as stack:
                if not short:
                    start_queue(desk, place, processes)
                    ways.append(desk.lp)
                if not short and browsers.program():
                    desk.sign_in(stack.enter_context(browsers.Browser()))
                    ways.append(desk.browser)
                faults = check_documents(shop, desk, documents, ways)
            folder = make_test_documents(place, documents)
            faults += check_protocol(desk.uri, folder, ["ipp-1.1"] if short else
                                     ["ipp-1.1", "ipp-2.0", "ipp-everywhere"])
            bad = [job for job in shop.rest(1800).values() if job["state"] not in ("done", "canceled")]
            faults += [f"job {job['id']}, {job['title']}: {job['state']}, {job.get('message')}" for job in bad]
            shop.stop()
        finally:
            shop.kill()
            for process in processes:
                process.terminate()
                process.wait()
        if faults:
            print("\n".join(faults), (place / "serve.log").read_text(errors="replace")[-2000:], sep="\n")
            if os.environ.get("KEEP"):
                shutil.copytree(place, os.environ["KEEP"], ignore=shutil.ignore_patterns("root"))
            return 1
    print("desktop: all is as it should be")
    return 0


def start_queue(desk, place, processes):
    port = free_port()
    processes.append(start_print_system(place / "cups", port))
    wait_for(lambda: answers(port), "the print system")
    desk.environment["CUPS_SERVER"] = f"127.0.0.1:{port}"
    subprocess.run(["lpadmin", "-p", "sign", "-E", "-v", desk.uri, "-m", "everywhere"], env=desk.environment,
                   check=True)
    # The print system asks the printer what it can by itself, and takes no job before it knows.
    wait_for((place / "cups/etc/ppd/sign.ppd").exists, "the print system's description of the printer")


if __name__ == "__main__":
    sys.exit(main())
