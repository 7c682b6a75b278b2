#!/usr/bin/env python3
"""Checks that texts are shown by what takes none of them for markup (src/views/look/PlainText.h)."""
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
FORBIDDEN = re.compile(
    r"\bsetToolTip\b|\bsetWhatsThis\b|\bQToolTip::showText\b|\bnew QLabel\b|\bmake_(?:unique|shared)<QLabel>|:\s*(?:public )?QLabel\b|\bQLabel \w+[;({]"
    r"|\bQ(?:MessageBox|ErrorMessage|ProgressDialog|InputDialog|WhatsThis|TextBrowser|TextDocument|TextEdit|GraphicsTextItem)\b"
    r"|\b(?:set|insert|append|to)(?:Html|Markdown)\b|\bQt::(?:RichText|AutoText|MarkdownText)\b"
    r"|\bQt::ToolTipRole\b(?!, ToolTip::plain\()|\baddRow\((?:QString|QLatin1|tr\(|u?\"|texts?\b)"
    r"|\bQStaticText\b(?: \w+)?[({]")
ALLOWED = {
    "views/look/PlainText.h": {": public QLabel", ": QLabel"},
    "views/look/PlainText.cpp": {"setToolTip", "QToolTip::showText"},
    # A page that loads nothing and is never shown.
    "platform/linux/transfer/DropFormats.cpp": {"QTextDocument", "setHtml"},
    # Asks whether a widget is one.
    "platform/linux/x11/KeyRouter.cpp": {"QTextEdit"},
    # One that is set to plain text where it is made.
    "views/list/ItemRowDelegate.h": {"QStaticText shaped("},
    "views/list/ItemRowDelegate.cpp": {"QStaticText result("},
    # The tray's, with the program's name.
    "platform/linux/session/TrayItem.cpp": {"setToolTip"},
}
bad = []
for file in sorted((root / "src").rglob("*.[ch]*")):
    name = file.relative_to(root / "src").as_posix()
    for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("#include"):
            continue
        for match in FORBIDDEN.finditer(line.partition("//")[0]):
            if match[0] not in ALLOWED.get(name, ()):
                bad.append(f"{name}:{number}: {match[0]} may take a name for markup; see views/look/PlainText.h")
print("\n".join(bad))
sys.exit(bool(bad))
