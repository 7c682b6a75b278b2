#!/usr/bin/env python3
"""Checks the string tables against the program: every key that it uses has a text, every text is
used, and all languages have the same keys with the same arguments."""
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
tables = {}
for file in sorted(root.glob("src/resources/Vantle_Vantle.bundle/*.lproj/Localizable.strings")):
    text = re.sub(r"/\*.*?\*/", "", file.read_text(), flags=re.S)
    pairs = re.findall(r'"((?:[^"\\]|\\.)*)"\s*=\s*"((?:[^"\\]|\\.)*)"\s*;', text)
    tables[file.parent.stem] = dict(pairs)
    if len(pairs) != len(dict(pairs)):
        sys.exit(f"{file.parent.name}: a key stands twice")

literals, used = set(), set()
for file in (root / "src").rglob("*.cpp"):
    source = file.read_text()
    literals |= set(re.findall(r'"([a-z][a-z0-9_]*)"', source))
    used |= set(re.findall(r'\btext\(\s*(?:QStringLiteral|QLatin1String)\("(\w+)"\)', source))

english = tables.get("en", {})
bad = [f"en: no text for the key {key}" for key in sorted(used - english.keys())]
bad += [f"en: nothing uses the key {key}" for key in sorted(english.keys() - literals)]


def arguments(text):
    return sorted(re.findall(r"%(?:\d+\$)?(@|lld|d)", text))


for language, table in tables.items():
    bad += [f"{language}: no text for the key {key}" for key in sorted(english.keys() - table.keys())]
    bad += [f"{language}: the key {key} is not in English" for key in sorted(table.keys() - english.keys())]
    bad += [f"{language}: the arguments of {key} differ from the English ones"
            for key in sorted(table.keys() & english.keys()) if arguments(table[key]) != arguments(english[key])]
print("\n".join(bad) or f"{len(tables)} language(s), {len(english)} keys")
sys.exit(bool(bad) or not english)
