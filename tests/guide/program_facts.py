"""What the sources say that the users' guide repeats: messages, options, codes, ranges and numbers.

Texts with parts that differ from run to run are patterns: a * stands for such a part.
"""

import re

TOKEN = re.compile(r'"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'|//[^\n]*|/\*.*?\*/|\w+|::|->|[^\s\w]', re.S)
ESCAPE = re.compile(r"\\(x[0-9A-Fa-f]{2}|.)")
SHORT = {"n": "\n", "t": "\t", "r": "\r", "0": "\0"}


def unescape(literal):
    return ESCAPE.sub(lambda match: SHORT.get(match[1], match[1]), literal[1:-1])


def tokens_of(source):
    """The tokens of C++ code, without comments and preprocessor lines."""
    source = re.sub(r"^[ \t]*#.*$", "", source, flags=re.M)
    return [token for token in TOKEN.findall(source) if not token.startswith(("//", "/*"))]


def call_arguments(tokens, start):
    """The arguments of the call whose opening bracket stands at `start`, each a list of tokens."""
    depth, arguments = 0, [[]]
    for token in tokens[start:]:
        if token in "([{":
            depth += 1
            if depth == 1:
                continue
        elif token in ")]}":
            depth -= 1
            if depth == 0:
                return arguments
        if token == "," and depth == 1:
            arguments.append([])
        else:
            arguments[-1].append(token)
    raise ValueError("a bracket isn't closed")


def tidy(pattern):
    return re.sub(r"\*(\s*\*)+", "*", re.sub(r"\s+", " ", pattern)).strip()


def pattern_of(tokens, constants):
    """A text put together with +: literals and named texts as they are, all else as *."""
    pattern, depth = "", 0
    for token in tokens:
        if token in ("(", "[", "{"):
            depth += 1
        elif token in (")", "]", "}"):
            depth -= 1
        elif depth > 0:
            continue  # what stands in brackets makes a part of its own
        elif token.startswith('"'):
            pattern += unescape(token)
        elif token in constants:
            pattern += constants[token]
        elif token != "+" and not pattern.endswith("*"):
            pattern += "*"
    return tidy(pattern)


def text_constants(tokens):
    """Named texts: const char NAME[] = "..."."""
    found = {}
    for i in range(len(tokens) - 5):
        if tokens[i] == "char" and tokens[i + 2:i + 5] == ["[", "]", "="] and tokens[i + 5].startswith('"'):
            text, at = "", i + 5
            while tokens[at].startswith('"'):
                text += unescape(tokens[at])
                at += 1
            found[tokens[i + 1]] = text
    return found


def error_messages(tokens, constants):
    for i, token in enumerate(tokens):
        if token in ("ToolError", "UsageError", "CancelledError"):
            named = i + 2 < len(tokens) and re.fullmatch(r"\w+", tokens[i + 1])
            opening = i + 2 if named else i + 1  # ToolError(...) or ToolError name(...)
            if opening < len(tokens) and tokens[opening] == "(":
                yield pattern_of(call_arguments(tokens, opening)[0], constants)
        elif token == "Require" and tokens[i + 1] == "(":
            yield pattern_of(call_arguments(tokens, i + 1)[-1], constants) + " (code *)"
        elif token == "PrintError" and tokens[i - 1] != "void":
            yield pattern_of(call_arguments(tokens, i + 1)[0], constants)
        elif token in ("Refuse", "Failed") and tokens[i - 1] not in ("void", "BatchAnswer"):
            yield pattern_of(call_arguments(tokens, i + 1)[-1], constants)
        elif token == "return" and tokens[i + 1] in constants:
            yield constants[tokens[i + 1]]


def result_messages(tokens):
    """A failed run's result in words: each literal but the number's own, with the number behind it."""
    for token in tokens:
        if token.startswith('"') and (text := unescape(token)) and not text.startswith((" (", ")")):
            yield text + " (result *)"


def messages(tools):
    """All that runfilter can say on its error output, without its own name and that of the file before it."""
    found = set()
    for path in sorted(tools.rglob("*.cpp")):
        tokens = tokens_of(path.read_text("utf-8"))
        found.update(error_messages(tokens, text_constants(tokens)))
        if path.name == "result_words.cpp":
            found.update(result_messages(tokens))
    found = {pattern.removeprefix("*: ") for pattern in found}  # a file's name
    # What consists of other messages' parts says nothing by itself.
    return {pattern for pattern in found if re.search(r"[A-Za-z]", re.sub(r"\((?:code|result) \*\)", "", pattern))}


class Program:
    """The facts, read from the sources below `root`."""

    def __init__(self, root):
        self.root = root
        self.messages = messages(root / "tools")
        usage = text_constants(tokens_of(self.read("tools/arguments.h")))["kUsage"]
        self.usage_options = set(re.findall(r"--[a-z][a-z-]*", usage))
        self.parsed_options = set(re.findall(r'word == "(-[-a-z]*)"', self.read("tools/arguments.cpp")))
        self.limits = {name: int(number) for name, number in
                       re.findall(r"int32_t (kMost\w+) = (\d+);", self.read("tools/arguments.h"))}
        self.statuses = self.read_statuses()
        ids = self.read("resources/plugin_ids.h")
        self.names = dict(re.findall(r'#define (PLUGIN_\w+) "([^"]*)"', ids))
        self.codes = {name: bytes.fromhex(number).decode("ascii") for name, number in
                      re.findall(r"#define ((?:CODE|KEY)_\w+) 0x([0-9A-F]{8})L", ids)}
        self.parameters = self.read_parameters()
        self.largest = int(re.search(r"(\d+)L, \d+L,\s*// largest image", self.read("resources/pipl.rc"))[1])
        self.version = re.search(r'VERSION_TEXT "([^"]*)"', self.read("resources/version_numbers.h"))[1]

    def read(self, name):
        return (self.root / name).read_text("utf-8")

    def read_statuses(self):
        found = set()
        for path in (self.root / "tools").rglob("*"):
            if path.suffix in (".cpp", ".h"):
                for body in re.findall(r"enum ExitStatus[^{]*\{([^}]*)\}", path.read_text("utf-8")):
                    found.update(int(number) for number in re.findall(r"=\s*(\d+)", body))
        return found

    def read_parameters(self):
        """A row for each value: name in the dialog, key, lowest, highest and default value."""
        dialog = self.read("resources/stairmelt.rc")
        controls = re.findall(r"\{IDC_(\w+)_SLIDER, IDC_\w+_EDIT, (\d+), (\d+), &ViewParams::(\w+)\}",
                              self.read("ui/dialog_controls.cpp"))
        settings = {field: (key, int(default)) for key, field, default in
                    re.findall(r'FourCharCode\("(\w{4})"\), &ParameterBlock::(\w+), (-?\d+), true\}',
                               self.read("host/parameters.h"))}
        rows = []
        for control, lowest, highest, field in controls:
            # The label is the last text before the slider.
            label = re.findall(r'CONTROL "([^"]+)", -1', dialog[:dialog.index(f"IDC_{control}_SLIDER")])[-1]
            key, default = settings[field]
            rows.append((label, key, int(lowest), int(highest), default))
        return rows
