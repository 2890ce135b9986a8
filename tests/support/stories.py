#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tells the stories of case files event by event, for play_stories: stories.py OUTPUT FILE...

How a case file is written is in docs/library_tests.md.
"""
import re
import struct
import sys
from dataclasses import dataclass, replace


def numbers(text):
    """"3,5..7,9*2,4:6": 4:6 is 4 << 16 | 6."""
    for part in text.split(","):
        value, _, times = part.partition("*")
        value, _, code = value.partition(":")
        first, _, last = value.partition("..")
        for number in range(int(first, 0), int(last or first, 0) + 1):
            yield from [number << 16 | int(code, 0) if code else number] * int(times or 1)


class Request:
    def __init__(self, type_, reply, operation, size, *fields):
        self.type, self.reply_type, self.operation, self.fields, self.size = int(type_), int(reply), operation, {}, 0
        for field in fields:
            name, bytes_, count = re.fullmatch(r"(\w+)(?:/(\d))?(?:\[(\d+)\])?", field).groups()
            self.fields[name] = self.size, int(bytes_ or 4), int(count or 1)
            self.size += int(bytes_ or 4) * int(count or 1)
        assert self.size == int(size), f"the fields of {operation} make up {self.size} bytes"

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


@dataclass
class Line:
    place: str
    text: str
    count: int = 1
    result: int = 0
    outputs: list = None


def line_of(text, place):
    """TEXT [xN] [= result] [-> outputs]"""
    if text[0] in "!.":
        return Line(place, text)
    text, count, result, outputs = re.fullmatch(r"(.*?)(?: x(\d+))?(?: = (-?\d+))?(?: -> (\S+))?", text).groups()
    return Line(place, text, int(count or 1), int(result or 0), list(numbers(outputs)) if outputs else None)


def single_out(lines, start, nth):
    """Makes the nth event that starts so a line of its own; its position."""
    for at, line in enumerate(lines):
        if line.text.startswith(start) and nth <= line.count:
            lines[at:at + 1] = [replace(line, count=count) for count in (nth - 1, 1, line.count - nth) if count]
            return at + (nth > 1)
        nth -= line.count if line.text.startswith(start) else 0
    raise ValueError("nothing starts with: " + start)


def whole_frame(match):
    """Bytes in hex, of which those in brackets repeat up to the length that stands before."""
    length, first, again = int(match[1]), match[3], match[4]
    return match[1] + match[2] + (first + again * length)[:2 * length]


class Cases:
    def __init__(self):
        self.requests, self.answers, self.procedures, self.stories = {}, {}, {}, []

    def read(self, path):
        blocks, before = [], ""
        for number, line in enumerate(open(path, encoding="utf-8"), 1):
            line, place = before + (line.strip() if before else line.rstrip()), f"{path.rsplit('/', 1)[-1]}:{number}"
            before = line[:-1] if line.endswith("\\") else ""
            if before or line.lstrip()[:1] in ("", "#"):
                continue
            if line[0] == " ":
                blocks[-1][2].append((line.strip(), place))
            else:
                blocks.append((line, place, []))
        for header, place, body in blocks:
            try:
                word, _, rest = header.partition(" ")
                getattr(self, "take_" + word)(rest, body, place)
            except (AttributeError, AssertionError, KeyError, ValueError) as error:
                sys.exit(f"{place}: {header}: {error!r}")

    def take_request(self, text, *_):
        """Several that share a record have commas between their names, types, types of replies and operations."""
        for name, *head in zip(*(words.split(",") for words in text.split()[:4])):
            self.requests[name] = Request(*head, *text.split()[4:])

    def take_always(self, text, _, place):
        line = line_of(text, place)
        self.answers[line.text] = line.outputs

    def take_def(self, text, body, place):
        head, _, line = (text + " ").partition(": ")
        name, *parameters = head.split()
        self.procedures[name] = [word.partition("=")[::2] for word in parameters], body or [(line.strip(), place)]

    def take_case(self, name, body, _):
        """A table at its beginning makes each row a story of its own."""
        rows = [row for line, _ in body if line[0] == "|" for row in line[1:].split(" || ")] or ["", ""]
        rows = [[cell.strip() for cell in re.split(r" \|(?= |$)", row)] for row in rows]
        for row in rows[1:]:
            values = dict(zip(rows[0], row + [""] * len(rows[0])))
            self.tell(": ".join([name] + row[:1]), [line for line in body if line[0][0] != "|"], values)

    def take_missing(self, text, body, place):
        """Each request asked without each slot."""
        for part in text.split(" ; "):
            names, slots = (words.split() for words in part.split(":"))
            for name, slot in ((name, slot) for name in names for slot in slots):
                story = [(f"empty {slot} ; ask {name}", place)] + body
                self.tell(f"{name} without {slot}", story, {"name": name, "way": name.rpartition("_")[2]}, slot)

    def tell(self, name, body, values, empty="-"):
        lines = self.expand_all(body, values)
        levels = [int(lines.pop(0).text[-1])] if lines[0].text.startswith("at level ") else [2, 1]
        for level in levels:
            self.stories.append(f"story\t{level} {name}")
            for line in lines:
                if line.text[0] not in "!." or level >= {"!": 1, ".": 2}[line.text[0]]:
                    self.stories.append(self.event_row(line).replace("{" + empty + "}", "(nil)"))
                if line.text.startswith("ask log_level"):
                    level = int.from_bytes(bytes.fromhex(line.text[-16:-8]), "little", signed=True)
            self.stories.append("end\t1 0 0\tnothing more")

    def event_row(self, line):
        call = re.fullmatch(r"(\w+)\((\d*).*\)", line.text)
        outputs = line.outputs or []
        if call and not outputs and not line.result:
            phy_id = [256 + int(call[2])] if call[1] == "get_port_phyid" else []
            outputs = self.answers.get(line.text, self.answers.get(call[1], phy_id))
        text = line.text[2:] if line.text[0] in "!." else line.text
        if text.startswith(("send_packet", "receive")):
            text = re.sub(r"\b(\d+)([, ])(\w*)\[(\w+)\]", whole_frame, text)
        return f"{line.place}\t{line.count} {line.result} {' '.join(map(str, [len(outputs)] + outputs))}\t{text}"

    def expand_all(self, body, values):
        return [line for text, place in body for line in self.expand(text, place, values)]

    @staticmethod
    def substitute(text, values):
        text = re.sub(r"\$(\w+)|\$\{(\w+)\}", lambda m: values.get(m[1] or m[2], m[0]), text)
        text = re.sub(r"\{(\d+):x2\}", lambda m: f"{int(m[1]) & 255:02x}", text)
        return re.sub(r"\{([\d+-]+)\}", lambda m: str(sum(map(int, re.findall(r"[+-]?\d+", m[1])))), text)

    def expand(self, text, place, values):
        if " ;; " in text:
            return self.expand_all([(part, place) for part in text.split(" ;; ")], values)
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
            text = text if text[2:3] == "<" else f"{text[0]} <{self.request.operation}> {text[2:]}"
        elif words[0] in ("scan", "ask", "reply"):
            return list(getattr(self, words[0])(place, *words[1:]))
        elif words[0] in self.procedures:
            parameters, body = self.procedures[words[0]]
            arguments = words[1:] + [default for _, default in parameters[len(words) - 1:]]
            return self.expand_all(body, dict(zip((name for name, _ in parameters), arguments)))
        return [line_of(text, place)]

    def ask(self, place, name, *fields):
        request = self.request = self.requests[name]
        fields = sorted([f for f in ["unit=6"] if "unit" in request.fields] + list(fields), key=lambda f: f[:4] != "fill")
        self.sent = request.payload(bytes(request.size), fields)
        frame = struct.pack("<II", request.type, request.size) + self.sent
        yield Line(place, f"ask {name} {frame.hex()}")

    def reply(self, place, *fields):
        if fields == ("none",):
            yield Line(place, "reply ")
            return
        payload, type_ = self.request.payload(self.sent, fields), self.request.reply_type
        yield Line(place, f". <facmsg_send> Msg type:{type_}, payload_size:{len(payload)}.")
        yield Line(place, f"reply {struct.pack('<II', type_, len(payload)).hex()}{payload.hex()}")

    def scan(self, place, style, *ports):
        """Asks 256 ports: those named can do this (3=0x10/0) or cannot be asked (4=!-2), the others can do nothing."""
        abilities = {port: ability for word in ports for head, ability in [word.split("=")] for port in numbers(head)}
        operation, grave = self.request.operation, "!" if style == "stress" else "."
        for port in range(1, 257):
            ability, _, fault = abilities.get(port, "0/0").partition("!")
            copper, fiber = (int(word, 0) for word in (ability or "0/0").split("/"))
            outputs = [7, 7] if fault else [copper, fiber]
            yield Line(place, f"get_ability(6,{port})", 1, int(fault or 0), outputs)
            if fault:
                yield Line(place, f"{grave} <{operation}> Get port{port} ability fail(ret = {fault}).")
            if style != "quiet":
                yield Line(place, f". <{operation}> Get port {port} ability copper:0x{copper:x} fiber:0x{fiber:x} .")

    def modified(self, lines, modifiers, place):
        """until, after, but, without and then: see docs/library_tests.md."""
        at = len(lines)
        for modifier in modifiers:
            verb, nth, rest = re.fullmatch(r"(until|after|but|without|then) (?:#(\d+) )?(.*)", modifier).groups()
            pattern = line_of(rest, place)
            if verb == "then":
                more = self.expand(rest, place, {})
                lines[at:at], at = more, at + len(more)
            elif verb == "without":
                lines = [line for line in lines if not line.text.startswith(pattern.text)]
                at = len(lines)
            else:
                at = single_out(lines, pattern.text, int(nth or 1))
                lines[at] = replace(lines[at], result=pattern.result, outputs=pattern.outputs or lines[at].outputs)
                at += 1
                lines, at = (lines[at:], 0) if verb == "after" else (lines[:at] if verb == "until" else lines, at)
        return lines


cases = Cases()
for path_ in sys.argv[2:]:
    cases.read(path_)
with open(sys.argv[1], "w", encoding="utf-8") as output:
    output.write("\n".join(cases.stories) + "\n")
