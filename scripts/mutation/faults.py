"""Finds the places in a source where one small change makes a fault. Works on tokens, without a parser: what isn't
C++ after a change doesn't compile, and another fault takes its place."""

import dataclasses
import hashlib
import re

TOKEN = re.compile(
    r"""(?P<skip>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*)
      | (?P<text>R"(?P<raw>\w*)\(.*?\)(?P=raw)"|"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)+')
      | (?P<number>\.?\d(?:'?[\w.])*)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<mark><=>|<<=|>>=|->|::|\+\+|--|&&|\|\||[=!<>+\-*/%|&^]=|<<|>>|[^\s\w])""",
    re.S | re.M | re.X,
)

COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
CONNECTIVES = {"&&": "||", "||": "&&"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "|": "&", "&": "|", "<<": ">>", ">>": "<<"}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "|=", "&=", "^=", "<<=", ">>="}
JUMPS = {"break", "continue", "return"}
# A statement that begins with one of these is no bare call or assignment, or it does nothing.
NO_STATEMENT = JUMPS | set(
    """if else for while do switch case default goto throw try catch using namespace typedef const constexpr static
    auto struct class enum union template public private protected friend static_assert extern explicit virtual inline
    mutable unsigned signed int bool char double float long short void static_cast""".split()
)
SCOPES = {"class", "struct", "enum", "union", "namespace"}
OPENING, CLOSING = "([{", ")]}"


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    line: int

    @property
    def end(self):
        return self.start + len(self.text)


@dataclasses.dataclass(frozen=True)
class Change:
    """Replaces a piece of a source, from `start` to before `end`."""

    rule: str
    start: int
    end: int
    new: str


@dataclasses.dataclass(frozen=True)
class Fault:
    """A change in a file. The id names it across versions: its last part depends only on rule and line text."""

    id: str
    path: str
    line: int
    change: Change
    text: str
    old: str

    @property
    def words(self):
        before, after = (" ".join(text.split()) for text in (self.old, self.change.new))
        return f"{before}  ->  {after or '(nothing)'}"


class Source:
    """The text of a source and its tokens, without comments and directives."""

    def __init__(self, text):
        self.text = text
        self.lines = text.splitlines()
        self.tokens = list(tokens(text))
        self.text_lines = {token.line for token in self.tokens if token.kind == "text"}

    def spaced(self, token):
        """True for an operator between two operands: the formatter puts no space on both sides of anything else."""
        around = self.text[token.start - 1] + self.text[token.end : token.end + 1]
        return around.strip() == ""

    def closing(self, index):
        """The index of the bracket that closes the one at `index`."""
        depth = 0
        for i in range(index, len(self.tokens)):
            depth += depth_step(self.tokens[i])
            if depth == 0:
                return i
        return len(self.tokens) - 1

    def first_on_line(self, token):
        return self.text[self.text.rfind("\n", 0, token.start) + 1 : token.start].strip() == ""


def depth_step(token):
    if token.kind == "text":
        return 0
    return (token.text in OPENING) - (token.text in CLOSING)


def tokens(text):
    line, seen = 1, 0
    for match in TOKEN.finditer(text):
        line, seen = line + text.count("\n", seen, match.start()), match.start()
        if match.lastgroup not in ("skip", "directive"):
            yield Token(match.lastgroup, match[0], match.start(), line)


# The rules. Each yields the changes that it would make in a source.


def flipped_comparisons(source):
    for token in source.tokens:
        if token.text in COMPARISONS and source.spaced(token):
            yield Change("compare", token.start, token.end, COMPARISONS[token.text])


def swapped_connectives(source):
    for token in source.tokens:
        if token.text in CONNECTIVES and source.spaced(token):
            yield Change("connective", token.start, token.end, CONNECTIVES[token.text])


def swapped_arithmetic(source):
    for token in source.tokens:
        if token.text in ARITHMETIC and source.spaced(token) and token.line not in source.text_lines:
            yield Change("arithmetic", token.start, token.end, ARITHMETIC[token.text])


def negated_conditions(source):
    for i, token in enumerate(source.tokens[:-1]):
        if token.text in ("if", "while") and source.tokens[i + 1].text == "(":
            condition = source.tokens[i + 2 : source.closing(i + 1)]
            if condition and not any(part.text in ("=", ";") for part in condition):
                start, end = condition[0].start, condition[-1].end
                yield Change("negate", start, end, f"!({source.text[start:end]})")


def dropped_negations(source):
    for token, following in zip(source.tokens, source.tokens[1:]):
        if token.text == "!" and (following.kind == "name" or following.text == "("):
            yield Change("not", token.start, token.end, "")


def changed_constants(source):
    for i, token in enumerate(source.tokens):
        new = other_constant(token)
        if new and source.tokens[i - 1].text != "operator" and "static_assert" not in source.lines[token.line - 1]:
            yield Change("constant", token.start, token.end, new)


def other_constant(token):
    if token.text in ("true", "false"):
        return "false" if token.text == "true" else "true"
    if token.kind != "number":
        return None
    digits, suffix = re.fullmatch(r"(0[xX][\da-fA-F']+|[\d'.]+)(.*)", token.text).groups()
    plain = digits.replace("'", "")
    if plain[:2] in ("0x", "0X"):
        return hex(int(plain, 16) + 1) + suffix
    return str(float(plain) + 1 if "." in plain else int(plain) + 1) + suffix


def dropped_jumps(source):
    for before, token, following in zip(source.tokens, source.tokens[1:], source.tokens[2:]):
        if token.text in JUMPS and following.text == ";" and before.text in "{};:":
            yield Change("jump", token.start, following.end, ";")


def dropped_statements(source):
    for first, last in statements(source):
        yield Change("drop", source.tokens[first].start, source.tokens[last].end, ";")


def swapped_statements(source):
    found = statements(source)
    for (first, last), (next_first, next_last) in zip(found, found[1:]):
        calls = [source.tokens[end - 1].text == ")" for end in (last, next_last)]
        if next_first == last + 1 and any(calls):
            yield exchange(source, [source.tokens[i] for i in (first, last, next_first, next_last)])


def exchange(source, tokens):
    first, last, next_first, next_last = tokens
    one = source.text[first.start : last.end]
    other = source.text[next_first.start : next_last.end]
    between = source.text[last.end : next_first.start]
    return Change("swap", first.start, next_last.end, other + between + one)


def statements(source):
    """The bare calls and assignments in function bodies, as the indices of their first token and of their `;`."""
    found = []
    for i in statement_starts(source):
        end = statement_end(source, i)
        if end is not None and is_bare(source.tokens[i : end + 1]):
            found.append((i, end))
    return found


def statement_starts(source):
    """Where a statement of a function's body may begin: on a line of its own, after another statement or a brace."""
    bodies, segment = [], []
    for i, token in enumerate(source.tokens):
        if not segment and bodies and bodies[-1] and source.first_on_line(token):
            yield i
        segment.append(token.text)
        if token.text == "{":
            bodies.append(segment[0] == "template" or not SCOPES & set(segment))
        elif token.text == "}" and bodies:
            bodies.pop()
        if token.text in ("{", "}", ";") or token.text == ":" and segment[0] in ("case", "default"):
            segment = []


def statement_end(source, start):
    depth = 0
    for i in range(start, len(source.tokens)):
        depth += depth_step(source.tokens[i])
        if depth < 0:
            return None
        if depth == 0 and source.tokens[i].text == ";":
            return i
    return None


def is_bare(tokens):
    """True for a call or an assignment, false for a declaration or any other statement. Tokens end with the `;`."""
    if tokens[0].text in NO_STATEMENT or not (tokens[0].kind == "name" or tokens[0].text in ("*", "++", "--", "::")):
        return False
    head = statement_head(tokens)
    for before, token in zip(head, head[1:]):
        if token.kind == "name" and (before.kind == "name" or before.text in (">", "&", "*") and before is not head[0]):
            return False
    texts = [token.text for token in tokens]
    return texts[-2] in (")", "++", "--") or texts[0] in ("++", "--") or bool(ASSIGNMENTS & set(texts))


def statement_head(tokens):
    head = []
    for token in tokens:
        if token.text in OPENING or token.text in ASSIGNMENTS or token.text == ";":
            break
        head.append(token)
    return head


RULES = [
    flipped_comparisons,
    swapped_connectives,
    swapped_arithmetic,
    negated_conditions,
    dropped_negations,
    changed_constants,
    dropped_jumps,
    dropped_statements,
    swapped_statements,
]


def sources(root, folder):
    """The files of a folder of src/ that the native unit tests compile."""
    for path in sorted((root / "src" / folder).rglob("*")):
        if path.suffix in (".cpp", ".h") and path.name != "main.cpp" and "windows" not in path.parts:
            yield path


def faults_of(root, folder):
    """Every fault that the rules find in a folder."""
    seen = {}
    for path in sources(root, folder):
        source = Source(path.read_text())
        for rule in RULES:
            for change in rule(source):
                yield named(root, path, source, change, seen)


def named(root, path, source, change, seen):
    line = source.text.count("\n", 0, change.start) + 1
    text = telling_text(source, change.rule, line)
    key = (change.rule, path.name, text)
    seen[key] = seen.get(key, 0) + 1  # numbers the equal faults of a file
    mark = digest(change.rule, text, seen[key])[:8]
    id = f"{change.rule}:{path.name}:{mark}"
    return Fault(id, path.relative_to(root).as_posix(), line, change, text, source.text[change.start : change.end])


def telling_text(source, rule, line):
    """The text of the line. A jump alone looks like any other, so the line before it counts too."""
    first = line - 2 if rule == "jump" else line - 1
    return " ".join(" ".join(source.lines[first:line]).split())


def digest(*parts):
    return hashlib.sha256("|".join(map(str, parts)).encode()).hexdigest()


def order(faults, seed):
    """The faults in the order in which they are taken: the rules in turn, chance within a rule, no line twice.

    Chance depends on the id without the file, so that code that moves to another file keeps its place."""
    waiting = {}
    for fault in sorted(faults, key=lambda fault: digest(seed, *without_file(fault.id))):
        waiting.setdefault(fault.change.rule, []).append(fault)
    lines = set()
    while any(waiting.values()):
        for rule in sorted(waiting):
            fault = next_fault(waiting[rule], lines)
            if fault is not None:
                yield fault


def without_file(id):
    return id.split(":")[0], id.split(":")[-1]


def next_fault(faults, lines):
    while faults:
        fault = faults.pop(0)
        if (fault.path, fault.line) not in lines:
            lines.add((fault.path, fault.line))
            return fault
    return None
