#!/usr/bin/env python3
"""Whether changes are made where there is code, and each kind of them."""

import sys
import unittest

sys.dont_write_bytecode = True
import mutants  # noqa: E402


def changed(source):
    """What becomes of the source, for each mutant."""
    return [mutants.applied(source, mutant) for mutant in mutants.mutants(source)]


class EachKind(unittest.TestCase):
    def test_tokens(self):
        for source, expected in {
            "x = a == b;": ["x = a != b;"],
            "if (a < b)": ["if (a <= b)"],
            "x = a && b;": ["x = a || b;"],
            "x = a + b;": ["x = a - b;"],
            "return !a;": ["return a;"],
            "return true;": ["return false;"],
            "return 7;": ["return 8;"],
        }.items():
            self.assertEqual(changed(source), expected, source)

    def test_a_statement(self):
        for statement in ("Clear(a);", "list.clear();", "value->text = other;", "a += b;", "++a;",
                          "break;"):
            self.assertIn("{\n    ;\n}", changed("{\n    " + statement + "\n}"), statement)

    def test_two_arguments(self):
        self.assertIn("F(b.c, a)", changed("F(a, b.c)"))


class Nothing(unittest.TestCase):
    def test_where_there_is_no_code(self):
        for source in ("// a == b", "/* a == b\n true */", '"a == b, 1 true"', "L'1'",
                       '#include "a1.h"\n#if 1 == 2', 'R"(', "u8\"\\\"1\""):
            self.assertEqual(changed(source), [], source)

    def test_what_does_not_compare(self):
        for source in ("std::vector<int> a;", "a->b", "a >> b", "f(-x)", "return a;", "f(a, a)"):
            self.assertEqual(changed(source), [], source)

    def test_declarations_stay(self):
        self.assertEqual(changed("{\n    Lock const lock(mutex);\n    auto x = F(a);\n}"), [])


if __name__ == "__main__":
    unittest.main()
