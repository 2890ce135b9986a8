#!/usr/bin/python3 -B
# SPDX-License-Identifier: MIT
"""The schema takes the lines that the station writes, and none that says something else: schema_test.py SCHEMA"""
import sys

from check_schema import problem_of, validator_of


def run(kind, content):
    return {"testRunArtifact": {kind: content}, "sequenceNumber": 1, "timestamp": "2026-11-23T08:15:02.114Z"}


def step(kind, content):
    return run("", "") | {"testStepArtifact": {"testStepId": "0", kind: content}} | {"testRunArtifact": None}


def line(artifact):
    return {name: value for name, value in artifact.items() if value is not None}


PORT = {"hardwareInfoId": "port20"}
MOST = {"name": "max", "type": "LESS_THAN_OR_EQUAL", "value": 4}
GOOD = [
    run("testRunEnd", {"status": "COMPLETE", "result": "FAIL"}),
    run("testRunEnd", {"status": "SKIP", "result": "NOT_APPLICABLE"}),
    step("diagnosis", {"verdict": "link-fail", "type": "FAIL"} | PORT),
    step("diagnosis", {"verdict": "link-fail-retried", "type": "UNKNOWN"} | PORT),
    step("measurement", {"name": "code", "value": 3, "validators": [MOST]} | PORT),
    step("measurement", {"name": "code", "value": 3, "subcomponent": {"name": "position 3"}}),
]
BAD = [
    run("testRunEnd", {"status": "SKIP", "result": "PASS"}),
    run("testRunEnd", {"status": "COMPLETE", "result": "NOT_APPLICABLE"}),
    run("testRunEnd", {"status": "COMPLETE", "result": "PASS"}) | {"timestamp": "2026-11-23T08:15:02Z"},
    step("diagnosis", {"verdict": "link-fail", "type": "PASS"} | PORT),
    step("diagnosis", {"verdict": "link-fail-retried", "type": "FAIL"} | PORT),
    step("diagnosis", {"verdict": "link-pass", "type": "PASS"}),
    step("diagnosis", {"verdict": "link-pass", "type": "PASS", "hardwareInfoId": "port257"}),
    step("measurement", {"name": "code", "value": None} | PORT),
    step("measurement", {"name": "code", "value": 3, "validators": [MOST | {"name": "min"}]} | PORT),
    step("measurement", {"name": "code", "value": 3, "subcomponent": {"name": "position 3"}} | PORT),
    step("file", {"displayName": "a", "uri": "b", "isSnapshot": True}),
]

validator = validator_of(sys.argv[1])
refused = [str(problem) for case in GOOD if (problem := problem_of(validator, line(case)))]
taken = [str(line(case)) for case in BAD if not problem_of(validator, line(case))]
sys.exit("\n".join(["refused: " + text for text in refused] + ["taken: " + text for text in taken]) or 0)
