#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tells the stories of case files line by line, for play_stories: stories.py OUTPUT FILE...

How a case file is written is in docs/library_tests.md.
"""
import re
import struct
import sys


def numbers(text):
    """"3,5..7,9*2,4:6": 4:6 is 4 << 16 | 6."""
    for part in text.split(","):
        value, _, times = part.partition("*")
        value, _, code = value.partition(":")
        first, _, last = value.partition("..")
        for number in range(int(first, 0), int(last or first, 0) + 1):
            yield from [number << 16 | int(code, 0) if code else number] * int(times or 1)


class Request:
    def __init__(self, type_, reply_type, operation, size, *fields):
        self.type, self.reply_type, self.operation, self.fields, offset = type_, reply_type, operation, {}, 0
        for field in fields:
            name, size_, count = re.fullmatch(r"(\w+)(?:/(\d))?(?:\[(\d+)\])?", field).groups()
            self.fields[name] = offset, int(size_ or 4), int(count or 1)
            offset += int(size_ or 4) * int(count or 1)
        self.size = offset
        assert offset == int(size), f"the fields of {operation} make up {offset} bytes"

    def payload(self, payload, assignments):
        payload = bytearray(payload)
        for assignment in assignments:
            name, index, values = re.fullmatch(r"(\w+)(?:\[(\d+)\])?=(.*)", assignment).groups()
            if name == "fill":
                payload[:] = bytes([int(values)]) * self.size
                continue
            offset, size, count = self.fields[name]
            for at, value in enumerate(numbers(values), int(index or 0)):
                assert at < count, assignment
                payload[offset + at * size:offset + (at + 1) * size] = struct.pack("<Q", value)[:size]
        return bytes(payload)


class Line:
    """One event that the library is to bring about, or one act of the world around it: TEXT [xN] [= result] [-> outputs]"""

    def __init__(self, text, place):
        self.place, self.count, self.result, self.outputs = place, 1, 0, None
        if text[0] not in "!.":
            text, count, result, outputs = re.fullmatch(r"(.*?)(?: x(\d+))?(?: = (-?\d+))?(?: -> (\S+))?", text).groups()
            self.count, self.result = int(count or 1), int(result or 0)
            self.outputs = list(numbers(outputs)) if outputs else None
        self.text = text

    def told(self, answers):
        call = re.fullmatch(r"(\w+)\((\d*).*\)", self.text)
        outputs = self.outputs
        if call and outputs is None and not self.result:
            phy_id = [256 + int(call[2])] if call[1] == "get_port_phyid" else []
            outputs = answers.get(self.text, answers.get(call[1], phy_id))
        outputs = ",".join(map(str, outputs or [])) or "-"
        return f"{self.place}\t{self.count}\t{self.result}\t{outputs}\t{self.text}"


def single_out(lines, start, nth):
    """Makes the nth event that starts so a line of its own; its position."""
    for at, line in enumerate(lines):
        if not line.text.startswith(start):
            continue
        if nth > line.count:
            nth -= line.count
            continue
        parts = []
        for count in (nth - 1, 1, line.count - nth):
            part = Line.__new__(Line)
            part.__dict__ = line.__dict__ | {"count": count}
            parts.append(part)
        lines[at:at + 1] = [part for part in parts if part.count]
        return at + (nth > 1)
    raise ValueError("nothing starts with: " + start)


class Cases:
    def __init__(self):
        self.requests, self.answers, self.procedures, self.stories = {}, {}, {}, []

    def read(self, path):
        with open(path, encoding="utf-8") as file:
            text = re.sub(r"\\\n *", lambda match: "\0", file.read())
        blocks, number = [], 0
        for line in text.split("\n"):
            number, place = number + 1 + line.count("\0"), f"{path.rsplit('/', 1)[-1]}:{number + 1}"
            line = line.replace("\0", "")
            if not line.strip() or line.lstrip().startswith("#"):
                continue
            if not line.startswith(" "):
                blocks.append((line, place, []))
            else:
                blocks[-1][2].append((line.strip(), place))
        for header, place, body in blocks:
            self.place = place
            try:
                word, _, rest = header.partition(" ")
                getattr(self, "take_" + word)(rest, body)
            except (AttributeError, AssertionError, KeyError, ValueError) as error:
                sys.exit(f"{place}: {header}: {error!r}")

    def take_request(self, text, _):
        name, *parts = text.split()
        self.requests[name] = Request(*parts)

    def take_always(self, text, _):
        line = Line(text, "")
        self.answers[line.text] = line.outputs

    def take_def(self, text, body):
        head, _, line = (text + " ").partition(": ")
        name, *parameters = head.split()
        self.procedures[name] = [parameter.partition("=")[::2] for parameter in parameters], body or [(line.strip(), self.place)]

    def take_case(self, name, body):
        """A table at its beginning makes each row a story of its own."""
        rows = [[cell.strip() for cell in re.split(r" \|(?= |$)", line[1:])] for line, _ in body if line[0] == "|"]
        body = [line for line in body if line[0][0] != "|"]
        for row in rows[1:] or [[]]:
            row += [""] * (len(rows[0]) - len(row)) if rows else []
            self.tell(": ".join([name] + row[:1]), body, dict(zip(rows[0], row)) if rows else {})

    def take_missing(self, text, body):
        """Each request asked without each slot."""
        for part in text.split(" ; "):
            names, slots = (words.split() for words in part.split(":"))
            for name, slot in ((name, slot) for name in names for slot in slots):
                story = [("empty " + slot, body[0][1]), ("ask " + name, body[0][1])] + body
                self.tell(f"{name} without {slot}", story, {"way": name.rpartition("_")[2]}, slot)

    def tell(self, name, body, values, empty="-"):
        lines = self.expand_all(body, values)
        self.stories += [f"story\t{name}"]
        self.stories += [line.told(self.answers).replace("{" + empty + "}", "(nil)") for line in lines]

    def expand_all(self, body, values):
        lines = []
        for text, place in body:
            lines += self.expand(text, place, values)
        return lines

    @staticmethod
    def substitute(text, values):
        text = re.sub(r"\$(\w+)|\$\{(\w+)\}", lambda m: values.get(m[1] or m[2], m[0]), text)

        def add(match):
            value = sum(map(int, re.findall(r"[+-]?\d+", match[1])))
            return f"{value & 255:02x}" if match[2] else str(value)
        return re.sub(r"\{([\d+-]+)(:x2)?\}", add, text)

    def expand(self, text, place, values):
        if text.startswith("for "):
            head, _, body = text.partition(": ")
            name, *items = self.words(self.substitute(head[4:], values))
            items = [str(n) for i in items for n in numbers(i)] if re.search(r"\.\.|,", " ".join(items)) else items
            return [line for item in items for line in self.expand(body, place, values | {name: item})]
        text = self.substitute(text, values)
        if " ; " in text:
            return self.expand_all([(part, place) for part in text.split(" ; ")], {})
        text, *modifiers = text.split(" | ")
        return self.modified(self.expand_one(text, place), modifiers, place) if text else []

    @staticmethod
    def words(text):
        return [quoted or word for quoted, word in re.findall(r'"([^"]*)"|(\S+)', text)]

    def expand_one(self, text, place):
        words = self.words(text)
        if words[0] in ("!", "."):
            named = text if text[2:3] == "<" else f"{text[0]} <{self.request.operation}> {text[2:]}"
            return [Line(named, place)]
        if words[0] == "scan":
            return list(self.scan(place, *words[1:]))
        if words[0] == "ask":
            self.request = self.requests[words[1]]
            unit = ["unit=6"] if "unit" in self.request.fields else []
            fields = sorted(unit + words[2:], key=lambda word: not word.startswith("fill="))
            self.sent = self.request.payload(bytes(self.request.size), fields)
            return [Line(f"ask {self.request.type} {words[1]} {self.sent.hex() or '-'}", place)]
        if words[0] == "reply" and words[1:] != ["none"]:
            return [Line(f"reply {self.request.reply_type} {self.request.payload(self.sent, words[1:]).hex() or '-'}", place)]
        if words[0] not in self.procedures:
            return [Line(text, place)]
        parameters, body = self.procedures[words[0]]
        given = words[1:] + [default for _, default in parameters[len(words) - 1:]]
        return self.expand_all(body, dict(zip((name for name, _ in parameters), given)))

    def scan(self, place, style, *ports):
        """Asks 256 ports: those named can do this (3=0x10/0) or cannot be asked (4=!-2), the others can do nothing."""
        abilities = {port: ability for word in ports for port in numbers(word.split("=")[0]) for ability in [word.split("=")[1]]}
        for port in range(1, 257):
            ability, operation = abilities.get(port, "0/0"), self.request.operation
            words = [0, 0] if ability[0] == "!" else [int(word, 0) for word in ability.split("/")]
            if ability[0] == "!":
                yield Line(f"get_ability(6,{port}) = {ability[1:]} -> 7,7", place)
                yield Line(f"{'!' if style == 'stress' else '.'} <{operation}> Get port{port} ability fail(ret = {ability[1:]}).", place)
            else:
                yield Line(f"get_ability(6,{port}) -> {words[0]},{words[1]}", place)
            if style != "quiet":
                yield Line(f". <{operation}> Get port {port} ability copper:0x{words[0]:x} fiber:0x{words[1]:x} .", place)

    def modified(self, lines, modifiers, place):
        """until, after, but, without and then: see docs/library_tests.md."""
        at = len(lines)
        for modifier in modifiers:
            verb, nth, rest = re.fullmatch(r"(\w+) (?:#(\d+) )?(.*)", modifier).groups()
            wanted = Line(rest, place)
            if verb == "then":
                more = self.expand(rest, place, {})
                lines[at:at] = more
                at += len(more)
            elif verb == "without":
                lines = [line for line in lines if not line.text.startswith(wanted.text)]
                at = len(lines)
            else:
                at = single_out(lines, wanted.text, int(nth or 1))
                if verb == "after":
                    lines, at = lines[at + 1:], 0
                    continue
                lines[at].result = wanted.result
                lines[at].outputs = wanted.outputs or lines[at].outputs
                at += 1
                if verb == "until":
                    lines = lines[:at]
                elif verb != "but":
                    raise ValueError("not a modifier: " + verb)
        return lines


cases = Cases()
for path_ in sys.argv[2:]:
    cases.read(path_)
with open(sys.argv[1], "w", encoding="utf-8") as output:
    output.write("\n".join(cases.stories) + "\n")
