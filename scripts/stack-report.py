#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Worst-case stack use of every exported function of the armhf build.

Reads the call graphs GCC wrote next to the library's objects (.ci files,
-fcallgraph-info=su: each function's frame size and its calls), takes the
exported functions from abi/symbols/*.txt, and walks every call path: a
function's worst case is its own frame plus the deepest of its callees. A
call into the C library counts with the stack that call was measured to use
on armhf (scripts/libc-stack-probe.c, painted thread stack, under qemu-arm),
given as "name bytes" lines in the file named by --libc. Prints every
exported function, then the ten deepest with the frames on their deepest
path, and exits 1 when one exceeds the budget or cannot be bounded
(recursion, dynamic frames, indirect calls, a C library call not measured).

usage: stack-report.py BUILD_DIR ABI_SYMBOLS_DIR --libc FILE [--budget BYTES]
"""
import argparse
import glob
import os
import re
import sys

NODE = re.compile(r'node: \{ title: "([^"]*)" label: "([^"]*)"(.*)\}')
EDGE = re.compile(r'edge: \{ sourcename: "([^"]*)" targetname: "([^"]*)"')


# "file:symbol" (the file absolute, or relative where the build maps its
# paths) or a bare symbol.
LOCAL = re.compile(r'^.*\.(?:c|cc|cpp|h|hpp):([^:/]+)$')


def symbol_of(title):
    m = LOCAL.match(title)
    return m.group(1) if m else title


def parse(build):
    frames, names, where, dynamic, calls, external = {}, {}, {}, set(), {}, set()
    files = []
    for top in ("src", "deps"):
        for d, _, fs in os.walk(os.path.join(build, top)):
            files += [os.path.join(d, x) for x in fs if x.endswith(".ci")]
    for path in files:
        with open(path, encoding="utf-8", errors="replace") as f:
            for line in f:
                m = NODE.search(line)
                if m:
                    title, label, rest = m.group(1), m.group(2), m.group(3)
                    parts = label.split("\\n")
                    size = re.search(r"(\d+) bytes \(([^)]*)\)", label)
                    if size:
                        frames[title] = max(frames.get(title, 0), int(size.group(1)))
                        names[title] = parts[0]
                        loc = parts[1] if len(parts) > 1 else ""
                        where[title] = os.path.relpath(loc) if loc.startswith("/") else loc
                        if "dynamic" in size.group(2) and "bounded" not in size.group(2):
                            dynamic.add(title)
                        external.discard(title)
                    elif title not in frames:
                        external.add(title)
                        names.setdefault(title, parts[0])
                    continue
                m = EDGE.search(line)
                if m:
                    calls.setdefault(m.group(1), set()).add(m.group(2))
    # A call names a function by its symbol, or by "file:symbol" when GCC
    # kept the body local to one object (inline, static, ".localalias");
    # complete-object constructors and destructors (C1/D1) are aliases of
    # the base ones (C2/D2). Each name goes to the deepest matching body.
    bysym = {}
    for t in frames:
        sym = symbol_of(t)
        if sym not in bysym or frames[t] > frames[bysym[sym]]:
            bysym[sym] = t

    def resolve(c):
        c = c.lstrip("*")  # GCC marks symbols renamed by an asm label
        if c in frames:
            return c
        sym = symbol_of(c)
        base = sym.replace(".localalias", "")
        for cand in (sym, base, re.sub(r"([CD])1E", r"\g<1>2E", base)):
            if cand in frames:
                return cand
            if cand in bysym:
                return bysym[cand]
        return sym

    for src in calls:
        calls[src] = {resolve(c) for c in calls[src]}
    return files, frames, names, where, dynamic, calls, external


def exported(abi_dir):
    syms = set()
    for path in sorted(glob.glob(os.path.join(abi_dir, "*.txt"))):
        with open(path, encoding="utf-8") as f:
            for line in f:
                line = line.split("#", 1)[0].strip()
                if line:
                    syms.add(line)
    return syms


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("build")
    ap.add_argument("abi")
    ap.add_argument("--libc", required=True)
    ap.add_argument("--platform", help="names of the platform's functions (libqv, liblog), one a line")
    ap.add_argument("--budget", type=int, default=16384)
    a = ap.parse_args()

    files, frames, names, where, dynamic, calls, external = parse(a.build)
    if not files:
        print(f"stack-report: no .ci files under {a.build} (GCC cross build with -fcallgraph-info=su)", file=sys.stderr)
        return 2
    libc = {}
    with open(a.libc, encoding="utf-8") as f:
        for line in f:
            p = line.split()
            if len(p) == 2 and p[1].isdigit():
                libc[p[0]] = int(p[1])

    platform = set()
    if a.platform:
        with open(a.platform, encoding="utf-8") as f:
            platform = {line.strip() for line in f if line.strip()}
    memo, problems, unmeasured = {}, {}, set()

    def worst(fn, stack):
        """(bytes, path) of the deepest chain from fn; notes what cannot be bounded."""
        if fn in memo:
            return memo[fn]
        if fn in stack:
            problems.setdefault(stack[0], set()).add(f"recursion through {names.get(fn, fn)}")
            return 0, []
        if fn in frames:
            own = frames[fn]
            if fn in dynamic:
                problems.setdefault(stack[0], set()).add(f"dynamic frame in {names[fn]}")
            best, best_path = 0, []
            for callee in sorted(calls.get(fn, ())):
                b, p = worst(callee, stack + [fn])
                if b > best:
                    best, best_path = b, p
            res = (own + best, [(names[fn], own, where[fn])] + best_path)
        elif fn == "__indirect_call" and "cJSON" in where.get(stack[-1], ""):
            # cJSON calls its allocation hooks through pointers: malloc,
            # realloc and free unless a caller installs others.
            hooks = [(libc[h], h) for h in ("malloc", "realloc", "free") if h in libc]
            if len(hooks) < 3:
                problems.setdefault(stack[0], set()).add("cJSON allocation hooks not measured")
            b, h = max(hooks) if hooks else (0, "malloc")
            res = (b, [(h, b, "C library via cJSON's hooks, measured")])
        elif fn == "__indirect_call":
            problems.setdefault(stack[0], set()).add("indirect call")
            res = (0, [])
        elif fn in platform:
            # The maker's platform library: its own stack is not ours to
            # measure here (the simulated stand-in is not shipped).
            res = (0, [(fn, 0, "platform call, not counted")])
        elif fn in libc:
            res = (libc[fn], [(fn, libc[fn], "C library, measured")])
        else:
            problems.setdefault(stack[0], set()).add(f"{fn} not measured")
            unmeasured.add(fn)
            res = (0, [(fn, 0, "not measured")])
        if not stack or fn not in stack:
            memo[fn] = res
        return res

    syms = exported(a.abi)
    rows = []
    for s in sorted(syms):
        if s not in frames:
            continue  # data (b64_chr, cu_alarmInfo, the weak flag)
        rows.append((s,) + worst(s, []))
    missing = sorted(s for s in syms if s not in frames and s in calls)
    rows.sort(key=lambda r: -r[1])
    over = [r for r in rows if r[1] > a.budget]
    print(f"Worst-case stack per exported function (armhf, {len(rows)} functions, from {len(files)} call graphs;")
    print(f"C library calls at their measured armhf figures, platform library calls not counted), budget {a.budget} bytes:")
    for s, b, _ in sorted(rows):
        flag = " OVER" if b > a.budget else ""
        note = "; ".join(sorted(problems.get(s, ())))
        print(f"  {s:40} {b:6d}{flag}{'  (' + note + ')' if note else ''}")
    print()
    print("The ten deepest, with the frames on their deepest path (bytes):")
    for s, b, path in rows[:10]:
        print(f"  {s}: {b}")
        for name, size, loc in path:
            print(f"      {size:6d}  {name}  [{loc}]")
    # cJSON walks nested JSON recursively: its figure is per nesting level
    # (one level for the library's own flat account messages).
    unbounded = [s for s, _, _ in rows
                 if any(not (s.startswith("cJSON_") and p.startswith("recursion")) for p in problems.get(s, ()))]
    print()
    print("cJSON's recursive functions are given for one nesting level of the JSON they walk.")
    print(f"deepest: {rows[0][0]} {rows[0][1]} bytes of {a.budget}; over budget: {len(over)}; "
          f"not fully bounded: {len(unbounded)}")
    if unmeasured:
        print("C library calls without a measured figure (add them to scripts/libc-stack-probe.c): " +
              ", ".join(sorted(unmeasured)))
    if missing:
        print("exported but not in the call graphs: " + ", ".join(missing))
    return 1 if over or unbounded else 0


if __name__ == "__main__":
    sys.exit(main())
