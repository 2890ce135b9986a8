#!/usr/bin/python3 -B
# SPDX-License-Identifier: MIT
"""The schema takes what the station's writer writes, and no line that is damaged: schema_test.py FOLDER
WRITE_SAMPLES. The format's own takes these and what another program writes."""
import json
import pathlib
import subprocess
import sys
import tempfile

from check_schema import problem_of, validator_of

DAMAGES = [
    ('"status":"COMPLETE","result"', '"status":"SKIP","result"'),
    ('"result":"FAIL"', '"result":"NOT_APPLICABLE"'),
    ('.118Z"', 'Z"'),
    ('"verdict":"link-fail"', '"verdict":"link-pass"'),
    ('"verdict":"link-fail"', '"verdict":"link-fail-retried"'),
    ('"type":"UNKNOWN"', '"type":"FAIL"'),
    (',"hardwareInfoId":"port02"', ""),
    ('"hardwareInfoId":"port02"', '"hardwareInfoId":"port257"'),
    ('"hardwareInfoId":"port02"', '"hardwareInfoId":"port02","subcomponent":{"name":"position 3"}'),
    ('"value":53.8', '"value":null'),
    ('"name":"max"', '"name":"min"'),
    ('"measurement"', '"file"'),
    ('"metadata"', '"remarks":"none","metadata"'),
]

schemas = pathlib.Path(sys.argv[1])
validator, wider = validator_of(schemas / "journal.schema.json"), validator_of(schemas / "format.schema.json")
with tempfile.TemporaryDirectory() as folder:
    subprocess.run([sys.argv[2], folder], check=True)
    journals = {path.parent.name: path.read_text() for path in pathlib.Path(folder).glob("*/journal.jsonl")}
foreign = {"hostile", "unexplained"}  # what no plan and no station says
lines = [line for name, journal in journals.items() if name not in foreign for line in journal.splitlines()]
faults = [f"refused: {line}: {problem}" for line in lines if (problem := problem_of(validator, json.loads(line)))]
journals["other program"] = pathlib.Path(__file__).with_name("foreign.jsonl").read_text()
for line in "".join(journals.values()).splitlines():
    if problem := problem_of(wider, json.loads(line)):
        faults.append(f"refused: {line}: {problem}")
for passage, damage in DAMAGES:
    line = next(line for line in journals["failing"].splitlines() if passage in line)
    if not problem_of(validator, json.loads(line.replace(passage, damage))):
        faults.append(f"taken: {passage} as {damage}")
sys.exit("\n".join(faults) or 0)
