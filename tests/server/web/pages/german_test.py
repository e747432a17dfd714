"""The German texts of the page: none is missing, none is left over, and each takes the values of the English one.

Usage: german_test.py SOURCES
"""
import json
import pathlib
import re
import sys


def main():
    root = pathlib.Path(sys.argv[1])
    scripts = "\n".join(path.read_text(encoding="utf-8") for path in sorted((root / "share/web").glob("*.js")))
    sources = "\n".join(path.read_text(encoding="utf-8") for folder in ("pages", "preview", "api")
                        for path in sorted((root / "server/web" / folder).glob("*.cpp")))
    # A long text of a source may be in two pieces.
    sources = re.sub(r'"\s*\n\s*"', "", sources)
    german = json.loads((root / "share/web/german.json").read_text(encoding="utf-8"))
    states = re.findall(r'JobState::\w+, "(\w+)"', (root / "server/queue/job_names.cpp").read_text(encoding="utf-8"))

    used = set(re.findall(r"\bt\(\s*'((?:[^'\\]|\\.)*)'", scripts))
    used |= set(re.findall(r"(?:text|question):\s*'([^']*)'", scripts))
    used |= {text.replace('\\"', '"') for text in re.findall(r'words\("((?:[^"\\]|\\.)*)"', sources)}
    used |= set(re.findall(r'return "([A-Z][^"]*\.)";', sources))
    faults = [f"no German for: {text}" for text in sorted(used) if text and text not in german]
    everything = scripts + sources.replace('\\"', '"')
    faults += [f"nobody says: {text}" for text in german
               if text not in everything and text + "…" not in everything and text not in states]
    faults += [f"other values: {text}" for text, other in german.items()
               if sorted(re.findall(r"\{\d\}", text)) != sorted(re.findall(r"\{\d\}", other))]
    print("\n".join(faults) or f"{len(german)} texts")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
