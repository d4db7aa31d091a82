"""Plants small faults into C++ sources: all of them at once, each behind a switch that the environment sets, so that
one build serves every mutant. mutation.h holds the switch."""

import re
from collections import namedtuple

from project_files import without_comments_and_texts

# "where" tells mutants apart that differ in nothing but their place in the line: the how many-th of its kind.
Mutant = namedtuple("Mutant", "number path line kind where text")

LIVES = "mutation::lives({})"
KEYWORDS = {"if", "for", "while", "switch", "return", "case", "default", "break", "continue", "else", "using", "const",
            "constexpr", "static", "struct", "class", "template", "public", "private", "protected", "do", "auto",
            "namespace", "enum", "typedef", "friend", "inline", "virtual", "explicit", "delete", "Q_OBJECT"}
COMPARISON = re.compile(r"(?<=\s)(==|!=|<=|>=|<|>)(?=\s)")
LOGIC = re.compile(r"(?<=\s)(&&|\|\|)(?=\s)")
NOT = re.compile(r"!(?=[\w(:])")
BOOL = re.compile(r"(?<!\w)(true|false)(?!\w)")
NUMBER = re.compile(r"(?<![\w.\[\"'])([012])(?![\w.'\]])")
LITERAL = re.compile(r'(QStringLiteral\()?(?:\bu)?"[^"\n]*"(?:\s*"[^"\n]*")*(?(1)\))')
# The switch is asked at run time.
CONSTEXPR_FUNCTION = re.compile(r"^constexpr (?=[\w:]+ \w+\()", re.MULTILINE)
JUMP = re.compile(r"^( +)(return|continue|break)\b[^;]*;", re.MULTILINE)
STATEMENT = re.compile(r"^( {4,})(?:Q_EMIT\s*)?((?:\+\+|--)?[A-Za-z_][\w:]*)", re.MULTILINE)
# Lines in which a value must be known to the compiler, or that are no code.
FIXED_LINE = re.compile(r"^\s*(#|case\b|constexpr\b|static_assert\b|template\b|using\b|namespace\b)")
OPEN, CLOSE = "([{", ")]}"


class Edit(namedtuple("Edit", "start end kind make")):
    """What stands between start and end is replaced by what make gives for a number."""


def matching(mask, position):
    """The end of the bracket that opens at this position."""
    depth = 0
    for index in range(position, len(mask)):
        depth += (mask[index] in OPEN) - (mask[index] in CLOSE)
        if depth == 0:
            return index + 1
    return len(mask)


def is_assignment(mask, index):
    return mask[index] == "=" and mask[index - 1] not in "=!<>" and mask[index + 1] != "="


def is_border(mask, index):
    """Whether something stands here that binds less than the logical operators."""
    character = mask[index]
    if character == ":":
        return ":" not in (mask[index - 1], mask[index + 1])
    return character in ";,?{}" or is_assignment(mask, index)


def operands(mask, start, end):
    """Where the left operand of a logical operator begins, and where the right one ends."""
    operator = mask[start:end]
    depth = 0
    left = start - 1
    while left >= 0:
        if mask[left] in CLOSE and mask[left] != "}":
            depth += 1
        elif mask[left] in OPEN and mask[left] != "{":
            depth -= 1
        if depth < 0 or (depth == 0 and (is_border(mask, left) or (operator == "&&" and mask[left - 1:left + 1] == "||")
                                         or re.match(r"\breturn\b", mask[max(0, left - 5):left + 1]))):
            break
        left -= 1
    depth = 0
    right = end
    while right < len(mask):
        depth += (mask[right] in OPEN) - (mask[right] in CLOSE)
        if depth < 0 or (depth == 0 and (is_border(mask, right) or mask[right:right + 2] == "||" or
                                         (operator == "&&" and mask[right:right + 2] == "&&"))):
            break
        right += 1
    return left + 1, right


def expression_statements(mask):
    """Where a statement begins that is nothing but a call or an assignment."""
    for found in STATEMENT.finditer(mask):
        before = mask[:found.start()].rstrip()
        if before and before[-1] not in ";{}" or found[2].split("::")[0] in KEYWORDS:
            continue
        position = found.end()
        while True:
            if mask[position:position + 1] in ("(", "["):
                position = matching(mask, position)
            elif chain := re.compile(r"\s*(?:\.|->|::)\s*(?:template\s+)?\w+").match(mask, position):
                position = chain.end()
            else:
                break
        follows = mask[position:].lstrip()
        is_default = re.match(r"=\s*(default|delete)\b", follows)
        if re.match(r";|=(?!=)|\+=|-=|<<|>>", follows) and not is_default:
            yield found.end(1)


def plain_conditions(mask):
    """Conditions of if that hold nothing that is mutated otherwise."""
    for found in re.finditer(r"\bif \(", mask):
        start = found.end()
        end = matching(mask, start - 1) - 1
        start += mask[start:end].rfind(";") + 1
        inside = mask[start:end]
        if not re.search(r"!|&&|\|\||==|<=|>=| < | > ", inside):
            yield start, end


def edits_of(source, path):
    mask = without_comments_and_texts(source)
    lines = source.split("\n")
    # A header declares; what stands behind its class are templates.
    beginning = mask.rfind("\n};") if path.endswith(".h") else 0

    def is_fixed(position):
        return position < beginning or FIXED_LINE.match(lines[source.count("\n", 0, position)])

    edits = []

    def add(start, end, kind, make):
        if not is_fixed(start):
            edits.append(Edit(start, end, kind, make))

    for found in COMPARISON.finditer(mask):
        sign = found[1]
        add(found.start(), found.end(), f"other comparison than {sign}",
            lambda number, sign=sign: f"{sign} mutation::Comparison{{{number}}} {sign}")
    for found in NOT.finditer(mask):
        add(found.start(), found.end(), "no !", lambda number: LIVES.format(number) + " != !")
    for found in BOOL.finditer(mask):
        add(found.start(), found.end(), f"not {found[1]}",
            lambda number, word=found[1]: f"({LIVES.format(number)} != {word})")
    for found in NUMBER.finditer(mask):
        other = {"0": "1", "1": "0", "2": "1"}[found[1]]
        add(found.start(), found.end(), f"{other} for {found[1]}",
            lambda number, word=found[1], other=other: f"({LIVES.format(number)} ? {other} : {word})")
    for found in LITERAL.finditer(mask):
        text = source[found.start():found.end()]
        nothing = "QString()" if found[1] else 'u""' if text[0] == "u" else '""'
        if not text.endswith('""'):
            add(found.start(), found.end(), "empty text",
                lambda number, text=text, nothing=nothing: f"({LIVES.format(number)} ? {nothing} : {text})")
    for found in JUMP.finditer(mask):
        # A function's last return cannot be left out.
        if found[2] != "return" or len(found[1]) > 4:
            add(found.end(1), found.end(1), f"no {found[2]}", lambda number: f"if (!{LIVES.format(number)}) ")
    for start in expression_statements(mask):
        add(start, start, "no statement", lambda number: f"if (!{LIVES.format(number)}) ")
    for start, end in plain_conditions(mask):
        if not is_fixed(start):
            add(start, start, "opposite condition", lambda number: LIVES.format(number) + " != bool(")
            edits.append(Edit(end, end, None, lambda _: ")"))
    logic = [(found.start(), found.end(), *operands(mask, found.start(), found.end()))
             for found in LOGIC.finditer(mask) if not is_fixed(found.start())]
    return edits, logic


def instrument(source, path, first_number):
    """The source with all its mutants, and their list."""
    edits, logic = edits_of(source, path)
    numbers = {}
    mutants = []
    count_of = {}
    lines = source.split("\n")

    def note(position, kind):
        line = source.count("\n", 0, position) + 1
        key = (line, kind)
        count_of[key] = count_of.get(key, 0) + 1
        number = first_number + len(mutants)
        mutants.append(Mutant(number, path, line, kind, count_of[key], lines[line - 1].strip()))
        return number

    places = [(edit.start, edit.kind, edit) for edit in edits if edit.kind] + \
             [(item[0], f"other operator than {source[item[0]:item[1]]}", item) for item in logic]
    for start, kind, thing in sorted(places, key=lambda place: place[:2]):
        numbers[id(thing)] = note(start, kind)

    def render(start, end, skipped):
        inner = [item for item in logic if start <= item[2] and item[3] <= end and item not in skipped]
        if inner:
            # The outermost one; of equal ones the last, since the operators bind to the left.
            item = max(inner, key=lambda item: (item[3] - item[2], item[0]))
            begin, stop, left, right = item
            operator = source[begin:stop]
            other = "||" if operator == "&&" else "&&"
            left_text = render(left, begin, skipped + [item])
            right_text = render(stop, right, skipped + [item])
            middle = (f"({LIVES.format(numbers[id(item)])} ? ({left_text}) {other} ({right_text}) : "
                      f"({left_text}) {operator} ({right_text}))")
            return render(start, left, skipped + [item]) + " " + middle + render(right, end, skipped + [item])
        pieces = []
        position = start
        here = [edit for edit in edits if start <= edit.start and edit.end <= end and
                (edit.start < end or edit.kind is None)]
        for edit in sorted(here, key=lambda edit: (edit.start, edit.end)):
            if edit.start < position:
                continue
            pieces.append(source[position:edit.start])
            pieces.append(edit.make(numbers.get(id(edit), 0)))
            position = edit.end
        pieces.append(source[position:end])
        return "".join(pieces)

    text = CONSTEXPR_FUNCTION.sub("inline ", render(0, len(source), []))
    return '#include "mutation.h"\n' + text, mutants
