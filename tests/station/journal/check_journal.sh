#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# check_journal.sh FOLDER JOURNAL: holds a journal against this project's schema, and against the format's own where the
# folder has it.
set -euo pipefail
here=$(dirname "$0")
"$here/check_schema.py" "$here/../../../station/journal/journal.schema.json" "$2"
[ ! -e "$1/validate.py" ] || /usr/bin/python3 "$1/validate.py" "$2"
