#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows what tools/mutants.py changes and what it leaves alone, and that its list of survivors fits the sources."""

import json
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))
import mutants  # noqa: E402
from mutants_code import Mutant, Source, shifted  # noqa: E402


def changes(body, operator, head="void Class::member(int one, Type& two) const {"):
    """The lines that an operator makes of a function's body."""
    source = Source("A.cpp", f"#include <a>\nnamespace {{\n{head}\n{body}\n}}\n}}\n")
    return [one.becomes for one in source.mutants() if one.operator == operator]


class Operators(unittest.TestCase):
    def test_negates_conditions(self):
        for before, after in (("if (a) b();", "if (!(a)) b();"),
                              ("while (a < b) c();", "while (!(a < b)) c();"),
                              ("for (int i = 0; i < n; ++i) c();", "for (int i = 0; !(i < n); ++i) c();"),
                              ("if (const auto a = b()) c();", "if (const auto a = b(); !(a)) c();"),
                              ("if (auto a = b(); a > 3) c();", "if (auto a = b(); !(a > 3)) c();"),
                              ("return a ? b : c;", "return !(a) ? b : c;"),
                              ("return a == b;", "return a != b;")):
            with self.subTest(before=before):
                self.assertEqual(changes(before, "negate"), [after])

    def test_negates_an_equality_that_is_the_whole_condition_once(self):
        self.assertEqual(changes("if (a == b) c();", "negate"), ["if (!(a == b)) c();"])
        self.assertEqual(changes("if (a == b && c) d();", "negate"),
                         ["if (!(a == b && c)) d();", "if (a != b && c) d();"])

    def test_drops_statements_and_no_declarations(self):
        for before, after in (("a();", "{}"), ("a = b;", "{}"), ("++a;", "{}"), ("a->b<c>(d);", "{}"), ("return;", "{}"),
                              ("*this = A();", "{}"), ("throw a;", "{}"), ("if (a) b(); else return 1;", "if (a) {} else return 1;"),
                              ("for (auto a : b) c(a);", "for (auto a : b) {}")):
            with self.subTest(before=before):
                self.assertEqual(changes(before, "drop"), [after])
        for kept in ("int a = b();", "A a(b);", "const A& a = b();", "std::vector<A> a;", "std::vector<A>::B a = b();",
                     "auto a = b();", "return a();", "using a = b;", "A* a = b;", "const Lock lock(mutex);"):
            with self.subTest(kept=kept):
                self.assertEqual(changes(kept, "drop"), [])

    def test_drops_the_inner_statements_of_a_block_and_not_the_block(self):
        self.assertEqual(changes("if (a) { b(); } else { c(); }", "drop"),
                         ["if (a) { {} } else { c(); }", "if (a) { b(); } else { {} }"])
        self.assertEqual(changes("try { a(); } catch (...) { b(); }", "drop"),
                         ["try { {} } catch (...) { b(); }", "try { a(); } catch (...) { {} }"])
        self.assertEqual(changes("return run([this] { a(); });", "drop"), ["return run([this] { {} });"])

    def test_shifts_bounds_and_no_brackets_of_templates(self):
        self.assertEqual(changes("return a < b;", "shift"), ["return a <= b;"])
        self.assertEqual(changes("return a >= b;", "shift"), ["return a > b;"])
        self.assertEqual(changes("return get<A>(b) <=> c << d;", "shift"), [])
        self.assertEqual(changes("return a[7];", "shift"), ["return a[8];", "return a[6];"])

    def test_shifts_numbers_by_one_and_not_below_zero(self):
        for number, more, less in (("5", "6", "4"), ("0", "1", None), ("0xFF", "0x100", "0xFE"), ("12U", "13U", "11U"),
                                   ("10'000", "10001", "9999"), ("0.5", "1.5", None), ("5ms", "6ms", "4ms")):
            with self.subTest(number=number):
                self.assertEqual((shifted(number, 1), shifted(number, -1)), (more, less))

    def test_shifts_the_numbers_of_named_constants(self):
        source = Source("A.cpp", "namespace {\nconstexpr int most = 4;\nconstexpr Time pause{5};\nint other = 6;\n"
                                 "constexpr int f(int a = 7);\n}\n")
        self.assertEqual([one.becomes for one in source.mutants()],
                         ["constexpr int most = 5;", "constexpr int most = 3;", "constexpr Time pause{6};",
                          "constexpr Time pause{4};"])

    def test_swaps_neighbouring_arguments(self):
        self.assertEqual(changes("a(b, c(d), e);", "swap"), ["a(c(d), b, e);", "a(b, e, c(d));"])
        self.assertEqual(changes("a(map<B, C>(), d);", "swap"), ["a(d, map<B, C>());"])
        self.assertEqual(changes("std::max(a, b); std::min(a, b);", "swap"), [])
        for kept in ("a(b, b);", "for (a, b; c; d) {}", "call([](A a, B b) {});", "a(b);"):
            with self.subTest(kept=kept):
                self.assertEqual(changes(kept, "swap"), [])


class Reading(unittest.TestCase):
    def assert_left_alone(self, text):
        self.assertEqual([one.becomes for one in Source("A.cpp", text).mutants()], [])

    def test_leaves_comments_texts_and_directives_alone(self):
        for text in ("// if (a == 1) b(2, 3);\n", "/* if (a == 1)\n b(2, 3); */\n", "#include <a2>\n",
                     "#define A(b) \\\n    if (b == 1) c(2, 3);\n"):
            with self.subTest(text=text):
                self.assert_left_alone(text)
                self.assert_left_alone("void a() {\n" + text + "}\n")
        for literal in ('"if (a == 1) b(2, 3); // \\" /*"', 'R"x(if (a == 1) ")" b(2, 3);)x"', "'\\''"):
            with self.subTest(literal=literal):
                self.assert_left_alone(f"int a() {{ const A b = {literal}; }}\n")

    def test_leaves_declarations_outside_of_functions_alone(self):
        self.assert_left_alone("class A : public B<3> {\n public:\n    int c(int d = 3, int e = 4);\n    int f_ = 5;\n};\n"
                               "enum class G { a = 1 };\nA::A(int d) : B(d, 2), f_{3};\n")

    def test_reads_functions_behind_initialisers_and_in_classes(self):
        for text in ("A::A() : b_{1}, c_(2) { d(); }", "A::A() : b_{1} { d(); }", "struct A { void b() { d(); } };",
                     "A& A::operator=(B b) { d(); }", "template <class B>\nauto a(B b) -> C { d(); }"):
            with self.subTest(text=text):
                mutants_found = Source("A.cpp", text).mutants()
                self.assertEqual([(one.operator, text[one.start:one.end]) for one in mutants_found], [("drop", "d();")])

    def test_leaves_trace_calls_alone(self):
        self.assertEqual(changes('trace.process("a", 3 == b, c);', "negate") + changes('trace.start("", 2);', "drop") +
                         changes("const Trace trace = this->trace(a, 5);", "shift") +
                         changes("this->trace(a, 5);", "swap"), [])
        self.assertEqual(changes("if (a) return trace.error(b, 3);", "negate"), ["if (!(a)) return trace.error(b, 3);"])

    def test_says_where_it_does_not_understand(self):
        for text in ("void a() { (] }", "void a() {", "void a() { @ }"):
            with self.subTest(text=text), self.assertRaises((ValueError, IndexError)):
                Source("A.cpp", text)

    def test_changes_the_place_and_nothing_else(self):
        text = "void a() {\n    // b();\n    b();\n}\n"
        (mutant,) = Source("A.cpp", text).mutants()
        self.assertEqual(mutant.applied_to(text), "void a() {\n    // b();\n    {}\n}\n")
        self.assertEqual((mutant.number, mutant.line, mutant.becomes), (3, "b();", "{}"))


def mutant(file="A.cpp", operator="drop", line="b();", becomes="{}"):
    return Mutant(file, operator, 0, 0, "", 1, line, becomes)


def entry(**changed):
    return {"file": "A.cpp", "operator": "drop", "line": "b();", "becomes": "{}", "reason": "b does nothing", **changed}


class Judgement(unittest.TestCase):
    def problems(self, killed, lived, reasons=()):
        verdicts = [mutants.Verdict(mutant(line=f"k{number}"), "Suite.Test", 1) for number in range(killed)]
        verdicts += [mutants.Verdict(mutant(line=f"l{number}"), None, 1) for number in range(lived)]
        return list(mutants.problems_of(verdicts, set(reasons)))

    def test_wants_a_reason_for_each_that_lives(self):
        self.assertEqual(len(self.problems(99, 1)), 1)
        self.assertEqual(self.problems(99, 1, [mutant(line="l0").names()]), [])

    def test_wants_95_of_100_killed_whatever_the_reasons(self):
        reasons = [mutant(line=f"l{number}").names() for number in range(9)]
        self.assertEqual(self.problems(95, 5, reasons), [])
        self.assertEqual(self.problems(94, 6, reasons), ["fewer than 95% are killed"])
        self.assertEqual(self.problems(0, 0), ["fewer than 95% are killed"])

    def test_wants_no_reason_for_one_that_is_killed(self):
        self.assertEqual(len(self.problems(20, 0, [mutant(line="k0").names()])), 1)

    def test_wants_a_mutant_and_a_reason_for_each_entry_of_the_list(self):
        known = [mutant()]
        self.assertEqual(list(mutants.check_survivors([entry()], known)), [])
        for wrong in (entry(line="gone();"), entry(reason=" "), entry(file="B.cpp"), entry(operator="swap")):
            with self.subTest(wrong=wrong):
                self.assertEqual(len(list(mutants.check_survivors([wrong], known))), 1)
        self.assertEqual(len(list(mutants.check_survivors([entry(), entry()], known))), 1)


class Draw(unittest.TestCase):
    def setUp(self):
        every = [mutant(operator=operator, line=str(number)) for operator in mutants.OPERATORS for number in range(9)]
        self.drawn = lambda seed, file="A.cpp": [one.names() for one in mutants.drawn(every, file, seed)]

    def test_is_the_same_for_the_same_seed_and_another_for_another(self):
        self.assertEqual(self.drawn(1), self.drawn(1))
        self.assertNotEqual(self.drawn(1), self.drawn(2))
        self.assertNotEqual(self.drawn(1), self.drawn(1, "B.cpp"))
        self.assertEqual(len(set(self.drawn(1))), 36)

    def test_takes_the_operators_in_turn(self):
        self.assertEqual({operator for _, operator, _, _ in self.drawn(1)[:4]}, set(mutants.OPERATORS))

    def test_takes_from_each_source_in_turn(self):
        self.assertEqual(mutants.shares({"a": 9, "b": 2, "c": 9}, 8), {"a": 3, "b": 2, "c": 3})
        self.assertEqual(mutants.shares({"a": 1, "b": 2}, 8), {"a": 1, "b": 2})


class Tree(unittest.TestCase):
    """The sources as they are."""

    def listed(self, *options):
        return subprocess.run([sys.executable, "-B", ROOT / "tools/mutants.py", "--list", *options], check=True,
                              capture_output=True, text=True).stdout.splitlines()

    def test_each_source_has_four_or_all_that_it_has(self):
        lines = self.listed()
        self.assertGreaterEqual(len(lines), 60)
        self.assertEqual(lines, self.listed())
        self.assertNotEqual(lines, self.listed("--seed", "2"))
        for file in mutants.sources_of(ROOT):
            there = len(Source(file, (ROOT / file).read_text(encoding="utf-8")).mutants())
            taken = sum(line.startswith(file + ":") for line in lines)
            self.assertGreaterEqual(taken, min(mutants.EACH, there), file)

    def test_a_count_and_a_pattern_narrow_it(self):
        lines = self.listed("--count", "5", "--only", "^src/core/")
        self.assertEqual(len(lines), 5)
        self.assertTrue(all(line.startswith("src/core/") for line in lines))

    def test_the_list_of_survivors_fits(self):
        every = [one for file in mutants.sources_of(ROOT)
                 for one in Source(file, (ROOT / file).read_text(encoding="utf-8")).mutants()]
        entries = json.loads((ROOT / mutants.SURVIVORS).read_text(encoding="utf-8"))
        self.assertEqual(list(mutants.check_survivors(entries, every)), [])


if __name__ == "__main__":
    unittest.main()
