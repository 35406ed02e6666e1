#!/usr/bin/env python3
"""The add-in's texts and its Qt Linguist files.

Numbered texts are found in the sources (every text number with its English
text); dialog texts, and the numbered texts the windows ask for, come from a
recording of the windows (mctask_screenshots --record-texts FILE), which is
what the translation service is asked when every window is built.

  texts.py list   --source DIR [--recorded FILE]          the texts the code asks for
  texts.py update --source DIR  --recorded FILE TS...     brings the .ts files up to date
  texts.py check  --source DIR  --recorded FILE TS...     fails when a .ts lacks a text,
                                                          has one no longer used, or is unfinished

A text's id is "<section>.<key>": "TS.136", "MenuCommandDlg.caption".
"""
import argparse
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET
from xml.sax.saxutils import escape

MODULE = "McTaskAddIn"
FOLDERS = ["addin", "app", "cad", "common", "convert", "macro", "print", "run", "script", "settings"]
# Number and string pairs that are no texts: icon names, format indexes.
NOT_TEXTS = {os.path.join("common", "widgets", "icons.cpp"), os.path.join("app", "screenshots.cpp"),
             os.path.join("app", "printscreenshots.cpp")}

LIT = r'"(?:[^"\\]|\\.)*"(?:\s*"(?:[^"\\]|\\.)*")*'
STR = r'(QStringLiteral\(\s*' + LIT + r'\s*\)|' + LIT + r')'
KEY = r'(\d+|[A-Za-z_][\w:]*)'
FORMS = [
    # text(N, "E"), tr_ts(N, "E"), translator.text(N, "E", Section)
    re.compile(r'(?:\btext|\btr_ts)\(\s*' + KEY + r'\s*,\s*' + STR + r'(?:\s*,\s*([A-Za-z_]\w*))?\s*\)'),
    re.compile(r'\blookupText\(\s*\w+\s*,\s*' + KEY + r'\s*,\s*' + STR),
    # table rows: {N, "E"}, {N, "E", more...}
    re.compile(r'\{\s*(\d+)\s*,\s*' + STR + r'\s*(?:\}|,\s*(?:\d|"|Field::))'),
    # {index, N, "E", ...}
    re.compile(r'\{\s*\d+\s*,\s*(\d+)\s*,\s*' + STR),
    # {QStringLiteral("<Placeholder>"), N, QStringLiteral("E")}
    re.compile(r'QStringLiteral\("<\w+>"\)\s*,\s*(\d+)\s*,\s*' + STR),
    # the file types of the selection dialog, keyed by their English names
    re.compile(r'\{"([^"]+)",\s*\{"\w+"'),
    # {page, Names::Constant, "E"}
    re.compile(r',\s*([A-Za-z_]\w*::[A-Za-z_]\w*)\s*,\s*' + STR + r'\s*\}'),
]
# Text numbers the sources give two wordings of the same meaning; one
# translation serves both.
SHARED = {("TS", "6")}
CONSTANT = re.compile(r'\b([A-Za-z_]\w*)\s*=\s*(\d+)\s*[;,]')
SECTION_CONSTANT = re.compile(r'\b([A-Za-z_]\w*)\s*=\s*QStringLiteral\("(\w+)"\)')


def unquote(literal):
    parts = re.findall(r'"((?:[^"\\]|\\.)*)"', literal)
    text = "".join(parts)
    return (text.replace('\\"', '"').replace("\\n", "\n").replace("\\t", "\t").replace("\\r", "\r")
            .replace("\\\\", "\\"))


def sources(root):
    for folder in FOLDERS:
        for base, _, files in os.walk(os.path.join(root, folder)):
            if "testing" in base.split(os.sep):
                continue
            for name in sorted(files):
                if name.endswith((".cpp", ".h")) and not name.endswith("_test.cpp"):
                    path = os.path.join(base, name)
                    with open(path, encoding="utf-8") as f:
                        yield os.path.relpath(path, root), f.read()


def strip_comments(code):
    return re.sub(r'//[^\n]*', '', code)


def numbered_texts(root):
    """{(section, number): (english, where)} from the sources; errors."""
    files = dict(sources(root))
    constants, sections = {}, {}
    for path, code in files.items():
        for name, value in CONSTANT.findall(strip_comments(code)):
            constants.setdefault(name, {})[path] = int(value)
        for name, value in SECTION_CONSTANT.findall(code):
            sections[name] = value
    texts, errors = {}, []

    def resolve(key, path):
        if key.isdigit():
            return int(key)
        name = key.split("::")[-1]
        found = constants.get(name, {})
        stem = os.path.splitext(path)[0]
        for candidate in (path, stem + ".h", stem + ".cpp"):
            if candidate in found:
                return found[candidate]
        values = set(found.values())
        if len(values) == 1:
            return values.pop()
        return None  # a variable, not a text number

    for path, code in files.items():
        if path in NOT_TEXTS:
            continue
        code = strip_comments(code)
        for form in FORMS:
            for match in form.finditer(code):
                if form is FORMS[5]:
                    number, english = match.group(1), match.group(1)
                else:
                    number = resolve(match.group(1), path)
                    if not number:
                        continue
                    english = unquote(match.group(2))
                section = "TS"
                if form is FORMS[0] and match.group(3):
                    section = sections.get(match.group(3), match.group(3))
                line = code.count("\n", 0, match.start()) + 1
                where = "%s:%d" % (path, line)
                key = (section, str(number))
                if key in texts and texts[key][0] != english:
                    if key in SHARED:
                        texts[key][2].add(english)
                    else:
                        errors.append("%s: text %s.%s is %r here but %r at %s"
                                      % (where, section, number, english, texts[key][0], texts[key][1]))
                    continue
                texts.setdefault(key, (english, where, {english}))
    return texts, errors


def recorded_texts(path):
    """[(module, section, key, english)] as the recording wrote them."""
    rows = []
    with open(path, encoding="utf-8") as f:
        for line in f:
            line = line.rstrip("\n")
            if not line:
                continue
            module, section, key, english = line.split("\t", 3)
            english = english.replace("\\n", "\n").replace("\\t", "\t").replace("\\\\", "\\")
            rows.append((module, section, key, english))
    return rows


def has_words(text):
    return any(c.isalpha() for c in text)


def catalogue(root, recorded):
    """{id: english} of every text the code asks for; errors."""
    numbered, errors = numbered_texts(root)
    texts = {"%s.%s" % key: value[0] for key, value in numbered.items()}
    # every wording of a shared number
    wordings = {"%s.%s" % key: value[2] for key, value in numbered.items()}
    if recorded:
        for module, section, key, english in recorded_texts(recorded):
            if module != MODULE or not has_words(english):
                continue
            text_id = "%s.%s" % (section, key)
            if key.isdigit():
                # Numbered texts the windows asked for must be the sources' own.
                if english not in wordings.get(text_id, ()):
                    errors.append("the windows ask for %s %r, which the sources do not give" % (text_id, english))
                continue
            if text_id in texts and texts[text_id] != english:
                errors.append("dialog text %s is both %r and %r" % (text_id, texts[text_id], english))
                continue
            texts[text_id] = english
    return texts, errors


def read_ts(path):
    """(language, {id: (source, translation, finished)})."""
    root = ET.parse(path).getroot()
    messages = {}
    for message in root.iter("message"):
        translation = message.find("translation")
        finished = translation is not None and translation.get("type") not in ("unfinished", "obsolete", "vanished")
        messages[message.get("id")] = (message.findtext("source") or "",
                                       (translation.text or "") if translation is not None else "", finished)
    return root.get("language"), messages


def write_ts(path, language, texts, old):
    english = language.startswith("en")
    sections = {}
    for text_id in sorted(texts, key=lambda t: (t.split(".", 1)[0] != "TS", t.split(".", 1)[0],
                                                int(t.split(".", 1)[1]) if t.split(".", 1)[1].isdigit() else 0,
                                                t)):
        sections.setdefault(text_id.split(".", 1)[0], []).append(text_id)
    out = ['<?xml version="1.0" encoding="utf-8"?>', '<!DOCTYPE TS>',
           '<TS version="2.1" language="%s" sourcelanguage="en_GB">' % language]
    for section, ids in sections.items():
        out.append("<context>")
        out.append("    <name>%s</name>" % section)
        for text_id in ids:
            source = texts[text_id]
            previous = old.get(text_id)
            if english:
                translation, finished = source, True
            elif previous and previous[0] == source:
                translation, finished = previous[1], previous[2]
            else:
                translation, finished = (previous[1] if previous else ""), False
            out.append('    <message id="%s">' % escape(text_id, {'"': "&quot;"}))
            out.append("        <source>%s</source>" % escape(source))
            attr = "" if finished else ' type="unfinished"'
            out.append("        <translation%s>%s</translation>" % (attr, escape(translation)))
            out.append("    </message>")
        out.append("</context>")
    out.append("</TS>")
    with open(path, "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("command", choices=["list", "update", "check"])
    parser.add_argument("--source", required=True)
    parser.add_argument("--recorded")
    parser.add_argument("--record-with", help="the mctask_screenshots program: record its windows' texts now")
    parser.add_argument("ts", nargs="*")
    args = parser.parse_intermixed_args()
    if args.command != "list" and not (args.recorded or args.record_with):
        parser.error("update and check need the windows' texts: --recorded FILE or --record-with PROGRAM")
    with tempfile.TemporaryDirectory() as work:
        recorded = args.recorded
        if args.record_with:
            recorded = os.path.join(work, "texts.tsv")
            env = dict(os.environ, QT_QPA_PLATFORM="offscreen")
            result = subprocess.run([args.record_with, os.path.join(work, "shots"), "--record-texts", recorded],
                                    env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            if result.returncode != 0:
                print("error: %s failed (%d)" % (args.record_with, result.returncode), file=sys.stderr)
                return 1
        return run(args, catalogue(args.source, recorded))


def run(args, found):
    texts, errors = found
    for error in errors:
        print("error: " + error, file=sys.stderr)
    if args.command == "list":
        for text_id in sorted(texts):
            print("%s\t%s" % (text_id, texts[text_id].replace("\n", "\\n")))
        return 1 if errors else 0
    if args.command == "update":
        for path in args.ts:
            language, old = read_ts(path) if os.path.exists(path) else (None, {})
            write_ts(path, language or "en_GB", texts, old)
            print("updated %s: %d texts" % (path, len(texts)))
        return 1 if errors else 0
    failed = bool(errors)
    for path in args.ts:
        _, messages = read_ts(path)
        name = os.path.basename(path)
        for text_id in sorted(set(texts) - set(messages)):
            print("%s lacks %s %r" % (name, text_id, texts[text_id]))
            failed = True
        for text_id in sorted(set(messages) - set(texts)):
            print("%s has %s, which the code no longer uses" % (name, text_id))
            failed = True
        for text_id in sorted(set(texts) & set(messages)):
            source, translation, finished = messages[text_id]
            if source != texts[text_id]:
                print("%s: the English of %s is now %r, not %r" % (name, text_id, texts[text_id], source))
                failed = True
            elif not finished or not translation:
                print("%s: %s is not translated" % (name, text_id))
                failed = True
        print("%s: %d texts checked" % (name, len(messages)))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
