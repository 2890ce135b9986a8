#!/usr/bin/python3 -B
# SPDX-License-Identifier: MIT
"""Holds journals against a schema, line by line: check_schema.py SCHEMA JOURNAL... (needs python3-jsonschema)"""
import json
import pathlib
import sys

from jsonschema import Draft202012Validator
from jsonschema.exceptions import best_match


class Schema:
    def __init__(self, path):
        rules = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
        Draft202012Validator.check_schema(rules)
        self.validator = Draft202012Validator(rules)

    def problems(self, lines):
        """What is wrong with each line that is not of this form."""
        for number, line in enumerate(lines, 1):
            if error := best_match(self.validator.iter_errors(json.loads(line))):
                yield f"{number}: {'.'.join(map(str, error.absolute_path)) or 'line'}: {error.message[:200]}: {line}"


if __name__ == "__main__":
    schema, faults = Schema(sys.argv[1]), []
    for journal in sys.argv[2:]:
        text = pathlib.Path(journal).read_text(encoding="utf-8").splitlines()
        faults += [f"{journal}:{problem}" for problem in schema.problems(text)] if text else [f"{journal}: empty"]
    sys.exit("\n".join(faults) or len(sys.argv) < 3)
