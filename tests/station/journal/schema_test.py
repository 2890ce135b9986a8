#!/usr/bin/python3 -B
# SPDX-License-Identifier: MIT
"""The schema takes what the station's writer writes, and no line that is damaged: schema_test.py FOLDER
WRITE_SAMPLES. The format's own takes these and what another program writes."""
import pathlib
import subprocess
import sys
import tempfile

from check_schema import Schema

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
own, wider = Schema(schemas / "journal.schema.json"), Schema(schemas / "format.schema.json")
with tempfile.TemporaryDirectory() as folder:
    subprocess.run([sys.argv[2], folder], check=True)
    journals = {path.parent.name: path.read_text() for path in pathlib.Path(folder).glob("*/journal.jsonl")}
foreign = {"hostile", "mixed"}  # what no plan and no station says
lines = [line for name, journal in journals.items() if name not in foreign for line in journal.splitlines()]
journals["other program"] = pathlib.Path(__file__).with_name("foreign.jsonl").read_text()
faults = [*own.problems(lines), *wider.problems("".join(journals.values()).splitlines())]
for passage, damage in DAMAGES:
    line = next(line for line in journals["failing"].splitlines() if passage in line)
    if not list(own.problems([line.replace(passage, damage)])):
        faults.append(f"taken: {passage} as {damage}")
sys.exit("\n".join(faults) or not lines)
