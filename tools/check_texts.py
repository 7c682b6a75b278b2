#!/usr/bin/env python3
"""Checks the string tables against the program: every key that it uses has a text, every text is
used, all languages have the same keys with the same arguments, and keep to the glossary; so do
the desktop entries."""
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
LITERAL = r'"((?:[^"\\\n]|\\.)*)"'
TOKENS = re.compile(rf'//[^\n]*|/\*.*?\*/|{LITERAL}', re.S)
CALL = re.compile(r"\b\w*[tT]exts\s*(?:\.|->)\s*text\s*\(")
CONVERSION = re.compile(r"%%|%(?:(\d+)\$)?(@|lld|d)")
bad = []


def without_comments(source):
    """Comments go, literals stay: a quote or two slashes may stand inside the other."""
    return TOKENS.sub(lambda match: match[0] if match[1] is not None else " ", source)


def first_argument(source, start):
    """What stands between that place and the comma or bracket that ends the argument."""
    depth, position = 0, start
    while position < len(source):
        if literal := re.compile(LITERAL).match(source, position):
            position = literal.end()
            continue
        if source[position] in "([{":
            depth += 1
        elif source[position] in ")]}" or source[position] == ",":
            if depth == 0:
                break
            depth -= source[position] != ","
        position += 1
    return source[start:position]


def read_table(file):
    text = without_comments(file.read_text(encoding="utf-8")) if file.exists() else ""
    entry = re.compile(rf"\s*{LITERAL}\s*=\s*{LITERAL}\s*;")
    table, position = {}, 0
    while match := entry.match(text, position):
        if match[1] in table:
            bad.append(f"{file.parent.name}: the key {match[1]} stands twice")
        table[match[1]] = match[2]
        position = match.end()
    if text[position:].strip():
        bad.append(f"{file.parent.name}: not an entry: {text[position:].strip().splitlines()[0]}")
    return table


def arguments(text):
    """Each argument's position and type; one without a position takes the next."""
    found, following = [], 1
    for match in CONVERSION.finditer(text):
        if match[0] == "%%":
            continue
        found.append((int(match[1]) if match[1] else following, match[2]))
        following += not match[1]
    return sorted(found)


literals, used = set(), {}
for file in sorted((root / "src").rglob("*.[ch]*")):
    source = without_comments(file.read_text(encoding="utf-8"))
    literals |= set(re.findall(LITERAL, source))
    for call in CALL.finditer(source):
        for key in re.findall(LITERAL, first_argument(source, call.end())):
            used.setdefault(key, file.relative_to(root))

bundle = root / "src/resources/Vantle_Vantle.bundle"
tables = {folder.stem: read_table(folder / "Localizable.strings") for folder in sorted(bundle.glob("*.lproj"))}
english = tables.get("en", {})
bad += [f"{used[key]}: no text for the key {key}" for key in sorted(used.keys() - english.keys())]
bad += [f"en: nothing uses the key {key}" for key in sorted(english.keys() - literals)]
for key, text in english.items():
    if key.endswith("_n") and arguments(text) != [(1, "lld")]:
        bad.append(f"en: {key} takes a count and nothing else")
for language, table in tables.items():
    bad += [f"{language}: no text for the key {key}" for key in sorted(english.keys() - table.keys())]
    bad += [f"{language}: the key {key} is not in English" for key in sorted(table.keys() - english.keys())]
    bad += [f"{language}: the arguments of {key} differ from the English ones"
            for key in sorted(table.keys() & english.keys()) if arguments(table[key]) != arguments(english[key])]
    bad += [f"{language}: the text of {key} is empty" for key, text in table.items() if not text]
    bad += [f"{language}: {key} holds a percent sign that is neither doubled nor an argument"
            for key, text in table.items() if arguments(text) and "%" in CONVERSION.sub("", text)]
# What menus and file managers show of it stands in entries of their own form.
LOCALES = {"zh_CN": "zh-Hans", "zh_TW": "zh-Hant", "": "en"}
ENTRY = re.compile(r"^(Name|GenericName|Comment|Keywords)(?:\[(\w+)\])?=(.*)$", re.M)
spoken = [(language, key, text) for language, table in tables.items() for key, text in table.items()]
for file in sorted([*root.glob("src/resources/*.desktop"), *root.glob("src/resources/filemanagers/*")]):
    for part in re.split(r"^(?=\[)", file.read_text(encoding="utf-8"), flags=re.M) if file.suffix != ".py" else []:
        there = {}
        for key, locale, text in ENTRY.findall(part):
            language = LOCALES.get(locale, locale)
            there.setdefault(key, set()).add(language)
            spoken.append((language, f"{file.name}: {key}", text))
        bad += [f"{language}: no {key} in {file.name}, {part.splitlines()[0]}" for key, languages in there.items()
                if key != "Name" or len(languages) > 1 for language in sorted(tables.keys() - languages)]
# docs/glossary.md: one word for one thing.
for row in re.finditer(r"^\| ([a-z]{2}(?:-Han[st])?) \| ([^|]+) \|$", (root / "docs/glossary.md").read_text("utf-8"), re.M):
    for word in row[2].split(", "):
        spelled = rf"\b{word}s?\b" if word.isascii() or row[1] in ("de", "es", "fr", "it") else word
        bad += [f"{row[1]}: {key} says {word}; see docs/glossary.md"
                for language, key, text in spoken if language == row[1] and re.search(spelled, text, re.I)]
print("\n".join(bad) or f"{len(tables)} language(s), {len(english)} keys")
sys.exit(bool(bad) or not english)
