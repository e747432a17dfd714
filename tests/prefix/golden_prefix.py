"""Writes complete prefix files as docs/formats/prefix.md tells them, for the tests to compare with.

    golden_prefix.py DIRECTORY

For each case there are two files in the directory: NAME.settings, one "Key=value" a line, from
which the test fills a ticket, and NAME.psp, the bytes that this ticket's prefix must have. Nothing
here comes from the library: sections, tables and numbers are worked out anew.
"""

import math
import os
import sys

DEFAULT_LEVELS = (0.0, 1.0, 255.0)

DEFAULTS = {
    "Generator": "ordinary",
    "File": "job12.ps",
    "PrinterName": "KVI Tiff Screen Preview",
    "PrintModeFolder": "TIFF",
    "PrintModeName": "tiff default.ps",
    "ScaleMode": 0,
    "ScaleTarget": "",
    "ScaleWidthCm": 0.0,
    "ScaleHeightCm": 0.0,
    "LevelsEnabled": False,
    "LevelsLinked": True,
    "Levels": [DEFAULT_LEVELS] * 5,
    "CutterEnabled": False,
    "CutterColorModel": 0,
    "CutterColor": (0, 0, 0, 0),
    "CutterSeparation": "",
    "Planar": False,
    "DPI": 72,
    "Scale": True,
    "CutOnly": False,
}


def title(job):
    name = job["File"]
    return "\n%%Title: " + name[: name.rindex(".")] + "\n\n"


def printer(job):
    if job["PrinterName"] == "":
        return ""
    return (
        "\n% -- Printer Selection Override --\n"
        "%\n"
        "(" + job["PrinterName"] + ":) SelectPrinter\n\n"
        "% Disable Select Printer\n"
        "/SelectPrinter load /$SelectPrinter$ exch def\n"
        "/SelectPrinter {pop} def\n"
        "% -- End of Printer selection override --\n\n"
    )


def print_mode(job):
    if job["PrinterName"] == "" or job["PrintModeName"] == "":
        return ""
    path = "%Lumiscript%pmodes/" + job["PrintModeFolder"] + "/" + job["PrintModeName"]
    return (
        "\n% -- Print Mode Selection Override --\n"
        "%\n"
        "% Select the print mode\n"
        "(" + path + ") SelectPrintMode\n\n"
        "% Disable Select Print mode\n"
        "/SelectPrintMode load /$SelectPrintMode$ exch def\n"
        "/SelectPrintMode {pop} def\n"
        "% -- End of Print Mode Selection Override --\n\n"
    )


def custom_size(job):
    width = f"{job['ScaleWidthCm'] / 2.54:.3f}"
    height = f"{job['ScaleHeightCm'] / 2.54:.3f}"
    return f"""
% Custom Scaling Prefix
% User Selections >> Width: {width}  Height: {height} inches

userdict begin
/ConcinnaScaleCustom
{{
  0 /ConcinnaScaleCustom CncLog
  statusdict begin
    printer_desc begin
      /BBoxInches [ 0.0 {height} {width} 0.0 ] def
      /landscape 0 def
      /ConcinnaPaper (ScaleCustom) def
    end
  end
  /CustomConcinnaScaleCustom where {{ pop CustomConcinnaScaleCustom }} if
  InitRIP
}} def
end

/ConcinnaScaleCustom SetScaleTarget
true SetAspectPolicy
"""


def scaling(job):
    mode = job["ScaleMode"]
    body = ""
    if mode == 0:
        body = "  null SetScaleTarget\n"
    elif mode == 1:
        body = "  /Concinna" + job["ScaleTarget"] + " SetScaleTarget\n  true SetAspectPolicy\n"
    elif mode == 2:
        body = custom_size(job)
    return "\n% -- Scaling Override --\nuserdict /SetScaleTarget known {\n" + body + "} if\n\n"


def reciprocal(number):
    """As a floating-point unit divides."""
    return math.copysign(math.inf, number) if number == 0.0 else 1.0 / number


def power(base, exponent):
    """As C has it, where Python raises."""
    try:
        return math.pow(base, exponent)
    except OverflowError:
        odd = math.fmod(exponent, 2.0) in (1.0, -1.0)
        return -math.inf if base < 0.0 and odd else math.inf
    except ValueError:
        return math.inf if base == 0.0 else math.nan


def entry(levels, index):
    low, gamma, high = levels
    span = high - low
    exponent = reciprocal(gamma)
    t = (index * 0.00390625) / 255.0
    u = (span * t + low) / 255.0
    s = power(u, exponent) * 255.0
    if math.isnan(s):
        return 0  # a root of a negative number
    if s < 0.0:
        s = 0.0
    if s > 255.0:
        s = 255.0
    return int(s * 256.0)


def table(levels):
    lines = []
    for begin in range(0, 256, 32):
        lines.append("".join("%2.2x" % entry(levels, i) for i in range(begin, begin + 32)) + "\n")
    return "".join(lines)


def procedures(kind, indent, hexachrome):
    pairs = [("red", "red"), ("green", "green"), ("blue", "blue"), ("gray", "gray")]
    if hexachrome:
        pairs += [("hex1", "red"), ("hex2", "green")]
    return "".join(
        f"{indent}{{255 mul round cvi {own}{kind}transfertable exch get 255 div "
        f"255 mul round cvi {extra}extratransfertable exch get 255 div}}\n"
        for own, extra in pairs
    )


def channel_block(hexachrome):
    return (
        "      printer_desc begin\n"
        "        NColor begin\n"
        "          /TProcs [\n"
        + procedures("", " " * 12, hexachrome)
        + "          ] def\n"
        "        end\n"
        "      end\n"
        "\n"
        "      statusdict /imagecolortransfer known {\n"
        "        /imagecolortransfer [\n"
        + procedures("image", " " * 10, hexachrome)
        + "        ] def\n"
        "      }if\n"
    )


def levels_prefix(job):
    if not job["LevelsEnabled"]:
        return ""
    text = (
        "\n%\n% -- Levels Prefix --\n%\n%\n"
        "% PostScript to output a levels control adjustment.\n"
        "% This will basically output a transfer table that will get appended to the existing"
        " transfer table in use in the RIP.\n"
        "\nuserdict begin\n"
    )
    for channel, color in enumerate(("red", "green", "blue", "gray"), 1):
        chosen = job["Levels"][0 if job["LevelsLinked"] else channel]
        text += f"/{color}extratransfertable <\n" + table(chosen) + "> def\n"
    return (
        text + "end\n\nstatusdict begin\n\n  /_printerinit {\n"
        "    printer_desc begin planes 0 get end\n"
        "    /Hexachrome eq {\n"
        + channel_block(True)
        + "    } {\n"
        + channel_block(False)
        + "    }ifelse\n\n"
        "    systemdict /_printerinit get exec\n"
        "\t } def\n\nend\n% -- End of Levels Prefix --\n\n"
    )


def parts(job, count, scale, decimals):
    return " ".join(f"{part / scale:.{decimals}f}" for part in job["CutterColor"][:count])


def cutter(job):
    if not job["CutterEnabled"]:
        line = "false $setcutter\n\n"
    elif job["CutterColorModel"] == 1:
        line = "false " + parts(job, 4, 255.0, 4) + " /DeviceCMYK $setcutter\n\n"
    else:
        line = "false " + parts(job, 3, 255.0, 3) + " /DeviceRGB $setcutter\n\n"
    return (
        "\n% -- Cutter --\n%\n" + line + "% Disable $setcutter\n"
        "/$setcutter load /$setcutter$ exch def\n"
        "/$setcutter {pop} def\n"
        "% -- End of $setcutter Override --\n\n"
    )


def cut_data(job):
    line = "mark false $setcutter\n\n"
    if job["CutterEnabled"]:
        model = job["CutterColorModel"]
        matrix = "[1 0 0 1 0 0]"
        if model == 0:
            line = "mark " + parts(job, 3, 255.0, 3) + f" {matrix} /DeviceRGB $setcutter\n\n"
        elif model == 1:
            line = "mark " + parts(job, 4, 1000.0, 4) + f" {matrix} /DeviceCMYK $setcutter\n\n"
        elif model == 2 and job["CutterSeparation"] != "":
            line = f"mark {matrix} ({job['CutterSeparation']}) /Separation $setcutter\n\n"
    return (
        "\nstatusdict /SeparateCutData true put\n"
        "\n% -- Cutter --\n%\n" + line + "% Disable $setcutter\n"
        "userdict/$setcutter {cleartomark}put\n"
        "% -- End of $setcutter Override --\n\n"
    )


EXIT_SERVER = "\nserverdict begin 0 exitserver\n\n"


def ordinary(job):
    return (
        EXIT_SERVER
        + title(job)
        + printer(job)
        + print_mode(job)
        + scaling(job)
        + levels_prefix(job)
        + cutter(job)
        + "\x04"
    )


def preview(job):
    text = EXIT_SERVER + title(job) + printer(job)
    if not job["Planar"]:
        text += (
            "% Disable Select Print mode\n"
            "/SelectPrintMode load /$SelectPrintMode$ exch def\n"
            "/SelectPrintMode {pop} def\n"
            "% -- End of Print Mode Selection Override --\n"
        )
    if job["Scale"]:
        text += scaling(job)
    text += levels_prefix(job) + cut_data(job)
    if not job["Planar"]:
        text += (
            "\n% PS header for TIF preview.\n"
            "8 SetBPS    % 8 bits per pixel.\n"
            "3Color      % 3Color = RGB\n"
            f"{job['DPI']} dup SetXYResolution \n"
        )
    if job["CutOnly"]:
        text += "(Frameless) DeviceSelect \n"
    return text + "InitRIP \n\n\x04"


def both(name, **changes):
    """The case for each of the generators."""
    return [
        ("ordinary_" + name, dict(changes, Generator="ordinary")),
        ("preview_" + name, dict(changes, Generator="preview")),
    ]


def scale_cases():
    return (
        both("no_scaling", ScaleMode=0)
        + both("named_target", ScaleMode=1, ScaleTarget="Letter")
        + both("empty_target_leaves_the_bare_word", ScaleMode=1)
        + both("custom_size", ScaleMode=2, ScaleWidthCm=25.4, ScaleHeightCm=12.7)
        + both("sizes_are_rounded", ScaleMode=2, ScaleWidthCm=21.0, ScaleHeightCm=29.7)
        + both("sizes_are_not_checked", ScaleMode=2, ScaleWidthCm=-1e9, ScaleHeightCm=1e300)
        + both("unknown_scale_mode_leaves_the_frame_empty", ScaleMode=3)
        + both("negative_scale_mode_leaves_the_frame_empty", ScaleMode=-1)
    )


def levels_cases():
    unlinked = [
        (1.0, 9.0, 2.0),
        (0.0, 1.0, 128.0),
        (10.0, 1.0, 255.0),
        (0.0, 2.0, 255.0),
        (3.25, 0.45, 250.5),
    ]
    linked = [(10.0, 1.0, 255.0)] + unlinked[1:]
    rows = {
        "the_defaults_are_the_identity": DEFAULT_LEVELS,
        "half_the_high_end": (0.0, 1.0, 128.0),
        "a_raised_low_end": (10.0, 1.0, 255.0),
        "gamma_two": (0.0, 2.0, 255.0),
        "gamma_zero_lets_the_arithmetic_decide": (0.0, 0.0, 255.0),
        "gamma_zero_with_a_range_above_one": (255.0, 0.0, 70000.0),
        "gamma_minus_zero": (0.0, -0.0, 255.0),
        "negative_gamma": (0.0, -1.0, 255.0),
        "a_root_of_negative_numbers_is_none": (-20.0, 2.0, 255.0),
        "a_reversed_range": (255.0, 1.0, 0.0),
        "a_range_beyond_the_scale_reaches_65280": (0.0, 1.0, 255.0 * 512.0),
    }
    cases = []
    for name, row in rows.items():
        cases += both(name, LevelsEnabled=True, Levels=[row] + unlinked[1:])
    cases += both("levels_are_off", LevelsEnabled=False, Levels=unlinked)
    cases += both("linked_levels_use_the_master_alone", LevelsEnabled=True, Levels=linked)
    cases += both(
        "unlinked_levels_leave_the_master_alone",
        LevelsEnabled=True,
        LevelsLinked=False,
        Levels=unlinked,
    )
    return cases


def cutter_cases():
    cases = []
    for model in (0, 1, 2, 3, -1):
        name = f"cutter_model_{model}".replace("-", "minus_")
        cases += both(
            name,
            CutterEnabled=True,
            CutterColorModel=model,
            CutterColor=(255, 128, 0, 64),
            CutterSeparation="CutContour",
        )
        cases += both(
            name + "_with_the_cutter_off",
            CutterColorModel=model,
            CutterColor=(255, 128, 0, 64),
            CutterSeparation="CutContour",
        )
    cases += both("red_is_cut", CutterEnabled=True, CutterColor=(255, 0, 0, 0))
    cases += both(
        "magenta_is_cut", CutterEnabled=True, CutterColorModel=1, CutterColor=(0, 128, 0, 0)
    )
    cases += both(
        "half_of_a_thousand", CutterEnabled=True, CutterColorModel=1, CutterColor=(500, 1000, 1, 0)
    )
    cases += both(
        "components_are_not_checked", CutterEnabled=True, CutterColor=(-1, 2147483647, 300, 0)
    )
    cases += both("separation_without_a_name", CutterEnabled=True, CutterColorModel=2)
    cases += both(
        "separation_name_stands_as_it_is",
        CutterEnabled=True,
        CutterColorModel=2,
        CutterSeparation="Konturschnitt (\\M\u00e4rz) 50%s",
    )
    return cases


def name_cases():
    return (
        both("empty_printer_name", PrinterName="")
        + both("empty_mode_name", PrintModeName="")
        + both("empty_folder", PrintModeFolder="")
        + both("no_names_at_all", PrinterName="", PrintModeFolder="", PrintModeName="")
        + both(
            "names_stand_as_they_are",
            PrinterName="a(b\\c)%s%% \u00e9",
            PrintModeFolder="%d(",
            PrintModeName="\u20ac) \U0001f5a8\\.ps",
            ScaleMode=1,
            ScaleTarget="(\\\u00d6%u)",
        )
        + both("title_stands_as_it_is", File="Stra\u00dfe (50% \u20ac).a.b.ps")
    )


def preview_cases():
    cases = []
    for bits in range(8):
        words = []
        changes = {"Generator": "preview", "ScaleMode": 1, "ScaleTarget": "A4"}
        for bit, (word, key, value) in enumerate(
            (("planar", "Planar", True), ("unscaled", "Scale", False), ("cut_only", "CutOnly", True))
        ):
            if bits >> bit & 1:
                words.append(word)
                changes[key] = value
        cases.append(("preview_" + ("_".join(words) or "plain"), changes))
    for dpi in (0, -72, 300, 2147483647):
        name = f"preview_at_{dpi}_dpi".replace("-", "minus_")
        cases.append((name, {"Generator": "preview", "DPI": dpi}))
    everything = {
        "ScaleMode": 2,
        "ScaleWidthCm": 100.0,
        "ScaleHeightCm": 33.3,
        "LevelsEnabled": True,
        "LevelsLinked": False,
        "Levels": [DEFAULT_LEVELS, *((float(low), 1.5, 240.0) for low in range(4))],
        "CutterEnabled": True,
        "CutterColorModel": 1,
        "CutterColor": (0, 255, 255, 0),
        "CutOnly": True,
    }
    return cases + both("everything_at_once", **everything)


def settings_text(job):
    lines = []
    for key, value in job.items():
        if key == "Levels":
            value = " ".join(repr(number) for levels in value for number in levels)
        elif key == "CutterColor":
            value = " ".join(str(part) for part in value)
        elif isinstance(value, bool):
            value = int(value)
        lines.append(f"{key}={value}\n")
    return "".join(lines)


def write(path, text):
    with open(path, "wb") as file:
        file.write(text.encode("utf-8"))


def main():
    directory = sys.argv[1]
    os.makedirs(directory, exist_ok=True)
    for old in os.listdir(directory):
        if old.endswith((".settings", ".psp")):
            os.remove(os.path.join(directory, old))
    cases = scale_cases() + levels_cases() + cutter_cases() + name_cases() + preview_cases()
    assert len({name for name, _ in cases}) == len(cases), "two cases of one name"
    for name, changes in cases:
        job = dict(DEFAULTS, **changes)
        text = ordinary(job) if job["Generator"] == "ordinary" else preview(job)
        write(os.path.join(directory, name + ".settings"), settings_text(job))
        write(os.path.join(directory, name + ".psp"), text)


if __name__ == "__main__":
    main()
