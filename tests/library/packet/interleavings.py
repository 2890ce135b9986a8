# SPDX-License-Identifier: MIT
"""The receive counters' table in small, in every order in which threads can take its steps.

A step is one access to what threads share. A plain load of an index entry or of a row's is_last may see what was there
before (nothing, false) however long ago it changed, which is more than any processor does; compare-and-swap and addition
see the present; a row's port is seen through the pointer that leads to it.
"""
import sys

ROWS, SLOTS, NO_ROW = 2, 4, "no row"


def changed(values, at, value):
    return values[:at] + (value,) + values[at + 1:]


def steps(state, who, claims_are_compared):
    """The states that one step of a thread can lead to; none when it has nothing left to do."""
    index, claims, counts, entered, last, threads = state
    do, at, row, frames = threads[who]
    if not frames:
        return
    port = frames[0]

    def to(*thread, index=index, claims=claims, counts=counts, entered=entered, last=last):
        return index, claims, counts, entered, last, changed(threads, who, thread)

    over = ("search", 0, None, frames[1:])
    if do == "search":
        slot = (port + at) % SLOTS
        for seen in {index[slot], None}:
            if seen is None:
                yield to("claim", 0, None, frames)
            elif seen == NO_ROW:
                yield to(*over)
            elif claims[seen] == port:
                yield to("add", 0, seen, frames)
            else:
                for is_last in {last[seen], False}:
                    yield to(*over) if is_last else to("search", at + 1, None, frames)
    elif do == "claim" and at == ROWS:
        yield to(*over)
    elif do == "claim" and claims[at] is None:
        yield to("enter", 0, at, frames, claims=changed(claims, at, port))
    elif do == "claim":
        own = claims[at] == port and claims_are_compared
        yield to("add", 0, at, frames) if own else to("claim", at + 1, None, frames)
    elif do == "enter":
        assert at < SLOTS
        slot = (port + at) % SLOTS
        free = index[slot] is None
        yield to("count", 0, row, frames, index=changed(index, slot, row)) if free else to(do, at + 1, row, frames)
    elif do == "count":
        yield to("close" if entered + 1 == ROWS else "add", 0, row, frames, entered=entered + 1)
    elif do == "close":
        slot, before = at % SLOTS, index[at - 1] if at > 0 else NO_ROW
        now = changed(index, slot, NO_ROW) if index[slot] is None else index
        ends = now[slot] == NO_ROW and before != NO_ROW
        yield to("close" if at < SLOTS else "add", at + 1, row, frames, index=now,
                 last=changed(last, before, True) if ends else last)
    else:
        yield to(*over, counts=changed(counts, row, counts[row] + 1))


def is_exact(state, sent):
    """No port in two rows, no frame lost of a port that has one, and no port without one while there was a free one."""
    claims, counts = state[1:3]
    return all(claims.count(port) == 1 and counts[claims.index(port)] == sent.count(port)
               if port in claims else None not in claims for port in sent)


def explore(*threads, claims_are_compared=True):
    """(states seen, whether every end was exact)"""
    start = ((None,) * SLOTS, (None,) * ROWS, (0,) * ROWS, 0, (False,) * ROWS, tuple(("search", 0, None, t) for t in threads))
    seen, left, exact = {start}, [start], True
    while left:
        state = left.pop()
        after = [next_ for who in range(len(threads)) for next_ in steps(state, who, claims_are_compared)]
        exact = exact and (after != [] or is_exact(state, sum(threads, ())))
        left += set(after) - seen
        seen.update(after)
    return len(seen), exact


# Ports 0 and 4 begin their search at the same place, 3 at the last one.
for case in [((0, 0), (0, 0), (0,)), ((0, 4), (4, 0), (0, 3)), ((3, 7, 3), (7, 7), (1, 3)), ((0, 1), (1, 4), (4, 0))]:
    states, exact = explore(*case)
    print(f"{case}: {states} states")
    if not exact:
        sys.exit(f"{case}: not exact")
if explore((0,), (0,), claims_are_compared=False)[1]:
    sys.exit("a fault in the claims is not found")
