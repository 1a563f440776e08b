"""Compares the pages with the sources: every message a user can meet is explained, and no message that is gone; every
key of the schemas is described; the report descriptor is the tested one; members that architecture.md names exist; links
lead somewhere; examples are JSON.

Usage: check_docs.py ROOT
"""

import json
import pathlib
import re
import sys

# Fewer than this found means that the search is broken, not that the program logs nothing.
FEWEST_LOG_CALLS = 40
FEWEST_TEXTS = 90
FEWEST_KEYS = 40

# Texts in the sources that aren't messages: where they are, and why.
NOT_MESSAGES = [
    (r"app/registration_commands\.cpp", r'^--config "$', "an option that is written into a file"),
    (r"registration/exe_xml_", r"[<>]", "lines of a file that the program writes"),
    (r"logging/logger\.cpp", r"^%Y", "the form of a line's time"),
    (r"platform/windows/device_notifications\.cpp", r"^Vantrel HID Notify$", "the name of a hidden window"),
    (r"sim/sim_client_session\.cpp", r"^ELECTRICAL MASTER", "a variable of the simulator"),
    (r"wire/", r"^Microsoft Flight Simulator", "the name of the simulator's pipe"),
    (r"hid/hid_log_lines\.cpp", r"^(the line's end is missing|its bytes aren't)", "from the tools that read a log"),
    (r"registration/exe_xml_registrar\.cpp", r"\\EXE\.xml", "a path"),
    (r"mobiflight/mobiflight_client_commands\.cpp", r"^MF\.SimVars\.Set\.1 $", "the beginning of each command to the module"),
]

TOKEN = re.compile(
    r'R"(?P<mark>\w*)\((?P<raw>.*?)\)(?P=mark)"'
    r"|//[^\n]*|/\*.*?\*/|#include[^\n]*"
    r'|"(?P<text>(?:[^"\\\n]|\\.)*)"'
    r"|'(?:[^'\\\n]|\\.)'",
    re.S,
)
ESCAPES = {"n": "\n", "r": "\r", "t": "\t", '"': '"', "\\": "\\", "'": "'"}


def unescaped(text):
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match[1], match[0]), text)


class Report:
    def __init__(self):
        self.passed = 0
        self.failed = 0

    def check(self, fine, words):
        if fine:
            self.passed += 1
        else:
            self.failed += 1
            print("FAILED: " + words)


def sources(root):
    folder = root / "src"
    for path in sorted(folder.rglob("*")):
        if path.suffix in (".cpp", ".h"):
            yield path.relative_to(folder).as_posix(), path.read_text(encoding="utf-8")


def texts_of(code):
    """The string literals of a source, neighbours joined as the compiler joins them, with their positions."""
    joined, end = [], None
    for token in TOKEN.finditer(code):
        text = token["raw"] if token["raw"] is not None else token["text"]
        if text is None or token[0].startswith(("//", "/*", "#")):
            continue
        text = text if token["raw"] is not None else unescaped(text)
        if end is not None and code[end:token.start()].strip() == "":
            joined[-1] = (joined[-1][0], joined[-1][1] + text)
        else:
            joined.append((token.start(), text))
        end = token.end()
    return joined


def argument_of(code, opening):
    """What stands between a call's brackets."""
    depth, position = 0, opening
    while position < len(code):
        token = TOKEN.match(code, position)
        if token:
            position = token.end()
            continue
        depth += {"(": 1, ")": -1}.get(code[position], 0)
        position += 1
        if depth == 0:
            return code[opening + 1:position - 1]
    return code[opening + 1:]


def pattern_of(expression):
    """A log call's argument as a regular expression: its texts, with anything between them. None without a text."""
    expression = re.sub(r"\bstd::string\b", "", expression)
    pieces, end, found = [], 0, False

    def gap(code):
        if re.search(r"\w", code) and (not pieces or pieces[-1] != ".+"):
            pieces.append(".+")

    for token in TOKEN.finditer(expression):
        if token["text"] is None:
            continue
        gap(expression[end:token.start()])
        pieces.append(re.escape(unescaped(token["text"])))
        end, found = token.end(), True
    gap(expression[end:])
    return "".join(pieces) if found else None


def log_calls(root):
    """(place, pattern) of each line that is always logged."""
    for name, code in sources(root):
        for call in re.finditer(r"\blog(?:Info|Warn|Error)\(|\blog\(Level::(?:Info|Warn|Error),", code):
            opening = code.index("(", call.start())
            pattern = pattern_of(argument_of(code, opening))
            if pattern:
                yield f"src/{name}:{code.count(chr(10), 0, call.start()) + 1}", pattern


def message_texts(root):
    """(place, text) of each literal that reads like words: it has a blank between two letters or signs."""
    for name, code in sources(root):
        for position, text in texts_of(code):
            words = text.strip()
            if not re.search(r"\S \S", words) or not re.search(r"[A-Za-z]{3}", words):
                continue
            if any(re.search(where, name) and re.search(what, text) for where, what, _ in NOT_MESSAGES):
                continue
            yield f"src/{name}:{code.count(chr(10), 0, position) + 1}", words


def code_spans(document):
    """What stands in backquotes, outside of blocks."""
    without_blocks = re.sub(r"^```.*?^```", "", document, flags=re.S | re.M)
    return [span[1] for span in re.finditer(r"`([^`\n]+)`", without_blocks)]


def explained(spans, words):
    if "%" in words:
        pattern = re.compile(re.sub(r"%[a-z]", ".+", re.escape(words)))
        return any(pattern.search(span) for span in spans)
    return any(words in span for span in spans)


def check_messages(root, report):
    document = (root / "docs/troubleshooting.md").read_text(encoding="utf-8")
    spans = code_spans(document)
    calls = list(log_calls(root))
    report.check(len(calls) >= FEWEST_LOG_CALLS, f"only {len(calls)} log calls found in src/")
    for place, pattern in calls:
        known = any(re.fullmatch(pattern, span) for span in spans)
        report.check(known, f"{place}: no line in docs/troubleshooting.md reads {pattern}")

    texts = list(message_texts(root))
    report.check(len(texts) >= FEWEST_TEXTS, f"only {len(texts)} texts found in src/")
    for place, words in texts:
        report.check(explained(spans, words), f"{place}: docs/troubleshooting.md lacks \"{words}\"")
    check_staleness(document, calls, texts, report)


def check_staleness(document, calls, texts, report):
    """The first cell of each table row, if it is a message, must still be said by the sources."""
    part = document[document.index("\n## Messages"):]
    rows = re.findall(r"^\| `([^`]+)`", part, flags=re.M)
    report.check(len(rows) >= FEWEST_LOG_CALLS, f"only {len(rows)} messages found in docs/troubleshooting.md")
    for row in rows:
        if re.fullmatch(r"0x[0-9A-F]+", row):
            continue
        said = any(re.fullmatch(pattern, row) for _, pattern in calls)
        said = said or any(explained([row], words) for _, words in texts)
        report.check(said, f"docs/troubleshooting.md explains what nobody says: {row}")


def keys_of(node):
    if isinstance(node, dict):
        for name, member in node.get("properties", {}).items():
            if name != "$schema":
                yield name
            yield from keys_of(member)
        for name, member in node.items():
            if name not in ("properties", "default", "examples"):
                yield from keys_of(member)
    elif isinstance(node, list):
        for member in node:
            yield from keys_of(member)


def check_configuration(root, report):
    spans = set(code_spans((root / "docs/configuration.md").read_text(encoding="utf-8")))
    keys = set()
    for path in sorted((root / "schemas").glob("*.schema.json")):
        keys |= set(keys_of(json.loads(path.read_text(encoding="utf-8"))))
    report.check(len(keys) >= FEWEST_KEYS, f"only {len(keys)} keys found in schemas/")
    for key in sorted(keys):
        report.check(key in spans, f"docs/configuration.md lacks the key {key}")
    messages = json.loads((root / "tests/schemas/gallery/bad/messages.json").read_text(encoding="utf-8"))
    for message in sorted({re.sub(r"\[(DAY|\d)\]", "[]", text) for text in messages.values() if "parse error" not in text}):
        told = any(re.sub(r"\[(NAME|N)\]", "[]", span) == message for span in spans)
        report.check(told, f"docs/configuration.md lacks the message {message}")


def check_descriptor(root, report):
    """The documented report descriptor is the one that the boards of the system tests have."""
    document = (root / "docs/hid-protocol.md").read_text(encoding="utf-8")
    block = re.search(r"^```\n(06 00 FF .*?)^```", document, flags=re.S | re.M)
    report.check(block is not None, "docs/hid-protocol.md has no report descriptor")
    stated = [byte for line in block[1].splitlines() for byte in re.match(r"(?:[0-9A-F]{2} ?)+", line)[0].split()]
    source = (root / "tests/system/support/uhid_device.cpp").read_text(encoding="utf-8")
    code = source[source.index("reportDescriptor = {"):]
    tested = re.findall(r"0x([0-9A-F]{2})\b", re.sub(r"//[^\n]*", "", code[:code.index("};")]))
    report.check(stated == tested, f"docs/hid-protocol.md: the descriptor {stated} isn't the tested one {tested}")


def check_members(root, report):
    """Each `Class::member` is declared in the source of that class."""
    code = [path.read_text() for folder in ("src", "simulation") for path in (root / folder).rglob("*.h")]
    named = set(re.findall(r"`([A-Z]\w+)::(\w+)`", (root / "docs/architecture.md").read_text()))
    report.check(len(named) > 30, f"architecture.md names members ({len(named)} found)")
    for name, member in sorted(named):
        owner, use = re.compile(rf"\b(class|struct|namespace) {name}\b"), re.compile(rf"\b{member}\b")
        declared = any(owner.search(text) and use.search(text) for text in code)
        report.check(declared, f"architecture.md: {name} has no member {member}")


def anchors_of(document):
    titles = re.findall(r"^#+ (.+)$", document, flags=re.M)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def check_links_and_examples(root, report):
    for path in [root / "README.md", root / "CONTRIBUTING.md", root / "CHANGELOG.md", *sorted((root / "docs").glob("*.md"))]:
        document = path.read_text(encoding="utf-8")
        prose = re.sub(r"^```.*?^```", "", document, flags=re.S | re.M)
        for link in re.findall(r"\]\(([^)\s]+)\)", prose):
            if "://" in link:
                continue
            target, _, anchor = link.partition("#")
            file = (path.parent / target).resolve() if target else path
            report.check(file.exists(), f"{path.name}: the link {link} leads nowhere")
            if anchor and file.exists():
                report.check(anchor in anchors_of(file.read_text(encoding="utf-8")), f"{path.name}: no title for {link}")
        for block in re.findall(r"^```json\n(.*?)^```", document, flags=re.S | re.M):
            try:
                json.loads(block)
                report.check(True, "")
            except ValueError as failure:
                report.check(False, f"{path.name}: an example isn't JSON: {failure}")


def main():
    root = pathlib.Path(sys.argv[1])
    report = Report()
    check_messages(root, report)
    check_configuration(root, report)
    check_descriptor(root, report)
    check_members(root, report)
    check_links_and_examples(root, report)
    print(f"check: {report.passed} passed, {report.failed} failed")
    return 0 if report.failed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
