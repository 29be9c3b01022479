"""Mutants of the controller: writes a copy of the sources in which each can be chosen at run time, and runs the tests.

  mutation.py write TREE            copies the tracked sources to TREE, Base/ rewritten, and TREE/mutants.json beside it
  mutation.py run TREE PROGRAM      runs PROGRAM (the tests, built from TREE) once for each mutant, with the tests that
                                    pass through its place; prints those that no test catches, and the share of the others

A mutant is one small change: another comparison, sign, constant, text, condition or order, a call left out.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# Generated data and its sizes; tests decode every picture.
LEFT_OUT = {"Base/VideoPlayer/VideoImage/VideoImage.cpp", "Base/VideoPlayer/VideoImage/VideoImage.h"}
# Equivalent mutants, each with the reason why no session can detect it.
EQUIVALENT = ROOT / "tests" / "mutation" / "equivalent.txt"

# Operator → the function in Mutant.h and its mutations, in their order.
COMPARISONS = {
    "<": ("less", ["<=", ">="]),
    "<=": ("less_equal", ["<", ">"]),
    ">": ("greater", [">=", "<="]),
    ">=": ("greater_equal", [">", "<"]),
    "==": ("equal", ["!="]),
    "!=": ("not_equal", ["=="]),
}
ARITHMETIC = {"+": ("plus", ["-"]), "-": ("minus", ["+"]), "*": ("times", ["/"]), "/": ("divided", ["*"])}
LOGICAL = {"&&": ("both", ["||", "left alone", "right alone"]), "||": ("either", ["&&", "left alone", "right alone"])}

# Setters without side effects; those of one group follow each other.
SETTER = re.compile(r"addTarget|set(?!CurrentPlaybackTime|Value|RootViewController|QoroMoviePlayer)\w+")
PLACING = {"setFrame", "setCenter", "setTransform"}


class Rewriter:
    """The mutants of one file, and the edits that insert them."""

    def __init__(self, name, clang, first):
        self.name = name
        self.clang = clang
        self.kinds = clang.CursorKind
        self.source = (ROOT / name).read_bytes()
        self.next = first
        self.mutants = []
        # (offset, rank, order, end of replaced text, text): closings before replacements before openings before
        # removals; outer pairs enclose inner ones.
        self.edits = []

    # ------------------------------------------------------------------------------------------------------- edits

    def add(self, cursor, change, count=1):
        """Assigns numbers to the mutants of one source location."""
        number = self.next
        self.next += count
        changes = change if isinstance(change, list) else [change]
        for at, text in enumerate(changes):
            self.mutants.append({"number": number + at, "file": self.name, "line": cursor.extent.start.line,
                                 "column": cursor.extent.start.column, "change": text,
                                 "source": self.line(cursor.extent.start.line)})
        return number

    def line(self, number):
        return self.source.split(b"\n")[number - 1].decode().strip()

    def text(self, start, end):
        return self.source[start:end].decode()

    def replace(self, start, end, text):
        self.edits.append((start, 1, 0, end, text))

    def remove(self, start, end):
        self.edits.append((start, 3, 0, end, ""))

    def around(self, start, end, before, after):
        order = len(self.edits)
        self.edits.append((start, 2, order, start, before))
        self.edits.append((end, 0, -order, end, after))

    def result(self):
        pieces = [b'#include "tests/mutation/Mutant.h"\n']
        at = 0
        for start, _, _, end, text in sorted(self.edits, key=lambda edit: edit[:3]):
            pieces += [self.source[at:start], text.encode()]
            at = max(at, end)
        return b"".join(pieces + [self.source[at:]])

    # ------------------------------------------------------------------------------------------------------- places

    @staticmethod
    def span(cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def within_file(self, cursor):
        place = cursor.location.file
        return place is not None and os.path.samefile(place.name, ROOT / self.name)

    def bare(self, cursor):
        """The expression below implicit conversions."""
        children = list(cursor.get_children())
        while cursor.kind == self.kinds.UNEXPOSED_EXPR and len(children) == 1 and self.span(children[0]) == self.span(cursor):
            cursor = children[0]
            children = list(cursor.get_children())
        return cursor

    def is_number(self, cursor):
        kinds = self.clang.TypeKind
        return cursor.type.get_canonical().kind in {
            kinds.INT, kinds.UINT, kinds.LONG, kinds.ULONG, kinds.LONGLONG, kinds.ULONGLONG, kinds.FLOAT, kinds.DOUBLE,
            kinds.SHORT, kinds.USHORT, kinds.CHAR_S, kinds.UCHAR, kinds.SCHAR}

    def operands(self, cursor):
        """(left, operator, right) of a binary operation, built-in or overloaded; else None."""
        children = list(cursor.get_children())
        if cursor.kind == self.kinds.BINARY_OPERATOR and len(children) == 2:
            left, right = children
        elif cursor.kind == self.kinds.CALL_EXPR and re.fullmatch(r"operator(?:[<>!=]=|[<>=+*/&|-]|&&|\|\|)", cursor.spelling) and len(children) == 3:
            left, _, right = children
        else:
            return None
        between = self.text(left.extent.end.offset, right.extent.start.offset).strip()
        return (left, between, right)

    def visit(self, cursor):
        if self.place(cursor):
            return
        for child in cursor.get_children():
            self.visit(child)

    def place(self, cursor):
        """Creates the mutants of one node; returns True if its children are already visited or must be skipped."""
        k = self.kinds
        kind = cursor.kind
        if kind in (k.STATIC_ASSERT, k.ENUM_DECL, k.TEMPLATE_REF, k.TYPE_REF):
            return True
        if kind in (k.VAR_DECL, k.FIELD_DECL, k.FUNCTION_DECL, k.CXX_METHOD, k.FUNCTION_TEMPLATE):
            return self.declaration(cursor)
        if kind == k.COMPOUND_STMT:
            self.compound(cursor)
            return True
        if kind in (k.IF_STMT, k.WHILE_STMT, k.FOR_STMT, k.CXX_FOR_RANGE_STMT, k.CASE_STMT, k.DEFAULT_STMT):
            self.control(cursor)
            return True
        if kind == k.CONDITIONAL_OPERATOR:
            children = list(cursor.get_children())
            self.condition(children[0])
            for child in children[1:]:
                self.visit(child)
            return True
        if kind == k.UNARY_OPERATOR:
            return self.unary(cursor)
        if kind in (k.INTEGER_LITERAL, k.FLOATING_LITERAL, k.CHARACTER_LITERAL):
            self.wrap(cursor, "constant", f"{self.text(*self.span(cursor))} + 1")
            return True
        if kind == k.CXX_BOOL_LITERAL_EXPR:
            self.wrap(cursor, "flip", "the opposite")
            return True
        if kind == k.CALL_EXPR and cursor.type.spelling.endswith("Action"):
            return True  # The target object and the action's name are not mutated.
        if kind == k.STRING_LITERAL:
            self.wrap(cursor, "text", f"another text than {self.text(*self.span(cursor))[:40]}")
            return True
        if kind == k.DECL_REF_EXPR and cursor.referenced is not None and cursor.referenced.kind == k.ENUM_CONSTANT_DECL:
            self.wrap(cursor, "constant", f"the one after {cursor.spelling}")
            return True
        parts = self.operands(cursor)
        if parts:
            return self.binary(cursor, *parts)
        return False

    def wrap(self, cursor, function, change):
        number = self.add(cursor, change)
        self.around(*self.span(cursor), f"::qoro::mutation::{function}({number}, ", ")")

    def declaration(self, cursor):
        """Makes a compile-time constant a run-time value, so that a mutant can change it."""
        before = self.next
        children = list(cursor.get_children())
        for child in children:
            # The type precedes the name.
            if child.extent.end.offset > cursor.location.offset:
                self.visit(child)
        if self.next == before:
            return True
        body = [child for child in children if child.kind == self.kinds.COMPOUND_STMT]
        start = cursor.extent.start.offset
        head = self.text(start, body[0].extent.start.offset if body else cursor.extent.end.offset)
        fixed = re.match(r"(?:\[\[\w+\]\]\s*)?(?:(?:static|inline)\s+)*constexpr\b", head)
        if fixed:
            at = start + fixed.end() - len("constexpr")
            member = cursor.semantic_parent.kind in (self.kinds.CLASS_DECL, self.kinds.STRUCT_DECL)
            if cursor.kind == self.kinds.VAR_DECL:
                constant = "" if re.match(r"\s+const\b", self.text(at + len("constexpr"), cursor.extent.end.offset)) else "const"
                self.replace(at, at + len("constexpr"), f"inline {constant}" if member else constant)
            else:
                self.replace(at, at + len("constexpr"), "inline")
        return True

    def condition(self, cursor):
        bare = self.bare(cursor)
        plain = bare.kind in (self.kinds.CALL_EXPR, self.kinds.MEMBER_REF_EXPR, self.kinds.DECL_REF_EXPR)
        if plain and not self.operands(bare):
            number = self.add(cursor, "the opposite")
            self.around(*self.span(cursor), f"::qoro::mutation::flip({number}, static_cast<bool>(", "))")
        self.visit(cursor)

    def unary(self, cursor):
        operand = next(iter(cursor.get_children()))
        sign = self.text(cursor.extent.start.offset, operand.extent.start.offset).strip()
        first, end = self.span(cursor)
        start = operand.extent.start.offset
        if sign == "!":
            self.around(first, end, f"::qoro::mutation::flip({self.add(cursor, 'without !')}, !static_cast<bool>(", "))")
            self.remove(first, start)
        elif sign == "-" and self.is_number(cursor):
            self.around(first, end, f"::qoro::mutation::negative({self.add(cursor, 'without -')}, ", ")")
            self.remove(first, start)
        self.visit(operand)
        return True

    def binary(self, cursor, left, operator, right):
        start, end = self.span(cursor)
        gap = (left.extent.end.offset, right.extent.start.offset)
        if operator in LOGICAL:
            function, changes = LOGICAL[operator]
            number = self.add(left, changes, 3)
            lazy = "[&]() -> bool { return static_cast<bool>("
            self.around(start, end, f"::qoro::mutation::{function}({number}, {lazy}", "); })")
            self.replace(*gap, f"); }}, {lazy}")
        elif operator in COMPARISONS or (operator in ARITHMETIC and self.is_number(left) and self.is_number(right)):
            function, changes = COMPARISONS.get(operator) or ARITHMETIC[operator]
            number = self.add(left, changes, len(changes))
            self.around(start, end, f"::qoro::mutation::{function}({number}, ", ")")
            self.replace(*gap, ", ")
        else:
            return False
        self.visit(left)
        self.visit(right)
        return True

    # -------------------------------------------------------------------------------------------------- statements

    def end_of(self, statement):
        """The end offset of a statement, including its semicolon."""
        return self.source.index(b";", statement.extent.end.offset) + 1

    def sequence(self, statements):
        count = len(statements)
        number = self.next
        for statement in statements:
            self.add(statement, f"without {self.shortened(statement)}")
        for first, second in zip(statements, statements[1:]):
            if self.independent(first, second):
                self.next += 1  # The number stays unused.
            else:
                self.add(first, f"after its follower: {self.shortened(first)}")
        for at, statement in enumerate(statements):
            head = f"::qoro::mutation::sequence({number}, [&] {{ " if at == 0 else "[&] { "
            self.around(statement.extent.start.offset, self.end_of(statement), head, " }, " if at + 1 < count else " });")
            self.visit(statement)

    def shortened(self, statement):
        return re.sub(r"\s+", " ", self.text(*self.span(statement)))[:60]

    def setting(self, statement):
        """(object, property) of a statement that only sets one property of an object; else None."""
        statement = self.bare(statement)
        children = list(statement.get_children())
        text = self.shortened(statement)
        if statement.kind == self.kinds.BINARY_OPERATOR or statement.spelling == "operator=":
            parts = self.operands(statement)
            if parts and parts[1] == "=" and "NSTimer" not in text:
                return self.shortened(parts[0]), "value"
        elif statement.kind == self.kinds.CALL_EXPR and SETTER.fullmatch(statement.spelling) and children:
            receiver = list(children[0].get_children())
            if receiver:
                return self.shortened(receiver[0]), statement.spelling
        return None

    def independent(self, first, second):
        """Whether two setters are independent, so that their order has no effect."""
        settings = self.setting(first), self.setting(second)
        if None in settings:
            return False
        (thing, aspect), (other, other_aspect) = settings
        if thing == other:
            return aspect != other_aspect and not {aspect, other_aspect} <= PLACING
        name = r"(?<!\w){}(?!\w)".format
        return not re.search(name(re.escape(thing)), self.text(*self.span(second))) and not re.search(
            name(re.escape(other)), self.text(*self.span(first)))

    def is_plain_statement(self, cursor):
        return cursor.kind.is_expression()

    def single(self, statement):
        """The single statement of a branch or a label."""
        if self.is_plain_statement(statement):
            self.sequence([statement])
        else:
            self.leaving(statement)

    def leaving(self, statement):
        """Removes a return without a value, a break or a continue; visits anything else."""
        k = self.kinds
        plain_return = statement.kind == k.RETURN_STMT and not list(statement.get_children())
        if plain_return or statement.kind in (k.BREAK_STMT, k.CONTINUE_STMT):
            number = self.add(statement, f"without {self.shortened(statement)}")
            self.around(statement.extent.start.offset, self.end_of(statement),
                        f"{{ if (!::qoro::mutation::alive({number})) ", " }")
        else:
            self.visit(statement)

    def compound(self, cursor):
        run = []
        for child in cursor.get_children():
            if self.is_plain_statement(child):
                run.append(child)
                continue
            if run:
                self.sequence(run)
                run = []
            self.leaving(child)
        if run:
            self.sequence(run)

    def control(self, cursor):
        k = self.kinds
        children = list(cursor.get_children())
        if cursor.kind in (k.CASE_STMT, k.DEFAULT_STMT):
            self.single(children[-1])
            return
        if cursor.kind in (k.FOR_STMT, k.CXX_FOR_RANGE_STMT):
            for child in children[:-1]:
                self.visit(child)
            self.single(children[-1])
            return
        conditions = [child for child in children if child.kind.is_expression() or child.kind in (k.DECL_STMT, k.VAR_DECL)]
        head = conditions[0]
        if head.kind in (k.DECL_STMT, k.VAR_DECL):
            rest = children[1:]
            self.visit(head)
            # A declaration's condition value represents the declared name inside it.
            rest = [child for child in rest if child.extent.start.offset >= head.extent.end.offset]
            # In `if (declaration; condition)` the condition follows.
            if head.kind == k.DECL_STMT and len(rest) > 1 and rest[0].kind.is_expression():
                self.visit(rest.pop(0))
        else:
            rest = children[1:]
            self.condition(head)
        for branch in rest:
            self.single(branch)


def write(tree):
    sys.path.append("/usr/lib/python3/dist-packages")
    from clang import cindex

    names = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True).stdout.split("\n")
    names = [name for name in names if name and (ROOT / name).is_file()]
    for name in names:
        copy(ROOT / name, tree / name)

    index = cindex.Index.create()
    mutants = []
    following = 1
    for name in sorted(n for n in names if n.startswith("Base/") and n.endswith((".cpp", ".h")) and n not in LEFT_OUT):
        unit = index.parse(str(ROOT / name), args=["-x", "c++", "-std=c++20", f"-I{ROOT}"])
        faults = [d for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
        if faults:
            sys.exit(f"mutation: {name}: {faults[0]}")
        rewriter = Rewriter(name, cindex, following)
        for cursor in unit.cursor.get_children():
            if rewriter.within_file(cursor):
                rewriter.visit(cursor)
        mutants += sorted(rewriter.mutants, key=lambda mutant: mutant["number"])
        following = rewriter.next
        write_changed(tree / name, rewriter.result())
    (tree / "mutants.json").write_text(json.dumps(mutants, indent=1))
    print(f"{len(mutants)} mutants")


def copy(source, target):
    write_changed(target, source.read_bytes())
    shutil.copymode(source, target)


def write_changed(target, content):
    """Writes a file only if its content changes, so that dependents are not rebuilt."""
    target.parent.mkdir(parents=True, exist_ok=True)
    if not target.is_file() or target.read_bytes() != content:
        target.write_bytes(content)


# ----------------------------------------------------------------------------------------------------------- running


def reach(program, scratch):
    """The mutant locations that each test executes, fastest tests first."""
    path = scratch / "reach"
    log = subprocess.run([program, "--gtest_brief=1"], env={**os.environ, "QORO_REACH": str(path)}, capture_output=True, text=True)
    if log.returncode:
        sys.exit(f"mutation: the tests fail without a mutant:\n{log.stdout}")
    tests = []
    start = set()
    for line in path.read_text().splitlines():
        name, milliseconds, *numbers = line.split()
        if name == "start":
            start = {int(number) for number in numbers}
        else:
            tests.append((name, int(milliseconds), {int(number) for number in numbers}))
    return start, sorted(tests, key=lambda test: test[1])


def run(tree, program, jobs=os.cpu_count()):
    mutants = json.loads((tree / "mutants.json").read_text())
    chosen = os.environ.get("QORO_MUTANTS")
    with tempfile.TemporaryDirectory() as folder:
        scratch = Path(folder)
        start, tests = reach(program, scratch)
        # Tables are read before the first test; any test may depend on them.
        everything = [(name, cost) for name, cost, numbers in tests if numbers]

        def judge(mutant):
            number = mutant["number"]
            reaching = everything if number in start else [(n, c) for n, c, numbers in tests if number in numbers]
            if not reaching:
                return "not reached"
            flags = scratch / f"flags{number}"
            flags.write_text("--gtest_fail_fast=1\n--gtest_brief=1\n--gtest_filter=" + ":".join(n for n, _ in reaching) + "\n")
            limit = 10 + 10 * sum(cost for _, cost in reaching) / 1000
            try:
                ended = subprocess.run(["sh", "-c", f"ulimit -v 8000000; exec {program} --gtest_flagfile={flags}"],
                                       env={**os.environ, "QORO_MUTANT": str(number)}, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL, cwd=scratch, timeout=limit)
                return "caught" if ended.returncode else "survived"
            except subprocess.TimeoutExpired:
                return "caught"
            finally:
                flags.unlink()

        wanted = [m for m in mutants if not chosen or str(m["number"]) in chosen.split(",")]
        began = time.monotonic()
        with ThreadPoolExecutor(jobs) as pool:
            verdicts = list(pool.map(judge, wanted))

    reasons = {}
    if EQUIVALENT.is_file():
        for line in EQUIVALENT.read_text().splitlines():
            if line and not line.startswith("#"):
                file, source, change, reason = line.split(" | ")
                reasons[(file, source, change)] = reason
    counts = {"caught": 0, "survived": 0, "not reached": 0, "equivalent": 0}
    used = set()
    for mutant, verdict in zip(wanted, verdicts):
        key = (mutant["file"], mutant["source"], mutant["change"])
        if verdict != "caught" and key in reasons:
            used.add(key)
            verdict = "equivalent"
        elif verdict != "caught":
            print(f"{mutant['file']}:{mutant['line']}:{mutant['column']}: {verdict} #{mutant['number']} | {mutant['source']} | {mutant['change']}")
        counts[verdict] += 1
    if not chosen:
        for key in reasons.keys() - used:
            print(f"{EQUIVALENT.name}: no such survivor: {' | '.join(key)}")
    apart = len(wanted) - counts["equivalent"]
    print(f"{len(wanted)} mutants: {counts['caught']} caught, {counts['equivalent']} equivalent, {counts['survived']} survived, "
          f"{counts['not reached']} not reached, in {time.monotonic() - began:.0f} s; caught of all "
          f"{100 * counts['caught'] / max(1, len(wanted)):.1f} %, of those that are not equivalent "
          f"{100 * counts['caught'] / max(1, apart):.1f} %")


if __name__ == "__main__":
    if len(sys.argv) == 3 and sys.argv[1] == "write":
        write(Path(sys.argv[2]))
    elif len(sys.argv) == 4 and sys.argv[1] == "run":
        run(Path(sys.argv[2]).resolve(), str(Path(sys.argv[3]).resolve()))
    else:
        sys.exit(__doc__)
