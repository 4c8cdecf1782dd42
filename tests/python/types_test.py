"""Compares the package's annotations, as type checkers read them, with the compiled module."""
import ast
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from lmlib64 import _lmlib64


def complaint_of(*command):
    with tempfile.TemporaryDirectory() as cache:
        run = subprocess.run([sys.executable, "-m", *command], cwd=cache, stdout=subprocess.PIPE, text=True)
    return run.stdout if run.returncode else ""


class Types(unittest.TestCase):
    def test_are_complete_and_consistent(self):
        self.assertEqual(complaint_of("mypy", "--strict", "-p", "lmlib64"), "")

    def test_include_everything_that_the_package_has(self):
        self.assertEqual(complaint_of("mypy.stubtest", "lmlib64"), "")

    # stubtest cannot see the arguments of compiled functions. So this test compares the stub with the documentation of
    # each function, which starts with the signature.
    def test_have_the_arguments_of_the_compiled_functions(self):
        stub = pathlib.Path(_lmlib64.__file__).with_name("_lmlib64.pyi").read_text(encoding="utf-8")
        for function in ast.parse(stub).body:
            if isinstance(function, ast.FunctionDef):
                signature = getattr(_lmlib64, function.name).__doc__
                self.assertEqual(len(function.args.args), len(re.findall(r"\barg\d+: ", signature)), signature)
                self.assertEqual(ast.unparse(function.returns) == "None", "-> None" in signature, signature)


if __name__ == "__main__":
    unittest.main()
