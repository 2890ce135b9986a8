#!/usr/bin/python3 -B
# SPDX-License-Identifier: MIT
"""Holds journals against a schema, line by line: check_schema.py SCHEMA JOURNAL... (needs python3-jsonschema)"""
import json
import sys

from jsonschema import Draft202012Validator
from jsonschema.exceptions import best_match


def validator_of(path):
    with open(path, encoding="utf-8") as file:
        schema = json.load(file)
    Draft202012Validator.check_schema(schema)
    return Draft202012Validator(schema)


def problem_of(validator, line):
    """What is wrong with a line, or None."""
    error = best_match(validator.iter_errors(line))
    return error and f"{'.'.join(map(str, error.absolute_path)) or 'line'}: {error.message[:200]}"


def main(schema, *journals):
    validator = validator_of(schema)
    sound = bool(journals)
    for journal in journals:
        with open(journal, encoding="utf-8") as file:
            lines = list(file)
        sound = sound and bool(lines)
        for number, line in enumerate(lines, 1):
            problem = problem_of(validator, json.loads(line))
            if problem:
                sound = False
                print(f"{journal}:{number}: {problem}", file=sys.stderr)
    return 0 if sound else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
