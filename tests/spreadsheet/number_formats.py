#!/usr/bin/env python3
"""Makes number_formats.tsv, the table of formats, values and texts that the tests hold the cells to.

usage: number_formats.py          prints the table
       number_formats.py --check  ends with 1 if the stored table is another one

The texts come from a small implementation of its own, written from ECMA-376 Part 1, 18.8.30 and 18.8.31,
with decimal numbers, fractions found by trying every denominator, and the dates of the standard library.
Where the standard is silent the rule is one of docs/formats/sheet-text.md, and is named here:

- a number has 15 significant digits, and halves go away from zero;
- numbers that meet no condition, and for which no section is left, are shown as they are;
- "General" has an exponent from 1E+16 on, below 1E-9, and below 1E-4 if 16 places don't do; whole
  numbers up to 2^53 have all their digits;
- places and then letters of a date are no format, so that the number is shown as it is;
- day 0 is 30 December 1899 (18.17.4.1), or 1 January 1904.

It knows the formats of the table and no others."""

import datetime
import os
import re
import sys
from decimal import ROUND_HALF_EVEN, ROUND_HALF_UP, Context, Decimal

TABLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "number_formats.tsv")

# A format's tokens. Letters of dates count in either case.
TOKEN = re.compile(
    r'"(?P<quoted>[^"]*)"|\\(?P<escaped>.)|_(?P<width>.)|\*(?P<fill>.)|\[(?P<bracket>[^\]]*)\](?P<after>(?<=s\])\.0+)?'
    r"|(?P<general>General)|(?P<half>AM/PM|A/P)|(?P<exponent>E[+-](?=[0#?]))|(?P<date>(?P<letter>[ymdhseqg])"
    r"(?P=letter)*)(?P<sub>\.0+)?|(?P<place>[0#?])|(?P<comma>,+)|(?P<point>\.)|(?P<percent>%)"
    r"|(?P<text>@)|(?P<other>.)", re.IGNORECASE | re.DOTALL)


def significant(value):
    """The magnitude of a double as a decimal number of 15 digits."""
    return Context(prec=15, rounding=ROUND_HALF_EVEN).create_decimal(abs(Decimal(value)))


def rounded(number, places):
    return number.quantize(Decimal(1).scaleb(-places), rounding=ROUND_HALF_UP,
                           context=Context(prec=400))


def general(value):
    """A number as it is."""
    if value == int(value) and abs(value) <= 2 ** 53:
        return str(abs(int(value)))
    number = significant(value).normalize()
    digits = "".join(map(str, number.as_tuple().digits))
    exponent = number.adjusted()
    places = max(0, -number.as_tuple().exponent)
    if -9 <= exponent <= 15 and (exponent >= -4 or places <= 16):
        return f"{number:f}"
    point = "." if len(digits) > 1 else ""
    return f"{digits[0]}{point}{digits[1:]}E{'-' if exponent < 0 else '+'}{abs(exponent):02}"


class Section:
    """The part of a format between two semicolons, as a list of (kind, text)."""

    def __init__(self, code):
        self.tokens = []
        self.condition = None
        self.language = 0
        for match in TOKEN.finditer(code):
            self.add(match)
        first = next((kind for kind, _ in self.tokens if kind in ("place", "half", "elapsed") or
                      kind in "ymdhseqg"), "")
        if self.is_date() and first == "place":
            self.tokens = [("general", "")]
        if self.is_date() and self.language in (0xF800, 0xF400):
            system = {0xF800: "dddd, mmmm d, yyyy", 0xF400: "h:mm:ss AM/PM"}[self.language]
            self.language = 0
            self.tokens = Section(system).tokens

    def add(self, match):
        kind = match.lastgroup
        kind = {"sub": "date", "letter": "date", "after": "bracket"}.get(kind, kind)
        content = match.group(kind)
        if kind in ("quoted", "escaped", "other"):
            self.tokens.append(("literal", content))
        elif kind == "width":
            self.tokens.append(("literal", " "))
        elif kind == "bracket":
            self.bracket(content)
            if match.group("after"):
                self.tokens.append(("sub", match.group("after")))
        elif kind == "date" and not self.has_letter(content[0].lower()):
            self.tokens.append(("literal", match[0]))
        elif kind == "date":
            self.tokens.append((content[0].lower(), content))
            if match.group("sub"):
                self.tokens.append(("sub", match.group("sub")))
        elif kind != "fill":
            self.tokens.append((kind, content))

    def has_letter(self, letter):
        """Whether a letter is a part of a date here. Next to numbers e and q are units without quotes,
        and only some calendars have eras."""
        if letter == "g":
            return self.language in (0x411, 0x404)
        return letter not in "eq" or not (self.has("place") or self.has("general"))

    def bracket(self, content):
        condition = re.fullmatch(r"(<=|>=|<>|<|>|=)(-?[\d.]+)", content)
        if condition:
            self.condition = (condition[1], Decimal(condition[2]))
        elif content[0] == "$":
            currency, _, language = content[1:].partition("-")
            self.tokens.append(("literal", currency))
            self.language = int(language or "0", 16) & 0xFFFF
        elif set(content.lower()) in ({"h"}, {"m"}, {"s"}):
            self.tokens.append(("elapsed", content.lower()))

    def is_date(self):
        return any(kind in ("half", "elapsed") or kind in "ymdhseqg" for kind, _ in self.tokens)

    def has(self, kind):
        return any(other == kind for other, _ in self.tokens)

    def meets(self, value):
        sign, bound = self.condition
        value = Decimal(value)
        return {"<": value < bound, "<=": value <= bound, ">": value > bound, ">=": value >= bound,
                "=": value == bound, "<>": value != bound}[sign]


def sections_of(code):
    """Numbers' sections, and the text's or None."""
    parts = [""]
    for match in re.finditer(r'"[^"]*"|\\.|_.|\*.|\[[^\]]*\]|;|.', code, re.DOTALL):
        if match[0] == ";":
            parts.append("")
        else:
            parts[-1] += match[0]
    sections = [Section(part) for part in parts]
    text = next((one for index, one in enumerate(sections) if index == 3 or one.has("text")), None)
    return [one for one in sections if one is not text], text


def choose(numbers, value):
    """The section of a number, and whether a minus sign is put in front of it."""
    shown = Section("General")
    if not numbers:
        return shown, value < 0
    first = numbers[0]
    if not first.condition:
        if len(numbers) == 1:
            return first, value < 0
        if value < 0:
            return numbers[1], False
        return (numbers[2], False) if value == 0 and len(numbers) == 3 else (first, False)
    if first.meets(value):
        takes_negatives_only = first.condition in (("<", 0), ("<=", 0))
        return first, value < 0 and not takes_negatives_only
    for section in numbers[1:]:
        if section.condition:
            if section.meets(value):
                return section, False
        elif len(numbers) == 2 or section is numbers[2] or value < 0:
            return section, False
    return shown, value < 0


def unused(place):
    return {"0": "0", "?": " ", "#": ""}[place]


def filled(tokens, digits, grouped=False):
    """Places filled from the right, among other texts; the first one takes the rest."""
    places = [index for index, (kind, _) in enumerate(tokens) if kind == "place"]
    shown = {}
    rest = list(digits)
    count = 0
    for index in reversed(places):
        digit = rest.pop() if rest else unused(tokens[index][1])
        shown[index] = digit + ("," if grouped and count % 3 == 0 and count > 0 and digit.strip()
                                else "")
        count += 1
    while rest and places:
        shown[places[0]] = (rest.pop() + ("," if grouped and count % 3 == 0 else "") +
                            shown[places[0]])
        count += 1
    return "".join(shown.get(index, "") if kind == "place" else content if kind in
                   ("literal", "percent") else "" for index, (kind, content) in enumerate(tokens))


def split(tokens, kind):
    """The tokens before and after the first one of a kind."""
    for index, (other, content) in enumerate(tokens):
        if other == kind or (kind == "bar" and other == "literal" and content == "/"):
            return tokens[:index], tokens[index + 1:]
    return tokens, None


def plain(tokens, number, grouped):
    """A number with its point."""
    before, after = split(tokens, "point")
    places = sum(kind == "place" for kind, _ in after or [])
    number = rounded(number, places)
    whole = str(int(number))
    has_place = any(kind == "place" for kind, _ in before)
    shown = filled(before, "" if whole == "0" else whole, grouped)
    if not has_place and after is not None and whole != "0":
        shown += whole
    if after is None:
        return shown, number == 0
    digits = f"{number:f}".partition(".")[2].rstrip("0")
    fraction = ""
    some = False
    for kind, content in after:
        if kind == "place":
            digit = digits[:1] or unused(content)
            digits = digits[1:]
            some = some or digit != ""
            fraction += digit
        elif kind in ("literal", "percent"):
            fraction += content
    return shown + ("." if some else "") + fraction, number == 0


def with_exponent(section, number):
    """A mantissa whose exponent is a multiple of its places before the point."""
    mantissa, exponent_tokens = split(section.tokens, "exponent")
    step = max(1, sum(kind == "place" for kind, _ in split(mantissa, "point")[0]))
    places = sum(kind == "place" for kind, _ in split(mantissa, "point")[1] or [])
    exponent = 0
    before = sum(kind == "place" for kind, _ in split(mantissa, "point")[0])
    below_one = 1 if before == 0 and split(mantissa, "point")[1] is not None else 0
    for _ in range(2):  # rounding may make one digit more
        if number:
            shift = (number.adjusted() + below_one) // step * step
            exponent += shift
            number = rounded(number.scaleb(-shift), places)
    shown, zero = plain(mantissa, number, False)
    if not re.search(r"\d", shown):
        shown += "0"
    sign = next(content for kind, content in section.tokens if kind == "exponent")
    count = sum(kind == "place" for kind, _ in exponent_tokens)
    shown += sign[0] + ("-" if exponent < 0 else "+" if sign[1] == "+" else "")
    shown += str(abs(exponent)).zfill(count)
    return shown + "".join(content for kind, content in exponent_tokens if kind == "literal"), zero


def as_fraction(section, number):
    """The nearest fraction with a denominator of so many digits, or with the one that is given."""
    before, after = split(section.tokens, "bar")
    begin = max([index + 1 for index, (kind, _) in enumerate(before) if kind != "place"], default=0)
    whole_tokens, numerator_tokens = before[:begin], before[begin:]
    has_whole = any(kind == "place" for kind, _ in whole_tokens)
    fixed = re.match(r"\d*", "".join(content for kind, content in after
                                     if kind in ("literal", "place")))[0]
    fixed = int(fixed) if fixed and fixed[0] != "0" else 0
    places = sum(kind == "place" for kind, _ in after)
    whole = int(number) if has_whole else 0
    rest = number - whole
    denominators = [fixed] if fixed else range(1, 10 ** places)
    best = None
    for denominator in denominators:
        numerator = int(rounded(rest * denominator, 0))
        distance = abs(rest - Decimal(numerator) / denominator)
        if best is None or distance < best[0]:
            best = (distance, numerator, denominator)
    _, numerator, denominator = best
    if has_whole and numerator == denominator:
        whole, numerator = whole + 1, 0
    zero = whole == 0 and numerator == 0
    shown = filled(whole_tokens, "0" if zero else str(whole or ""), section.has("comma"))
    width = len(str(fixed)) if fixed else places
    if has_whole and numerator == 0 and all(place != "0" for _, place in numerator_tokens):
        return shown + " " * (len(numerator_tokens) + 1 + (0 if fixed else width)), zero
    bottom = str(denominator)
    if not fixed:
        bottom = bottom.zfill(width) if after[0][1] == "0" else bottom.ljust(width)
    return shown + filled(numerator_tokens, str(numerator)) + "/" + bottom, zero


def of_number(section, value):
    """Digits of a section, and whether they are all zero."""
    tokens = section.tokens
    if section.has("general"):
        return "".join(general(value) if kind == "general" else content
                       for kind, content in tokens), value == 0
    number = significant(value)
    if section.has("percent"):
        number *= 100
    if split(tokens, "bar")[1] is not None and section.has("place"):
        return as_fraction(section, number)
    if section.has("exponent"):
        return with_exponent(section, number)
    grouped = False
    for index, (kind, content) in enumerate(tokens):
        if kind == "comma":
            if index + 1 < len(tokens) and tokens[index + 1][0] == "place":
                grouped = True
            else:
                number = number.scaleb(-3 * len(content))
    shown, zero = plain([token for token in tokens if token[0] != "comma"], number, grouped)
    return shown, zero or not section.has("place")


MONTHS = ("January February March April May June July August September October November "
          "December").split()
DAYS = "Monday Tuesday Wednesday Thursday Friday Saturday Sunday".split()
ERAS = [((2019, 5, 1), "R", "令", "令和"), ((1989, 1, 8), "H", "平", "平成"),
        ((1926, 12, 25), "S", "昭", "昭和"), ((1912, 7, 30), "T", "大", "大正"),
        ((1868, 1, 25), "M", "明", "明治")]


def era_of(section, day):
    """The names of a day's era, and its year in it."""
    if section.language == 0x404 and day.year >= 1912:
        return ("民國", "民國", "中華民國"), day.year - 1911
    for first, *names in ERAS if section.language == 0x411 else []:
        if day >= datetime.date(*first):
            return names, day.year - first[0] + 1
    return ("", "", ""), None


def is_minute(tokens, index):
    """Whether an m is next to hours or seconds."""
    parts = [(at, kind, content) for at, (kind, content) in enumerate(tokens)
             if kind in "ymdhseqg" or kind == "elapsed"]
    place = [at for at, _, _ in parts].index(index)
    before = parts[place - 1][2][0].lower() if place else ""
    after = parts[place + 1][2][0].lower() if place + 1 < len(parts) else ""
    return before == "h" or after == "s"


def date_part(section, index, day, seconds):
    """One part of a date or time; seconds is a whole number."""
    kind, content = section.tokens[index]
    count = len(content)
    if kind == "y":
        return f"{day.year % 100:02}" if count <= 2 else f"{day.year:04}"
    if kind == "e":
        names, year = era_of(section, day)
        return f"{day.year:04}" if year is None else str(year).zfill(min(count, 2))
    if kind == "g":
        return era_of(section, day)[0][min(count, 3) - 1]
    if kind == "q":
        quarter = (day.month + 2) // 3
        return f"Q{quarter}" if count == 1 else ["1st", "2nd", "3rd", "4th"][quarter - 1] + " quarter"
    if kind == "d":
        return str(day.day).zfill(count) if count <= 2 else DAYS[day.weekday()][:3 if count == 3 else 99]
    if kind == "m" and not (count <= 2 and is_minute(section.tokens, index)):
        name = MONTHS[day.month - 1]
        return str(day.month).zfill(count) if count <= 2 else name[:{3: 3, 5: 1}.get(count, 99)]
    if kind == "elapsed":
        return str(seconds // {"h": 3600, "m": 60, "s": 1}[content[0]]).zfill(count)
    hour = seconds // 3600 % 24
    if kind == "h" and section.has("half"):
        hour = (hour + 11) % 12 + 1
    number = {"h": hour, "m": seconds // 60 % 60, "s": seconds % 60}[kind]
    return str(number).zfill(min(count, 2))


def of_date(section, value, from1904, minus):
    """A date or a time. A time of day stays in its day and is cut, one that has passed is rounded."""
    value = Decimal(value)
    places = max([len(content) - 1 for kind, content in section.tokens if kind == "sub"], default=0)
    elapsed = section.has("elapsed")
    if elapsed:
        day = datetime.date.min
        seconds = rounded(abs(value) * 86400, places)
    else:
        whole = value.to_integral_value(rounding="ROUND_FLOOR")
        base = datetime.date(1904, 1, 1) if from1904 else datetime.date(1899, 12, 30)
        day = base + datetime.timedelta(days=int(whole))
        seconds = rounded((value - whole) * 86400, 5)
    shown = "-" if elapsed and minus else ""
    fraction = rounded(seconds % 1, places)
    for index, (kind, content) in enumerate(section.tokens):
        if kind == "sub":
            shown += f"{fraction:f}"[1:]
        elif kind == "half":
            words = ("A", "P") if content == "A/P" else ("a", "p") if content == "a/p" else ("AM", "PM")
            shown += words[0 if seconds < 43200 else 1]
        elif kind in ("literal", "place", "comma", "point"):
            shown += content
        else:
            shown += date_part(section, index, day, int(seconds))
    return shown


def show(code, value, from1904=False):
    """The text of a cell: value is a float, or a string for a text."""
    numbers, text = sections_of(code)
    if isinstance(value, str):
        if text is None:
            return value
        return "".join(value if kind == "text" else content for kind, content in text.tokens)
    section, minus = choose(numbers, value)
    if section.is_date():
        return of_date(section, value, from1904, minus)
    shown, zero = of_number(section, value)
    return ("-" if minus and not zero else "") + shown


NUMBERS = [0.0, -0.0, 1.0, -1.0, 0.5, -0.5, 0.05, 1.005, 2.675, -2.5, 0.126, -0.001, 999.95, 1234.567,
           -1234.567, 1234567.891, 0.00012, 12345678901234.0, 1e20]
PLACES = ["0", "0.0", "0.00", "#", "#.##", ".00", "?0.0?", "00000", "#,##0", "#,##0.00", "#,##0,", "0.0,,",
          "0,", "0,000", "000-00-0000", "# ##0", "0 \"a\"", "\\a0", "0_)", "*x0", "_-0_-", "(0)", "0!",
          "$#,##0.00", "[$€-407] #,##0.00", "#,##0.00 [$Fr.-807]", "[$USD] 0", "[$-409]0.0", "[Red]0.0",
          "[Color 3]0", "0.000000000000000"]
PERCENTAGES = ["0%", "0.00%", "0%%", "%0", "0.0%_)", "0.0\"%\"", "0\\%", "0.0%;[Red]-0.0%"]
EXPONENTS = ["0E+0", "0.00E+00", "0.0E-00", "0.0e+0", "##0.0E+0", "#.##E+0", "00.0E+0", "0.00E+000",
             "0.0E+0\" m\"", ".0E+0"]
SECTIONS = ["0;-0", "#,##0_);(#,##0)", "0.0;(0.0);\"zero\"", "+0;-0;0", "0;;", ";;;", "\"a\";\"b\";\"c\"",
            "[>100]0", "[<0]0.0", "[<=0]0.0", "[=1]\"one\"", "[<>1]0.0", "[>=1000]0.0,\"K\";0",
            "[>=1000]0.0,\"K\";[<0]\"neg\" 0;0.00", "[<0]\"n\"0;[>10]0.0", "[=1]\"one\";[=2]\"two\"",
            "[<=100]0;\"big\" 0", "[>1]\"m\";[<1]\"l\";\"e\"", "General", "General\" kg\"", "@",
            "General;-General", "[>100]General", "0e", "0\" q\"", "0.0 m", "\"a\"#,##0.00 h"]
FRACTIONS = ["# ?/?", "# ??/??", "?/?", "??/??", "# ?/8", "# ?/16", "# ?/100", "#,##0 ?/?", "0 0/0", "0 00/00",
             "0/00", "# 0/8", "\"x\"# ?/?",
             "# ?/?;-# ?/?"]
FRACTION_VALUES = [0.0, 0.5, -0.5, 1.0, 1.25, -1.75, 0.01, 0.99, 3.14159265, 12.125, 1.005, 1234.567, 0.333333]
GENERALS = [1e14, 1e15, 1e15 + 1, 1234567890123456.0, -1234567890123456.0, 9007199254740992.0, 9.99e15,
            9999999999999998.0, 1e16, 1.5e16, 123456789012345678.0, 1e300, 0.1 + 0.2, 1 / 3, 2 / 3,
            1234567890.123456, 123456789012345.6, 0.0001, 0.000123456789012345, 0.00001, 1.2345678912e-5,
            1.23456789123e-5, 1.234567891234e-5, 1.2345678912e-6, 1.23456789123e-6, 1.2345678e-9,
            1.23456789e-9, 1e-9, 1e-10, 1.5e-10, 5e-324, -1e-9]
DATES = ["yyyy-mm-dd", "d/m/yy", "d mmm yyyy", "dddd, mmmm dd, yyyy", "ddd", "mmmmm", "yyy", "m/d/yyyy h:mm",
         "[$-409]mmmm d, yyyy;@", "yyyy\"年\"m\"月\"", "[$-F800]dddd, mmmm dd, yyyy", "[$-F800]yyyy",
         "e", "[$-409]e-mm", "[$-411]ge.m.d", "[$-411]ggge\"年\"m\"月\"d\"日\"", "[$-404]e/m/d",
         "[$-404]ggge", "q", "qq", "yyyy-q", "yyyy\\-mm\\-dd\\Thh:mm"]
DATE_VALUES = [1.0, 59.0, 60.0, 61.0, 366.0, 4594.0, 4595.0, 30000.0, 36585.0, 43585.0, 43586.0, 44197.25,
               44300.5, 44561.75, 2950000.0]
TIMES = ["h:mm", "hh:mm:ss", "h:mm AM/PM", "h:mm:ss am/pm", "h:mm A/P", "h:mm a/p", "hh", "hhh", "mm:ss",
         "h\"h\"m\"m\"s", "[$-F400]h:mm", "[$-F400]h:mm:ss AM/PM", "h:mm:ss.00"]
TIME_VALUES = [0.0, 0.25, 0.5, 0.75, 0.125, 44197.0625, 0.999]
ELAPSED = ["[h]:mm", "[hh]:mm:ss", "[h]:mm:ss.000", "[mm]:ss", "[ss]", "[ss].00", "[s].0", "[hhh]:mm", "[mm]:ss.0", "[h]:mm;-[h]:mm",
           "[h]:mm;([h]:mm)"]
ELAPSED_VALUES = [0.0, 0.5, -0.5, 1.5, 1.1, -2.25, 0.999999, 1.123456789, 100.0, 0.04323842]
TEXTS = [("@", "a"), ("0.00", "a"), ("\"t:\"@", "a"), ("0;0;0;\"T \"@\" end\"", "a b"), (";;;", "a"),
         ("_(@_)", "a"), ("@\\!", "a"), ("yyyy;@", "a"), ("*x@", "a"), ("[Red]@", "a"), ("@@", "a"),
         ("0;-0;0;@", "12")]


def lines():
    """The table's lines: date system, format, value, text."""
    made = ["# Made by number_formats.py: date system, format, value ('...' for a text), text."]
    groups = [(PLACES + PERCENTAGES + EXPONENTS + SECTIONS, NUMBERS), (FRACTIONS, FRACTION_VALUES),
              (["General"], GENERALS), (DATES, DATE_VALUES), (TIMES, TIME_VALUES),
              (ELAPSED, ELAPSED_VALUES)]
    for codes, values in groups:
        for code in codes:
            for value in values:
                made.append(f"1900\t{code}\t{value!r}\t{show(code, value)}")
    for code in DATES:
        for value in (0.0, 1.0, 58.0, 42735.25):
            made.append(f"1904\t{code}\t{value!r}\t{show(code, value, True)}")
    for code, value in TEXTS:
        made.append(f"1900\t{code}\t'{value}'\t{show(code, value)}")
    return "\n".join(made) + "\n"


def main():
    table = lines()
    if sys.argv[1:] != ["--check"]:
        sys.stdout.write(table)
        return 0
    with open(TABLE, encoding="utf-8") as file:
        if file.read() == table:
            return 0
    print(f"{TABLE} is not what the script makes: python3 {sys.argv[0]} > {TABLE}")
    return 1


if __name__ == "__main__":
    sys.exit(main())
