"""Finds the small faults that scripts/mutate may put into a C++ file.

A file is read as text: comments, literals and preprocessor lines are masked first, so that rules
look at code only. What a rule proposes need not compile; scripts/mutate counts what does not.
"""
import re
from dataclasses import dataclass

KINDS = ("delete", "negate", "relation", "swap", "constant", "member", "return")


@dataclass(frozen=True)
class Fault:
    """One replacement of text[begin:end] in one file."""

    file: str
    begin: int
    end: int
    line: int
    kind: str
    old: str
    new: str

    def applied(self, text):
        return text[: self.begin] + self.new + text[self.end :]

    @property
    def what(self):
        old, new = (" ".join(part.split()) for part in (self.old, self.new))
        return f"{self.kind}: {old[:70]} -> {new[:70] or 'nothing'}"


MASKED = re.compile(
    r"//[^\n]*|/\*.*?\*/"
    r'|R"(?P<tag>[^(\s]*)\(.*?\)(?P=tag)"'
    r'|"(?:\\.|[^"\\\n])*"'
    r"|(?<![\w])'(?:\\.|[^'\\\n])+'"
    r"|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*",
    re.DOTALL | re.MULTILINE,
)


def masked(text):
    """The text with its length kept: comments blank, literals as quotes around underscores."""

    def mask(match):
        found = match[0]
        if found[0] in "\"'" or found.startswith("R"):
            return '"' + "_" * (len(found) - 2) + '"'
        return re.sub(r"[^\n]", " ", found)

    return MASKED.sub(mask, text)


def closing(code, start):
    """The place of the bracket that closes the one at `start`, or None."""
    depth = 0
    for place in range(start, len(code)):
        if code[place] in "([{":
            depth += 1
        elif code[place] in ")]}":
            depth -= 1
            if depth == 0:
                return place
    return None


def split_at_commas(code, begin, end):
    """The spans between the commas of code[begin:end] that stand in no bracket."""
    spans, depth, last = [], 0, begin
    for place in range(begin, end):
        character = code[place]
        if character in "([{":
            depth += 1
        elif character in ")]}":
            depth -= 1
        elif character == "," and depth == 0:
            spans.append((last, place))
            last = place + 1
    spans.append((last, end))
    return spans


NO_STATEMENT = re.compile(
    r"(return|if|else|for|while|do|switch|using|namespace|class|struct|enum|union|template|static"
    r"|const|constexpr|auto|case|default|break|continue|goto|typedef|friend|public|private"
    r"|protected|throw|extern|explicit|virtual|inline|mutable|static_assert|operator|co_return)\b"
)
CALL = re.compile(r"(\+\+|--)?[*(]*(?:::)?[\w:]+(?:(?:\.|->|::|\(|\[|<).*)?$", re.DOTALL)
ASSIGNMENT = re.compile(r"[\w.\->\[\]()*:]+\s*(?:[-+*|&^]|<<|>>)?=(?!=)\s*\S", re.DOTALL)


def is_statement(statement):
    """Whether a statement without its semicolon is a call or an assignment, not a declaration."""
    if not statement or NO_STATEMENT.match(statement) or statement.startswith(("[[", "~", ":")):
        return False
    if ASSIGNMENT.match(statement):
        return True
    if statement.startswith("static_cast<void>("):
        return True
    if re.match(r"[\w:]+<.*> \w+( = .*)?$", statement, re.DOTALL):
        return False
    # A declaration has a blank between its type and its name.
    head = re.split(r"[(\[{]", statement, maxsplit=1)[0]
    if " " in head.strip() or "(" not in statement and not statement.startswith(("++", "--")):
        return False
    return CALL.match(statement) is not None and not re.match(r"[A-Z_]{3,}\(", statement)


def statements(code):
    """The statements that could be left out, as spans without their semicolons."""
    depths, begin = [], 0
    for place, character in enumerate(code):
        if character in "([":
            depths.append(place)
        elif character in ")]":
            if depths and code[depths[-1]] != "{":
                depths.pop()
        elif character == "{":
            depths.append(place)
            begin = place + 1
        elif character == "}":
            while depths and code[depths.pop()] != "{":
                pass
            begin = place + 1
        elif character == ";":
            if depths and code[depths[-1]] != "{":
                continue
            if depths:  # in a body of some kind
                yield from statement_at(code, begin, place)
            begin = place + 1


def statement_at(code, begin, end):
    while begin < end and code[begin].isspace():
        begin += 1
    if condition := re.match(r"(?:else )?if (?:constexpr )?\(", code[begin:end]):
        close = closing(code, begin + condition.end() - 1)
        if close is not None and close < end:
            yield from statement_at(code, close + 1, end)
        return
    if code.startswith("else ", begin):
        yield from statement_at(code, begin + 5, end)
        return
    if is_statement(code[begin:end].strip()):
        yield begin, end


def deletions(code):
    for begin, end in statements(code):
        yield begin, end, "{}"


def negations(code):
    for match in re.finditer(r"\b(if|while) \(", code):
        open_at = match.end() - 1
        close = closing(code, open_at)
        if close is None:
            continue
        condition = code[open_at + 1 : close]
        begin = open_at + 1 + (condition.rfind(";") + 1)
        text = code[begin:close]
        # A declaration as the condition cannot be negated.
        if re.match(r"\s*(const |auto|[\w:<>]+ [*&]?\w+ =)", text) or "= " in text.replace(
            "== ", ""
        ).replace("!= ", "").replace("<= ", "").replace(">= ", ""):
            continue
        yield begin, close, "!(" + text.strip() + ")"


RELATIONS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "+=": "-=", "-=": "+=",
}


def relations(code):
    for match in re.finditer(r"(?<=[\w)\]\"'] )(<=|>=|==|!=|&&|\|\||<|>|\+=|-=|\+|-)(?= [^=])", code):
        yield match.start(), match.end(), RELATIONS[match[0]]


def swaps(code):
    """Two neighbouring arguments of a call; those of two types do not build."""
    for match in re.finditer(r"\b\w+[({]", code):
        if re.match(r"(if|for|while|switch|catch|sizeof|decltype|alignof|operator)\b", match[0]):
            continue
        close = closing(code, match.end() - 1)
        if close is None or code[match.end() - 1 : close].count("\n") > 6:
            continue
        spans = split_at_commas(code, match.end(), close)
        for (begin, middle), (after, end) in zip(spans, spans[1:]):
            first, second = code[begin:middle].strip(), code[after:end].strip()
            # What has a blank in front declares a parameter.
            if first == second or not first or not second or ";" in first + second:
                continue
            if any(re.match(r"(const |std::\w+<.*> \w+$|[\w:]+ [&*]?\w+$|[\w:<>]+&+ \w+$)", part)
                   for part in (first, second)):
                continue
            yield begin, end, f"{second}, {first}"


def constants(code, text):
    for match in re.finditer(r"(?<![\w.\"'])(\d[\d']*(?:\.\d+)?)(u|U|L|UL|ull)?(?![\w.'\"])", code):
        number = match[1].replace("'", "")
        changed = str(float(number) * 2 + 1) if "." in number else str(int(number) + 1)
        yield match.start(1), match.end(1), changed
    for match in re.finditer(r"\b(true|false)\b", code):
        yield match.start(), match.end(), "false" if match[0] == "true" else "true"
    for match in re.finditer(r'"_+"', code):
        literal = text[match.start() : match.end()]
        if literal.startswith('"') and "%" not in literal:
            yield match.end() - 1, match.end(), '~"'


FIELD = re.compile(
    r"^[ \t]+(?:const |mutable )?(?P<type>[\w:<>,*& ]+?)[ &*](?P<name>[a-z]\w*)(?: = [^;()]+|\{[^;()]*\})?;",
    re.MULTILINE,
)
NO_TYPE = re.compile(r"(return|using|friend|namespace|typedef|static|delete|goto|throw|else)\b")
ENUM = re.compile(r"\benum (?:class )?(?P<name>\w+)[^{;]*\{(?P<cases>[^}]*)\}")


class Members:
    """Fields of one type in one class, and the cases of enumerations, of all the given files."""

    def __init__(self, codes):
        self.fields, self.cases = {}, {}
        for code in codes:
            for match in ENUM.finditer(code):
                cases = re.findall(r"(\w+)\s*(?:=[^,]*)?(?:,|$)", match["cases"].strip())
                for case, other in zip(cases, cases[1:] + cases[:1]):
                    if case != other:
                        self.cases.setdefault(f"{match['name']}::{case}", other)
            last_type, last_name = None, None
            for match in FIELD.finditer(code):
                if NO_TYPE.match(match["type"]):
                    continue
                if match["type"] == last_type:
                    self.fields.setdefault(match["name"], last_name)
                    self.fields.setdefault(last_name, match["name"])
                last_type, last_name = match["type"], match["name"]

    def faults(self, code):
        for match in re.finditer(r"\b(\w+)::(\w+)\b(?!\s*[(:])", code):
            if other := self.cases.get(match[0]):
                yield match.start(2), match.end(2), other
        for match in re.finditer(r"(?<=\w[.>])(\w+)\b(?![\w(])", code):
            if other := self.fields.get(match[1]):
                yield match.start(), match.end(), other


def returns(code):
    for match in re.finditer(r"\breturn ([^;]+);", code):
        value = match[1].strip()
        if value in ("{}", "nullptr", "true", "false", "std::nullopt", "0") or "[" in value[:1]:
            continue
        yield match.start(1), match.end(1), "{}"


def faults_in(file, text, members):
    """All faults that the rules see in one file, in the order of KINDS and of the text."""
    code = masked(text)
    rules = {
        "delete": deletions(code),
        "negate": negations(code),
        "relation": relations(code),
        "swap": swaps(code),
        "constant": constants(code, text),
        "member": members.faults(code),
        "return": returns(code),
    }
    for kind in KINDS:
        for begin, end, new in rules[kind]:
            old = text[begin:end]
            if kind in ("negate", "swap"):
                new = rebuilt(kind, text, code, begin, end)
            if new == old or is_idle(code, text, begin, kind):
                continue
            line = text.count("\n", 0, begin) + 1
            yield Fault(file, begin, end, line, kind, old, new)


def rebuilt(kind, text, code, begin, end):
    """The replacement with its literals, which the masked code lacks."""
    if kind == "negate":
        return "!(" + text[begin:end].strip() + ")"
    (_, middle), (after, _) = split_at_commas(code, begin, end)
    return f"{text[after:end].strip()}, {text[begin:middle].strip()}"


def is_idle(code, text, begin, kind):
    """Whether a fault there changes nothing that runs: declarations that only the compiler reads."""
    line_begin = code.rfind("\n", 0, begin) + 1
    line_end = code.find("\n", begin)
    line = code[line_begin : line_end if line_end >= 0 else len(code)]
    if re.search(r"\bstatic_assert\b|\b__attribute__\b|NOLINT|\breserve\(|\bprefetch\w*\(", line):
        return True
    if kind in ("relation", "constant") and re.match(r"\s*(template\b|using\b|#)", line):
        return True
    return kind == "constant" and is_wording(code, text, begin, line_begin, line_end)


def is_wording(code, text, begin, line_begin, line_end):
    """Whether a literal is a sentence of an error or of help, which is free to be worded anew."""
    if 'extern "' in text[line_begin:line_end]:
        return True
    if code[begin] != '"':
        return False
    literal_begin = text.rfind('"', 0, begin)
    statement_begin = max(code.rfind(";", 0, begin), code.rfind("{", 0, begin), 0)
    statement = code[statement_begin:begin]
    return " " in text[literal_begin:begin] and bool(
        re.search(r"Error|\badd(?:_option|_flag|_subcommand|Repeatable)", statement))
