# SPDX-License-Identifier: Apache-2.0
"""What can be changed in a C++ source: finds the places by reading tokens, and makes one text for each change.

Only bodies of functions are changed, and the numbers of named constants. Comments, texts, include lines, declarations
and the arguments of trace calls are not. The sources are expected as clang-format leaves them: a comparison has a space
on both sides, the bracket of a template has none before it.
"""

import dataclasses
import re

TOKEN = re.compile(r"""
      (?P<space>\s+)
    | (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<directive>\#(?:\\\n|[^\n])*)
    | (?P<text>(?:u8|[uUL])?R"(?P<mark>[^()\\\s]*)\(.*?\)(?P=mark)"
        | (?:u8|[uUL])?"(?:\\.|[^"\\\n])*" | (?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
    | (?P<number>\.?\d(?:[eEpP][+-]|'(?=\w)|[\w.])*)
    | (?P<word>[A-Za-z_]\w*)
    | (?P<sign><=>|->\*|<<=|\.\.\.|::|->|\+\+|--|<<|&&|\|\||[-+*/%&|^=!<>]=|[{}()\[\];:,.?~!+\-*/%&|^=<>])
    """, re.VERBOSE | re.DOTALL)

OPENING = {"(": ")", "[": "]", "{": "}"}
ASSIGNMENTS = ("=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=")
COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}
EQUALITIES = {"==": "!=", "!=": "=="}
# A statement that begins with one of these is no expression.
DECLARING = frozenset("""alignas auto bool case catch char class const constexpr default do double else enum extern float for
    friend goto if int long namespace return short signed static static_assert struct switch template try typedef
    typename union unsigned using void volatile while""".split())
JUMPS = ("return", "break", "continue")
NOT_CALLED = frozenset("""alignof catch constexpr co_return decltype for if noexcept operator return sizeof
    static_assert switch throw typeid while""".split())
OPERATORS = ("negate", "drop", "shift", "swap")
# Of these the order of the arguments says nothing, so to swap them changes nothing.
SYMMETRIC = ("max", "min")


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One change: `source[start:end]` becomes `replacement`."""

    file: str
    operator: str
    start: int
    end: int
    replacement: str
    number: int  # of the line
    line: str  # the changed lines before, on one line
    becomes: str  # and after

    def applied_to(self, source):
        return source[:self.start] + self.replacement + source[self.end:]

    def names(self):
        """What an entry of the list of survivors is compared with."""
        return self.file, self.operator, self.line, self.becomes


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


def tokens_of(source):
    """The tokens that the compiler sees, without include lines and other directives."""
    tokens = []
    place = 0
    while place < len(source):
        match = TOKEN.match(source, place)
        if match is None:
            raise ValueError(f"not understood: {source[place:place + 20]!r}")
        kind = match.lastgroup if match.lastgroup != "mark" else "text"
        if kind not in ("space", "comment", "directive"):
            tokens.append(Token(kind, match.group(), match.start(), match.end()))
        place = match.end()
    return tokens


def partners(tokens):
    """For each opening bracket the place of its closing one, and the other way round."""
    pairs, open_ones = {}, []
    for place, token in enumerate(tokens):
        if token.kind != "sign":
            continue
        if token.text in OPENING:
            open_ones.append(place)
        elif token.text in OPENING.values():
            begin = open_ones.pop()
            if OPENING[tokens[begin].text] != token.text:
                raise ValueError(f"{tokens[begin].text} is closed by {token.text}")
            pairs[begin], pairs[place] = place, begin
    if open_ones:
        raise ValueError("a bracket is not closed")
    return pairs


class Source:
    """A source and where it can be changed."""

    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = tokens_of(text)
        self.pairs = partners(self.tokens)
        self.around = self.brackets_around()
        self.inside = [False] * len(self.tokens)  # in the body of a function
        self.constant = [False] * len(self.tokens)  # in the value of a constant outside of functions
        self.silent = [False] * len(self.tokens)  # not to be changed
        self.read_outside(0, len(self.tokens))
        self.hush()

    # What is where.

    def brackets_around(self):
        """For each token the place of the bracket that it stands in; -1 where it stands in none."""
        around, open_ones = [], [-1]
        for place in range(len(self.tokens)):
            if place in self.pairs and self.pairs[place] < place:
                open_ones.pop()
            around.append(open_ones[-1])
            if place in self.pairs and self.pairs[place] > place:
                open_ones.append(place)
        return around

    def word(self, place):
        """The token's text; nothing beyond the ends."""
        return self.tokens[place].text if 0 <= place < len(self.tokens) else ""

    def kind(self, place):
        return self.tokens[place].kind if 0 <= place < len(self.tokens) else ""

    def read_outside(self, begin, end):
        """Marks the functions and constants between two places of a namespace or class."""
        head = place = begin
        while place < end:
            text = self.word(place)
            if text in ("(", "["):
                place = self.pairs[place] + 1
                continue
            if text == "{":
                close = self.pairs[place]
                what = self.what_opens(head, place)
                if what == "space":
                    self.read_outside(place + 1, close)
                elif what == "function":
                    self.inside[place + 1:close] = [True] * (close - place - 1)
                place = close + 1
                if what != "value":
                    head = place
                continue
            if text == ";":
                self.read_constant(head, place)
            place += 1
            if text == ";" or text == ":" and self.word(place - 2) in ("public", "private", "protected"):
                head = place

    def what_opens(self, head, place):
        """What the brace there begins: a space of names, a function or a value."""
        words = [self.word(one) for one in self.top_level(head, place)]
        if "namespace" in words or "extern" in words[:1]:
            return "space"
        if any(word in words for word in ("class", "struct", "union", "enum")) and "(" not in words:
            return "space"
        if any(word == "=" and words[at - 1] != "operator" for at, word in enumerate(words)):
            return "value"
        in_initialisers = ":" in words and self.kind(place - 1) == "word"
        if "(" not in words or in_initialisers:
            return "value"
        return "function"

    def top_level(self, begin, end):
        """The places of a range without what stands in brackets; the brackets belong to it."""
        place = begin
        while place < end:
            yield place
            if place in self.pairs and self.word(place) in OPENING:
                place = self.pairs[place]
                if place < end:
                    yield place
            place += 1

    def read_constant(self, head, end):
        words = [self.word(one) for one in range(head, end)]
        if "constexpr" not in words[:3]:
            return
        value = next((at for at, word in enumerate(words) if word in ("=", "{")), None)
        if value is not None and "(" not in words[:value]:
            self.constant[head + value:end] = [True] * (end - head - value)

    def hush(self):
        """Trace calls and static assertions stay as they are."""
        for place in range(len(self.tokens)):
            opening = place + 1
            if self.word(place) == "trace" and self.word(place + 1) == "." and self.kind(place + 2) == "word":
                opening = place + 3
            if self.word(place) in ("trace", "static_assert") and self.word(opening) == "(":
                close = self.pairs[opening]
                self.silent[place:close + 1] = [True] * (close + 1 - place)

    # The changes.

    def mutants(self):
        found = {}
        for name in OPERATORS:
            for start, end, replacement in getattr(self, name)():
                mutant = self.mutant(name, start, end, replacement)
                found.setdefault((start, end, replacement), mutant)
        return list(found.values())

    def mutant(self, operator, start, end, replacement):
        first = self.text.rfind("\n", 0, start) + 1
        last = self.text.find("\n", end)
        last = len(self.text) if last < 0 else last
        after = self.text[first:start] + replacement + self.text[end:last]
        return Mutant(self.file, operator, start, end, replacement, self.text.count("\n", 0, start) + 1,
                      " ".join(self.text[first:last].split()), " ".join(after.split()))

    def open_places(self):
        """Those that may be changed."""
        return (place for place in range(len(self.tokens)) if self.inside[place] and not self.silent[place])

    def span(self, begin, end):
        """From the first of these tokens to before the last."""
        return self.tokens[begin].start, self.tokens[end - 1].end

    # Negate a condition.

    def negate(self):
        whole = set()  # equalities that are the whole of a condition, negated already
        for place in self.open_places():
            condition = self.condition_at(place)
            if condition is None:
                continue
            begin, end = condition
            equal = [one for one in range(begin, end) if self.word(one) in EQUALITIES]
            if not any(self.word(one) in ("&&", "||", "?", "{") for one in range(begin, end)):
                whole.update(equal)
            yield self.negated(begin, end)
        for place in self.open_places():
            if self.word(place) in EQUALITIES and place not in whole:
                yield (*self.span(place, place + 1), EQUALITIES[self.word(place)])

    def condition_at(self, place):
        """The condition of what begins at this token."""
        if self.word(place) == "?":
            begin = self.begin_of_choice(place)
            return None if begin == place else (begin, place)
        if self.word(place) not in ("if", "while", "for") or self.word(place + 1) != "(":
            return None
        begin, end = place + 2, self.pairs[place + 1]
        cuts = [one for one in self.top_level(begin, end) if self.word(one) == ";"]
        if self.word(place) == "for":
            if len(cuts) != 2:
                return None
            begin, end = cuts[0] + 1, cuts[1]
        elif cuts:
            begin = cuts[-1] + 1
        return (begin, end) if begin < end else None

    def begin_of_choice(self, place):
        """Where the condition before this question mark begins."""
        place -= 1
        while place >= 0:
            text = self.word(place)
            if text in OPENING.values():
                place = self.pairs[place]
            elif text in OPENING or text in ASSIGNMENTS or text in ("return", "throw", ",", ";", "?", ":"):
                break
            place -= 1
        return place + 1

    def negated(self, begin, end):
        start, stop = self.span(begin, end)
        text = self.text[start:stop]
        equals = next((one for one in self.top_level(begin, end) if self.word(one) == "="), None)
        if equals is not None and equals > begin + 1 and self.kind(equals - 1) == "word":
            return start, stop, f"{text}; !({self.word(equals - 1)})"
        return start, stop, f"!({text})"

    # Drop a statement.

    def drop(self):
        for place in self.open_places():
            if not self.begins_statement(place):
                continue
            end = self.end_of_statement(place)
            if end is not None and end > place and self.can_be_dropped(place, end):
                yield (*self.span(place, end + 1), "{}")

    def begins_statement(self, place):
        before = self.word(place - 1)
        if self.word(self.around[place]) != "{":  # the parts of a `for`, say
            return False
        if before in (";", "else", "do"):
            return True
        if before == "{":
            return self.is_block(place - 1)
        if before == "}":
            return self.is_block(self.pairs[place - 1])
        if before == ")":
            return self.word(self.pairs[place - 1] - 1) in ("if", "while", "for", "switch", "constexpr")
        if before == ":":
            return self.word(place - 2) == "default" or self.word(place - 3) == "case"
        return False

    def is_block(self, brace):
        before = self.word(brace - 1)
        return not self.inside[brace] or before in (")", "]", ";", "{", "}", ":", "else", "do", "try", "const", "mutable",
                                                    "noexcept")

    def end_of_statement(self, place):
        for one in self.top_level(place, len(self.tokens)):
            if self.word(one) == ";":
                return one
            if self.word(one) in OPENING.values() and self.pairs[one] < place:
                return None
        return None

    def can_be_dropped(self, place, end):
        first = self.word(place)
        if first in JUMPS:
            return end == place + 1
        if first in DECLARING or first in ("{", "}"):
            return False
        return not self.declares(place)

    def declares(self, place):
        """Whether a name stands there and then another: a type and what is declared."""
        if self.kind(place) != "word":
            return False
        while self.kind(place) == "word":
            place += 1
            if self.word(place) == "<" and self.tokens[place].start == self.tokens[place - 1].end:
                place = self.after_angles(place)
            if self.word(place) != "::":
                break
            place += 1
        while self.word(place) in ("&", "&&", "*"):
            place += 1
        return self.kind(place) == "word" and self.word(place - 1) not in ("delete", "throw", "co_return")

    def after_angles(self, place):
        depth = 0
        for one in self.top_level(place, len(self.tokens)):
            depth += {"<": 1, ">": -1}.get(self.word(one), 0)
            if depth == 0:
                return one + 1
        return place

    # Shift a bound.

    def shift(self):
        for place in range(len(self.tokens)):
            if self.silent[place] or not (self.inside[place] or self.constant[place]):
                continue
            token = self.tokens[place]
            if token.kind == "number":
                for by in (1, -1):
                    text = shifted(token.text, by)
                    if text is not None:
                        yield token.start, token.end, text
            elif token.text in COMPARISONS and self.text[token.start - 1].isspace() and self.text[token.end].isspace():
                yield token.start, token.end, COMPARISONS[token.text]

    # Swap two arguments.

    def swap(self):
        for place in self.open_places():
            if self.word(place) != "(" or not self.is_call(place):
                continue
            if self.word(place - 1) in SYMMETRIC:
                continue
            arguments = self.arguments(place)
            for (begin, middle), (other, end) in zip(arguments, arguments[1:]):
                left, right = slice(*self.span(begin, middle)), slice(*self.span(other, end))
                first, between, second = self.text[left], self.text[left.stop:right.start], self.text[right]
                if first != second:
                    yield left.start, right.stop, second + between + first

    def is_call(self, place):
        before = self.kind(place - 1)
        return before == "word" and self.word(place - 1) not in NOT_CALLED

    def arguments(self, place):
        """The ranges of tokens between the commas of a call."""
        found, begin, close, depth = [], place + 1, self.pairs[place], 0
        for one in self.top_level(place + 1, close):
            text = self.word(one)
            if text == "<" and self.tokens[one].start == self.tokens[one - 1].end:
                depth += 1
            elif text == ">" and depth > 0:
                depth -= 1
            elif text == "," and depth == 0:
                found.append((begin, one))
                begin = one + 1
        if begin < close:
            found.append((begin, close))
        return found


def shifted(number, by):
    """The number, one more or one less; nothing where it would fall below zero."""
    match = re.fullmatch(r"(0[xX])?([\da-fA-F']+)([uUlLzZ]*|[a-z_]\w*)" if number[:2] in ("0x", "0X") else
                         r"()([\d']+(?:\.\d*)?|\.\d+)([uUlLzZfF]*|[a-z_]\w*)", number)
    if match is None:
        return None
    prefix, digits, suffix = match.group(1) or "", match.group(2).replace("'", ""), match.group(3)
    if prefix:
        value = int(digits, 16) + by
        return None if value < 0 else f"0x{value:X}{suffix}"
    if "." in digits:
        return f"{float(digits) + by:g}{suffix}" if float(digits) + by >= 0 else None
    return None if int(digits) + by < 0 else f"{int(digits) + by}{suffix}"
