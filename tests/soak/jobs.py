"""The jobs: each number is one job of a kind, the same in each run of a seed."""

import collections
import random
import signal

import inputs

# `options` of the command line; `good`: statuses that the job may end with by itself; `seconds`: about
# how long it takes, in which a signal may come; `makes`: whether it puts files into its directory, of
# which an aborted one leaves those only that it names as finished.
Plan = collections.namedtuple("Plan", "options good seconds makes")

# `ending`: None, or the signal that it gets after `delay` seconds.
Job = collections.namedtuple("Job", "number kind plan root ending delay")

DONE, FAILED, WRONG_USE, BAD_INPUT, CANCELLED, NOTHING_FOUND = 0, 1, 2, 3, 4, 6
SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGKILL)
SHARE_SIGNALLED = 0.2
SOURCES = ("one.ps", "good.ps", "many.ps", "sign.eps", "dos.eps", "sign.pdf", "shopfront.ps")
MEASURED = ("one.ps", "good.ps", "sign.eps", "shopfront.ps")
CUT = ["--cut-color", "spot:CutContour"]
QUICK = ["--mode", "Screen/preview"]


def may(chance, *options):
    """The options, or none of them."""
    return list(options) if chance.random() < 0.5 else []


def print_file(chance, place):
    printer = chance.choice(("KVI Tiff Screen Preview", "PNG files", "PDF files"))
    where = ["--output", "out"] if chance.random() < 0.8 else []
    return Plan(["print", place + chance.choice(SOURCES), "--printer", printer, *QUICK, *where,
                 *may(chance, "--json"), *may(chance, "--copies", "2"),
                 *may(chance, "--levels", "0,1.2,255"), *may(chance, "--cut-color", "rgb:255,0,0")],
                {DONE}, 0.8, bool(where))


def print_several(chance, place):
    files = [place + chance.choice(SOURCES) for _ in range(3)]
    return Plan(["print", *files, *QUICK, "--output", "out"], {DONE}, 2, True)


def print_endless(chance, place):
    return Plan(["print", place + "endless.ps", "--output", "out"], set(), 1.5, True)


def print_and_keep(chance, place):
    name = f"kept-{chance.randrange(inputs.SPOOLED)}.ps"
    return Plan(["print", place + name, "--spool", *QUICK, "--output", "out"], {DONE}, 0.8, True)


def reprint(chance, place):
    name = f"kept-{chance.randrange(inputs.SPOOLED)}"
    # Another job may be removing these pages: then there is no page 2 any more.
    pages = may(chance, "--pages", "2")
    good = {DONE, FAILED, BAD_INPUT} | ({WRONG_USE} if pages else set())
    return Plan(["reprint", name, "--output", "out", *pages, *may(chance, "--json")], good, 0.4, True)


def spool(chance, place):
    verb = chance.choice(("list", "show", "size", "remove"))
    name = [f"kept-{chance.randrange(inputs.SPOOLED)}"] if verb != "list" else []
    return Plan(["spool", verb, *name, *may(chance, "--json")], {DONE, BAD_INPUT}, 0.05, False)


def preview(chance, place):
    return Plan(["preview", place + chance.choice(SOURCES), "--dpi", str(chance.choice((36, 72, 100))),
                 "-o", "out/picture.png", *may(chance, *CUT), *may(chance, "--json")],
                {DONE}, 0.6, True)


def queue(chance, place):
    return Plan(["queue", place + chance.choice(MEASURED), "--dpi", "50", "--output", "out",
                 *may(chance, *CUT), *may(chance, "--json")], {DONE}, 0.6, True)


def page_size(chance, place):
    return Plan(["pagesize", place + chance.choice(MEASURED), *may(chance, "--dsc"),
                 *may(chance, "--json")], {DONE}, 0.4, False)


def inspect(chance, place):
    return Plan(["inspect", place + chance.choice(SOURCES[:5]), *may(chance, "--painted"),
                 *may(chance, "--json")], {DONE}, 0.3, False)


def header(chance, place):
    return Plan(["header", place + chance.choice(MEASURED), "--dpi", "300", *may(chance, *CUT),
                 *may(chance, "-o", "out/headed.ps")], {DONE}, 0.05, False)


def prefix(chance, place):
    return Plan(["prefix", place + chance.choice(SOURCES), *may(chance, "--scale", "A4"),
                 *may(chance, "-o", "out/prefix.ps")], {DONE}, 0.05, False)


def sheet(chance, place):
    return Plan(["sheet", place + chance.choice(("prices.fods", "workbook")),
                 *chance.choice(([], ["--as-shown"], ["--list"], ["-o", "out/text.txt"]))],
                {DONE}, 0.1, False)


def read(chance, place):
    words = chance.choice((["notes", "notes.xml"], ["cars", "cars.xml"],
                           ["chart caps", "capitals.xml"], ["chart symbol", "symbols.xml"]))
    question = ["--size", "7"] if "symbol" in words[0] else []
    return Plan([*words[0].split(), place + words[1], *question, *may(chance, "--json")],
                {DONE, NOTHING_FOUND} if question else {DONE}, 0.05, False)


def import_plates(chance, place):
    return Plan(["import", place + "plates.xml", "--output",
                 "out/plates." + chance.choice(("pdf", "svg", "png", "rdoc")),
                 *may(chance, "--json"), *may(chance, "--outlines")], {DONE}, 0.4, True)


def view(chance, place):
    return Plan(["view", place + "plates.xml", "-o", "out/view.png"], {DONE}, 0.4, True)


def look_around(chance, place):
    return Plan([chance.choice(("doctor", "printers", "modes")), *may(chance, "--json")], {DONE}, 0.2,
                False)


def bad_input(chance, place):
    verb, name = chance.choice((
        ("print --output out", "ps"), ("preview -o out/picture.png", "ps"), ("pagesize", "ps"),
        ("queue --output out", "ps"), ("inspect", "ps"), ("header", "ps"), ("prefix", "ps"),
        ("notes", "xml"), ("cars", "xml"), ("sheet", "xml"), ("import -o out/plates.pdf", "xml"),
        ("view -o out/view.png", "xml"), ("chart caps", "xml"), ("print --bogus", "ps")))
    bad = inputs.BAD_POSTSCRIPT if name == "ps" else inputs.BAD_XML
    # Some verbs never read the bad part of a file, so they may succeed; none may crash or hang.
    file = place + chance.choice([*sorted(bad), "missing." + name, "plates"])
    return Plan([*verb.split(), file], {DONE, FAILED, WRONG_USE, BAD_INPUT, NOTHING_FOUND}, 0.5, False)


# How often each kind comes, in parts.
KINDS = {
    "print": (print_file, 20), "print several": (print_several, 3),
    "print endless": (print_endless, 3), "print --spool": (print_and_keep, 8),
    "reprint": (reprint, 7), "spool": (spool, 8), "preview": (preview, 7), "queue": (queue, 7),
    "pagesize": (page_size, 6), "inspect": (inspect, 5), "header": (header, 3),
    "prefix": (prefix, 3), "sheet": (sheet, 4), "notes, cars, chart": (read, 4),
    "import": (import_plates, 4), "view": (view, 2), "doctor, printers, modes": (look_around, 2),
    "bad input": (bad_input, 10),
}


def job(seed, number, place, roots):
    """The job of that number. `place`: the folder of the inputs, with a slash; `roots`: how many data
    roots there are. The first numbers are one of each kind, so that a short run has them all."""
    chance = random.Random(f"{seed}:{number}")
    names = list(KINDS)
    kind = names[number] if number < len(names) else chance.choices(
        names, [parts for _, parts in KINDS.values()])[0]
    plan = KINDS[kind][0](chance, place)
    ending = None
    if not plan.good or chance.random() < SHARE_SIGNALLED:
        ending = chance.choice(SIGNALS)
    return Job(number, kind, plan, chance.randrange(roots), ending,
               chance.uniform(0, 1.2 * plan.seconds))


def allowed(of):
    """The statuses that are no fault, negative for a signal as subprocess has them."""
    if of.ending is None:
        return of.plan.good
    if of.ending == signal.SIGKILL:
        return of.plan.good | {-signal.SIGKILL}
    # A job that the signal meets before it listens, or one too short to listen, ends by the signal.
    return of.plan.good | {CANCELLED, -of.ending}


def outcome(of, status):
    """The column of the summary that an ended job belongs to."""
    if status == -signal.SIGKILL:
        return "killed"
    if status == CANCELLED or of.ending is not None and status == -of.ending:
        return "aborted"
    return "done" if status == DONE else "failed"
