"""The commands whose runs are disturbed, and the directory that each run starts in.

A slot is a directory of its own for one run at a time:

    home/   the data root, with settings, devices and a spooled job of an earlier day
    user/   the user's files, and the present directory
    out/    where results go; files of the user lie there already
    tmp/    TMPDIR and HOME
"""

import base64
import dataclasses
import os
import pathlib
import shutil
import subprocess

PARTS = ("home", "user", "out", "tmp")
RUN_LIMIT = 30  # seconds; an undisturbed run takes less than one

SIGN = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 36 24
%%Title: sign
%%Pages: 1
%%EndComments
%%Page: 1 1
<</PageSize [36 24]>> setpagedevice
1 0 0 setrgbcolor 4 4 20 12 rectfill
showpage
%%EOF
"""

PLATE = """<ABB>
<ENGRAVINGTEMPLATE><PLATES><COUNT>1</COUNT></PLATES>
<PLATE><COLOR>Gold</COLOR><WIDTH>6</WIDTH><HEIGHT>4</HEIGHT>
<TEXTCOLOR>Black</TEXTCOLOR><TEXT data='Pump 7'><FONT name='DejaVuSans.ttf' size='0.2'/></TEXT>
</PLATE>
</ENGRAVINGTEMPLATE>
</ABB>
"""

# A document with a placed SVG file, a red disc.
PLACED = """{"format": "rastrel-document", "version": 1, "unit": "cm", "displayPage": 1, "palette": [],
"blank": {"width": 6, "height": 4, "origin": 7},
"plates": {"margins": {"left": 0, "top": 0, "right": 0, "bottom": 0}, "horizontalGap": 0, "verticalGap": 0},
"sheetLayers": [{"number": 1, "name": "Layer 1", "type": 0, "substrate": true}],
"objects": [{"id": 3, "kind": "graphic", "layer": {"rgb": [0, 0, 0]}, "lineColor": {"rgb": [0, 0, 0]},
"lineWidth": 0, "lineStyle": 16, "sheetLayer": 1, "pages": [1, 1], "traits": ["visible"],
"fileKind": "svg", "name": "disc.svg", "width": 2, "height": 2, "file": "FILE"}]}
""".replace("FILE", base64.b64encode(
    b'<svg xmlns="http://www.w3.org/2000/svg" width="40" height="40">'
    b'<circle cx="20" cy="20" r="18" fill="red"/></svg>').decode())

SETTINGS = "; mine\n[RASTREL]\nKeep PS Files = 0\n"


@dataclasses.dataclass(frozen=True)
class Scene:
    """A command line, and the files of its slot, by paths relative to the slot.

    {out} is the full path of the slot's out/. A relative one would be safe only as long as every
    fault of finding the present directory is mended: the results would go where it is taken to be.
    """

    name: str
    arguments: tuple
    installed: bool = True  # False: the data root is not laid out yet
    earlier: tuple = ()     # (path, content) of files that lie there besides the usual ones

    def __str__(self):
        return self.name


# A print mode of few pixels: each scene runs once for every call that may fail.
QUICK = ("--mode", "Screen/preview")

SCENES = (
    # With settings, so that a print which lost them shows in its result.
    Scene("print", ("print", "sign.ps", *QUICK, "--scale", "3x2cm", "--levels", "20,1.5,200",
                    "--output", "{out}"),
          earlier=(("out/sign-1.tif", b"an earlier sign"),)),
    Scene("print-spool", ("print", "sign.ps", *QUICK, "--spool", "--output", "{out}")),
    Scene("reprint", ("reprint", "kept", "--output", "{out}")),
    Scene("preview", ("preview", "sign.ps", "--dpi", "72", "-o", "{out}/look.png"),
          earlier=(("out/look.png", b"an earlier look"),)),
    Scene("prefix", ("prefix", "sign.ps", "-o", "{out}/sign.psp"),
          earlier=(("out/sign.psp", b"an earlier prefix"),)),
    # By force, since the second run of a case finds the results of the first.
    Scene("queue", ("queue", "sign.ps", "--output", "{out}", "--force"),
          earlier=(("out/sign.cfm/mine", b"of an earlier conversion"),)),
    Scene("import", ("import", "plate.xml", "-o", "{out}/plate.pdf"),
          earlier=(("out/plate.pdf", b"an earlier drawing"),)),
    Scene("import-placed", ("import", "placed.rdoc", "-o", "{out}/placed.png"),
          earlier=(("out/placed.png", b"an earlier picture"),)),
    Scene("sheet", ("sheet", "prices.fods", "-o", "{out}/prices.txt"),
          earlier=(("out/prices.txt", b"earlier prices"),)),
    Scene("first-use", ("modes",), installed=False),
)


class Product:
    """The programs of a build tree."""

    def __init__(self, tree, source):
        self.tree = pathlib.Path(tree).resolve()
        self.source = pathlib.Path(source).resolve()
        self.command = self.tree / "bin" / "rastrel"
        self.injector = self.tree / "tests" / "fault_injector"

    def command_line(self, scene, slot):
        return [str(self.command),
                *(word.format(out=slot / "out") for word in scene.arguments)]


def environment(slot):
    """A run's whole environment: nothing of the person's own takes part."""
    kept = {name: os.environ[name] for name in ("PATH", "LD_LIBRARY_PATH") if name in os.environ}
    return {**kept, "LANG": "C.UTF-8", "RASTREL_HOME": str(slot / "home"),
            "TMPDIR": str(slot / "tmp"), "HOME": str(slot / "tmp"),
            "XDG_CACHE_HOME": str(slot / "tmp" / "cache"),
            "RASTREL_WARM": "0"}  # an interpreter that is kept ready outlives its run


def run(command, slot, limit=RUN_LIMIT):
    """Runs a command in a slot to its end. (status or None, standard output, standard error). It has
    a session of its own, so that a signal to its process group reaches nobody else."""
    with subprocess.Popen(command, cwd=slot / "user", env=environment(slot), text=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          errors="replace", start_new_session=True) as process:
        try:
            output, error = process.communicate(timeout=limit)
            return process.returncode, output, error
        except subprocess.TimeoutExpired:
            process.kill()
            return None, "", "(no end)"


def make_template(scene, product, place):
    """Fills `place` with the files that a run of the scene starts from."""
    for part in PARTS:
        (place / part).mkdir(parents=True)
    for name, content in (("sign.ps", SIGN), ("plate.xml", PLATE), ("placed.rdoc", PLACED),
                          ("notes of the user.txt", "not yours\n")):
        (place / "user" / name).write_text(content, encoding="utf-8")
    shutil.copy(product.source / "examples" / "price-list.fods", place / "user" / "prices.fods")
    (place / "out" / "keep me").write_text("not yours either\n", encoding="utf-8")
    for path, content in scene.earlier:
        (place / path).parent.mkdir(parents=True, exist_ok=True)
        (place / path).write_bytes(content)
    if scene.installed:
        shutil.rmtree(place / "home")
        shutil.copytree(_installed_home(product, place.with_name("installed")), place / "home")


def _installed_home(product, place):
    """A data root that was laid out and holds a spooled job; made once for all scenes."""
    home = place / "home"
    if home.exists():
        return home
    for part in PARTS:
        (place / part).mkdir(parents=True)
    (place / "user" / "kept.ps").write_text(SIGN, encoding="utf-8")
    status, _, error = run([str(product.command), "print", "kept.ps", *QUICK,
                            "--spool", "--output", str(place / "out")], place)
    if status != 0:
        raise RuntimeError(f"the first print failed, so nothing can be tested:\n{error}")
    (home / "settings.ini").write_text(SETTINGS, encoding="utf-8")
    rip = home / "Queue" / "rip"
    shutil.rmtree(rip / "System" / "c-out")
    (rip / "System" / "c-out").mkdir()
    for log in rip.glob("*.log"):
        log.unlink()
    return home


def copy_or_link(source, target):
    # The programs of a data root are large, and nothing writes into them: a newer one takes the
    # place of the file. The scene's end looks that this is still so.
    if source.endswith(".exe"):
        os.link(source, target)
    else:
        shutil.copy2(source, target)


def fill_slot(slot, template):
    """Makes the slot a copy of the template."""
    if slot.exists():
        shutil.rmtree(slot)
    shutil.copytree(template, slot, symlinks=True, copy_function=copy_or_link)
